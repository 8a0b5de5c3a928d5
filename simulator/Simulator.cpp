#include "simulator/Simulator.h"

#include <algorithm>
#include <utility>

#include "simulator/Core.h"
#include "simulator/scenario.h"
#include "simulator/switch_file.h"

namespace vexsim {
namespace {

Core& core() {
    return Core::instance();
}

void replaceSwitch(Switch fresh) {
    const Lock lock(core().mutex);
    fresh.clockOffset = core().device.clockOffset;
    core().device = std::move(fresh);
    core().hanging.release("*");
}

void performStep(const Step& step) {
    core().transcript.remark("step", step.where + ' ' + step.name);
    try {
        core().perform(step.action);
    } catch (const StepError& error) {
        throw InputError(step.where + ": " + error.what());
    }
}

}  // namespace

Simulator& Simulator::instance() {
    static Simulator simulator;
    return simulator;
}

void Simulator::reset() {
    core().hanging.allow(
        false);  // the scenario and the callbacks, for which this waits, may depend on a call
    core().scenario.stop();
    core().notifier.reset();
    {
        const Lock lock(core().mutex);
        core().device = Switch();
        core().handles.clear();
        core().zoning.restartCounts();
        core().misuse = 0;
    }
    core().hanging.allow(true);
    core().transcript.writeTo({});
    core().transcript.clear();
    core().texts.restartCounts();
}

void Simulator::loadSwitchFile(const std::string& path) {
    replaceSwitch(readWholeSwitch(TableReader::parseFile(path)));
}

void Simulator::loadSwitchText(const std::string& toml, const std::string& name) {
    replaceSwitch(readSwitch(TableReader::parse(toml, name)));
}

std::optional<std::string> Simulator::get(const std::string& key) const {
    const Lock lock(core().mutex);
    Reading reading = core().device.read(key);
    if (reading.status != Ok) return std::nullopt;
    return std::move(reading.value);
}

void Simulator::set(const std::string& key, const std::string& value) {
    const Lock lock(core().mutex);
    core().device.set(key, value);
}

void Simulator::erase(const std::string& key) {
    const Lock lock(core().mutex);
    core().device.erase(key);
}

void Simulator::run(const std::string& steps, const std::string& name) {
    for (const Step& step : readSteps(TableReader::parse(steps, name))) performStep(step);
}

void Simulator::loadScenarioFile(const std::string& path) {
    core().scenario.load(readSteps(TableReader::parseFile(path)));
}

void Simulator::loadScenarioText(const std::string& toml, const std::string& name) {
    core().scenario.load(readSteps(TableReader::parse(toml, name)));
}

void Simulator::startScenario() {
    core().scenario.start(performStep, [] { core().notifier.waitDelivered(); });
}

void Simulator::waitScenario() {
    constexpr int32_t kHourMs =
        3'600'000;  // a time that every clock can hold; the longest possible one overflows
    while (!waitScenario(kHourMs)) {
    }
}

bool Simulator::waitScenario(int32_t timeoutMs) {
    const auto timeout = std::chrono::milliseconds(std::max(timeoutMs, int32_t{0}));
    return core().scenario.wait(std::chrono::steady_clock::now() + timeout);
}

bool Simulator::scenarioDone() const {
    return core().scenario.done();
}

void Simulator::setDelivery(Delivery delivery) {
    core().notifier.setDelivery(delivery);
}

void Simulator::raise(int32_t code, const int32_t (&source)[3], const std::string& text, bool forced) {
    const Lock lock(core().mutex);
    core().send({code, {{source[0], source[1], source[2]}}, text, false, forced});
}

size_t Simulator::deliverPending() {
    return core().notifier.deliverPending();
}

void Simulator::waitDelivered() {
    core().notifier.waitDelivered();
}

std::vector<Call> Simulator::transcript() const {
    return core().transcript.calls();
}

void Simulator::clearTranscript() {
    core().transcript.clear();
}

void Simulator::keepTranscript(bool on) {
    core().transcript.keep(on);
}

void Simulator::writeTranscript(const std::string& path) {
    core().transcript.writeTo(path);
}

std::vector<Call> Simulator::hanging() const {
    return core().hanging.list();
}

bool Simulator::waitHanging(const std::string& function, int32_t timeoutMs) const {
    const auto timeout = std::chrono::milliseconds(std::max(timeoutMs, int32_t{0}));
    return core().hanging.waitFor(function, std::chrono::steady_clock::now() + timeout);
}

void Simulator::release(const std::string& function) {
    core().hanging.release(function);
}

bool Simulator::serving() {
    return ApiCall::serving();
}

Live Simulator::live() const {
    Live live;
    {
        const Lock lock(core().mutex);
        core().zoning.count(live);
        live.misuse = core().misuse;
    }
    live.texts = core().texts.live();
    return live;
}

void Simulator::advanceClock(long seconds) {
    const Lock lock(core().mutex);
    core().device.clockOffset += seconds;
}

}  // namespace vexsim
