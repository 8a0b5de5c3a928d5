#pragma once

#include <functional>
#include <string>
#include <vector>

#include "common/AccessLock.h"
#include "datacache/CacheReader.h"
#include "datacache/DataCache.h"
#include "datacache/EvalSignal.h"
#include "datacache/event_text.h"
#include "tests/support/LogCapture.h"

/** The real library over whatever provides vexlib, without threads, and what it tells: its log and the host's
 * events, in order. */
class CacheRun {
  public:
    CacheRun() {
        log().take();
        told().clear();
    }
    ~CacheRun() { end(); }

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
        return told();
    }

    void end() {
        delete DataCache::instance;
        DataCache::instance = nullptr;
        datacache::takeEvaluationRequests();
        tell(nullptr);
    }

  private:
    static std::vector<std::string>& told() {
        static std::vector<std::string> lines;
        return lines;
    }
    static LogCapture& log() {
        static LogCapture capture;
        return capture;
    }
    static void tell(DataCacheEvent* event) {
        for (std::string& line : log().take()) told().push_back(std::move(line));
        if (event != nullptr) told().push_back("! " + datacache::eventText(*event));
    }
};
