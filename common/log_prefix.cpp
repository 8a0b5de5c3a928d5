#include "common/log_prefix.h"

#include <algorithm>
#include <cstdio>

namespace datacache {

std::string_view LogSecond::text(std::time_t second) {
    if (second != _second || _length == 0) {
        tzset();  // localtime_r() alone need not notice that the time zone was changed
        std::tm local{};
        const bool known = localtime_r(&second, &local) != nullptr;
        _length = known ? std::strftime(_text, sizeof _text, "%m/%d %H:%M:%S", &local) : 0;
        _second = second;
    }
    return {_text, _length};
}

void LogIds::set(pid_t process, pid_t thread) {
    const int length =
        std::snprintf(_text, sizeof _text, "%d/%d ", static_cast<int>(process), static_cast<int>(thread));
    _length = static_cast<std::size_t>(length);
}

std::size_t putLogPrefix(char* line, std::string_view second, long milliseconds, std::string_view ids) {
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

}  // namespace datacache
