#include "recorder/RecordFile.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "recording/interface.h"

namespace vexrecord {

namespace {

constexpr size_t kLastRecordBytes = 160;  // room kept for the record that says that the limit is reached
constexpr size_t kSmallestLimit = 4096;
constexpr uint64_t kNanoseconds = 1'000'000'000;

uint64_t monotonic() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * kNanoseconds + static_cast<uint64_t>(now.tv_nsec);
}

const char* variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

void say(const std::string& what) {
    const std::string line = "libvexrecord: " + what + "\n";
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0) return;  // nobody to tell
}

#if defined(__powerpc__)
constexpr const char* kProcessor = "powerpc";
#elif defined(__x86_64__) || defined(__i386__)
constexpr const char* kProcessor = "x86";
#elif defined(__aarch64__) || defined(__arm__)
constexpr const char* kProcessor = "arm";
#else
constexpr const char* kProcessor = "other";
#endif

}  // namespace

RecordFile& RecordFile::instance() {
    static auto* const file = new RecordFile;
    return *file;
}

RecordFile::RecordFile() {
    _settings.path = variable("VEXRECORD_FILE");
    const std::string why = readSettings();
    if (_settings.path.empty()) return;
    _state = UNOPENED;
    if (!why.empty()) giveUp(why);
}

/** What the environment says beside the file; says what is wrong with it. */
std::string RecordFile::readSettings() {
    _settings.masked = std::strcmp(variable("VEXRECORD_MASK"), "1") == 0;
    const char* const limit = variable("VEXRECORD_LIMIT");
    char* end = nullptr;
    errno = 0;
    _settings.limit = std::strtoul(limit, &end, 10);
    if (*limit == '\0') return "";
    const bool number = errno == 0 && *limit >= '0' && *limit <= '9' && *end == '\0';
    if (number && (_settings.limit == 0 || _settings.limit >= kSmallestLimit)) return "";
    return "VEXRECORD_LIMIT is no number of bytes from " + std::to_string(kSmallestLimit);
}

std::string RecordFile::start(const std::string& path) {
    restart();
    _settings.path = path;
    std::string why = readSettings();
    if (!why.empty()) return why;
    const int error = make(path, O_TRUNC);
    return error == 0 ? "" : path + ": " + std::strerror(error);
}

/** Back to no file. */
void RecordFile::restart() {
    if (_file != -1) close(_file);
    _file = -1;
    _state = CLOSED;
    _next = 1;
    _lost = 0;
    _writers = 0;
    _full = _ended = false;
}

void RecordFile::giveUp(const std::string& why) {
    if (!why.empty()) say(why + "; nothing is recorded");
    _state = CLOSED;
}

/** Makes the file and writes its first line; 0, or the error number. */
int RecordFile::make(const std::string& path, int how) {
    // Never through a link that somebody else left there, nor waiting for the reader of a FIFO.
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | how;
    do {
        _file = ::open(path.c_str(), flags, 0600);
    } while (_file == -1 && errno == EINTR);
    if (_file == -1) return errno;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    _began = monotonic();
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    char when[32];
    strftime(when, sizeof when, "%Y-%m-%dT%H:%M:%S", &parts);
    constexpr bool little = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    char line[256];
    const int length = std::snprintf(
        line, sizeof line,
        "{\"recording\":\"vexlib\",\"version\":%d,\"platform\":\"linux-%s\",\"wordSize\":%d,"
        "\"byteOrder\":\"%s\",\"time\":\"%s.%06ldZ\",\"process\":%ld,\"masked\":%s}\n",
        recording::kFormatVersion, kProcessor, static_cast<int>(sizeof(void*) * 8), little ? "little" : "big",
        when, now.tv_nsec / 1000, static_cast<long>(getpid()), _settings.masked ? "true" : "false");
    _used = static_cast<size_t>(length);
    _state = OPEN;
    put({line, static_cast<size_t>(length)});
    return 0;
}

bool RecordFile::open() {
    for (;;) {
        State state = _state.load(std::memory_order_acquire);
        if (state == OPEN) return true;
        if (state == CLOSED) return false;
        if (state == UNOPENED && _state.compare_exchange_strong(state, OPENING)) return makeBeside();
        sched_yield();
    }
}

/** Makes the file that was named, or one beside it. */
bool RecordFile::makeBeside() {
    const std::string own = _settings.path + "." + std::to_string(getpid());
    int error = make(_child ? own : _settings.path, O_EXCL);
    if (error == EEXIST && !_child) error = make(own, O_EXCL);
    if (error != 0) giveUp((_child || error == EEXIST ? own : _settings.path) + ": " + std::strerror(error));
    return error == 0;
}

uint64_t RecordFile::clock() const {
    return monotonic() - _began;
}

bool RecordFile::reserve(size_t bytes) {
    if (_settings.limit == 0) return true;
    size_t used = _used;
    do {
        if (used + bytes + kLastRecordBytes > _settings.limit) {
            _full = true;
            return false;
        }
    } while (!_used.compare_exchange_weak(used, used + bytes));
    return true;
}

void RecordFile::write(std::string_view record) {
    ++_writers;
    if (!_full && reserve(record.size())) put(record);
    // The last thread to leave a full file writes the record that ends it, so that none comes after it.
    if (--_writers == 0 && _full && !_ended.exchange(true)) tellEnd();
}

void RecordFile::tellEnd() {
    char line[kLastRecordBytes];
    const int length = std::snprintf(
        line, sizeof line, "{\"n\":%llu,\"end\":\"limit\",\"limit\":%llu,\"lost\":%llu}\n",
        static_cast<unsigned long long>(next()), static_cast<unsigned long long>(_settings.limit),
        static_cast<unsigned long long>(_lost.load()));
    put({line, static_cast<size_t>(length)});
    _state = CLOSED;
}

/** One write(2), as a rule; a file system that is full ends the recording. */
void RecordFile::put(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(_file, text.data(), text.size());
        if (written == -1 && errno == EINTR) continue;
        if (written <= 0) {
            if (_state.exchange(CLOSED) != CLOSED) say(_settings.path + ": " + std::strerror(errno));
            return;
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
}

void RecordFile::forked() {
    const bool recorded = _file != -1;
    const bool wants = _state != CLOSED || _ended;
    restart();
    _child = _child || recorded;
    if (wants) _state = UNOPENED;
}

}  // namespace vexrecord
