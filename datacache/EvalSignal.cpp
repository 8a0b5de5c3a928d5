#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "common/changes.h"
#include "datacache/wake_ups.h"

pthread_mutex_t eval_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t eval_cv = PTHREAD_COND_INITIALIZER;
int32_t eval_ready = 0;

namespace datacache {

namespace {

constexpr int64_t kSecond = 1'000'000'000;

/** Nanoseconds of the monotonic clock, which nobody sets; a host's clock jumps when it first hears of the
 * time.
 */
int64_t monotonicTime() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

/** An interval and what it is counted from. */
struct Interval {
    uint32_t seconds = 0;  ///< 0 for none
    int64_t begin = 0;

    bool due(int64_t time) const { return seconds != 0 && time >= end(); }
    int64_t end() const { return begin + seconds * kSecond; }
};

Interval retry DC_GUARDED_BY(eval_lock);
/** The retry interval from the last retry on: requests that keep coming must not put a retry off for ever. */
Interval overdue DC_GUARDED_BY(eval_lock);
Interval refresh DC_GUARDED_BY(eval_lock);
/** The evaluation thread waits. At first it does not: it has not begun. */
bool waiting DC_GUARDED_BY(eval_lock) = false;

class DC_SCOPED_CAPABILITY EvalGuard {
  public:
    EvalGuard() DC_ACQUIRE(eval_lock) { pthread_mutex_lock(&eval_mutex); }
    ~EvalGuard() DC_RELEASE() { pthread_mutex_unlock(&eval_mutex); }
    EvalGuard(const EvalGuard&) = delete;
    EvalGuard& operator=(const EvalGuard&) = delete;
};

/** Waits for a signal, or until the next interval is due. */
void waitForSignal() DC_REQUIRES(eval_lock) {
    if (retry.seconds == 0 && refresh.seconds == 0) {
        pthread_cond_wait(&eval_cv, &eval_mutex);
        return;
    }
    const int64_t end = retry.seconds == 0     ? refresh.end()
                        : refresh.seconds == 0 ? retry.end()
                                               : std::min(retry.end(), refresh.end());
    timespec due{};
    due.tv_sec = static_cast<time_t>(end / kSecond);
    due.tv_nsec = static_cast<long>(end % kSecond);
    pthread_cond_clockwait(&eval_cv, &eval_mutex, CLOCK_MONOTONIC, &due);
}

void set(Interval& interval, uint32_t seconds) DC_REQUIRES(eval_lock) {
    constexpr uint32_t kLongest = 0x3FFFFFFF;  // 34 years, which also a clock of 32 bits can add
    interval.seconds = std::min(seconds, kLongest);
    pthread_cond_signal(&eval_cv);
}

}  // namespace

void wakeEvaluation() {
    const EvalGuard guard;
    ++eval_ready;
    pthread_cond_signal(&eval_cv);
}

void startEvaluation() {
    const EvalGuard guard;
    eval_ready = 1;
}

Wake awaitEvaluation() {
    {
        const EvalGuard guard;
        waiting = true;
        retry.begin = monotonicTime();
    }
    announceChange();
    const EvalGuard guard;
    Wake wake;
    for (;;) {
        const int64_t time = monotonicTime();
        wake = {eval_ready != 0, retry.due(time), refresh.due(time)};
        wake.retryDue = wake.retryDue || (wake.requested && overdue.due(time));
        if (wake.requested || wake.retryDue || wake.refreshDue) break;
        waitForSignal();
    }
    if (wake.retryDue) overdue.begin = monotonicTime();
    if (wake.refreshDue) refresh.begin = monotonicTime();
    waiting = false;
    eval_ready = 0;
    return wake;
}

void setEvaluationRetry(uint32_t seconds) {
    const EvalGuard guard;
    overdue.begin = monotonicTime();
    set(overdue, seconds);
    set(retry, seconds);
}

void setEvaluationRefresh(uint32_t seconds) {
    const EvalGuard guard;
    refresh.begin = monotonicTime();
    set(refresh, seconds);
}

bool evaluationIdle() {
    const EvalGuard guard;
    return waiting && eval_ready == 0;
}

int32_t takeEvaluationRequests() {
    const EvalGuard guard;
    return std::exchange(eval_ready, 0);
}

}  // namespace datacache
