#include "common/cim_log.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>

#include "common/LogWriter.h"
#include "common/log_hooks.h"

using namespace datacache;

namespace {

constexpr unsigned int kLevelBits = 15;

pthread_mutex_t logMutex = PTHREAD_MUTEX_INITIALIZER;
LogWriter processLog DC_GUARDED_BY(logLock)("/tmp/cim.out", "/tmp/cim.crit.out");
/** The calling thread's numbers, asked for once a thread. */
thread_local LogIds threadIds;

/** Puts a cancellation of the calling thread off to the end of a scope. */
class NoCancellation {
  public:
    NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &_before); }
    ~NoCancellation() { pthread_setcancelstate(_before, nullptr); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

  private:
    int _before = PTHREAD_CANCEL_ENABLE;
};

/**
 * Holds the log mutex for a scope, in which the thread is not cancelled: files are opened and written there,
 * and a thread that ended in between would leave the process's umask changed and a line counted that was
 * never written.
 */
class DC_SCOPED_CAPABILITY LogGuard {
  public:
    LogGuard() DC_ACQUIRE(logLock) { pthread_mutex_lock(&logMutex); }
    ~LogGuard() DC_RELEASE() { pthread_mutex_unlock(&logMutex); }
    LogGuard(const LogGuard&) = delete;
    LogGuard& operator=(const LogGuard&) = delete;

  private:
    const NoCancellation _whole;  // made before the mutex is locked, gone after it is unlocked
};

std::string_view idsOfThread() {
    if (threadIds.text().empty()) threadIds.set(getpid(), static_cast<pid_t>(syscall(SYS_gettid)));
    return threadIds.text();
}

// A fork waits for the line that another thread is writing; otherwise the child would inherit the mutex
// locked by a thread that it does not have.
extern "C" {
static void beforeFork() {
    pthread_mutex_lock(&logMutex);
}
static void afterForkInParent() {
    pthread_mutex_unlock(&logMutex);
}
static void afterForkInChild() {
    threadIds.clear();
    pthread_mutex_unlock(&logMutex);
}
}

/** Set up while the library is loaded, when nothing can be forking yet. */
[[maybe_unused]] const int kForkHandlers = pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);

/** One line of the process's log. */
DC_PRINTF(2, 0) void writeLog(unsigned int level, const char* format, std::va_list arguments) {
    if ((level & kLevelBits) == 0) return;
    const LogGuard guard;
    processLog.write(level, idsOfThread(), format, arguments);
}

}  // namespace

void datacache::redirectLog(const char* mainPath, const char* criticalPath) {
    const LogGuard guard;
    processLog.redirect(mainPath, criticalPath);
}

void datacache::observeLog(LogObserver observer, void* context) {
    const LogGuard guard;
    processLog.observe(observer, context);
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
