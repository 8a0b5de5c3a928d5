#include "common/cim_log.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>

#include "common/LogWriter.h"
#include "common/log_hooks.h"

namespace {

constexpr unsigned int kLevelBits = 15;

pthread_mutex_t log_mutex = PTHREAD_MUTEX_INITIALIZER;
LogWriter process_log DC_GUARDED_BY(log_lock)("/tmp/cim.out", "/tmp/cim.crit.out");
/** The calling thread's numbers, asked for once a thread. */
thread_local LogIds thread_ids;

/** Holds the log mutex for a scope. */
class DC_SCOPED_CAPABILITY LogGuard {
  public:
    LogGuard() DC_ACQUIRE(log_lock) { pthread_mutex_lock(&log_mutex); }
    ~LogGuard() DC_RELEASE() { pthread_mutex_unlock(&log_mutex); }
    LogGuard(const LogGuard&) = delete;
    LogGuard& operator=(const LogGuard&) = delete;
};

std::string_view ids_of_thread() {
    if (thread_ids.text().empty()) thread_ids.set(getpid(), static_cast<pid_t>(syscall(SYS_gettid)));
    return thread_ids.text();
}

// A fork waits for the line that another thread is writing; otherwise the child would inherit the mutex
// locked by a thread that it does not have.
extern "C" {
static void before_fork() {
    pthread_mutex_lock(&log_mutex);
}
static void after_fork_in_parent() {
    pthread_mutex_unlock(&log_mutex);
}
static void after_fork_in_child() {
    thread_ids.clear();
    pthread_mutex_unlock(&log_mutex);
}
}

/** Set up while the library is loaded, when nothing can be forking yet. */
[[maybe_unused]] const int fork_handlers =
    pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);

/** One line of the process's log. */
DC_PRINTF(2, 0) void writeLog(unsigned int level, const char* format, std::va_list arguments) {
    if ((level & kLevelBits) == 0) return;
    const LogGuard guard;
    process_log.write(level, ids_of_thread(), format, arguments);
}

}  // namespace

void redirectLog(const char* main_path, const char* critical_path) {
    const LogGuard guard;
    process_log.redirect(main_path, critical_path);
}

void observeLog(LogObserver observer, void* context) {
    const LogGuard guard;
    process_log.observe(observer, context);
}

void cim_log(unsigned int level, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    writeLog(level, format, arguments);
    va_end(arguments);
}

void DataCacheLogger(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    writeLog(CIM_LOG_HOST, format, arguments);
    va_end(arguments);
}
