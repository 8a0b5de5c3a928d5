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

namespace vexreplay {

/** How a recording is replayed. */
struct Mode {
    bool strict = false; /**< each thread must make the recorded calls, and no others */
    double speed = 1;    /**< of the notifications; 0 for no waiting */
    bool driven =
        false; /**< whoever opened it delivers the notifications; otherwise a thread of our own does */
};

/**
 * A recording that is being replayed: which step is next, which call is answered by which step, and when the
 * notifications come.
 *
 * The steps are those of all threads in the order in which they returned. A notification's place is behind
 * the calls that returned before it; or earlier, behind those that began before it: its callback may have
 * returned late, when what it set going was at work already. It comes when nothing else can.
 *
 * Strictly, a thread's next call is compared with the next one of the recorded thread that it plays.
 * Otherwise a call is looked for between the notification before and the one behind, and then anywhere: the
 * nearest in time answers.
 *
 * The callback is called with no lock held.
 */
class Replay {
  public:
    static Replay& instance();

    /** From the begin, forgetting what was. Throws recording::RecordingError, and changes nothing. */
    void open(const std::string& path, Mode mode) DC_EXCLUDES(_mutex);

    /** The recorded call that answers; null for one that was never asked, which is told. Without a recording,
     * opens what the environment names. */
    const recording::Record* answer(const char* function, const std::vector<recording::Value>& given)
        DC_EXCLUDES(_mutex);
    /** What was said of a key, nearest in time; null, and told, for one that was never read. */
    const KeyAnswer* answerKey(const std::string& key) DC_EXCLUDES(_mutex);

    void registered(vex_notification_cb callback, void* context) DC_EXCLUDES(_mutex);

    /** See vexreplay.h. */
    int32_t next(size_t& place) DC_EXCLUDES(_mutex);
    void deliver() DC_EXCLUDES(_mutex);
    void skip(size_t place) DC_EXCLUDES(_mutex);
    bool mentions(size_t place, const std::string& text) DC_EXCLUDES(_mutex);

    void hush() DC_EXCLUDES(_mutex);

    /** Tells of something odd on standard error, once. */
    void tell(const std::string& what) DC_EXCLUDES(_mutex);
    /** Tells of a call that was never recorded, unless that is not wanted. */
    void tellUnasked(const std::string& what) DC_EXCLUDES(_mutex);

    Handles handles;

  private:
    using Clock = std::chrono::steady_clock;
    using Step = Script::Step;

    /** The calls of one recorded thread. */
    struct Part {
        std::vector<size_t> places;
        size_t next = 0;
        bool played = false; /**< by a thread of this process */
    };

    Replay() = default;
    void openFromEnvironment() DC_EXCLUDES(_mutex);
    const Step& step(size_t place) const DC_REQUIRES(_mutex) { return _script->steps()[place]; }
    bool isNotification(size_t place) const DC_REQUIRES(_mutex) { return step(place).call.empty(); }
    void consume(size_t place) DC_REQUIRES(_mutex);
    std::optional<size_t> strictAnswer(const std::string& call) DC_REQUIRES(_mutex);
    std::optional<size_t> lenientAnswer(const std::vector<size_t>& places) DC_REQUIRES(_mutex);
    uint64_t choosePart(const std::string& call) DC_REQUIRES(_mutex);
    [[noreturn]] void differs(const std::string& where, const std::string& what) DC_REQUIRES(_mutex);
    bool isDue(size_t place) const DC_REQUIRES(_mutex);
    bool hasPlace(size_t notification) const DC_REQUIRES(_mutex);
    bool isQuiet() const DC_REQUIRES(_mutex);
    int32_t look(size_t& place) const DC_REQUIRES(_mutex);
    std::vector<size_t> takeGroup(size_t place) DC_REQUIRES(_mutex);
    std::vector<size_t> takeBehind(const recording::Record& call) DC_REQUIRES(_mutex);
    void deliverOne(size_t place) DC_EXCLUDES(_mutex);
    void run() DC_EXCLUDES(_mutex);
    void tellLocked(const std::string& what) DC_REQUIRES(_mutex);

    datacache::Mutex _mutex;
    std::condition_variable _changed;
    std::unique_ptr<const Script> _script DC_GUARDED_BY(_mutex);
    Mode _mode DC_GUARDED_BY(_mutex);
    uint64_t _generation DC_GUARDED_BY(_mutex) = 0;
    std::vector<bool> _used DC_GUARDED_BY(_mutex);  /**< steps that were made, delivered or skipped */
    std::vector<bool> _taken DC_GUARDED_BY(_mutex); /**< notifications that are delivered, or about to be */
    size_t _first DC_GUARDED_BY(_mutex) = 0;        /**< the first that is not */
    size_t _notification DC_GUARDED_BY(_mutex) = 0; /**< the first notification that is not */
    uint64_t _now DC_GUARDED_BY(_mutex) = 0;        /**< the recording's time */
    Clock::time_point _began DC_GUARDED_BY(_mutex);
    Clock::time_point _lastStep DC_GUARDED_BY(_mutex);
    std::map<uint64_t, Part> _parts DC_GUARDED_BY(_mutex); /**< by the number of the recorded thread */
    vex_notification_cb _callback DC_GUARDED_BY(_mutex) = nullptr;
    void* _context DC_GUARDED_BY(_mutex) = nullptr;
    bool _running DC_GUARDED_BY(_mutex) = false; /**< our own thread */
    std::set<std::string> _told DC_GUARDED_BY(_mutex);
    bool _hushed DC_GUARDED_BY(_mutex) = false;
};

}  // namespace vexreplay
