#include "common/log_prefix.h"

#include <algorithm>
#include <cstdio>

std::string_view LogSecond::text(std::time_t second) {
    if (second != second_ || length_ == 0) {
        tzset();  // localtime_r() alone need not notice that the time zone was changed
        std::tm local{};
        const bool known = localtime_r(&second, &local) != nullptr;
        length_ = known ? std::strftime(text_, sizeof text_, "%m/%d %H:%M:%S", &local) : 0;
        second_ = second;
    }
    return {text_, length_};
}

void LogIds::set(pid_t process, pid_t thread) {
    const int length =
        std::snprintf(text_, sizeof text_, "%d/%d ", static_cast<int>(process), static_cast<int>(thread));
    length_ = static_cast<std::size_t>(length);
}

std::size_t put_log_prefix(char* line, std::string_view second, long milliseconds, std::string_view ids) {
    char* end = line;
    if (!second.empty()) {
        end = std::copy(second.begin(), second.end(), end);
        *end++ = '.';
        *end++ = static_cast<char>('0' + milliseconds / 100 % 10);
        *end++ = static_cast<char>('0' + milliseconds / 10 % 10);
        *end++ = static_cast<char>('0' + milliseconds % 10);
        *end++ = ' ';
    }
    end = std::copy(ids.begin(), ids.end(), end);
    return static_cast<std::size_t>(end - line);
}
