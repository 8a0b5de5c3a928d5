#include "replayer/step_order.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace vexreplay {

namespace {

using Step = Script::Step;

/** Finds for each notification the call of its own thread inside which it came. */
void nest(std::vector<Step>& steps, const std::vector<uint32_t>& byBegin) {
    std::unordered_map<uint32_t, std::vector<uint32_t>> open;  // calls and notifications, by thread
    for (const uint32_t place : byBegin) {
        Step& step = steps[place];
        std::vector<uint32_t>& around = open[step.thread];
        while (!around.empty() && steps[around.back()].end < step.end) around.pop_back();
        if (step.isNotification() && !around.empty() && !steps[around.back()].isNotification())
            step.inside = around.back();
        around.push_back(place);
    }
}

/** When the callback of a notification got the lock that callbacks take: ns since the recording began. */
uint64_t placeWithLock(const std::vector<Step>& steps, const std::vector<uint32_t>& byBegin, size_t at) {
    const Step& step = steps[byBegin[at]];
    if (!step.waited || step.inside != Script::kNone) return step.begin;
    constexpr size_t kFarthest = 10000;  // so that no recording takes more than linear time
    const size_t last = std::min(byBegin.size(), at + kFarthest);
    for (size_t i = at + 1; i < last && steps[byBegin[i]].begin < step.end; ++i) {
        const Step& other = steps[byBegin[i]];
        if (other.isNotification()) continue;
        // What the callback calls itself; or the lock was passed on already, and the callback returned late.
        if (other.thread == step.thread) return step.begin;
        if (other.end >= step.end) return other.begin;
    }
    return step.end;
}

}  // namespace

std::vector<uint32_t> orderOfSteps(std::vector<Script::Step>& steps, bool locked) {
    std::vector<uint32_t> order(steps.size());
    for (uint32_t i = 0; i < order.size(); ++i) order[i] = i;
    const auto outer = [&](uint32_t one, uint32_t other) {
        return std::tie(steps[one].begin, steps[other].end, one) <
               std::tie(steps[other].begin, steps[one].end, other);
    };
    std::sort(order.begin(), order.end(), outer);
    nest(steps, order);

    std::vector<uint64_t> places(steps.size());
    for (size_t i = 0; i < order.size(); ++i) {
        const Step& step = steps[order[i]];
        places[order[i]] = locked && step.isNotification() ? placeWithLock(steps, order, i) : step.begin;
    }
    // A notification is before the call that began at the same time, but for the one that it is inside of.
    const auto rank = [&](uint32_t one) {
        return std::make_pair(places[one],
                              !steps[one].isNotification() || steps[one].inside != Script::kNone);
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](uint32_t one, uint32_t other) { return rank(one) < rank(other); });
    return order;
}

}  // namespace vexreplay
