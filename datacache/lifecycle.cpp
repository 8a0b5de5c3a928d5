#include <pthread.h>
#include <unistd.h>

#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"

using namespace datacache;

namespace {

/** Neither an area that is not up to date nor an event, such as one whose dispatch was left by an exception.
 */
bool nothingToMend() {
    HealthMonitor& health = HealthMonitor::instance();
    return !health.anyAreaStale() && health.noEventWaits();
}

}  // namespace

DataCache* DataCache::instance = nullptr;

DataCache::DataCache() {
    _zoningCache._requestReload = [this] { reloadZoning(); };
}

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
    cim_log(CIM_LOG_TRACE, instance->_zoningCache.initZoningLimits()
                               ? "DCACHE: Zoning limits loaded\n"
                               : "DCACHE: Zoning limits failed to load\n");
    return true;
}

bool DataCache::start(DataCacheCallback callback) {
    instance->startEventMonitor(callback);
    instance->startEvalThread();
    return true;
}

DataCache* DataCache::getInstance() DC_NO_THREAD_SAFETY_ANALYSIS {
    pthread_mutex_lock(&access_mutex);
    return instance;
}

void DataCache::releaseInstance() DC_NO_THREAD_SAFETY_ANALYSIS {
    pthread_mutex_unlock(&access_mutex);
}

bool DataCache::startVexlib() {
    constexpr unsigned kRetrySeconds = 10;
    cim_log(CIM_LOG_TRACE, "DCACHE: attempting vexlib connection\n");
    while (_handle == 0) {
        const int32_t result = vex_IPConnect("localhost", "cim", "", &_handle);
        HealthMonitor::instance().connecting(result, result == 0 && _handle != 0);
        if (result == 0) continue;  // a success without a handle is tried again at once
        cim_log(CIM_LOG_CRITICAL, "CRIT:%s:%s[%d] vexlib connection failed: %d : retrying in 10 seconds...\n",
                "DataCache", "startVexlib", 479, result);
        sleep(kRetrySeconds);
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
        return false;
    }
    pthread_t thread;
    const bool created = pthread_create(&thread, &attributes, evalThread, nullptr) == 0;
    pthread_attr_destroy(&attributes);
    if (!created) cim_log(CIM_LOG_TRACE, "DCACHE: Thread creation failed\n");
    return created;
}

void* DataCache::evalThread(void*) {
    cim_log(CIM_LOG_TRACE, "DCACHE: (EVAL) starting\n");
    startEvaluation();
    for (;;) {
        if (awaitEvaluation() == Wake::RetryDue && nothingToMend()) continue;
        cim_log(CIM_LOG_TRACE, "DCACHE: (EVAL) awake\n");
        const AccessGuard guard;
        if (!instance->evaluateCaches())
            cim_log(CIM_LOG_TRACE, "DCACHE: (EVAL) Cache update failed or incomplete\n");
    }
}
