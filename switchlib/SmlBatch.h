#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"
#include "vexlib/vexlib.h"

/**
 * How a loader reads the switch: add keys, read them in one batch, check, take the values as bounded text.
 *
 *     SmlBatch batch;
 *     const size_t fans = batch.add("Oper.Chassis.0.Fans");
 *     if (!batch.read(_handle)) return 0;
 *     int n = batch.number(fans);
 *
 * The records live on the heap, so a batch may be large on a small stack; who adds keys by a number from
 * outside caps that number first. A batch is a local object of one thread.
 */
class SmlBatch {
  public:
    /** Appends a key, cut at 255 characters. Returns the record's index. */
    size_t add(const char* format, ...) DC_PRINTF(2, 3);
    /** Empties the batch, to use it again for other keys. */
    void clear() { _records.clear(); }

    /** Sends the batch. False when the call failed; single records may still have failed (see errors()). */
    bool get(uint32_t handle);
    /** Whether any record failed. Logs the first one, so ask once. */
    bool errors() const;
    /** Sends the batch: true when the call and every record succeeded. */
    bool read(uint32_t handle) { return get(handle) && !errors(); }

    uint32_t status(size_t index) const { return _records[index].status; }
    /** The value up to its terminator, at most the 256 bytes of the field. */
    std::string text(size_t index) const;
    /** The value as a decimal number, 0 where it is none. */
    int32_t number(size_t index) const;
    bool isTrue(size_t index) const { return text(index) == "True"; }

  private:
    std::vector<vex_smlrequest_s> _records;
};
