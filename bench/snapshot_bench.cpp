/**
 * What a reader waits for a snapshot, and what a pass pays for one. The readers run on every processor while
 * passes read a fabric of 88 switches with 256 ports each, again and again, and publish what they read.
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "common/log_hooks.h"
#include "datacache/CacheReader.h"
#include "simulator/Simulator.h"
#include "simulator/switch_writer.h"

using namespace datacache;

namespace {

using Clock = std::chrono::steady_clock;

/** A cache that has read a large fabric; its log is switched off. */
void load() {
    static const bool loaded = [] {
        redirectLog(nullptr, nullptr);
        vexsim::Simulator& sim = vexsim::Simulator::instance();
        sim.reset();
        sim.setDelivery(vexsim::Delivery::Manual);
        vexsim::FabricShape shape;
        shape.switches = 88;
        shape.ports = 256;
        sim.loadSwitchText(writeSwitchFile(shape));
        DataCache::init();
        return CacheReader()->evaluateCaches();
    }();
    static_cast<void>(loaded);
}

/** A pass that reads the fabric, without snapshots or with them. */
void fabricPass(benchmark::State& state) {
    load();
    DataCache::setSnapshots(state.range(0) != 0);
    const CacheReader cache;
    cache->evaluateCaches();
    for (auto _ : state) {
        cache->updateFabric();
        cache->evaluateCaches();
    }
    DataCache::setSnapshots(false);
}

std::atomic<bool> passesEnd{false};
std::thread passes;

void runPasses() {
    load();
    DataCache::setSnapshots(true);
    CacheReader()->evaluateCaches();
    passesEnd = false;
    passes = std::thread([] {
        while (!passesEnd) {
            const CacheReader cache;
            cache->updateFabric();
            cache->evaluateCaches();
        }
    });
}

/** Each reader times every call, and drops the former snapshot within it. */
void snapshot(benchmark::State& state) {
    if (state.thread_index() == 0) runPasses();
    std::vector<Clock::duration> times;
    times.reserve(size_t{1} << 22);
    std::shared_ptr<const Snapshot> newest;
    for (auto _ : state) {
        const Clock::time_point begin = Clock::now();
        newest = DataCache::snapshot();
        const Clock::duration took = Clock::now() - begin;
        if (times.size() < times.capacity()) times.push_back(took);
    }
    const auto microseconds = [&times](size_t share, size_t of) {
        const auto place = times.begin() + static_cast<std::ptrdiff_t>((times.size() - 1) * share / of);
        std::nth_element(times.begin(), place, times.end());
        return std::chrono::duration<double, std::micro>(*place).count();
    };
    const auto each = benchmark::Counter::kAvgThreads;
    state.counters["p50_us"] = benchmark::Counter(microseconds(1, 2), each);
    state.counters["p99_us"] = benchmark::Counter(microseconds(99, 100), each);
    state.counters["p99.99_us"] = benchmark::Counter(microseconds(9999, 10000), each);
    state.counters["most_us"] = benchmark::Counter(microseconds(1, 1), each);
    if (state.thread_index() != 0) return;
    passesEnd = true;
    passes.join();
    DataCache::setSnapshots(false);
}

BENCHMARK(fabricPass)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(snapshot)->ThreadPerCpu()->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
