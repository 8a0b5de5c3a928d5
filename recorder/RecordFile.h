#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vexrecord {

/** What the environment asks for: VEXRECORD_FILE, VEXRECORD_LIMIT, VEXRECORD_MASK. */
struct Settings {
    std::string path;
    size_t limit = 0; /**< bytes that the file may have; 0 for any number */
    bool masked = false;
};

/**
 * The file of the recording, without a lock: each record is one write(2) to the file's end.
 *
 * The file is made by the first record, so a process that goes into the background first records into the
 * file that was named. A recording is never overwritten: where there is such a file already, and in the child
 * of a fork whose parent records, the process's number is appended to the name.
 */
class RecordFile {
  public:
    /** For the process; threads may still run when it ends, so it is never destroyed. */
    static RecordFile& instance();

    /** Whether there is anything to record to. */
    bool wanted() const { return _state.load(std::memory_order_acquire) != CLOSED; }
    bool masked() const { return _settings.masked; }

    /** Starts recording into `path`, which it replaces. Says why not; an empty text for done. Before any
     * call. */
    std::string start(const std::string& path);

    /** Makes the file if need be; false when there is none. */
    bool open();
    /** The number of the next record. */
    uint64_t next() { return _next.fetch_add(1); }
    /** Nanoseconds since the recording began. */
    uint64_t clock() const;
    void write(std::string_view record);
    /** A record that could not be made, as memory was short. */
    void lose() { ++_lost; }

    /** In the child of a fork. */
    void forked();

  private:
    enum State { CLOSED, UNOPENED, OPENING, OPEN };

    RecordFile();
    std::string readSettings();
    void restart();
    int make(const std::string& path, int how);
    bool makeBeside();
    void giveUp(const std::string& why);
    bool reserve(size_t bytes);
    void tellEnd();
    void put(std::string_view text);

    Settings _settings;
    std::atomic<State> _state{CLOSED};
    int _file = -1;
    bool _child = false;
    uint64_t _began = 0; /**< CLOCK_MONOTONIC, ns */
    std::atomic<size_t> _next{1};
    std::atomic<size_t> _used{0}; /**< bytes, written or about to be */
    std::atomic<size_t> _lost{0};
    std::atomic<int> _writers{0}; /**< threads that may be writing */
    std::atomic<bool> _full{false};
    std::atomic<bool> _ended{false}; /**< the last record was written */
};

}  // namespace vexrecord
