#include <algorithm>

#include "datacache/HealthMonitor.h"

namespace datacache {

namespace {

Duration since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - begin);
}

uint32_t excess(int64_t beyond) {
    return static_cast<uint32_t>(std::max<int64_t>(beyond, 0));
}

}  // namespace

const char* cacheAreaName(CacheArea area) {
    static constexpr const char* kNames[kCacheAreas] = {"switch",   "chassis", "blades", "ports",
                                                        "accounts", "fabric",  "zoning"};
    const auto index = static_cast<size_t>(area);
    return index < kCacheAreas ? kNames[index] : "unknown";
}

HealthMonitor& HealthMonitor::instance() {
    static HealthMonitor monitor;
    return monitor;
}

Health HealthMonitor::copy() {
    const Lock guard(_mutex);
    return _health;
}

void HealthMonitor::reset() {
    const Lock guard(_mutex);
    _health = {};
    for (AreaHealth& area : _health.areas) area.marked = true;  // as everything is at first
}

void HealthMonitor::connecting(int32_t result, bool connected) {
    const Lock guard(_mutex);
    ++_health.connection.attempts;
    _health.connection.lastResult = result;
    _health.connection.connected = connected;
}

void HealthMonitor::mark(CacheArea area) {
    const Lock guard(_mutex);
    _health[area].marked = true;
    _health[area].upToDate = false;
}

void HealthMonitor::beginPass() {
    const Lock guard(_mutex);
    _health.passes.running = true;
    _health.passes.runningSince = std::chrono::system_clock::now();
    _passBegan = Clock::now();
    _passCalls = 0;
    _slowest = {};
    _slowestArea = CacheArea::Switch;
}

void HealthMonitor::endPass() {
    const Lock guard(_mutex);
    PassHealth& passes = _health.passes;
    ++passes.count;
    passes.running = false;
    passes.inArea = false;
    passes.last = since(_passBegan);
    passes.lastCalls = _passCalls;
    if (passes.last < passes.longest) return;
    passes.longest = passes.last;
    passes.longestArea = _slowestArea;
    passes.longestCalls = _passCalls;
}

void HealthMonitor::received() {
    const Lock guard(_mutex);
    ++_health.events.received;
}

void HealthMonitor::dropped() {
    const Lock guard(_mutex);
    ++_health.events.dropped;
}

void HealthMonitor::accepted() {
    const Lock guard(_mutex);
    ++_health.events.queued;
}

void HealthMonitor::queued() {
    const Lock guard(_mutex);
    EventHealth& events = _health.events;
    ++events.waiting;
    events.mostWaiting = std::max(events.mostWaiting, events.waiting);
}

void HealthMonitor::dispatched() {
    const Lock guard(_mutex);
    if (_health.events.waiting != 0) --_health.events.waiting;
}

bool HealthMonitor::noEventWaits() {
    const Lock guard(_mutex);
    const EventHealth& events = _health.events;
    return events.waiting == 0 && events.received == events.queued + events.dropped;
}

bool HealthMonitor::anyAreaStale() {
    const Lock guard(_mutex);
    for (size_t i = 0; i < kCacheAreas; ++i) {
        if (i != static_cast<size_t>(CacheArea::Accounts) && !_health.areas[i].upToDate) return true;
    }
    return false;
}

void HealthMonitor::domainList(bool full) {
    const Lock guard(_mutex);
    _health.capacity.domainListFull = full;
    _health.capacity.portEntriesBeyond = 0;  // which the rest of the load counts anew
    _health.capacity.switchesGivenUp = 0;
}

void HealthMonitor::portEntriesBeyond(uint32_t entries) {
    const Lock guard(_mutex);
    _health.capacity.portEntriesBeyond += entries;
}

void HealthMonitor::switchGivenUp() {
    const Lock guard(_mutex);
    ++_health.capacity.switchesGivenUp;
}

void HealthMonitor::localPorts(int64_t beyond) {
    const Lock guard(_mutex);
    _health.capacity.localPortsBeyond = excess(beyond);
}

void HealthMonitor::slots(int64_t beyond) {
    const Lock guard(_mutex);
    _health.capacity.slotsBeyond = excess(beyond);
}

void HealthMonitor::beginArea(CacheArea area, bool inPass) {
    if (!inPass) return;
    const Lock guard(_mutex);
    _health.passes.inArea = true;
    _health.passes.area = area;
}

void HealthMonitor::endArea(CacheArea area, bool inPass, bool good, Duration took, const ReadTrace& trace) {
    const Lock guard(_mutex);
    if (inPass) {
        _health.passes.inArea = false;
        _passCalls += trace.calls();
        if (took >= _slowest) {
            _slowest = took;
            _slowestArea = area;
        }
    }
    AreaHealth& record = _health[area];
    ++record.reads;
    // A mark that came while the area was read goes with it, as the cache's own does.
    record.marked = !good;
    record.upToDate = good;
    if (good) {
        record.lastGoodRead = std::chrono::system_clock::now();
        record.failuresInARow = 0;
        record.gaps = trace.failures();
        record.firstGap = trace.first();
    } else {
        ++record.failures;
        ++record.failuresInARow;
        record.lastFailure = trace.last();
    }
}

AreaRead::AreaRead(CacheArea area, bool inPass) : _area(area), _inPass(inPass) {
    HealthMonitor::instance().beginArea(area, inPass);
}

AreaRead::~AreaRead() {
    if (!_done) ReadTrace::failed(ReadFault::Exception, "", "", 0, 0);
    HealthMonitor::instance().endArea(_area, _inPass, _good, since(_began), _trace);
}

bool AreaRead::done(bool good) {
    _done = true;
    _good = good;
    return good;
}

}  // namespace datacache
