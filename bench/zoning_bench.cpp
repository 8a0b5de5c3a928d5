/**
 * Zoning at the size of a large fabric: 2,000 zones, 2,000 aliases, 64 zonesets of 250 zones, 10,000 members.
 * The switch is the simulated one, so each measurement stands beside the same calls made without the cache.
 */
#include <benchmark/benchmark.h>

#include <string>

#include "common/log_hooks.h"
#include "datacache/CacheReader.h"
#include "simulator/Simulator.h"

using namespace datacache;

namespace {

constexpr int kZones = 2000;
constexpr int kAliases = 2000;
constexpr int kZonesets = 64;
constexpr int kZonesPerZoneset = 250;

std::string wwn(int number) {
    std::string digits = std::to_string(number);
    return "2000001122" + std::string(6 - digits.size(), '0') + digits;
}

std::string largeFabric() {
    std::string toml = "[switch]\nwwn = '1000001122000001'\n";
    for (int i = 0; i < kAliases; ++i) {
        toml += "[[zoning.alias]]\nname = 'alias_of_port_" + std::to_string(i) + "'\nmembers = ['" +
                wwn(2 * i) + "', '" + wwn(2 * i + 1) + "']\n";
    }
    for (int i = 0; i < kZones; ++i) {
        toml += "[[zoning.zone]]\nname = 'zone_of_host_" + std::to_string(i) +
                "'\nmembers = ['alias_of_port_" + std::to_string(i) + "', '" + wwn(100000 + i) + "', '" +
                wwn(200000 + i) + "']\n";
    }
    for (int i = 0; i < kZonesets; ++i) {
        toml += "[[zoning.zoneset]]\nname = 'zoneset_" + std::to_string(i) + "'\nzones = [";
        for (int zone = 0; zone < kZonesPerZoneset; ++zone)
            toml += "'zone_of_host_" + std::to_string((i * 31 + zone) % kZones) + "',";
        toml += "]\n";
    }
    return toml +
           "[zoning.limits]\nzonesets = 256\nzones = 4000\nmembers = 20000\nzones_per_zoneset = 4000\n"
           "members_per_zone = 2000\naliases = 4000\nmembers_per_alias = 2000\n[admin]\nshared = true\n";
}

/** The zoning of the loaded cache, made once. */
ZoningCache& loaded() {
    static ZoningCache* const zoning = [] {
        redirectLog(nullptr, nullptr);
        vexsim::Simulator& sim = vexsim::Simulator::instance();
        sim.reset();
        sim.loadSwitchText(largeFabric());
        DataCache::init();
        const datacache::CacheReader cache;
        cache->evaluateCaches();
        return &cache->zoningCache();
    }();
    return *zoning;
}

void recount(benchmark::State& state) {
    ZoningCache& zoning = loaded();
    for (auto _ : state) zoning.updateZoningCounts();
}

/** Adds a member to a zone that eight zonesets hold, and takes it away again: two edits. */
void two_edits(benchmark::State& state) {
    ZoningCache& zoning = loaded();
    std::string zone = "zone_of_host_248";
    std::string member = "010203";
    for (auto _ : state) {
        if (zoning.addMemberToZone(zone.data(), VEX_ZMT_FCID, member.data()) != ZONING_DONE ||
            zoning.removeMemberFromZone(zone.data(), VEX_ZMT_FCID, member.data()) != ZONING_DONE)
            state.SkipWithError("an edit failed");
    }
}

/** Adds a zone to a zoneset and takes it away again: two edits that count nothing. */
void two_edits_without_recount(benchmark::State& state) {
    ZoningCache& zoning = loaded();
    std::string zoneset = "zoneset_0";
    std::string zone = "zone_of_host_1999";
    for (auto _ : state) {
        if (zoning.addZoneToZoneset(zoneset.data(), zone.data()) != ZONING_DONE ||
            zoning.removeZoneFromZoneset(zoneset.data(), zone.data()) != ZONING_DONE)
            state.SkipWithError("an edit failed");
    }
}

void load(benchmark::State& state) {
    loaded();
    const datacache::CacheReader cache;
    for (auto _ : state) {
        cache->reloadZoning();
        if (!cache->evaluateCaches()) state.SkipWithError("the load failed");
    }
}

void commit(benchmark::State& state) {
    ZoningCache& zoning = loaded();
    std::string client = "client";
    bool expired = false;  // the lock still counts as held only after a commit that the switch accepted
    for (auto _ : state) {
        if (zoning.ZoningLock(client.data()) != 1 || zoning.replaceZoningDB() != 1 ||
            !zoning.LockIdOK(client.data(), expired))
            state.SkipWithError("the commit failed");
    }
}

BENCHMARK(recount)->Unit(benchmark::kMillisecond);
BENCHMARK(two_edits)->Unit(benchmark::kMillisecond);
BENCHMARK(two_edits_without_recount)->Unit(benchmark::kMillisecond);
BENCHMARK(load)->Unit(benchmark::kMillisecond);
BENCHMARK(commit)->Unit(benchmark::kMillisecond);

}  // namespace
