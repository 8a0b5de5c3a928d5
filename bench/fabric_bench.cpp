/**
 * What the fabric's loads cost over their calls and their log lines: each is measured beside the bare calls
 * that it makes (of the simulated switch) and beside as many lines as it logs.
 *
 * A list of domains has room for 88 of them, so a whole load reads 87 other switches; the loads of the ports
 * and the comparison are measured with 238 others as well.
 */
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "common/log_writer.h"
#include "datacache/DataCache.h"
#include "datacache/fabric_compare.h"
#include "simulator/Simulator.h"
#include "simulator/switch_writer.h"

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
        const AccessGuard guard;
        cache()._getSwitchInfo();
        cache()._getPortInfo();
        // As a fabric load would have made them, had the list of domains room for so many.
        for (unsigned domain = 2; domain <= switches; ++domain) {
            auto made = std::make_unique<SwitchCache>();
            made->_wwn = Wwn(generatedName(shape, domain));
            made->_domain_id = static_cast<uint8_t>(domain);
            cache()._fabric._switches.add(Element<SwitchCache>::alloc(made.release(), true));
        }
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

    DataCache& cache() { return *DataCache::instance; }
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

void wholeLoad(benchmark::State& state) {
    Setting setting(static_cast<unsigned>(state.range(0)));
    const AccessGuard guard;
    measure(state, [&] {
        if (!setting.cache()._getFabricInfo()) state.SkipWithError("the load failed");
    });
}

void portLoad(benchmark::State& state) {
    Setting setting(static_cast<unsigned>(state.range(0)));
    const AccessGuard guard;
    measure(state, [&] {
        if (!setting.cache()._load_mserver_ports()) state.SkipWithError("the load failed");
    });
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

/** The comparison of an unchanged fabric, which is where its log lines are. */
void comparison(benchmark::State& state) {
    Setting setting(static_cast<unsigned>(state.range(0)));
    const AccessGuard guard;
    std::vector<Wwn> members;
    for (unsigned domain = 1; domain <= setting.shape.switches; ++domain) {
        members.emplace_back(generatedName(setting.shape, domain));
    }
    const Wwn name = members.front();
    measure(state, [&] {
        compareFabrics({name, members}, {name, members},
                       [&](const FabricStep& step)
                           DC_REQUIRES(access_lock) { setting.cache()._reportFabricStep(step); });
    });
}

void logLines(benchmark::State& state) {
    const Setting setting(2);
    for (auto _ : state) {
        for (int64_t line = 0; line < state.range(0); ++line) {
            cim_log(CIM_LOG_TRACE, "DCACHE: Evaluating switch %s for deletion\n", "1000001122000001");
        }
    }
}

BENCHMARK(wholeLoad)->Arg(88)->Unit(benchmark::kMillisecond);
BENCHMARK(bareCalls)->Arg(88)->Arg(239)->Unit(benchmark::kMillisecond);
BENCHMARK(portLoad)->Arg(88)->Arg(239)->Unit(benchmark::kMillisecond);
BENCHMARK(comparison)->Arg(88)->Arg(239)->Unit(benchmark::kMillisecond);
BENCHMARK(logLines)->Arg(8100)->Arg(57600)->Unit(benchmark::kMillisecond);

}  // namespace
