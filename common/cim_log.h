/*
 * The library's diagnostic log.
 *
 * Every line goes to /tmp/cim.out, which is rotated every 1000 lines into the generations /tmp/cim.out.1
 * (the newest) to /tmp/cim.out.5. Critical lines go to /tmp/cim.crit.out too, which is emptied at each
 * rotation and at the first line of the process. A line reads "MM/DD hh:mm:ss.mmm PID/TID MESSAGE" in local
 * time, TID being the kernel's thread number, and is cut at 2055 bytes.
 *
 * Both functions may be called from any thread and with any lock held, but not from a signal handler. They
 * report no error: a line that cannot be written is lost. errno is left as it was. A thread that is cancelled
 * while it logs ends after the line.
 */
#ifndef DC_COMMON_CIM_LOG_H
#define DC_COMMON_CIM_LOG_H

#include "common/export.h"
#include "common/text.h"

/** Log levels: flags, of which only the low four bits count. A level without any of those is discarded. */
enum {
    CIM_LOG_TRACE = 2,    /**< ordinary lines */
    CIM_LOG_CRITICAL = 4, /**< the one flag that sends a line to the critical file too */
    CIM_LOG_HOST = 8      /**< lines of the host */
};

DC_BEGIN_C

/** Writes one line. The format carries the line's "\n" itself: none is added. */
DC_EXPORT void cim_log(unsigned int level, const char* format, ...) DC_PRINTF(2, 3);

/** Writes one line of the host: cim_log() with the level CIM_LOG_HOST. */
DC_EXPORT void DataCacheLogger(const char* format, ...) DC_PRINTF(1, 2);

DC_END_C

#endif
