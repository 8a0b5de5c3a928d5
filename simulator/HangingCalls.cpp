#include "simulator/HangingCalls.h"

#include <algorithm>
#include <utility>

namespace vexsim {
namespace {

bool isOf(const HangingCalls::Held& held, const std::string& function) {
    return !held.released && (function == "*" || function == held.call.function);
}

}  // namespace

HangingCalls::Place HangingCalls::enter(Call call) {
    const Lock lock(_mutex);
    const Place place = _held.insert(_held.end(), {std::move(call), !_allowed});
    _changed.notify_all();
    return place;
}

void HangingCalls::wait(Place place) {
    Lock lock(_mutex);
    while (!place->released) lock.wait(_changed);
    _held.erase(place);
}

std::vector<Call> HangingCalls::list() const {
    const Lock lock(_mutex);
    std::vector<Call> calls;
    for (const Held& held : _held) {
        if (!held.released) calls.push_back(held.call);
    }
    return calls;
}

bool HangingCalls::waitFor(const std::string& function, std::chrono::steady_clock::time_point until) {
    Lock lock(_mutex);
    while (!isHanging(function)) {
        if (lock.waitUntil(_changed, until) == std::cv_status::timeout) return isHanging(function);
    }
    return true;
}

void HangingCalls::release(const std::string& function) {
    const Lock lock(_mutex);
    letGo(function);
}

void HangingCalls::allow(bool allowed) {
    const Lock lock(_mutex);
    _allowed = allowed;
    if (!allowed) letGo("*");
}

bool HangingCalls::isHanging(const std::string& function) const {
    return std::any_of(_held.begin(), _held.end(), [&](const Held& held) { return isOf(held, function); });
}

void HangingCalls::letGo(const std::string& function) {
    for (Held& held : _held) held.released = held.released || isOf(held, function);
    _changed.notify_all();
}

}  // namespace vexsim
