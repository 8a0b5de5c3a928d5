#include "common/NORV_Except.h"

#include <cstdarg>
#include <cstdio>

NORV_Except::NORV_Except(const char* file_name, const char* function_name, int line_number, except_enum level,
                         const char* format, ...)
    : file(file_name), function(function_name), line(line_number), message(), severity(level) {
    std::va_list arguments;
    va_start(arguments, format);
    if (std::vsnprintf(message, sizeof message, format, arguments) < 0) message[0] = '\0';
    va_end(arguments);
}
