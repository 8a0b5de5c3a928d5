#include "datacache/Health.h"

#include <cstdio>
#include <iterator>
#include <utility>

#include "datacache/HealthRecord.h"

namespace datacache {

namespace {

template <typename Enum, size_t Size>
const char* nameIn(const char* const (&names)[Size], Enum value) {
    const auto index = static_cast<size_t>(value);
    return index < Size ? names[index] : "unknown";
}

std::string hexadecimal(int32_t status) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(status));
    return text;
}

std::string counted(uint32_t number, const char* one, const char* many) {
    return std::to_string(number) + ' ' + (number == 1 ? one : many);
}

/** What is not well, said one at a time; with `wanted` 1 it stops at the first. */
class Complaints {
  public:
    explicit Complaints(size_t wanted) : _wanted(wanted) {}

    template <typename Words>
    void check(bool good, Words words) {
        if (!good && _told.size() < _wanted) _told.push_back(words());
    }
    std::vector<std::string> take() { return std::move(_told); }

  private:
    const size_t _wanted;
    std::vector<std::string> _told;
};

void checkConnection(Complaints& complaints, const HealthRecord& record) {
    const ConnectionHealth& connection = record.connection;
    complaints.check(connection.connected, [&] {
        return "the switch is not connected after " + counted(connection.attempts, "attempt", "attempts") +
               ", the last one answered " + hexadecimal(connection.lastResult);
    });
    complaints.check(!connection.connected || connection.failuresInARow == 0, [&] {
        return "the switch library refuses calls, " + std::to_string(connection.failuresInARow) +
               " in a row, the last one with " + hexadecimal(connection.lastFailure);
    });
    for (size_t i = 0; i < record.pendingCalls; ++i) {
        const PendingCall& call = record.calls[i];
        const auto age = std::chrono::duration_cast<std::chrono::seconds>(record.time - call.since);
        complaints.check(age < kSlowCall, [&] {
            return std::string(call.call) + (call.key[0] == '\0' ? "" : " of ") + call.key +
                   " has not returned for " + std::to_string(age.count()) + " s";
        });
    }
}

void checkFollowing(Complaints& complaints, const HealthRecord& record) {
    const RegistrationHealth& registration = record.registration;
    complaints.check(registration.attempts != 0, [] { return "no switch events were asked for"; });
    complaints.check(registration.refused == 0, [&] {
        std::string codes;
        for (size_t i = 0; i < registration.refused; ++i) {
            codes += (i == 0 ? " " : ", ") + std::to_string(registration.refusedCodes[i]);
        }
        return "the switch refused to register " +
               counted(registration.refused, "event code", "event codes") +
               (registration.result == 0 ? "" : " with " + hexadecimal(registration.result)) + ':' + codes;
    });
    const PassHealth& passes = record.passes;
    complaints.check(!passes.threadAsked || passes.threadMade,
                     [] { return "the evaluation thread could not be made"; });
    complaints.check(record.limits.read,
                     [] { return "the fabric's zoning limits were not read, so no zoning can be added"; });
}

void checkArea(Complaints& complaints, CacheArea area, const AreaHealth& health) {
    // Nobody misses accounts that the host never asked for.
    if (area == CacheArea::Accounts && health.reads == 0) return;
    const std::string name = cacheAreaName(area);
    complaints.check(health.upToDate, [&] {
        const std::string stale = name + " is not up to date: ";
        if (health.failuresInARow != 0) return stale + failureText(health.lastFailure);
        if (health.reads == 0) return stale + "it was not read yet";
        return stale + "it changed since it was read";
    });
    complaints.check(area != CacheArea::Zoning || !health.upToDate || health.gaps == 0,
                     [&] { return "the active zoneset is missing: " + failureText(health.firstGap); });
}

void checkCapacity(Complaints& complaints, const CapacityHealth& capacity) {
    complaints.check(!capacity.domainListFull, [] {
        return "the fabric may be larger than what is cached: the switch's list of domains fills its 255 "
               "characters, and its last number may be cut";
    });
    const auto beyond = [&](uint32_t number, const char* one, const char* many, const char* room) {
        complaints.check(number == 0, [&] {
            return counted(number, one, many) + (number == 1 ? " is" : " are") +
                   " not cached: there is room for " + room;
        });
    };
    beyond(capacity.portEntriesBeyond, "port of other switches", "ports of other switches", "256 a switch");
    beyond(capacity.localPortsBeyond, "local port", "local ports", "128");
    beyond(capacity.slotsBeyond, "slot", "slots", "32");
    complaints.check(capacity.switchesGivenUp == 0, [&] {
        return "the ports of " + counted(capacity.switchesGivenUp, "switch", "switches") +
               " are not read any more: the management server kept failing";
    });
}

/** All that `check`, one of the functions above, finds. */
template <typename Check>
std::vector<std::string> allOf(Check check) {
    Complaints complaints(SIZE_MAX);
    check(complaints);
    return complaints.take();
}

std::vector<std::string> complaintsOf(const HealthRecord& record, size_t wanted) {
    Complaints complaints(wanted);
    checkConnection(complaints, record);
    checkFollowing(complaints, record);
    for (const CacheArea area : kAllCacheAreas) checkArea(complaints, area, record[area]);
    checkCapacity(complaints, record.capacity);
    return complaints.take();
}

}  // namespace

const char* cacheAreaName(CacheArea area) {
    static constexpr const char* kNames[] = {"switch",   "chassis", "blades", "ports",
                                             "accounts", "fabric",  "zoning"};
    return nameIn(kNames, area);
}

const char* markCauseName(MarkCause cause) {
    static constexpr const char* kNames[] = {"none", "start", "event", "host", "retry", "refresh", "session"};
    return nameIn(kNames, cause);
}

const char* lockHolderName(LockHolder holder) {
    static constexpr const char* kNames[] = {"nobody", "reader", "pass", "accounts", "session"};
    return nameIn(kNames, holder);
}

const char* readFaultName(ReadFault fault) {
    static constexpr const char* kNames[] = {"none",      "call failed", "key failed",
                                             "bad value", "no end",      "exception"};
    return nameIn(kNames, fault);
}

bool CapacityHealth::complete() const {
    return !domainListFull && portEntriesBeyond == 0 && localPortsBeyond == 0 && slotsBeyond == 0 &&
           switchesGivenUp == 0;
}

std::vector<std::string> CapacityHealth::problems() const {
    return allOf([this](Complaints& complaints) { checkCapacity(complaints, *this); });
}

Health::Health(std::shared_ptr<const HealthRecord> record) : _record(std::move(record)) {}

bool Health::well() const {
    return complaintsOf(*_record, 1).empty();
}

std::vector<std::string> Health::problems() const {
    return complaintsOf(*_record, SIZE_MAX);
}

std::vector<std::string> Health::problems(CacheArea area) const {
    return allOf([&](Complaints& complaints) { checkArea(complaints, area, (*this)[area]); });
}

const ConnectionHealth& Health::connection() const {
    return _record->connection;
}

const RegistrationHealth& Health::registration() const {
    return _record->registration;
}

const LimitsHealth& Health::limits() const {
    return _record->limits;
}

const AreaHealth& Health::operator[](CacheArea area) const {
    static const AreaHealth kNone;
    return static_cast<size_t>(area) < kCacheAreas ? (*_record)[area] : kNone;
}

const PassHealth& Health::passes() const {
    return _record->passes;
}

const EventHealth& Health::events() const {
    return _record->events;
}

const CapacityHealth& Health::capacity() const {
    return _record->capacity;
}

const LockHealth& Health::lock() const {
    return _record->lock;
}

uint32_t Health::pendingCalls() const {
    return _record->pendingCalls;
}

const PendingCall& Health::pendingCall(uint32_t index) const {
    static const PendingCall kNone;
    return index < _record->pendingCalls ? _record->calls[index] : kNone;
}

WallTime Health::time() const {
    return _record->time;
}

std::string failureText(const ReadFailure& failure) {
    const std::string place = failure.line == 0 ? ""
                                                : std::string(", log line ") + failure.function + ':' +
                                                      std::to_string(failure.line);
    const std::string call = failure.call;
    const std::string key = failure.key;
    const std::string about = key.empty() ? call : key;
    switch (failure.fault) {
        case ReadFault::None:
            return "";
        case ReadFault::CallFailed: {
            const std::string more =
                failure.keys > 1 ? " and " + std::to_string(failure.keys - 1) + " more keys" : "";
            return call + (key.empty() ? "" : " of " + key + more) + " failed with " +
                   hexadecimal(failure.status) + place;
        }
        case ReadFault::KeyFailed:
            return key + " has status " + hexadecimal(failure.status) + place;
        case ReadFault::BadValue:
            return about + " gave a value that cannot be used" + place;
        case ReadFault::NoEnd:
            return "the list has no end at " + about + place;
        case ReadFault::Exception:
            return "left by an exception" + (key.empty() ? "" : ": " + key);
    }
    return "";
}

}  // namespace datacache
