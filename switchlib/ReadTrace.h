#pragma once

#include <cstddef>
#include <cstdint>

#include "switchlib/CallWatch.h"
#include "switchlib/ReadFailure.h"

namespace datacache {

/**
 * Follows what one load asks of the switch library: it counts the calls and keeps the first and the last
 * failure, for whoever tells the host about it. Whether a failure fails the load is the loader's affair.
 *
 * While an object lives it is the one of its thread, so that batches and zoning reads find it without being
 * handed it; where there is none they note nothing. Takes no memory and no lock.
 */
class ReadTrace {
  public:
    ReadTrace();
    ~ReadTrace();
    ReadTrace(const ReadTrace&) = delete;
    ReadTrace& operator=(const ReadTrace&) = delete;

    uint32_t calls() const { return _calls; }
    uint32_t failures() const { return _failures; }
    /** With ReadFault::None where nothing failed. */
    const ReadFailure& first() const { return _first; }
    const ReadFailure& last() const { return _last; }

    /** Notes a call that is about to be made. */
    static void called();
    /** Notes a failure; `status`, `keys` and the texts are as in ReadFailure. */
    static void failed(ReadFault fault, const char* call, const char* key, uint32_t keys, int32_t status);
    /** Counts another failure of the call that failed last. */
    static void failedToo();
    /** Notes a failure of an earlier load that still stands, if there was one. */
    static void failedBefore(const ReadFailure& failure);
    /** What failed last on this thread; ReadFault::None where nothing did. */
    static ReadFailure latest();
    /** Notes where the log tells of the last failure. */
    static void place(const char* function, int line);

    /** Makes a call that is about one name or nothing (null), and notes it and its failure. */
    template <typename Call>
    static int32_t follow(const char* name, const char* key, Call call) {
        called();
        const int32_t result = CallWatch(name, key).done(call());
        if (result != 0) failed(ReadFault::CallFailed, name, key, 0, result);
        return result;
    }

  private:
    uint32_t _calls = 0;
    uint32_t _failures = 0;
    ReadFailure _first;
    ReadFailure _last;
    ReadTrace* const _outer;
};

}  // namespace datacache
