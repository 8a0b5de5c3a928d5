#include "replayer/Replay.h"

#include <unistd.h>

#include <sys/syscall.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

#include "replayer/vexreplay.h"

namespace vexreplay {

using datacache::Lock;
using recording::Record;
using std::chrono::milliseconds;

namespace {

enum ExitStatus { EXIT_WRONG_RECORDING = 2, EXIT_DIFFERS = 3 };

constexpr uint64_t kMainThread = 1;
constexpr uint64_t kTogether = 1'000'000;  ///< ns: notifications this close came as one
constexpr size_t kLongestMessage = 600;
constexpr size_t kMostTold = 100;
constexpr milliseconds kPatience{500};  ///< of our own thread, with calls that do not come
constexpr milliseconds kPause{20};      ///< of our own thread between notifications, without waiting

/** The recorded thread that this thread plays. */
thread_local struct {
    uint64_t generation = 0;
    uint64_t thread = 0;
} currentPart;

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

Replay& Replay::instance() {
    // Never destroyed: threads of the host run until the process is gone.
    static auto* const replay = new Replay;
    return *replay;
}

void Replay::open(const std::string& path, Mode mode) {
    auto script = std::make_unique<const Script>(path);
    handles.restart();
    const Lock lock(_mutex);
    _script = std::move(script);
    _mode = mode;
    ++_generation;
    _used.assign(_script->steps().size(), false);
    _taken = _used;
    _first = _notification = 0;
    _now = 0;
    _began = _lastStep = Clock::now();
    _parts.clear();
    _told.clear();
    _callback = nullptr;
    const std::vector<Step>& steps = _script->steps();
    for (size_t i = 0; i < steps.size(); ++i) {
        if (!isNotification(i)) _parts[steps[i].record->thread].places.push_back(i);
    }
    while (_notification < steps.size() && !isNotification(_notification)) ++_notification;
    if (_script->tornLine() != 0) {
        say(path + ':' + std::to_string(_script->tornLine()) +
            ": the last line is not whole and was skipped");
    }
}

void Replay::openFromEnvironment() {
    const std::string path = variable("VEXREPLAY_FILE");
    const std::string speed = variable("VEXREPLAY_SPEED");
    Mode mode;
    mode.strict = std::strcmp(variable("VEXREPLAY_MODE"), "strict") == 0;
    char* end = nullptr;
    if (speed == "max") mode.speed = 0;
    if (speed != "max" && !speed.empty()) mode.speed = std::strtod(speed.c_str(), &end);
    std::string why;
    if (path.empty()) why = "VEXREPLAY_FILE names no recording";
    if (end != nullptr && (*end != '\0' || !(mode.speed > 0))) why = "VEXREPLAY_SPEED is no speed";
    try {
        if (why.empty()) return open(path, mode);
    } catch (const recording::RecordingError& error) {
        why = error.what();
    }
    say(why);
    _exit(EXIT_WRONG_RECORDING);
}

void Replay::consume(size_t place) {
    _used[place] = true;
    _now = std::max(_now, step(place).record->time);
    while (_first < _used.size() && _used[_first]) ++_first;
    while (_notification < _used.size() && (_used[_notification] || !isNotification(_notification)))
        ++_notification;
    _lastStep = Clock::now();
    _changed.notify_all();
}

const Record* Replay::answer(const char* function, const std::vector<recording::Value>& given) {
    const std::string call = describeCall(function, given);
    const Record* record = nullptr;
    std::vector<size_t> behind;
    {
        Lock lock(_mutex);
        if (_script == nullptr) {
            lock.unlock();
            openFromEnvironment();
            lock.lock();
        }
        std::optional<size_t> place =
            _mode.strict ? strictAnswer(call) : lenientAnswer(_script->places(call));
        if (!place) place = lenientAnswer(_script->similar(function, given));
        if (!place) return nullptr;
        record = step(*place).record;
        behind = takeBehind(*record);
    }
    for (const size_t place : behind) deliverOne(place);
    return record;
}

// ---- Strictly ----

/** A thread plays the first recorded thread that nobody plays and that began with the same call; the main
 * thread plays the main thread. */
uint64_t Replay::choosePart(const std::string& call) {
    std::pair<const uint64_t, Part>* chosen = nullptr;
    if (isMainThread() && _parts.count(kMainThread) != 0) {
        chosen = &*_parts.find(kMainThread);
    } else {
        for (auto& part : _parts) {
            if (part.second.played || part.first == kMainThread) continue;
            const bool same = step(part.second.places.front()).call == call;
            const bool first =
                chosen == nullptr || part.second.places.front() < chosen->second.places.front();
            const bool chosenSame = chosen != nullptr && step(chosen->second.places.front()).call == call;
            if ((same && !chosenSame) || (same == chosenSame && first)) chosen = &part;
        }
    }
    if (chosen == nullptr)
        differs(_script->path(), "no recorded thread is left, and another one calls " + call);
    chosen->second.played = true;
    return chosen->first;
}

std::optional<size_t> Replay::strictAnswer(const std::string& call) {
    if (currentPart.generation != _generation) currentPart = {_generation, choosePart(call)};
    Part& part = _parts[currentPart.thread];
    const std::string thread = " of thread " + std::to_string(currentPart.thread);
    if (part.next == part.places.size()) {
        const std::string where = part.places.empty() ? _script->path() : _script->where(part.places.back());
        differs(where, "expected no more call" + thread + ", and this came: " + call);
    }
    const size_t place = part.places[part.next];
    if (step(place).call != call) {
        const std::string expected = cut(step(place).call);
        differs(_script->where(place), "expected" + thread + ": " + expected + "; this came: " + cut(call));
    }
    ++part.next;
    consume(place);
    return place;
}

void Replay::differs(const std::string& where, const std::string& what) {
    static_cast<void>(std::fflush(stdout));
    static_cast<void>(std::fprintf(stderr, "libvexreplay: %s: %s\n", where.c_str(), what.c_str()));
    _exit(EXIT_DIFFERS);
}

// ---- Leniently ----

/** Of these steps the one that answers; none where there is none. */
std::optional<size_t> Replay::lenientAnswer(const std::vector<size_t>& places) {
    if (places.empty()) return std::nullopt;
    for (auto place = std::lower_bound(places.begin(), places.end(), _first);
         place != places.end() && *place < _notification; ++place) {
        if (_used[*place]) continue;
        consume(*place);
        return *place;
    }
    size_t nearest = places.front();
    uint64_t least = UINT64_MAX;
    for (const size_t place : places) {
        const uint64_t time = step(place).record->time;
        const uint64_t distance = time > _now ? time - _now : _now - time;
        if (distance >= least) continue;
        least = distance;
        nearest = place;
    }
    return nearest;
}

const KeyAnswer* Replay::answerKey(const std::string& key) {
    Lock lock(_mutex);
    const std::vector<KeyAnswer>* const answers = _script->answers(key);
    if (answers == nullptr) {
        lock.unlock();
        tellUnasked("the key " + key);
        return nullptr;
    }
    const uint64_t now = _now;
    const auto later = std::lower_bound(answers->begin(), answers->end(), now,
                                        [](const KeyAnswer& one, uint64_t time) { return one.time < time; });
    if (later == answers->begin()) return &*later;
    const auto earlier = later - 1;
    const bool near = later != answers->end() && later->time - _now < _now - earlier->time;
    return near ? &*later : &*earlier;
}

// ---- Notifications ----

void Replay::registered(vex_notification_cb callback, void* context) {
    const Lock lock(_mutex);
    _callback = callback;
    _context = context;
    if (_mode.driven || _running) return;
    _running = true;
    // Never joined: like the library's own thread it lives as long as the process.
    std::thread([this] { run(); }).detach();
}

/** Our own thread does not know what the host does; it waits until nothing has come for a moment. */
bool Replay::isQuiet() const {
    return Clock::now() - _lastStep >= kPause;
}

/** Whether the recorded time of a notification has come. */
bool Replay::isDue(size_t place) const {
    if (!(_mode.speed > 0)) return _mode.driven || isQuiet();
    const std::chrono::duration<double, std::nano> after(static_cast<double>(step(place).record->time) /
                                                         _mode.speed);
    return Clock::now() - _began >= after;
}

/** Whether the next notification's place may be before the step that is next. */
bool Replay::hasPlace(size_t notification) const {
    if (notification == _first) return true;
    const Record& behind = *step(_first).record;
    const Record& record = *step(notification).record;
    if (record.time > behind.time || (record.waited != 0 && behind.thread == kMainThread)) return false;
    return _mode.driven || isQuiet();
}

int32_t Replay::look(size_t& place) const {
    place = _first;
    if (_script == nullptr) return VEXREPLAY_CALL;
    if (_first == _used.size()) return VEXREPLAY_OVER;
    if (_notification < _used.size() && !_taken[_notification] && hasPlace(_notification) &&
        isDue(_notification)) {
        place = _notification;
        return VEXREPLAY_NOTIFICATION;
    }
    const bool main = !isNotification(_first) && step(_first).record->thread == kMainThread;
    return main ? VEXREPLAY_MAIN : VEXREPLAY_CALL;
}

int32_t Replay::next(size_t& place) {
    const Lock lock(_mutex);
    return look(place);
}

bool Replay::mentions(size_t place, const std::string& text) {
    const Lock lock(_mutex);
    return place < _used.size() && step(place).call.find(text) != std::string::npos;
}

/** The notification at `place`, and those that came so close behind it that they were taken up together:
 * what they set going had not begun, or, where they did not wait for it to end, cannot have had the cache. */
std::vector<size_t> Replay::takeGroup(size_t place) {
    std::vector<size_t> group;
    uint64_t begins = UINT64_MAX;  // the call that is next
    uint64_t ends = UINT64_MAX;
    for (size_t i = _first; i < _used.size(); ++i) {
        if (_used[i] || isNotification(i)) continue;
        begins = step(i).record->time;
        ends = begins + step(i).record->took;
        break;
    }
    for (size_t i = place; i < _used.size(); ++i) {
        const Record& record = *step(i).record;
        if (!isNotification(i) || _taken[i]) continue;
        if (!group.empty()) {
            const Record& before = *step(group.back()).record;
            const uint64_t end = record.time + record.took;
            if (record.time > before.time + before.took + kTogether || record.time >= begins) break;
            if (end > ends && record.waited != 0) break;
        }
        _taken[i] = true;
        group.push_back(i);
    }
    return group;
}

/** The notifications that came right behind a call that has just been made, while nothing held them up. They
 * are delivered before it returns: then nothing can come in between. */
std::vector<size_t> Replay::takeBehind(const Record& call) {
    if (_first == _used.size() || _first != _notification || _taken[_first]) return {};
    const Record& record = *step(_first).record;
    const bool soon = record.time < call.time + call.took + kTogether;
    return soon && record.waited == 0 && record.thread != call.thread ? takeGroup(_first)
                                                                      : std::vector<size_t>{};
}

void Replay::deliver() {
    std::vector<size_t> group;
    {
        const Lock lock(_mutex);
        size_t place = 0;
        if (look(place) == VEXREPLAY_NOTIFICATION) group = takeGroup(place);
    }
    for (const size_t place : group) deliverOne(place);
}

void Replay::deliverOne(size_t place) {
    vex_notification_cb callback = nullptr;
    void* context = nullptr;
    std::unique_ptr<vex_event_s> event;
    const auto before = currentPart;
    {
        const Lock lock(_mutex);
        callback = _callback;
        context = _context;
        const Record& record = *step(place).record;
        if (record.event) {
            event = std::make_unique<vex_event_s>();
            event->code = record.event->code;
            event->source = record.event->source;
            std::copy(record.event->text.begin(), record.event->text.end(), event->text);
        }
        currentPart = {_generation, record.thread};  // what the callback calls is that thread's
    }
    if (callback != nullptr) callback(context, event.get(), nullptr);
    currentPart = before;
    const Lock lock(_mutex);
    consume(place);
}

void Replay::skip(size_t place) {
    const Lock lock(_mutex);
    if (place != _first || _first == _used.size() || isNotification(_first)) return;
    if (_mode.strict) {
        const Record& record = *step(_first).record;
        differs(_script->where(_first), "expected of thread " + std::to_string(record.thread) + ": " +
                                            cut(step(_first).call) + "; it did not come");
    }
    consume(_first);
}

/** Our own thread. It cannot know whether a call will still come, so a lenient one loses patience. */
void Replay::run() {
    for (;;) {
        deliver();
        Lock lock(_mutex);
        if (_first == _used.size()) break;
        const bool lost = Clock::now() - _lastStep >= kPatience;
        if (!_mode.strict && lost && _notification < _used.size() && isDue(_notification)) {
            while (_first < _notification) consume(_first);
        }
        lock.waitUntil(_changed, Clock::now() + milliseconds(10));
    }
}

// ---- What is told ----

void Replay::tell(const std::string& what) {
    const Lock lock(_mutex);
    tellLocked(what);
}

void Replay::tellUnasked(const std::string& what) {
    const Lock lock(_mutex);
    if (!_hushed) tellLocked("never asked when it was recorded: " + what);
}

void Replay::hush() {
    const Lock lock(_mutex);
    _hushed = true;
}

void Replay::tellLocked(const std::string& what) {
    if (_told.size() >= kMostTold || !_told.insert(what).second) return;
    say(_script->path() + ": " + what);
    if (_told.size() == kMostTold) say(_script->path() + ": and more, which is not told");
}

}  // namespace vexreplay
