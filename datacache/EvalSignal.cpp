#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "datacache/EvalSignal.h"

pthread_mutex_t eval_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t eval_cv = PTHREAD_COND_INITIALIZER;
int32_t eval_ready = 0;

namespace datacache {

namespace {

uint32_t retrySeconds DC_GUARDED_BY(eval_lock) = 0;
/** The evaluation thread waits. At first it does not: it has not begun. */
bool waiting DC_GUARDED_BY(eval_lock) = false;

class DC_SCOPED_CAPABILITY EvalGuard {
  public:
    EvalGuard() DC_ACQUIRE(eval_lock) { pthread_mutex_lock(&eval_mutex); }
    ~EvalGuard() DC_RELEASE() { pthread_mutex_unlock(&eval_mutex); }
    EvalGuard(const EvalGuard&) = delete;
    EvalGuard& operator=(const EvalGuard&) = delete;
};

/** Waits for a signal, or until the retry is due, counted from `begin`: then false. */
bool waitForSignal(const timespec& begin) DC_REQUIRES(eval_lock) {
    if (retrySeconds == 0) return pthread_cond_wait(&eval_cv, &eval_mutex) == 0;
    timespec due = begin;
    due.tv_sec += static_cast<time_t>(retrySeconds);
    // On the clock that nobody sets, as a host's clock jumps when it first hears of the time.
    return pthread_cond_clockwait(&eval_cv, &eval_mutex, CLOCK_MONOTONIC, &due) != ETIMEDOUT;
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
    timespec begin{};
    clock_gettime(CLOCK_MONOTONIC, &begin);
    const EvalGuard guard;
    waiting = true;
    bool due = false;
    while (eval_ready == 0 && !due) due = !waitForSignal(begin);
    waiting = false;
    return std::exchange(eval_ready, 0) == 0 ? Wake::RetryDue : Wake::Requested;
}

void setEvaluationRetry(uint32_t seconds) {
    constexpr uint32_t kLongest = 0x3FFFFFFF;  // 34 years, which also a clock of 32 bits can add
    const EvalGuard guard;
    retrySeconds = std::min(seconds, kLongest);
    pthread_cond_signal(&eval_cv);
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
