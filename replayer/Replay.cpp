#include "replayer/Replay.h"

#include <unistd.h>

#include <sys/syscall.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "replayer/call_text.h"
#include "replayer/vexreplay.h"

namespace vexreplay {

using datacache::Lock;
using recording::Record;

namespace {

enum ExitStatus { EXIT_WRONG_RECORDING = 2, EXIT_DIFFERS = 3 };

constexpr size_t kLongestMessage = 600;
constexpr size_t kMostWarnings = 100;

std::string cut(std::string text) {
    if (text.size() > kLongestMessage) text.replace(kLongestMessage, std::string::npos, "...");
    return text;
}

void say(const std::string& what) {
    static_cast<void>(std::fprintf(stderr, "libvexreplay: %s\n", cut(what).c_str()));
}

bool isMainThread() {
    return syscall(SYS_gettid) == getpid();
}

const char* variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

thread_local PlayedPart currentPart;
thread_local bool delivering = false;

Replay& Replay::instance() {
    // Never destroyed: threads of the host run until the process is gone.
    static auto* const replay = new Replay;
    return *replay;
}

void Replay::open(const std::string& path, Mode mode) {
    auto script = std::make_unique<const Script>(path, mode.driven);
    handles.restart();
    const Lock lock(_mutex);
    _script = std::move(script);
    _mode = mode;
    ++_generation;
    _used.assign(_script->steps().size(), false);
    _taken = _used;
    _first = _notification = 0;
    _began = _lastStep = Clock::now();
    _parts.clear();
    _inside.clear();
    _open.clear();
    _receivers.clear();
    _newest = {};
    _warnings.clear();
    _differences = 0;
    for (size_t i = 0; i < size(); ++i) {
        const auto place = static_cast<uint32_t>(i);
        if (step(i).isNotification()) {
            if (step(i).inside != Script::kNone) _inside[step(i).inside].push_back(place);
            continue;
        }
        Part& part = _parts[step(i).thread];
        part.places.push_back(place);
        part.connects = part.connects || step(i).connects;
    }
    advance();
    for (const std::string& remark : _script->remarks()) say(remark);
}

void Replay::setGuard(void (*begin)(), void (*end)()) {
    const Lock lock(_mutex);
    _guardBegin = begin;
    _guardEnd = end;
}

void Replay::openFromEnvironment() {
    const std::string path = variable("VEXREPLAY_FILE");
    const std::string speed = variable("VEXREPLAY_SPEED");
    const std::string how = variable("VEXREPLAY_MODE");
    Mode mode;
    if (how == "strict") mode.strict = VEXREPLAY_STRICT;
    char* end = nullptr;
    if (speed == "max") mode.speed = 0;
    if (speed != "max" && !speed.empty()) mode.speed = std::strtod(speed.c_str(), &end);
    std::string why;
    if (path.empty()) why = "VEXREPLAY_FILE names no recording";
    if (end != nullptr && (*end != '\0' || !(mode.speed > 0))) why = "VEXREPLAY_SPEED is no speed";
    if (!how.empty() && how != "strict" && how != "lenient")
        why = "VEXREPLAY_MODE is neither strict nor lenient";
    try {
        if (why.empty()) {
            open(path, mode);
            static_cast<void>(std::atexit([] { Replay::instance().finish(); }));
            return;
        }
    } catch (const std::exception& error) {  // damaged, or too large for the memory
        why = error.what();
    }
    say(why);
    _exit(EXIT_WRONG_RECORDING);
}

void Replay::advance() {
    while (_first < size() && _used[_first]) ++_first;
    while (_notification < size() && (_used[_notification] || !step(_notification).isNotification() ||
                                      step(_notification).inside != Script::kNone))
        ++_notification;
}

void Replay::consume(size_t place) {
    _used[place] = true;
    advance();
    _lastStep = Clock::now();
    _changed.notify_all();
}

std::optional<Record> Replay::answer(const char* function, const std::vector<recording::Value>& given,
                                     vex_notification_cb callback, void* context) {
    const std::string text = describeCall(function, given);
    const uint64_t call = numberOfText(text);
    std::vector<size_t> behind;
    std::optional<size_t> place;
    {
        Lock lock(_mutex);
        if (_script == nullptr) {
            lock.unlock();
            static std::once_flag once;  // several threads may make the first call
            std::call_once(once, [this] { openFromEnvironment(); });
            lock.lock();
        }
        const uint64_t generation = _generation;
        Part* const part = partOf(call);
        place = isStrict() ? strictStep(part, call, text) : std::nullopt;
        if (!place) place = lenientStep(part, call, text);
        const bool exact = place && !_used[*place];
        if (exact) {
            if (!_mode.driven && !delivering) awaitNotifications(lock, step(*place).begin);
            if (generation != _generation) return std::nullopt;  // another recording was opened meanwhile
            if (step(*place).connects) place = lastAttempt(*place);
            consume(*place);
            if (!_mode.driven) _open.insert(*place);
            behind = takeAfter(*place);
        }
        if (!place) place = nearest(_script->places(call));
        if (!place) place = nearest(_script->similar(function, given));
        if (callback != nullptr) {
            _newest = {callback, context};
            if (place) _receivers[*place] = _newest;
            if (!_mode.driven && !_running) {
                _running = true;
                // Never joined: like the library's own thread it lives as long as the process.
                std::thread([this] { run(); }).detach();
            }
        }
        if (!place) return std::nullopt;
        if (exact) {
            const bool holds = _inside.count(*place) != 0;
            lock.unlock();
            if (holds) deliverInside(*place, generation);
            deliverAll(behind, generation);
            lock.lock();
            if (!_mode.driven && !delivering && generation == _generation)
                awaitNotifications(lock, step(*place).end);
            if (generation != _generation) return std::nullopt;
            _open.erase(*place);
            _changed.notify_all();
        }
        Record record = _script->record(*place);
        if (record.isCall(function)) return record;
    }
    return std::nullopt;
}

// ---- Which step answers ----

bool Replay::isStrict() const {
    return _mode.strict == VEXREPLAY_STRICT || (_mode.strict == VEXREPLAY_STRICT_CACHE && !isMainThread());
}

/** The main thread plays the main thread; another one the first that nobody plays and that began with this
 * call, and strictly also one that did not. 0 for none. */
uint64_t Replay::choosePart(uint64_t call) {
    const auto main = _parts.find(kMainThread);
    if (isMainThread() && main != _parts.end()) return kMainThread;
    uint64_t chosen = 0;
    bool chosenSame = false;
    for (const auto& [thread, part] : _parts) {
        if (part.played || thread == kMainThread) continue;
        const bool same = step(part.places.front()).call == call;
        const bool first = chosen == 0 || part.places.front() < _parts[chosen].places.front();
        if ((same && !chosenSame) || (same == chosenSame && first)) chosen = thread;
        chosenSame = chosenSame || same;
    }
    // A driver may connect on another thread than the recorded host did.
    if (!chosenSame && _mode.driven && main != _parts.end() && nextOf(main->second, call)) return kMainThread;
    return chosenSame || _mode.strict != VEXREPLAY_LENIENT ? chosen : 0;
}

Replay::Part* Replay::partOf(uint64_t call) {
    if (currentPart.generation != _generation || currentPart.thread == 0) {
        currentPart = {_generation, choosePart(call)};
    }
    const auto found = _parts.find(currentPart.thread);
    if (found == _parts.end()) return nullptr;
    found->second.played = true;
    return &found->second;
}

/** The next call of a part, if it is this one. */
std::optional<size_t> Replay::nextOf(Part& part, uint64_t call) {
    while (part.next < part.places.size() && _used[part.places[part.next]]) ++part.next;
    if (part.next == part.places.size() || step(part.places[part.next]).call != call) return std::nullopt;
    return part.places[part.next];
}

/** The next such call of a part, before a step; the part goes on behind it. */
std::optional<size_t> Replay::laterOf(Part& part, uint64_t call, size_t before) {
    if (part.next == part.places.size()) return std::nullopt;
    const uint32_t from = part.places[part.next];
    const Script::Places all = _script->places(call);
    const Script::Place* place = all.from(from);
    for (size_t looked = 0; place != all.last && place->second < before && looked < kMostLookedAt;
         ++looked, ++place) {
        if (_used[place->second] || step(place->second).thread != step(from).thread) continue;
        const auto there = std::lower_bound(part.places.begin(), part.places.end(), place->second);
        part.next = static_cast<size_t>(there - part.places.begin());
        return place->second;
    }
    return std::nullopt;
}

/** The first that nobody has made, before the next notification. */
std::optional<size_t> Replay::unused(Script::Places places) {
    const Script::Place* place = places.from(_first);
    for (size_t looked = 0; place != places.last && place->second < _notification && looked < kMostLookedAt;
         ++looked, ++place) {
        if (!_used[place->second]) return place->second;
    }
    return std::nullopt;
}

/** The last before the next notification, or else the first behind it. */
std::optional<size_t> Replay::nearest(Script::Places places) {
    if (places.empty()) return std::nullopt;
    const Script::Place* const behind = places.from(_notification);
    return behind == places.first ? behind->second : (behind - 1)->second;
}

std::optional<size_t> Replay::strictStep(Part* part, uint64_t call, const std::string& text) {
    if (part == nullptr)
        exitDiffers(_script->path(), "no recorded thread is left, and another one calls " + text);
    std::optional<size_t> place = nextOf(*part, call);
    if (!place && _mode.strict == VEXREPLAY_STRICT_CACHE && part->connects)
        place = laterOf(*part, call, size());
    if (!place) exitUnexpected(*part, text);
    return place;
}

/** The step of a call; none if no unused step is near. */
std::optional<size_t> Replay::lenientStep(Part* part, uint64_t call, const std::string& text) {
    // The driver's main thread may make any calls; a driven cache may not get ahead of a notification.
    const bool free = _mode.driven && isMainThread();
    const size_t end = _mode.driven ? _notification : size();
    if (part != nullptr) {
        const std::optional<size_t> next = nextOf(*part, call);
        if (next && *next < end) return next;
        const std::optional<size_t> later = laterOf(*part, call, _notification);
        if (later && _mode.driven && part->connects) return later;
        if (!free) noteDifference(part, text);
        if (later) return later;
    } else if (!free) {
        noteDifference(nullptr, text);
    }
    return unused(_script->places(call));
}

/** Without waiting, a connection that was tried several times is answered by its last attempt. */
size_t Replay::lastAttempt(size_t place) {
    const uint64_t call = step(place).call;
    const auto part = _parts.find(step(place).thread);
    while (_mode.driven && !(_mode.speed > 0) && step(place).failed) {
        consume(place);
        const std::optional<size_t> next = nextOf(part->second, call);
        if (!next) break;
        place = *next;
    }
    return place;
}

// ---- Differences ----

void Replay::noteDifference(Part* part, const std::string& came) {
    if (++_differences != 1) return;
    const bool more = part != nullptr && part->next < part->places.size();
    const size_t place = more ? part->places[part->next] : 0;
    const std::string expected = more ? "expected of thread " + std::to_string(step(place).thread) + ": " +
                                            cut(_script->describe(place))
                                      : "no recorded call is left for this thread";
    _firstDifference =
        (more ? _script->where(place) : _script->path()) +
        ": calls differ from here on, and are answered by the nearest of their kind: " + expected +
        "; this came: " + cut(came);
    if (!_mode.driven) say(_firstDifference);
}

void Replay::exitDiffers(const std::string& where, const std::string& what) {
    static_cast<void>(std::fflush(stdout));
    static_cast<void>(std::fprintf(stderr, "libvexreplay: %s: %s\n", where.c_str(), what.c_str()));
    _exit(EXIT_DIFFERS);
}

void Replay::exitUnexpected(Part& part, const std::string& came) {
    const bool over = part.next == part.places.size();
    const size_t place = part.places[over ? part.places.size() - 1 : part.next];
    const std::string thread = " of thread " + std::to_string(step(place).thread);
    const std::string end = _script->cut().empty() ? "" : " (" + _script->cut() + ")";
    exitDiffers(
        _script->where(place),
        over ? "expected no more call" + thread + end + ", and this came: " + cut(came)
             : "expected" + thread + ": " + cut(_script->describe(place)) + "; this came: " + cut(came));
}

void Replay::exitMissing(size_t place) {
    const Part& part = _parts[step(place).thread];
    const std::string thread = std::to_string(step(place).thread);
    size_t left = 0;
    for (const uint32_t one : part.places) left += _used[one] ? 0 : 1;
    exitDiffers(_script->where(place),
                "expected of thread " + thread + ": " + cut(_script->describe(place)) +
                    (part.played ? "; it did not come" : "; this thread did not come") +
                    (left > 1 ? ", nor its " + std::to_string(left - 1) + " calls behind" : ""));
}

/** Whether nobody has to make a call, as it is one of the recorded host and not of the cache. */
bool Replay::isAside(size_t place) const {
    const auto part = _parts.find(step(place).thread);
    return _mode.strict == VEXREPLAY_STRICT_CACHE &&
           (part->first == kMainThread || part->second.connects || !part->second.played);
}

void Replay::finish() {
    const Lock lock(_mutex);
    if (_script == nullptr) return;
    if (_differences > 0 && _mode.driven) say(_firstDifference);
    if (_differences > 1) {
        say(_script->path() +
            ": calls that differed from the recorded ones: " + std::to_string(_differences));
    }
    for (size_t i = _first; _mode.strict != VEXREPLAY_LENIENT && i < size(); ++i) {
        if (!_used[i] && !step(i).isNotification() && !isAside(i)) exitMissing(i);
    }
}

std::optional<KeyAnswer> Replay::answerKey(const std::string& key) {
    std::optional<KeyAnswer> answer;
    {
        const Lock lock(_mutex);
        answer = _script->answer(key, _notification);
    }
    if (!answer) warnUnrecorded("the key " + key);
    return answer;
}

// ---- Warnings ----

void Replay::warn(const std::string& what) {
    const Lock lock(_mutex);
    warnLocked(what);
}

void Replay::warnUnrecorded(const std::string& what) {
    const Lock lock(_mutex);
    if (!_muted) warnLocked("never asked when it was recorded: " + what);
}

void Replay::mute() {
    const Lock lock(_mutex);
    _muted = true;
}

void Replay::warnLocked(const std::string& what) {
    if (_warnings.size() >= kMostWarnings || !_warnings.insert(what).second) return;
    say(_script->path() + ": " + what);
    if (_warnings.size() == kMostWarnings) say(_script->path() + ": and more, which is not told");
}

}  // namespace vexreplay
