#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "common/AccessLock.h"
#include "datacache/CacheReader.h"
#include "datacache/DataCache.h"
#include "datacache/EvalSignal.h"
#include "datacache/event_text.h"
#include "datacache/wake_ups.h"
#include "tests/support/LogCapture.h"

/** The real library over whatever provides vexlib, without threads, and what it tells: its log and the host's
 * events, in order. One at a time. */
class CacheRun {
  public:
    CacheRun() { _running = this; }
    ~CacheRun() {
        delete std::exchange(DataCache::instance, nullptr);
        datacache::takeEvaluationRequests();
    }

    /** What a host does at start-up, less the evaluation thread. */
    void start() {
        DataCache::init();
        DataCache::instance->startEventMonitor(tell);
        datacache::wakeEvaluation();
    }
    /** `deliver` returns whether it delivered notifications. */
    void settle(const std::function<bool()>& deliver) {
        for (;;) {
            const bool delivered = deliver();
            const bool woken = datacache::takeEvaluationRequests() != 0;
            if (!delivered && !woken) return;
            const datacache::AccessGuard guard;
            if (woken) DataCache::instance->evaluateCaches();
        }
    }
    void readAccounts() { datacache::CacheReader()->readAccounts(); }

    std::vector<std::string> story() {
        tell(nullptr);
        return _told;
    }

  private:
    static void tell(DataCacheEvent* event) {
        for (std::string& line : _running->_log.take()) _running->_told.push_back(std::move(line));
        if (event != nullptr) _running->_told.push_back("! " + datacache::eventText(*event));
    }

    inline static CacheRun* _running;
    LogCapture _log;
    std::vector<std::string> _told;
};
