#pragma once

#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <string_view>

namespace datacache {

/**
 * The start of a log line, "MM/DD hh:mm:ss.mmm PID/TID ", put together from pieces that seldom change, so
 * that a line costs two short copies instead of a time conversion and three formats.
 */

/** Room that putLogPrefix() may use: 14 bytes of date and time, 5 of milliseconds, at most 24 of numbers.
 */
constexpr std::size_t kLogPrefixRoom = 64;

/** Local date and time of a second as "MM/DD hh:mm:ss", formatted anew only when another second is asked
 * for. */
class LogSecond {
  public:
    /** Valid until the next call; empty where the local time cannot be obtained. */
    std::string_view text(std::time_t second);

  private:
    std::time_t _second = 0;
    std::size_t _length = 0;
    char _text[16] = {};
};

/** Process and thread number as "PID/TID ". */
class LogIds {
  public:
    void set(pid_t process, pid_t thread);
    void clear() { _length = 0; }
    /** Empty until set() and after clear(). */
    std::string_view text() const { return {_text, _length}; }

  private:
    std::size_t _length = 0;
    char _text[25] = {};
};

/**
 * Puts the prefix at `line`, which has kLogPrefixRoom bytes, and returns its length; no terminator is
 * written. An empty `second` (local time unknown) leaves out the milliseconds (0 to 999) as well.
 */
std::size_t putLogPrefix(char* line, std::string_view second, long milliseconds, std::string_view ids);

}  // namespace datacache
