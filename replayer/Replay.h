#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/Mutex.h"
#include "replayer/Handles.h"
#include "replayer/Script.h"
#include "replayer/vexreplay.h"

namespace vexreplay {

/** The recorded thread that a thread of this process plays. */
struct PlayedPart {
    uint64_t generation = 0;
    uint64_t thread = 0;
};
extern thread_local PlayedPart currentPart;

/** Whether this thread runs a callback; the calls that it makes then wait for no notification. */
extern thread_local bool delivering;

constexpr uint64_t kMainThread = 1;            /**< the recorded main thread's number */
constexpr size_t kMostLookedAt = 1000;         /**< steps that a search for a near one looks at */
constexpr std::chrono::milliseconds kPoll{10}; /**< between two looks at the state of the host */

/** How a recording is replayed. */
struct Mode {
    int32_t strict = VEXREPLAY_LENIENT;
    double speed = 1; /**< of the notifications; 0 for no waiting */
    /** The program that opened it delivers the notifications; otherwise our own thread does. */
    bool driven = false;
};

/**
 * Replays a recording: finds the step that answers a call, and delivers the notifications. The order in the
 * recording decides, never the time.
 *
 * Each thread plays a recorded thread, and its next call must strictly be the next recorded one. Leniently, a
 * call that is not is answered by a later call of its recorded thread, by a call before the next notification
 * that no thread has made yet, or by the last such call before that notification, made or not.
 *
 * Driven: the driver has a notification delivered when all calls before it were made and the cache is idle.
 * If the next call follows without waiting for the notification, the notification is delivered before the
 * call in front of it returns.
 *
 * Not driven: a thread of our own delivers a notification as soon as the calls before it were made. A call
 * waits for the notifications that had returned before it was made, and before it returns for those that came
 * inside it. Neither waits for ever: not for a callback that sleeps on a lock that the caller may hold, and
 * not for calls that a host does not make while all its threads sleep.
 *
 * Callbacks are called with no lock held.
 */
class Replay {
  public:
    static Replay& instance();

    /** Starts a recording from its begin and closes the one before. Throws recording::RecordingError, and
     * changes nothing. */
    void open(const std::string& path, Mode mode) DC_EXCLUDES(_mutex);
    /** `begin` and `end` are called around notifications that one pass is to take up; null for none. */
    void setGuard(void (*begin)(), void (*end)()) DC_EXCLUDES(_mutex);

    /** The recorded call that answers; none for a call that was never recorded. If no recording is open,
     * opens the one that the environment names. `callback`: null for a call that registers none. */
    std::optional<recording::Record> answer(const char* function, const std::vector<recording::Value>& given,
                                            vex_notification_cb callback, void* context) DC_EXCLUDES(_mutex);
    /** The last answer for a key; none, with a warning, for a key that was never read. */
    std::optional<KeyAnswer> answerKey(const std::string& key) DC_EXCLUDES(_mutex);

    /** See vexreplay.h. */
    int32_t next(size_t& place) DC_EXCLUDES(_mutex);
    void deliver() DC_EXCLUDES(_mutex);
    void skip(size_t place) DC_EXCLUDES(_mutex);
    bool mentions(size_t place, const std::string& text) DC_EXCLUDES(_mutex);
    void mute() DC_EXCLUDES(_mutex);
    void finish() DC_EXCLUDES(_mutex);

    /** Writes a line to standard error, once. */
    void warn(const std::string& what) DC_EXCLUDES(_mutex);
    /** Warns of a call that was never recorded, unless mute() was called. */
    void warnUnrecorded(const std::string& what) DC_EXCLUDES(_mutex);

    Handles handles;

  private:
    using Clock = std::chrono::steady_clock;
    using Step = Script::Step;

    /** The calls of one recorded thread. */
    struct Part {
        std::vector<uint32_t> places;
        size_t next = 0;
        bool played = false; /**< by a thread of this process */
        /** It calls vex_IPConnect, and may make calls of the host as well as of the cache. */
        bool connects = false;
    };

    struct Receiver {
        vex_notification_cb callback = nullptr;
        void* context = nullptr;
    };

    Replay() = default;
    void openFromEnvironment() DC_EXCLUDES(_mutex);
    const Step& step(size_t place) const DC_REQUIRES(_mutex) { return _script->steps()[place]; }
    size_t size() const DC_REQUIRES(_mutex) { return _used.size(); }
    void consume(size_t place) DC_REQUIRES(_mutex);
    void advance() DC_REQUIRES(_mutex);

    std::optional<size_t> strictStep(Part* part, uint64_t call, const std::string& text) DC_REQUIRES(_mutex);
    std::optional<size_t> lenientStep(Part* part, uint64_t call, const std::string& text) DC_REQUIRES(_mutex);
    Part* partOf(uint64_t call) DC_REQUIRES(_mutex);
    uint64_t choosePart(uint64_t call) DC_REQUIRES(_mutex);
    bool isStrict() const DC_REQUIRES(_mutex);
    std::optional<size_t> nextOf(Part& part, uint64_t call) DC_REQUIRES(_mutex);
    std::optional<size_t> laterOf(Part& part, uint64_t call, size_t before) DC_REQUIRES(_mutex);
    std::optional<size_t> unused(Script::Places places) DC_REQUIRES(_mutex);
    std::optional<size_t> nearest(Script::Places places) DC_REQUIRES(_mutex);
    size_t lastAttempt(size_t place) DC_REQUIRES(_mutex);
    void noteDifference(Part* part, const std::string& came) DC_REQUIRES(_mutex);
    [[noreturn]] void exitDiffers(const std::string& where, const std::string& what) DC_REQUIRES(_mutex);
    [[noreturn]] void exitUnexpected(Part& part, const std::string& came) DC_REQUIRES(_mutex);
    [[noreturn]] void exitMissing(size_t place) DC_REQUIRES(_mutex);
    bool isAside(size_t place) const DC_REQUIRES(_mutex);

    bool isDue(size_t place) const DC_REQUIRES(_mutex);
    size_t callAfter() const DC_REQUIRES(_mutex);
    std::vector<size_t> group() const DC_REQUIRES(_mutex);
    size_t mainBetween(const std::vector<size_t>& group) const DC_REQUIRES(_mutex);
    int32_t look(size_t& place) const DC_REQUIRES(_mutex);
    std::vector<size_t> takeGroup() DC_REQUIRES(_mutex);
    std::vector<size_t> takeAfter(size_t call) DC_REQUIRES(_mutex);
    void deliverAll(const std::vector<size_t>& places, uint64_t generation) DC_EXCLUDES(_mutex);
    void deliverOne(size_t place, uint64_t generation) DC_EXCLUDES(_mutex);
    void deliverInside(size_t call, uint64_t generation) DC_EXCLUDES(_mutex);

    void run() DC_EXCLUDES(_mutex);
    void skipCall(size_t place) DC_REQUIRES(_mutex);
    bool hasWaitedEnough(uint64_t recorded) const DC_REQUIRES(_mutex);
    void awaitNotifications(datacache::Lock& lock, uint64_t time) DC_REQUIRES(_mutex);

    void warnLocked(const std::string& what) DC_REQUIRES(_mutex);

    datacache::Mutex _mutex;
    std::condition_variable _changed;
    std::unique_ptr<const Script> _script DC_GUARDED_BY(_mutex);
    Mode _mode DC_GUARDED_BY(_mutex);
    uint64_t _generation DC_GUARDED_BY(_mutex) = 0; /**< counts open(): places of an older one are void */
    std::vector<bool> _used DC_GUARDED_BY(_mutex);  /**< steps that were made, delivered or skipped */
    /** Notifications that a thread delivers or has delivered. */
    std::vector<bool> _taken DC_GUARDED_BY(_mutex);
    size_t _first DC_GUARDED_BY(_mutex) = 0; /**< the first that is not used */
    /** The first unused notification that came inside no call. */
    size_t _notification DC_GUARDED_BY(_mutex) = 0;
    Clock::time_point _began DC_GUARDED_BY(_mutex);
    Clock::time_point _lastStep DC_GUARDED_BY(_mutex);
    std::map<uint64_t, Part> _parts DC_GUARDED_BY(_mutex); /**< by the number of the recorded thread */
    std::map<size_t, std::vector<uint32_t>> _inside DC_GUARDED_BY(_mutex); /**< a call's notifications */
    std::map<size_t, Receiver> _receivers DC_GUARDED_BY(_mutex);           /**< by the step that registered */
    std::set<size_t> _open DC_GUARDED_BY(_mutex); /**< calls that have not returned; not driven */
    Receiver _newest DC_GUARDED_BY(_mutex);
    void (*_guardBegin)() DC_GUARDED_BY(_mutex) = nullptr;
    void (*_guardEnd)() DC_GUARDED_BY(_mutex) = nullptr;
    bool _running DC_GUARDED_BY(_mutex) = false; /**< our own thread */
    size_t _differences DC_GUARDED_BY(_mutex) = 0;
    std::string _firstDifference DC_GUARDED_BY(_mutex); /**< printed at once, or by finish() if driven */
    std::set<std::string> _warnings DC_GUARDED_BY(_mutex);
    bool _muted DC_GUARDED_BY(_mutex) = false;
};

}  // namespace vexreplay
