#pragma once

#include <cstddef>
#include <cstdint>

#include "common/export.h"

/** How bad a NORV_Except is: 0 is critical, any other value informational. */
enum except_enum : std::int32_t { EXCEPT_CRITICAL = 0, EXCEPT_INFORMATIONAL = 1 };

/**
 * The library's exception, thrown by value and caught by reference. It says where it was thrown and carries
 * its message, formatted when it was made. Whoever catches it logs it, by its severity, as
 *
 *     "Exception[CRIT]:%s:%s[%d] %s\n" with CIM_LOG_CRITICAL, or
 *     "Exception[INFO]:%s:%s[%d] %s\n" with CIM_LOG_TRACE,
 *
 * with file, function, line and message. The order and the widths of its fields are fixed.
 */
class DC_EXPORT NORV_Except {
  public:
    /**
     * `file_name` and `function_name` are kept as pointers, so they are literals or the like; the message
     * is cut at 2023 bytes.
     */
    NORV_Except(const char* file_name, const char* function_name, int line_number, except_enum level,
                const char* format, ...) DC_PRINTF(6, 7);
    NORV_Except(const NORV_Except&) = default;
    NORV_Except& operator=(const NORV_Except&) = default;
    ~NORV_Except() = default;

    const char* file;
    const char* function;
    std::int32_t line;
    char message[2024];
    except_enum severity;
};

static_assert(offsetof(NORV_Except, file) == 0);
static_assert(offsetof(NORV_Except, function) == sizeof(void*));
static_assert(offsetof(NORV_Except, line) == 2 * sizeof(void*));
static_assert(offsetof(NORV_Except, message) == 2 * sizeof(void*) + 4);
static_assert(offsetof(NORV_Except, severity) == 2 * sizeof(void*) + 2028);
static_assert(sizeof(NORV_Except) == 2 * sizeof(void*) + 2032, "2040 bytes on the platform of record");
