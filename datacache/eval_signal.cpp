#include "datacache/EvalSignal.h"

pthread_mutex_t eval_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t eval_cv = PTHREAD_COND_INITIALIZER;
int32_t eval_ready = 0;

namespace {

class DC_SCOPED_CAPABILITY EvalGuard {
  public:
    EvalGuard() DC_ACQUIRE(eval_lock) { pthread_mutex_lock(&eval_mutex); }
    ~EvalGuard() DC_RELEASE() { pthread_mutex_unlock(&eval_mutex); }
    EvalGuard(const EvalGuard&) = delete;
    EvalGuard& operator=(const EvalGuard&) = delete;
};

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

void awaitEvaluation() {
    const EvalGuard guard;
    while (eval_ready == 0) pthread_cond_wait(&eval_cv, &eval_mutex);
    eval_ready = 0;
}
