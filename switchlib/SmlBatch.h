#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "common/export.h"
#include "switchlib/ReadFailure.h"
#include "vexlib/vexlib.h"

namespace datacache {

/**
 * How a loader reads the switch: add keys, read them in one batch, check, take the values as bounded text.
 *
 *     SmlBatch batch;
 *     const size_t fans = batch.add("Oper.Chassis.0.Fans");
 *     if (!batch.read(_handle)) return 0;
 *     int n = batch.number(fans);
 *
 * The records live on the heap, so a batch may be large on a small stack; who adds keys by a number from
 * outside caps that number first. A batch is a local object of one thread. What fails is noted in the
 * thread's ReadTrace.
 */
class SmlBatch {
  public:
    /** Makes room for `expected` keys at once, by default for as many as most batches have; more find room as
     * well. */
    explicit SmlBatch(size_t expected = 8) { _records.reserve(expected); }

    /** Appends a key, cut at 255 characters. Returns the record's index. */
    size_t add(const char* format, ...) DC_PRINTF(2, 3);
    /** Empties the batch, to use it again for other keys; the room stays. */
    void clear() { _records.clear(); }

    /**
     * Sends the batch. False when the call failed; single records may still have failed (see errors()). A
     * record with the status `expected` has not failed: it is how the switch ends a list.
     */
    bool get(uint32_t handle, uint32_t expected = 0);
    /** Whether any record failed. Logs the first one, so ask once. */
    bool errors() const;
    /** Sends the batch: true when the call and every record succeeded. */
    bool read(uint32_t handle) { return get(handle) && !errors(); }

    uint32_t status(size_t index) const { return _records[index].status; }
    /** The value up to its terminator, at most the 256 bytes of the field; good until the batch changes. */
    std::string_view text(size_t index) const;
    /** The value as a decimal number, 0 where it is none. */
    int32_t number(size_t index) const;
    bool isTrue(size_t index) const { return text(index) == "True"; }

    /** Notes what is wrong with the answer of a record that did not fail. */
    void note(ReadFault fault, size_t index) const;

  private:
    std::vector<vex_smlrequest_s> _records;
};

}  // namespace datacache
