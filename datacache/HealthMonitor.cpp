#include "datacache/HealthMonitor.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "common/access_holder.h"
#include "common/bounded_text.h"
#include "common/changes.h"

namespace datacache {

namespace {

Duration since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - begin);
}

WallTime now() {
    return std::chrono::system_clock::now();
}

uint32_t excess(int64_t beyond) {
    return static_cast<uint32_t>(std::max<int64_t>(beyond, 0));
}

bool holdsCode(const EventRegistrations& list, size_t count, int32_t code) {
    return std::any_of(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(count),
                       [&](const vex_eventreg_s& entry) { return entry.code == code; });
}

}  // namespace

HealthMonitor& HealthMonitor::instance() {
    static HealthMonitor monitor;
    return monitor;
}

Health HealthMonitor::copy() {
    const auto made = std::make_shared<HealthRecord>();
    {
        const Lock guard(_mutex);
        *made = _record;
    }
    made->time = now();
    made->pendingCalls = static_cast<uint32_t>(CallWatch::pending(made->calls.data(), made->calls.size()));
    const CallResults results = CallWatch::results();
    made->connection.failuresInARow = results.failuresInARow;
    made->connection.lastFailure = results.lastResult;
    made->connection.failingSince = results.failingSince;
    const bool inArea = std::exchange(made->lock.inArea, false);
    const std::chrono::milliseconds held = accessHeldFor();
    if (held.count() < 0) return Health(made);
    const LockUse::Now use = LockUse::now();
    made->lock.since = made->time - held;
    made->lock.holder = use.holder == LockHolder::Nobody ? LockHolder::Reader : use.holder;
    made->lock.inArea = inArea && (use.holder == LockHolder::Pass || use.holder == LockHolder::Accounts);
    copyBounded(made->lock.step, use.step);
    return Health(made);
}

void HealthMonitor::reset() {
    CallWatch::reset();
    const Lock guard(_mutex);
    _record = {};
    _silent = {};
    for (AreaHealth& area : _record.areas) {  // as everything is at first
        area.marked = true;
        area.markedBy = MarkCause::Start;
        area.markedSince = area.staleSince = now();
    }
}

void HealthMonitor::connecting(int32_t result, bool connected) {
    const Lock guard(_mutex);
    ++_record.connection.attempts;
    _record.connection.lastResult = result;
    _record.connection.connected = connected;
}

void HealthMonitor::registered(int32_t result, const EventRegistrations& list, size_t count) {
    const Lock guard(_mutex);
    RegistrationHealth& health = _record.registration;
    ++health.attempts;
    health.result = result;
    const uint32_t before = health.refused;
    const auto codes = health.refusedCodes;
    uint32_t refused = 0;
    for (size_t i = 0; i < before; ++i) {
        if (!holdsCode(list, count, codes[i])) health.refusedCodes[refused++] = codes[i];
    }
    for (size_t i = 0; i < count; ++i) {
        // A library that refuses the call as a whole has registered nothing, whatever it wrote.
        if (result != 0 || list[i].result != 0) health.refusedCodes[refused++] = list[i].code;
    }
    health.refused = refused;
}

size_t HealthMonitor::refusedCodes(EventRegistrations& list) {
    const Lock guard(_mutex);
    const RegistrationHealth& health = _record.registration;
    for (size_t i = 0; i < health.refused; ++i) list[i] = {health.refusedCodes[i], 0};
    return health.refused;
}

void HealthMonitor::limits(bool read, const ReadFailure& failure) {
    const Lock guard(_mutex);
    LimitsHealth& health = _record.limits;
    ++health.attempts;
    health.read = read;
    if (!read) health.failure = failure;
}

bool HealthMonitor::limitsMissing() {
    const Lock guard(_mutex);
    return !_record.limits.read;
}

void HealthMonitor::thread(bool made) {
    const Lock guard(_mutex);
    _record.passes.threadAsked = true;
    _record.passes.threadMade = made;
}

void HealthMonitor::mark(CacheArea area, MarkReason reason) {
    const Lock guard(_mutex);
    AreaHealth& record = _record[area];
    if (!record.marked) {
        record.markedSince = now();
        record.markedBy = reason.cause;
        record.markedByEvent = reason.event;
    }
    if (record.upToDate) record.staleSince = now();
    record.marked = true;
    record.upToDate = false;
    if (reason.cause != MarkCause::Session) return;
    EventMarks marks;  // what a session did is no surprise, even where the switch's event is lost
    marks.areas.set(static_cast<size_t>(area));
    _silent.announced(marks);
}

void HealthMonitor::beginPass() {
    const Lock guard(_mutex);
    if (_passesUnderWay++ != 0) return;
    _record.passes.running = true;
    _record.passes.runningSince = now();
    _silent.beginPass();
    _passBegan = Clock::now();
    _passCalls = 0;
    _slowest = {};
    _slowestArea = CacheArea::Switch;
}

void HealthMonitor::setReady(bool ready) {
    const Lock guard(_mutex);
    _record.passes.ready = ready;
}

void HealthMonitor::endPass() {
    const Lock guard(_mutex);
    PassHealth& passes = _record.passes;
    ++passes.count;
    if (--_passesUnderWay != 0) return;
    _silent.endPass(_record.areas);
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
    ++_record.events.received;
}

void HealthMonitor::dropped() {
    {
        const Lock guard(_mutex);
        ++_record.events.dropped;
    }
    announceChange();
}

void HealthMonitor::accepted() {
    const Lock guard(_mutex);
    ++_record.events.queued;
}

void HealthMonitor::queued() {
    const Lock guard(_mutex);
    EventHealth& events = _record.events;
    ++events.waiting;
    events.mostWaiting = std::max(events.mostWaiting, events.waiting);
}

void HealthMonitor::dispatched() {
    const Lock guard(_mutex);
    if (_record.events.waiting != 0) --_record.events.waiting;
}

void HealthMonitor::announced(const EventMarks& marks) {
    const Lock guard(_mutex);
    _silent.announced(marks);
}

void HealthMonitor::found(CacheArea area, const Difference& difference) {
    const Lock guard(_mutex);
    _silent.found(area, difference);
}

bool HealthMonitor::noEventWaits() {
    const Lock guard(_mutex);
    const EventHealth& events = _record.events;
    return events.waiting == 0 && events.received == events.queued + events.dropped;
}

bool HealthMonitor::anyAreaStale() {
    const Lock guard(_mutex);
    for (const CacheArea area : kAllCacheAreas) {
        if (area != CacheArea::Accounts && !_record[area].upToDate) return true;
    }
    return false;
}

bool HealthMonitor::ready() {
    const Lock guard(_mutex);
    return _record.passes.ready;
}

void HealthMonitor::domainList(bool full) {
    const Lock guard(_mutex);
    _record.capacity.domainListFull = full;
    _record.capacity.portEntriesBeyond = 0;  // which the rest of the load counts anew
    _record.capacity.switchesGivenUp = 0;
}

void HealthMonitor::portEntriesBeyond(uint32_t entries) {
    const Lock guard(_mutex);
    _record.capacity.portEntriesBeyond += entries;
}

void HealthMonitor::switchGivenUp() {
    const Lock guard(_mutex);
    ++_record.capacity.switchesGivenUp;
}

void HealthMonitor::localPorts(int64_t beyond) {
    const Lock guard(_mutex);
    _record.capacity.localPortsBeyond = excess(beyond);
}

void HealthMonitor::slots(int64_t beyond) {
    const Lock guard(_mutex);
    _record.capacity.slotsBeyond = excess(beyond);
}

void HealthMonitor::beginArea(CacheArea area, bool inPass) {
    const Lock guard(_mutex);
    _record.lock.inArea = true;
    _record.lock.area = area;
    if (!inPass) return;
    _record.passes.inArea = true;
    _record.passes.area = area;
}

void HealthMonitor::endArea(CacheArea area, bool inPass, bool good, Duration took, const ReadTrace& trace) {
    const Lock guard(_mutex);
    _record.lock.inArea = false;
    if (inPass) {
        _record.passes.inArea = false;
        _passCalls += trace.calls();
        if (took >= _slowest) {
            _slowest = took;
            _slowestArea = area;
        }
    }
    AreaHealth& record = _record[area];
    ++record.reads;
    if (good) {
        // A mark that came while the area was read goes with it, as the cache's own does.
        record.marked = false;
        record.markedSince = record.staleSince = {};
        record.markedBy = MarkCause::None;
        record.markedByEvent = 0;
        record.upToDate = true;
        record.lastGoodRead = now();
        record.failuresInARow = 0;
        record.gaps = trace.failures();
        record.firstGap = trace.first();
        return;
    }
    ++record.failures;
    ++record.failuresInARow;
    record.lastFailure = trace.last();
    if (record.upToDate) record.staleSince = now();
    record.upToDate = false;
    if (record.marked) return;
    record.marked = true;
    record.markedSince = now();
    record.markedBy = MarkCause::Retry;
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
