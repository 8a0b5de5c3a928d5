#pragma once

#include <cstdarg>
#include <cstddef>
#include <string_view>

#include "common/export.h"
#include "common/log_hooks.h"
#include "common/log_prefix.h"
#include "common/thread_annotations.h"

namespace datacache {

/**
 * Writes log lines to a main file, rotated every 1000 lines through five generations, and to a critical
 * file.
 *
 * Files are opened at the first line, and again at each following line for as long as the main file cannot be
 * opened; a critical file that alone cannot be opened is tried again at the next rotation. A symbolic link at
 * either path counts as a file that cannot be opened: the folder is open to everybody. The one line buffer
 * lives in the object, because a logging thread may have little stack; so every call needs the log mutex. The
 * process's own writer is never destroyed, since threads may log while the process ends: hence no destructor;
 * an object that goes away earlier is closed by closeFiles().
 */
class LogWriter {
  public:
    /** Longest line in bytes, prefix included; the rest of the buffer is its terminator. */
    static constexpr std::size_t kLongestLine = 2055;
    /** Lines that the main file takes before the next one rotates it. */
    static constexpr unsigned int kLinesPerFile = 1000;
    /** Number of the oldest generation of the main file that is kept. */
    static constexpr int kGenerations = 5;

    /**
     * The paths are not copied and outlive the object; the main path has at most 97 characters. Null means
     * no such file. Never a device: a rotation renames whatever the main path names.
     */
    constexpr LogWriter(const char* mainPath, const char* criticalPath)
        : _mainPath(mainPath), _criticalPath(criticalPath) {}

    /**
     * Formats one line behind its prefix, with `ids` as "PID/TID ", and writes it to the files that `level`
     * asks for. Keeps errno, and shows the caller's to the format.
     */
    void write(unsigned int level, std::string_view ids, const char* format, std::va_list arguments)
        DC_PRINTF(4, 0) DC_REQUIRES(logLock);

    /** Closes the files, which the next line opens, and so empties, again. */
    void closeFiles() DC_REQUIRES(logLock);

    /** Goes on at other paths, with a new count of lines. */
    void redirect(const char* mainPath, const char* criticalPath) DC_REQUIRES(logLock);

    /** Sets or, with null, takes away the observer. */
    void observe(LogObserver observer, void* context) DC_REQUIRES(logLock);

  private:
    void openFiles() DC_REQUIRES(logLock);
    void rotate() DC_REQUIRES(logLock);
    void shiftGenerations() DC_REQUIRES(logLock);

    int _main = -1;
    int _critical = -1;
    unsigned int _lines = 0;
    const char* _mainPath;
    const char* _criticalPath;
    LogObserver _observer = nullptr;
    void* _observerContext = nullptr;
    LogSecond _second;
    char _line[kLongestLine + 1] = {};
};

}  // namespace datacache
