#include "datacache/metrics.h"

#include <cinttypes>
#include <cstdio>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace datacache {

namespace {

/** A label's value without its quotes. */
void appendEscaped(std::string& text, std::string_view value) {
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (byte >= ' ' && byte <= '~') {
            text += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\\\x%02x", unsigned{byte});
            text += escape;
        }
    }
}

std::string numeral(int64_t number) {
    return std::to_string(number);
}

/** By whole numbers, as the decimal point of printf() is the locale's. */
std::string seconds(Duration duration) {
    const int64_t micros = duration.count();
    const uint64_t size = micros < 0 ? 0 - static_cast<uint64_t>(micros) : static_cast<uint64_t>(micros);
    char text[32];
    std::snprintf(text, sizeof text, "%s%" PRIu64 ".%06" PRIu64, micros < 0 ? "-" : "", size / 1'000'000,
                  size % 1'000'000);
    return text;
}

std::string valueOf(bool flag) {
    return flag ? "1" : "0";
}
std::string valueOf(uint32_t number) {
    return numeral(number);
}
std::string valueOf(int32_t number) {
    return numeral(number);
}
std::string valueOf(WallTime time) {
    return seconds(std::chrono::duration_cast<Duration>(time.time_since_epoch()));
}
std::string valueOf(Duration duration) {
    return seconds(duration);
}

using Labels = std::initializer_list<std::pair<const char*, std::string_view>>;

/** The text as it grows: metrics, each with its samples. */
class Page {
  public:
    /** Begins a metric, whose name says its type. */
    void begin(const std::string& name, const char* help) {
        constexpr std::string_view kTotal = "_total";
        const bool counter = name.size() > kTotal.size() &&
                             name.compare(name.size() - kTotal.size(), kTotal.size(), kTotal) == 0;
        _name = "datacache_" + name;
        _text += "# HELP " + _name + ' ' + help + '\n';
        _text += "# TYPE " + _name + (counter ? " counter\n" : " gauge\n");
    }

    template <typename Value>
    void sample(Labels labels, Value value) {
        _text += _name;
        const char* before = "{";
        for (const auto& [label, text] : labels) {
            if (text.empty()) continue;  // which means the same
            _text += before;
            _text += label;
            _text += "=\"";
            appendEscaped(_text, text);
            _text += '"';
            before = ",";
        }
        if (*before == ',') _text += '}';
        _text += ' ' + valueOf(value) + '\n';
    }

    /** A metric of one sample. */
    template <typename Value>
    void add(const char* name, const char* help, Value value) {
        begin(name, help);
        sample({}, value);
    }
    void addInfo(const char* name, const char* help, Labels labels) {
        begin(name, help);
        sample(labels, true);
    }

    std::string take() {
        _text += "# EOF\n";
        return std::move(_text);
    }

  private:
    std::string _text;
    std::string _name;
};

/** The sample of a failure's words; `area` is empty for what is none. */
void sampleFailure(Page& page, const ReadFailure& failure, const char* area) {
    page.sample({{"area", area},
                 {"fault", readFaultName(failure.fault)},
                 {"call", failure.call},
                 {"key", failure.key},
                 {"keys", numeral(failure.keys)},
                 {"status", numeral(failure.status)},
                 {"function", failure.function},
                 {"line", numeral(failure.line)}},
                true);
}

void addConnection(Page& page, const ConnectionHealth& connection) {
    page.add("connected", "The switch library has a connection.", connection.connected);
    page.add("connection_attempts_total", "Attempts to connect.", connection.attempts);
    page.add("connection_last_result", "Result of the last attempt to connect, 0 for success.",
             connection.lastResult);
    page.add("connection_failures_in_a_row", "Reading calls refused since the last one carried out.",
             connection.failuresInARow);
    page.add("connection_last_failure_result", "Result of the reading call that was refused last.",
             connection.lastFailure);
    page.add("connection_failing_since_timestamp_seconds", "When the first of these calls was refused.",
             connection.failingSince);
}

void addRegistration(Page& page, const RegistrationHealth& registration) {
    page.add("registration_attempts_total", "Calls that register for switch events.", registration.attempts);
    page.add("registration_last_result", "Result of the last registration, 0 for success.",
             registration.result);
    page.add("registration_refused_codes", "Event codes that are not registered.", registration.refused);
    page.begin("registration_refused_code", "An event code that is not registered.");
    for (size_t i = 0; i < registration.refused && i < registration.refusedCodes.size(); ++i) {
        page.sample({{"code", numeral(registration.refusedCodes[i])}}, true);
    }
}

void addLimits(Page& page, const LimitsHealth& limits) {
    page.add("zoning_limits_attempts_total", "Attempts to read the fabric's zoning limits.", limits.attempts);
    page.add("zoning_limits_read", "The fabric's zoning limits were read.", limits.read);
    page.begin("zoning_limits_failure_info", "Why the last attempt that failed did.");
    sampleFailure(page, limits.failure, "");
    page.add("zoning_limits_failure_timestamp_seconds", "When the last attempt that failed did.",
             limits.failure.time);
}

void addAreas(Page& page, const Health& health) {
    const auto samples = [&](const char* name, const char* help, auto field) {
        page.begin(name, help);
        for (const CacheArea area : kAllCacheAreas) {
            page.sample({{"area", cacheAreaName(area)}}, health[area].*field);
        }
    };
    const auto failures = [&](const std::string& name, const std::string& what, auto field) {
        page.begin(name + "_info", (what + ".").c_str());
        for (const CacheArea area : kAllCacheAreas) {
            sampleFailure(page, health[area].*field, cacheAreaName(area));
        }
        page.begin(name + "_timestamp_seconds", ("When it happened: " + what + ".").c_str());
        for (const CacheArea area : kAllCacheAreas) {
            page.sample({{"area", cacheAreaName(area)}}, (health[area].*field).time);
        }
    };
    samples("area_up_to_date", "The last read succeeded, and nothing has marked the area since.",
            &AreaHealth::upToDate);
    samples("area_marked", "The area is to be read.", &AreaHealth::marked);
    samples("area_stale_since_timestamp_seconds", "Since when the area is not up to date.",
            &AreaHealth::staleSince);
    samples("area_marked_since_timestamp_seconds", "When the area was first marked since its last good read.",
            &AreaHealth::markedSince);
    page.begin("area_mark_info", "By what the area was marked first; the event's code for an event.");
    for (const CacheArea area : kAllCacheAreas) {
        page.sample({{"area", cacheAreaName(area)},
                     {"cause", markCauseName(health[area].markedBy)},
                     {"event", numeral(health[area].markedByEvent)}},
                    true);
    }
    samples("area_last_good_read_timestamp_seconds", "When the area was last read well.",
            &AreaHealth::lastGoodRead);
    samples("area_reads_total", "Reads of the area.", &AreaHealth::reads);
    samples("area_read_failures_total", "Reads of the area that failed.", &AreaHealth::failures);
    samples("area_read_failures_in_a_row", "Reads that failed since the last good one.",
            &AreaHealth::failuresInARow);
    failures("area_last_failure", "Failure of the last read that failed", &AreaHealth::lastFailure);
    samples("area_gaps", "Keys that the last good read went without.", &AreaHealth::gaps);
    failures("area_first_gap", "First key that the last good read went without", &AreaHealth::firstGap);
    samples("area_silent_changes_total", "Changes that a read found and no switch event told of.",
            &AreaHealth::silentChanges);
    samples("area_last_silent_change_timestamp_seconds", "When the last such change was read.",
            &AreaHealth::lastSilentChange);
    page.begin("area_silent_change_info", "First difference of the last such change.");
    for (const CacheArea area : kAllCacheAreas) {
        page.sample({{"area", cacheAreaName(area)}, {"difference", health[area].silentChange}}, true);
    }
}

void addPasses(Page& page, const PassHealth& passes) {
    page.add("evaluation_thread_asked", "The host asked for the evaluation thread.", passes.threadAsked);
    page.add("evaluation_thread_made", "The evaluation thread was made.", passes.threadMade);
    page.add("ready", "The last pass found every area up to date.", passes.ready);
    page.add("passes_total", "Evaluation passes that ended.", passes.count);
    page.add("pass_running", "A pass is running.", passes.running);
    page.add("pass_running_since_timestamp_seconds", "When the running pass began, or the last one.",
             passes.runningSince);
    page.add("pass_in_area", "The running pass is reading an area.", passes.inArea);
    page.addInfo("pass_area_info", "The area that the pass reads, or read last.",
                 {{"area", cacheAreaName(passes.area)}});
    page.add("pass_last_duration_seconds", "How long the last pass took.", passes.last);
    page.add("pass_last_calls", "Reading calls of the last pass.", passes.lastCalls);
    page.add("pass_longest_duration_seconds", "How long the longest pass took.", passes.longest);
    page.addInfo("pass_longest_area_info", "The area that took most of the longest pass's time.",
                 {{"area", cacheAreaName(passes.longestArea)}});
    page.add("pass_longest_calls", "Reading calls of the longest pass.", passes.longestCalls);
}

void addEvents(Page& page, const EventHealth& events) {
    page.add("events_received_total", "Notifications of the switch library.", events.received);
    page.add("events_queued_total", "Notifications that were queued for a pass.", events.queued);
    page.add("events_dropped_total", "Notifications of a kind that the cache does not handle.",
             events.dropped);
    page.add("events_waiting", "Events in the queue.", events.waiting);
    page.add("events_most_waiting", "Events in the queue at most, ever.", events.mostWaiting);
}

void addCapacity(Page& page, const CapacityHealth& capacity) {
    page.add("fabric_domain_list_full", "The switch's list of domains is full; switches may be missing.",
             capacity.domainListFull);
    page.add("fabric_port_entries_beyond", "Ports of remote switches for which there is no room.",
             capacity.portEntriesBeyond);
    page.add("local_ports_beyond", "Local ports for which there is no room.", capacity.localPortsBeyond);
    page.add("fabric_switches_given_up", "Remote switches whose ports are not read any more.",
             capacity.switchesGivenUp);
    page.add("slots_beyond", "Slots of the chassis for which there is no room.", capacity.slotsBeyond);
}

void addUnderWay(Page& page, const Health& health) {
    const LockHealth& lock = health.lock();
    page.addInfo(
        "lock_info", "What holds the cache's lock, with its area or its step.",
        {{"holder", lockHolderName(lock.holder)}, {"area", cacheAreaName(lock.area)}, {"step", lock.step}});
    page.add("lock_since_timestamp_seconds", "When the cache's lock was taken.", lock.since);
    page.add("lock_in_area", "The holder of the lock is reading an area.", lock.inArea);
    page.add("pending_calls", "Calls of the switch library that have not returned.", health.pendingCalls());
    page.begin("pending_call_since_timestamp_seconds", "When a call that has not returned was made.");
    for (uint32_t i = 0; i < health.pendingCalls(); ++i) {
        const PendingCall& call = health.pendingCall(i);
        page.sample(
            {{"index", numeral(i)}, {"call", call.call}, {"key", call.key}, {"keys", numeral(call.keys)}},
            call.since);
    }
    page.add("health_timestamp_seconds", "When all this was copied.", health.time());
}

}  // namespace

std::string metricsText(const Health& health) {
    Page page;
    const auto problems = static_cast<uint32_t>(health.problems().size());
    page.add("well", "All is well.", problems == 0);
    page.add("problems", "Things that are not well.", problems);
    addConnection(page, health.connection());
    addRegistration(page, health.registration());
    addLimits(page, health.limits());
    addAreas(page, health);
    addPasses(page, health.passes());
    addEvents(page, health.events());
    addCapacity(page, health.capacity());
    addUnderWay(page, health);
    return page.take();
}

}  // namespace datacache
