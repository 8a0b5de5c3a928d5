/*
 * When a replay delivers the notifications of a recording.
 */
#include <dirent.h>
#include <unistd.h>

#include <sys/syscall.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <thread>
#include <utility>

#include "replayer/Replay.h"

namespace vexreplay {

using datacache::Lock;
using recording::Record;

namespace {

constexpr uint64_t kTogether = 1'000'000;  ///< ns between notifications that one pass takes up
constexpr uint64_t kSoon =
    1'000'000'000;  ///< ns, the longest from a notification to the first call that it causes
constexpr std::chrono::milliseconds kPatience{
    500};  ///< how long a host whose threads all sleep may take to make a call

/** Whether a thread of this process waits for a processor, as it does on a busy machine. */
bool isRunnable(const char* task) {
    const std::string path = std::string("/proc/self/task/") + task + "/stat";
    std::FILE* const file = std::fopen(path.c_str(), "r");
    if (file == nullptr) return false;
    char line[200] = "";
    const bool read = std::fgets(line, sizeof line, file) != nullptr;
    static_cast<void>(std::fclose(file));
    const char* const name = read ? std::strrchr(line, ')') : nullptr;  // a name may hold anything
    return name != nullptr && name[1] == ' ' && name[2] == 'R';
}

/** Whether all other threads of the process sleep. */
bool othersSleep() {
    DIR* const tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return true;
    const std::string self = std::to_string(syscall(SYS_gettid));
    bool sleep = true;
    while (const dirent* const task = readdir(tasks)) {
        if (task->d_name[0] != '.' && self != task->d_name && isRunnable(task->d_name)) sleep = false;
    }
    closedir(tasks);
    return sleep;
}

}  // namespace

// ---- Notifications, where somebody drives ----

/** Whether the recorded time of a notification has come. */
bool Replay::isDue(size_t place) const {
    if (!(_mode.speed > 0)) return true;
    const std::chrono::duration<double, std::nano> after(static_cast<double>(step(place).begin) /
                                                         _mode.speed);
    return Clock::now() - _began >= after;
}

/** The next call, or the first behind the next notification if that may have caused it; size() for none. */
size_t Replay::callAfter() const {
    if (_first < _notification) return _first;
    for (size_t i = _notification; i < size() && step(i).begin <= step(_notification).end + kSoon; ++i) {
        if (!step(i).isNotification() && !_used[i]) return i;
    }
    return size();
}

/** The next notification, and those behind it that the same pass took up: they came before the next call, or
 * at nearly the same time. */
std::vector<size_t> Replay::group() const {
    const size_t call = callAfter();
    // The first call of a thread is not made by a pass, so the notifications did not cause it.
    const bool caused = call < size() && _parts.at(step(call).thread).places.front() != call;
    std::vector<size_t> group{_notification};
    for (size_t i = _notification + 1; i < size(); ++i) {
        const Step& one = step(i);
        if (_used[i] || one.inside != Script::kNone) continue;
        if (!one.isNotification()) break;
        const bool before = call < _notification ? one.begin <= step(call).begin : caused;
        if (!before && one.begin > step(group.back()).end + kTogether) break;
        group.push_back(i);
    }
    return group;
}

/** The first call of the main thread between a group of notifications and the calls that the group caused:
 * the main thread is to get the lock in between. size() for none. */
size_t Replay::mainBetween(const std::vector<size_t>& group) const {
    size_t main = size();
    for (size_t i = group.back() + 1, looked = 0; i < size() && looked < kMostLookedAt; ++i, ++looked) {
        if (_used[i] || step(i).inside != Script::kNone) continue;
        if (step(i).isNotification()) break;
        if (step(i).thread != kMainThread) return main;
        main = std::min(main, i);
    }
    return size();
}

int32_t Replay::look(size_t& place) const {
    place = _first;
    if (_script == nullptr) return VEXREPLAY_CALL;
    if (_first == size()) return VEXREPLAY_OVER;
    const bool main = !step(_first).isNotification() && step(_first).thread == kMainThread;
    if (_notification < size() && !_taken[_notification]) {
        // A callback that returned late began before what it caused.
        const bool late =
            step(_notification).begin <= step(_first).begin && !(step(_notification).waited && main);
        const std::vector<size_t> next = _notification == _first || late ? group() : std::vector<size_t>{};
        if (!next.empty() && isDue(next.back())) {
            const size_t between = mainBetween(next);
            place = between < size() ? between : _notification;
            return between < size() ? VEXREPLAY_MAIN : VEXREPLAY_NOTIFICATION;
        }
    }
    if (main) return VEXREPLAY_MAIN;
    return step(_first).isNotification() || !isAside(_first) ? VEXREPLAY_CALL : VEXREPLAY_ASIDE;
}

int32_t Replay::next(size_t& place) {
    const Lock lock(_mutex);
    return look(place);
}

bool Replay::mentions(size_t place, const std::string& text) {
    const Lock lock(_mutex);
    return place < size() && _script->describe(place).find(text) != std::string::npos;
}

std::vector<size_t> Replay::takeGroup() {
    std::vector<size_t> taken = group();
    for (const size_t place : taken) _taken[place] = true;
    return taken;
}

/** Takes the notifications to be delivered before a call returns that was just made: those that came right
 * after it without waiting for a lock; and all before the next call, if the next call waits for no
 * notification. */
std::vector<size_t> Replay::takeAfter(size_t call) {
    if (!_mode.driven || _first == size() || _first != _notification || _taken[_first]) return {};
    const Step& made = step(call);
    const Step& next = step(_first);
    if (next.thread == made.thread) return {};
    const bool soon = next.begin < made.end + kTogether && !next.waited;
    const size_t behind = callAfter();
    bool ahead = false;  // the next call is made by the same thread, or begins a thread
    if (behind < size() && step(behind).begin < made.end + kSoon) {
        const bool same = made.thread == kMainThread && step(behind).thread == kMainThread;
        ahead =
            same || (_parts[made.thread].connects && _parts[step(behind).thread].places.front() == behind);
    }
    return soon || ahead ? takeGroup() : std::vector<size_t>{};
}

void Replay::deliver() {
    std::vector<size_t> taken;
    uint64_t generation = 0;
    {
        const Lock lock(_mutex);
        size_t place = 0;
        const int32_t next = look(place);
        const bool before =
            next == VEXREPLAY_MAIN &&
            place > _notification;  // the notifications that come before the main thread's call
        if (next == VEXREPLAY_NOTIFICATION || before) taken = takeGroup();
        generation = _generation;
    }
    deliverAll(taken, generation);
}

void Replay::deliverAll(const std::vector<size_t>& places, uint64_t generation) {
    if (places.empty()) return;
    void (*begin)() = nullptr;
    void (*end)() = nullptr;
    {
        const Lock lock(_mutex);
        begin = _guardBegin;
        end = _guardEnd;
    }
    if (begin != nullptr) begin();
    for (const size_t place : places) deliverOne(place, generation);
    if (end != nullptr) end();
}

void Replay::deliverInside(size_t call, uint64_t generation) {
    std::vector<uint32_t> places;
    {
        const Lock lock(_mutex);
        if (generation == _generation) places = _inside[call];
    }
    for (const uint32_t place : places) deliverOne(place, generation);
}

/** Does nothing when another recording was opened since the place was taken. */
void Replay::deliverOne(size_t place, uint64_t generation) {
    Receiver receiver;
    std::unique_ptr<vex_event_s> event;
    void* user = nullptr;
    const auto before = currentPart;
    {
        const Lock lock(_mutex);
        if (generation != _generation) return;
        const Record record = _script->record(place);
        const auto registered = _receivers.find(step(place).objects);
        receiver = registered == _receivers.end() ? _newest : registered->second;
        if (record.event) {
            event = std::make_unique<vex_event_s>();
            event->code = record.event->code;
            event->source = record.event->source;
            std::copy(record.event->text.begin(), record.event->text.end(), event->text);
        }
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the recorded number, which leads nowhere here
        user = reinterpret_cast<void*>(static_cast<uintptr_t>(record.user.value));
        currentPart = {_generation, record.thread};  // the callback makes the calls of that thread
        _lastStep = Clock::now();
    }
    const bool within = std::exchange(delivering, true);
    if (receiver.callback != nullptr) receiver.callback(receiver.context, event.get(), user);
    currentPart = before;
    delivering = within;
    const Lock lock(_mutex);
    if (generation == _generation) consume(place);
}

void Replay::skip(size_t place) {
    const Lock lock(_mutex);
    if (place != _first || _first == size() || step(_first).isNotification()) return;
    if (_mode.strict != VEXREPLAY_LENIENT && !isAside(place)) exitMissing(place);
    skipCall(place);
}

/** Marks a call as used that nobody makes, and with it the notifications inside it. */
void Replay::skipCall(size_t place) {
    const auto inside = _inside.find(place);
    if (inside != _inside.end()) {
        for (const uint32_t one : inside->second) _used[one] = true;
    }
    consume(place);
}

// ---- Notifications on a thread of our own ----

/** Whether the host sleeps, and has done nothing for so long that it will not go on. `recorded`: nanoseconds
 * that passed here when it was recorded. */
bool Replay::hasWaitedEnough(uint64_t recorded) const {
    const double slower = _mode.speed > 0 ? std::max(1.0, 1 / _mode.speed) : 1.0;
    const std::chrono::duration<double, std::nano> usual(static_cast<double>(recorded) * slower);
    return Clock::now() - _lastStep >= kPatience + usual && othersSleep();
}

/** Waits for each notification that began before `time` of the recording to begin, and for each that ended
 * before `time` to end. Releases the lock meanwhile, so another recording may be open afterwards. */
void Replay::awaitNotifications(Lock& lock, uint64_t time) {
    const uint64_t generation = _generation;
    while (_running && generation == _generation && _notification < size()) {
        const Step& next = step(_notification);
        if (next.begin > time || (_taken[_notification] && next.end > time)) return;
        if (_taken[_notification] && hasWaitedEnough(next.end - next.begin)) {
            warnLocked(_script->where(_notification) +
                       ": the callback waits for what the caller has, and the call goes on without it");
            return;
        }
        lock.waitUntil(_changed, Clock::now() + kPoll);
    }
}

/** Our own thread: delivers each notification once all calls before it were made and its time has come. */
void Replay::run() {
    for (;;) {
        Lock lock(_mutex);
        if (_mode.driven || _notification == size()) {
            _running = false;
            return;
        }
        const size_t place = _notification;
        bool ready = isDue(place);
        for (const size_t call : _open) ready = ready && step(call).end >= step(place).begin;
        if (ready && _first < place) {
            const Step& missing = step(_first);
            const uint64_t before = _first == 0 ? 0 : step(_first - 1).begin;
            ready = hasWaitedEnough(missing.begin - std::min(before, missing.begin));
            for (size_t i = _first; ready && _mode.strict == VEXREPLAY_LENIENT && i < place; ++i) {
                if (!_used[i] && !step(i).isNotification()) skipCall(i);
            }
        }
        if (ready) {
            _taken[place] = true;
            const uint64_t generation = _generation;
            lock.unlock();
            deliverOne(place, generation);
        } else {
            lock.waitUntil(_changed, Clock::now() + kPoll);
        }
    }
}

}  // namespace vexreplay
