#include "datacache/fabric_compare.h"

#include <algorithm>

namespace datacache {

namespace {

using Steps = std::function<void(const FabricStep&)>;

void takeText(const Steps& take, const char* text) {
    take({FabricStep::LogText, {}, {}, {}, text});
}

/** Looks for a switch of before, remarking every comparison on the way. */
bool isStillMember(const FabricMembers& now, const Wwn& original, const Steps& take) {
    for (const Wwn& member : now.switches) {
        take({FabricStep::LogEvaluating, now.name, member, original});
        if (member == original) return true;
    }
    return false;
}

void compareSameName(const FabricMembers& before, const FabricMembers& now, const Steps& take) {
    takeText(take, "DCACHE: _fabric._fabric_name == _origFabricName\n");
    takeText(take, "DCACHE: Checking for new switches in the fabric\n");
    bool added = false;
    for (const Wwn& member : now.switches) {
        take({FabricStep::LogChecking, now.name, member});
        if (holds(before.switches, member)) continue;
        take({FabricStep::SwitchAdd, now.name, member});
        added = true;
    }
    bool removed = false;
    for (const Wwn& original : before.switches) {
        if (isStillMember(now, original, take)) continue;
        take({FabricStep::SwitchRemove, now.name, original});
        removed = true;
    }
    // Both, where there were losses and gains: first the losses.
    if (removed) take({FabricStep::FabricShrunk, now.name});
    if (added) take({FabricStep::FabricGrown, now.name});
}

void addKnownSwitches(const FabricMembers& before, const FabricMembers& now, const Steps& take) {
    for (const Wwn& member : now.switches) {
        if (holds(before.switches, member)) take({FabricStep::SwitchAdd, now.name, member});
    }
}

void compareNewName(const FabricMembers& before, const FabricMembers& now, const Steps& take) {
    takeText(take, "DCACHE: _fabric._fabric_name != _origFabricName\n");
    const bool newcomers = std::any_of(now.switches.begin(), now.switches.end(),
                                       [&](const Wwn& member) { return !holds(before.switches, member); });
    const bool lost = std::any_of(before.switches.begin(), before.switches.end(),
                                  [&](const Wwn& original) { return !holds(now.switches, original); });
    if (lost) {
        takeText(take, "DCACHE: Segmentation in original fabric\n");
        take({FabricStep::FabricShrunk, before.name});
        takeText(take, "DCACHE: Creation of new fabric\n");
        take({FabricStep::FabricAdd, now.name});
        addKnownSwitches(before, now, take);
    } else if (!newcomers) {
        takeText(take, "DCACHE: Delete original fabric\n");
        take({FabricStep::FabricRemove, before.name});
        takeText(take, "DCACHE: Create new fabric\n");
        take({FabricStep::FabricAdd, now.name});
        for (const Wwn& original : before.switches) take({FabricStep::SwitchAdd, now.name, original});
    } else {
        takeText(take, "DCACHE: Merge fabric\n");
        take({FabricStep::FabricGrown, now.name});
        takeText(take, "DCACHE: Delete old fabric\n");
        take({FabricStep::FabricRemove, before.name});
        // Required: newcomers get no event; the fabric's growth is all that the host hears of them.
        addKnownSwitches(before, now, take);
    }
}

}  // namespace

bool holds(const std::vector<Wwn>& names, const Wwn& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

void compareFabrics(const FabricMembers& before, const FabricMembers& now, const Steps& take) {
    if (now.name == before.name) {
        compareSameName(before, now, take);
    } else {
        compareNewName(before, now, take);
    }
}

}  // namespace datacache
