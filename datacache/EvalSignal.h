#pragma once

#include <pthread.h>

#include <cstdint>

#include "common/export.h"
#include "common/thread_annotations.h"

/**
 * How the evaluation thread is woken: a counter of wake-ups under a mutex and a condition variable. Any
 * number of wake-ups that arrive before the thread runs gives one pass. Nothing is called with the mutex
 * held.
 */
extern DC_EXPORT pthread_mutex_t eval_mutex;
extern DC_EXPORT pthread_cond_t eval_cv;

/** Stands for `eval_mutex` in thread-safety annotations. */
extern LockToken eval_lock;

/** Wake-ups requested since the evaluation thread last woke. */
extern DC_EXPORT int32_t eval_ready DC_GUARDED_BY(eval_lock);
