#include "common/LogWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "common/cim_log.h"

namespace datacache {

namespace {

static_assert(kLogPrefixRoom < LogWriter::kLongestLine, "the prefix leaves room for a message");

void setCloseOnExec(int file) {
    const int flags = fcntl(file, F_GETFD);
    if (flags != -1 && (flags & FD_CLOEXEC) != 0) return;
    if (fcntl(file, F_SETFD, FD_CLOEXEC) == -1) syslog(LOG_INFO, "fcntl failed, errno = %d\n", errno);
}

int openEmptied(const char* path) {
    if (path == nullptr) return -1;
    // Never through a link that somebody else left there, nor waiting for the reader of a FIFO.
    const int flags = O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    int file = -1;
    do {
        file = open(path, flags, 0666);
    } while (file == -1 && errno == EINTR);
    if (file != -1) setCloseOnExec(file);
    return file;
}

void closeFile(int& file) {
    if (file != -1) close(file);
    file = -1;
}

/** Writes it all unless there is an error, which is ignored: there is nowhere to report it. */
void writeWhole(int file, const char* text, std::size_t length) {
    while (length > 0) {
        const ssize_t written = ::write(file, text, length);
        if (written == -1 && errno == EINTR) continue;
        if (written <= 0) return;
        text += written;
        length -= static_cast<std::size_t>(written);
    }
}

/** The name of one generation of a file. */
class GenerationName {
  public:
    GenerationName(const char* path, int generation) {
        std::snprintf(_name, sizeof _name, "%s.%d", path, generation);
    }
    const char* c_str() const { return _name; }

  private:
    char _name[100];
};

}  // namespace

void LogWriter::write(unsigned int level, std::string_view ids, const char* format, std::va_list arguments) {
    const int callersErrno = errno;
    timeval now{};
    gettimeofday(&now, nullptr);
    const std::size_t message = putLogPrefix(_line, _second.text(now.tv_sec), now.tv_usec / 1000, ids);
    errno = callersErrno;  // for %m
    const int formatted = std::vsnprintf(_line + message, sizeof _line - message, format, arguments);
    // A message that cannot be formatted leaves the prefix alone on the line.
    const std::size_t wanted = message + static_cast<std::size_t>(std::max(formatted, 0));
    const std::size_t length = std::min(wanted, kLongestLine);
    _line[length] = '\0';

    // Not for the critical file alone: anybody can keep that one from opening, and each try changes the umask
    // of the whole process for a moment.
    if (_main == -1) openFiles();
    // Before the rotation, which empties the critical file: a critical line that rotates stays in the main
    // file only.
    if ((level & CIM_LOG_CRITICAL) != 0 && _critical != -1) writeWhole(_critical, _line, length);
    if (_lines == kLinesPerFile) {
        _lines = 0;  // Required: the line that rotates is not counted, so every later file takes 1001.
        rotate();
    } else {
        ++_lines;
    }
    if (_main != -1) writeWhole(_main, _line, length);
    if (_observer != nullptr) _observer(_observerContext, level, _line, length, message);
    errno = callersErrno;
}

void LogWriter::closeFiles() {
    closeFile(_main);
    closeFile(_critical);
}

void LogWriter::redirect(const char* mainPath, const char* criticalPath) {
    closeFiles();
    _mainPath = mainPath;
    _criticalPath = criticalPath;
    _lines = 0;
}

void LogWriter::observe(LogObserver observer, void* context) {
    _observer = observer;
    _observerContext = context;
}

void LogWriter::openFiles() {
    const mode_t previous = umask(0);
    if (_main == -1) _main = openEmptied(_mainPath);
    if (_critical == -1) _critical = openEmptied(_criticalPath);
    umask(previous);
}

void LogWriter::rotate() {
    closeFiles();
    if (_mainPath != nullptr) shiftGenerations();
    openFiles();  // Required: a rotation empties the critical file too.
}

void LogWriter::shiftGenerations() {
    unlink(GenerationName(_mainPath, kGenerations).c_str());
    for (int generation = kGenerations; generation > 1; --generation) {
        std::rename(GenerationName(_mainPath, generation - 1).c_str(),
                    GenerationName(_mainPath, generation).c_str());
    }
    std::rename(_mainPath, GenerationName(_mainPath, 1).c_str());
}

}  // namespace datacache
