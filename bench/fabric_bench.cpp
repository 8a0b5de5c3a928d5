/**
 * What a load of the fabric costs over its calls and its log lines: a pass that reads a fabric without
 * changes is measured beside the bare calls that it makes of the simulated switch, and beside as many bare
 * log lines.
 */
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "common/log_hooks.h"
#include "datacache/CacheReader.h"
#include "simulator/Simulator.h"
#include "simulator/switch_writer.h"

using namespace datacache;

namespace {

uint64_t linesLogged = 0;

void countLine(void*, unsigned int, const char*, size_t, size_t) {
    ++linesLogged;
}

/** A cache connected to a switch in a fabric of so many switches of 256 ports; its log goes to real files. */
class Setting {
  public:
    explicit Setting(unsigned switches)
        : _folder(std::filesystem::temp_directory_path() / ("fabric_bench_" + std::to_string(getpid()))) {
        std::filesystem::create_directories(_folder);
        redirectLog(_main.c_str(), _critical.c_str());
        vexsim::Simulator& sim = vexsim::Simulator::instance();
        sim.reset();
        sim.setDelivery(vexsim::Delivery::Manual);
        shape.switches = switches;
        shape.ports = 256;
        sim.loadSwitchText(writeSwitchFile(shape));
        DataCache::init();
        const datacache::CacheReader cache;
        cache->evaluateCaches();
    }
    ~Setting() {
        delete DataCache::instance;
        DataCache::instance = nullptr;
        hSwitch = 0;
        redirectLog(nullptr, nullptr);
        std::filesystem::remove_all(_folder);
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

    vexsim::FabricShape shape;

  private:
    std::filesystem::path _folder;
    // The log keeps pointers to its paths.
    std::string _main = _folder / "main";
    std::string _critical = _folder / "critical";
};

/** Repeats a load after the first, and says how many lines it logs. */
template <typename Load>
void measure(benchmark::State& state, const Load& load) {
    load();
    linesLogged = 0;
    observeLog(countLine, nullptr);
    load();
    observeLog(nullptr, nullptr);
    state.counters["lines"] = static_cast<double>(linesLogged);
    for (auto _ : state) load();
}

void load(benchmark::State& state) {
    const Setting setting(static_cast<unsigned>(state.range(0)));
    const datacache::CacheReader cache;
    measure(state, [&] {
        cache->updateFabric();
        cache->evaluateCaches();
        if (!DataCache::health()[datacache::CacheArea::Fabric].upToDate)
            state.SkipWithError("the load failed");
    });
    state.counters["calls"] = DataCache::health().passes().lastCalls;
}

/** The calls of the load of the ports, with their keys and nothing else. */
void bareCalls(benchmark::State& state) {
    const Setting setting(static_cast<unsigned>(state.range(0)));
    int calls = 0;
    vex_smlrequest_s request{};
    for (auto _ : state) {
        calls = 0;
        for (unsigned domain = 2; domain <= setting.shape.switches; ++domain) {
            std::snprintf(request.key, sizeof request.key, "Oper.TopologyAll.%u.PortEntries", domain);
            if (vex_smlGetBatch(hSwitch, &request, 1) != 0) state.SkipWithError("a call failed");
            ++calls;
            for (unsigned port = 0; port < setting.shape.ports; ++port, ++calls) {
                std::snprintf(request.key, sizeof request.key, "Oper.TopologyAll.%u.Entry.%u.PortWwn", domain,
                              port);
                if (vex_smlGetBatch(hSwitch, &request, 1) != 0) state.SkipWithError("a call failed");
            }
        }
    }
    state.counters["calls"] = calls;
}

void logLines(benchmark::State& state) {
    const Setting setting(2);
    for (auto _ : state) {
        for (int64_t line = 0; line < state.range(0); ++line) {
            cim_log(CIM_LOG_TRACE, "DCACHE: Evaluating switch %s for deletion\n", "1000001122000001");
        }
    }
}

BENCHMARK(load)->Arg(88)->Unit(benchmark::kMillisecond);
BENCHMARK(bareCalls)->Arg(88)->Unit(benchmark::kMillisecond);
BENCHMARK(logLines)->Arg(8200)->Unit(benchmark::kMillisecond);

}  // namespace
