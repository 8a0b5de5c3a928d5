// What the recorder costs beside the bare call of the simulated switch: time, and bytes in the file.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "recorder/recorder.h"
#include "simulator/Simulator.h"
#include "vexlib/vexlib.h"

namespace {

constexpr const char* kSwitch = "[switch]\nwwn = \"10:00:00:11:22:33:44:55\"\n[ports]\ncount = 1\n";
constexpr const char* kFile = "/tmp/recorder_bench.jsonl";

/** The functions that are measured, of the switch itself or of the recorder before it. */
struct Functions {
    decltype(&vex_IPConnect) connect = &vex_IPConnect;
    decltype(&vex_smlGetBatch) getBatch = &vex_smlGetBatch;
    decltype(&vex_enRegisterForEventList) listen = &vex_enRegisterForEventList;
};

template <typename Function>
void find(Function& function, void* library, const char* name) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr) std::abort();
}

Functions functions(bool recorded) {
    Functions all;
    if (!recorded) return all;
    void* const recorder = dlopen(VEXRECORD, RTLD_NOW | RTLD_LOCAL);
    if (recorder == nullptr) std::abort();
    find(all.connect, recorder, "vex_IPConnect");
    find(all.getBatch, recorder, "vex_smlGetBatch");
    find(all.listen, recorder, "vex_enRegisterForEventList");
    decltype(&vexrecord_start) start = nullptr;
    find(start, recorder, "vexrecord_start");
    if (start(RTLD_DEFAULT, kFile, nullptr, 0) != 0) std::abort();
    return all;
}

/** Bytes a call, and no file left behind. */
void countBytes(benchmark::State& state, bool recorded) {
    if (!recorded) return;
    const auto size = static_cast<double>(std::filesystem::file_size(kFile));
    state.counters["bytes"] = size / static_cast<double>(state.iterations());
    std::remove(kFile);
}

/** A batch of as many keys as the second argument says, from the first keys of a port. */
void batch(benchmark::State& state) {
    const bool recorded = state.range(0) != 0;
    vexsim::Simulator::instance().reset();
    vexsim::Simulator::instance().loadSwitchText(kSwitch);
    const Functions vex = functions(recorded);
    uint32_t handle = 0;
    vex.connect("localhost", "cim", "", &handle);
    vex_smlrequest_s keys[8] = {
        {"Oper.UserPort.0.0.OperState", "", 0},       {"Oper.UserPort.0.0.AdminState", "", 0},
        {"Config.UserPort.0.0.Type", "", 0},          {"Oper.UserPort.0.0.DDM.Supported", "", 0},
        {"Oper.UserPort.0.0.SFPData0_31", "", 0},     {"Oper.UserPort.0.0.SFPData32_63", "", 0},
        {"Oper.UserPort.0.0.SFPSerialNumber", "", 0}, {"Oper.UserPort.0.0.HWType", "", 0}};
    for (auto _ : state)
        benchmark::DoNotOptimize(vex.getBatch(handle, keys, static_cast<int32_t>(state.range(1))));
    countBytes(state, recorded);
}

/** A notification, from the switch's change to the callback's return. */
void notification(benchmark::State& state) {
    const bool recorded = state.range(0) != 0;
    vexsim::Simulator& sim = vexsim::Simulator::instance();
    sim.reset();
    sim.setDelivery(vexsim::Delivery::Manual);
    sim.loadSwitchText(kSwitch);
    const Functions vex = functions(recorded);
    uint32_t handle = 0;
    vex.connect("localhost", "cim", "", &handle);
    vex_eventreg_s code{VEX_EVENT_PORT_ATTR_CHANGE, 0};
    const auto ignore = [](void*, vex_event_s*, void*) {};
    vex.listen(handle, ignore, nullptr, &code, 1);
    for (auto _ : state) {
        state.PauseTiming();
        sim.run(
            "[[step]]\ndo = \"raise\"\ncode = \"VEX_EVENT_PORT_ATTR_CHANGE\"\ntext = \"Port 1 Online, set "
            "Online\"");
        state.ResumeTiming();
        sim.deliverPending();
    }
    countBytes(state, recorded);
}

BENCHMARK(batch)->ArgsProduct({{0, 1}, {1, 8}})->ArgNames({"recorded", "keys"});
BENCHMARK(notification)->Arg(0)->Arg(1)->ArgName("recorded")->Iterations(20000);

}  // namespace
