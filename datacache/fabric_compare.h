#pragma once

#include <functional>
#include <vector>

#include "common/Wwn.h"

namespace datacache {

/** A fabric as it is compared: its name, and the names of its switches in the order of the list. */
struct FabricMembers {
    const Wwn& name;
    const std::vector<Wwn>& switches;
};

/** Whether a name is among the names, searched from the front. */
bool holds(const std::vector<Wwn>& names, const Wwn& name);

/** One step of telling how a fabric changed: an event for the host, or a remark for the log. */
struct FabricStep {
    enum Kind {
        FabricAdd,      ///< event about `fabric`
        FabricRemove,   ///< event about `fabric`
        FabricGrown,    ///< event: `fabric` gained switches
        FabricShrunk,   ///< event: `fabric` lost switches
        SwitchAdd,      ///< event: `member` joined `fabric`
        SwitchRemove,   ///< event: `member` left `fabric`
        LogText,        ///< log `text`, which ends its line
        LogChecking,    ///< log that `member` is looked up among the switches of before
        LogEvaluating,  ///< log that `member` is held against the switch `original` of before
    };
    Kind kind;
    Wwn fabric{};
    Wwn member{};
    Wwn original{};
    const char* text = nullptr;
};

/**
 * Tells the host's story of a fabric that was `before` and is `now`, step by step in order.
 *
 * Under the same name switches have joined or left. Under a new name a fabric that lost a switch has
 * segmented; one that lost none and gained some has merged; one with the same switches was renamed. Pure:
 * what a step does is the taker's affair. The number of steps grows with the square of the number of
 * switches, so they are handed over one at a time and not collected.
 */
void compareFabrics(const FabricMembers& before, const FabricMembers& now,
                    const std::function<void(const FabricStep&)>& take);

}  // namespace datacache
