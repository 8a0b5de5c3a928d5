// A host as a management provider is one: follows every event, lists the ports, says what is stale and why,
// and edits the fabric's zoning.
#include <unistd.h>

#include <cstdio>

#include "datacache/CacheReader.h"
#include "datacache/cim_words.h"
#include "datacache/event_text.h"
#include "simulator/vexsim.h"
#include "zoning/ZoningSession.h"

using namespace datacache;

// Runs on the cache's thread with the cache locked.
static void onEvent(DataCacheEvent* event) {
    if (event->type == DCEventDataCacheUpdateComplete::TYPE) return;
    std::printf("event  %s\n", eventText(*event).c_str());
}

static void reportHealth() {
    for (const std::string& problem : DataCache::health().problems())
        std::printf("health %s\n", problem.c_str());
}

/** Waits until the cache has nothing to do, which a switch that answers slowly can make long. */
static void settle() {
    while (!DataCache::waitIdle(60'000)) reportHealth();
}

/** Runs on the cache's thread with the cache locked. */
static void onReadiness(bool ready, void*) {
    std::printf("cache  is %s\n", ready ? "complete" : "no longer complete");
}

/** What it lists never changes and needs no lock, so a switch that hangs does not hold it up. */
static void listPorts(const Snapshot& now) {
    for (unsigned port = 0; port < kPortRows; ++port) {
        if (!now.ports().localPortsPresent[port]) continue;
        std::printf("port   %u %s %s\n", port, now.localPortName(port).tostring().c_str(),
                    cimWord(CimValue::OperationalStatus, now.ports().portStatus[port]));
    }
}

/** Makes a zone of one port and commits it; says what came of it. */
static bool zonePort(const char* zone, const char* portName) {
    ZoningSession session = DataCache::zoningSession("provider-host");
    ZoningOutcome outcome = session.lockOutcome();
    if (outcome.done()) outcome = session.createZone(zone, VEX_ZT_SOFT);
    if (outcome.done()) outcome = session.addMemberToZone(zone, VEX_ZMT_WWN, portName);
    if (outcome.done()) outcome = session.commit();
    std::printf("zoning %s\n", outcome.done() ? "committed" : outcome.text().c_str());
    return outcome.done();  // a session that was not committed gives its lock back here
}

int main(int argc, char** argv) {
    char error[512] = "one argument: the file of the simulated switch";
    if (argc != 2 || vexsim_load_switch(argv[1], error, sizeof error) != 0) {
        std::fprintf(stderr, "%s\n", error);
        return 2;
    }
    DataCache::setSnapshots(true);
    DataCache::setRetryInterval(30);      // what cannot be read is tried again without waiting for an event
    DataCache::setRefreshInterval(3600);  // and a change that no event told of is found within the hour
    DataCache::setReadinessCallback(onReadiness, nullptr);
    DataCache::init();
    DataCache::start(onEvent);
    settle();
    reportHealth();
    if (const auto now = DataCache::snapshot()) listPorts(*now);
    const bool zoned = zonePort("nightly", "1000001122334455");
    settle();  // the switch tells of its new zoning, and the cache loads it
    if (const auto now = DataCache::snapshot()) std::printf("zones  %zu\n", now->zoning().zones.size());
    std::fflush(stdout);
    _exit(zoned ? 0 : 1);
}
