#include <pthread.h>
#include <unistd.h>

#include "datacache/AreaPrints.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/registration.h"
#include "datacache/wake_ups.h"

using namespace datacache;

DataCache* DataCache::instance = nullptr;

DataCache::DataCache() : _prints(std::make_unique<AreaPrints>()) {}

DataCache::~DataCache() {
    cim_log(CIM_LOG_TRACE, "DCACHE: ~DataCache()\n");
    for (vex_event_s* event : _eventQueue) delete event;
}

bool DataCache::init() {
    pthread_mutexattr_init(&access_mutex_attr);
    pthread_mutexattr_settype(&access_mutex_attr, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&access_mutex, &access_mutex_attr);

    if (instance == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Creating a new datacache()\n");
        instance = new DataCache();
        HealthMonitor::instance().reset();
    }
    instance->startVexlib();
    cim_log(CIM_LOG_TRACE, instance->_readLimits() ? "DCACHE: Zoning limits loaded\n"
                                                   : "DCACHE: Zoning limits failed to load\n");
    return true;
}

bool DataCache::_readLimits() {
    const ReadTrace trace;
    const bool read = _zoningCache.initZoningLimits();
    HealthMonitor::instance().limits(read, trace.last());
    return read;
}

bool DataCache::start(DataCacheCallback callback) {
    instance->startEventMonitor(callback);
    instance->startEvalThread();
    return true;
}

DataCache* DataCache::getInstance() DC_NO_THREAD_SAFETY_ANALYSIS {
    lockAccess();
    return instance;
}

ZoningCache& DataCache::zoningCache() {
    return _zoningCache;
}

void DataCache::releaseInstance() DC_NO_THREAD_SAFETY_ANALYSIS {
    unlockAccess();
}

bool DataCache::startVexlib() {
    constexpr unsigned kRetrySeconds = 10;
    cim_log(CIM_LOG_TRACE, "DCACHE: attempting vexlib connection\n");
    while (_handle == 0) {
        const int32_t result =
            CallWatch("vex_IPConnect").done(vex_IPConnect("localhost", "cim", "", &_handle));
        HealthMonitor::instance().connecting(result, result == 0 && _handle != 0);
        if (result == 0) continue;  // a success without a handle is tried again at once
        cim_log(CIM_LOG_CRITICAL, "CRIT:%s:%s[%d] vexlib connection failed: %d : retrying in 10 seconds...\n",
                "DataCache", "startVexlib", 479, result);
        // A signal that the host handles ends a sleep early; the rest of it follows.
        for (unsigned left = kRetrySeconds; left > 0;) left = sleep(left);
        _handle = 0;
    }
    hSwitch = _handle;
    cim_log(CIM_LOG_TRACE, "DCACHE: vexlib connection established\n");
    return true;
}

bool DataCache::startEvalThread() {
    constexpr size_t kStackBytes = 0x20000;
    cim_log(CIM_LOG_TRACE, "DCACHE: (DataCache) creating EVAL thread\n");
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (pthread_attr_setstacksize(&attributes, kStackBytes) != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: pthread_attr_setstacksize failed\n");
        pthread_attr_destroy(&attributes);
        HealthMonitor::instance().thread(false);
        return false;
    }
    pthread_t thread;
    const bool created = pthread_create(&thread, &attributes, evalThread, nullptr) == 0;
    pthread_attr_destroy(&attributes);
    HealthMonitor::instance().thread(created);
    if (!created) cim_log(CIM_LOG_TRACE, "DCACHE: Thread creation failed\n");
    return created;
}

void* DataCache::evalThread(void*) {
    cim_log(CIM_LOG_TRACE, "DCACHE: (EVAL) starting\n");
    startEvaluation();
    for (;;) {
        const Wake wake = awaitEvaluation();
        const bool mend = wake.retryDue && instance->_prepareRetry();
        if (!wake.requested && !wake.refreshDue && !mend) continue;
        cim_log(CIM_LOG_TRACE, "DCACHE: (EVAL) awake\n");
        const AccessGuard guard;
        if (wake.refreshDue) instance->_markAll({MarkCause::Refresh});
        if (!instance->evaluateCaches())
            cim_log(CIM_LOG_TRACE, "DCACHE: (EVAL) Cache update failed or incomplete\n");
    }
}

bool DataCache::_prepareRetry() {
    HealthMonitor& health = HealthMonitor::instance();
    const bool registered = registerRefused(_handle);
    if (health.limitsMissing()) _readLimits();
    const AccessGuard guard;
    // The events of these codes were missed until now.
    if (registered) _markAll({MarkCause::Retry});
    const bool gap = _zoningCache._wantMissingActive();
    if (gap) _markArea(CacheArea::Zoning, {MarkCause::Retry});
    // An event still waits when its dispatch threw.
    return registered || gap || health.anyAreaStale() || !health.noEventWaits();
}
