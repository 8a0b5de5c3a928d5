#pragma once

#include "datacache/EvalSignal.h"

namespace datacache {

/** Why the evaluation thread goes on: one of them at least. */
struct Wake {
    bool requested = false;
    bool retryDue = false;    ///< the retry interval has passed since the wait began, or since the last retry
    bool refreshDue = false;  ///< the refresh interval has passed since the last refresh
};

/** Requests a pass of the evaluation thread. */
void wakeEvaluation() DC_EXCLUDES(eval_lock);

/** Requests the first pass, forgetting wake-ups that came before there was a thread. */
void startEvaluation() DC_EXCLUDES(eval_lock);

/**
 * Waits until a pass is requested and takes all requests that there are; or until the retry or the refresh is
 * due, where there is such an interval. For the evaluation thread, which is at work whenever it is not
 * in here.
 */
Wake awaitEvaluation() DC_EXCLUDES(eval_lock);

/** Seconds of the two intervals; 0, as at first, for none. Also for a wait that goes on. The refresh is next
 * due so long after this call. */
void setEvaluationRetry(uint32_t seconds) DC_EXCLUDES(eval_lock);
void setEvaluationRefresh(uint32_t seconds) DC_EXCLUDES(eval_lock);

/** Whether the evaluation thread waits and nothing was requested. */
bool evaluationIdle() DC_EXCLUDES(eval_lock);

/** Takes all requests, without waiting, and gives their number: for a host that runs the passes itself. */
int32_t takeEvaluationRequests() DC_EXCLUDES(eval_lock);

}  // namespace datacache
