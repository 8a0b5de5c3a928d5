#include "simulator/Faults.h"

#include <fnmatch.h>

#include <algorithm>
#include <iterator>

namespace vexsim {
namespace {

constexpr std::string_view kFunctions[] = {
    "vex_IPConnect",
    "vex_enRegisterForEventList",
    "vex_smlGetBatch",
    "vex_smlSetBatch",
    "vex_smlGet",
    "vex_smlSet",
    "vex_libFreeMemory",
    "vex_fzsGetZoningLimitations",
    "vex_fzsGetActiveZonesetName",
    "vex_fzsGetActiveZoneset",
    "vex_fzsGetZoneset",
    "vex_fzsGetAllZonesAndAliases",
    "vex_fzsGetZonesetList",
    "vex_ZonesetCreate",
    "vex_ZonesetDestroy",
    "vex_ZonesetTestName",
    "vex_ZonesetGetName",
    "vex_ZonesetGetZoneCount",
    "vex_ZonesetListZones",
    "vex_ZonesetFindZone",
    "vex_ZonesetAddZone",
    "vex_ZonesetRemoveZone",
    "vex_ZonesetGetAliasCount",
    "vex_ZonesetListAliases",
    "vex_ZonesetFindAlias",
    "vex_ZonesetAddAlias",
    "vex_ZonesetRemoveAlias",
    "vex_ZoneCreate",
    "vex_ZoneCreateCopy",
    "vex_ZoneDestroy",
    "vex_ZoneGetName",
    "vex_ZoneSetName",
    "vex_ZoneGetType",
    "vex_ZoneSetType",
    "vex_ZoneGetMemberCount",
    "vex_ZoneListMembers",
    "vex_ZoneFindMember",
    "vex_ZoneAddMember",
    "vex_ZoneDeleteMember",
    "vex_ZoneAliasCreate",
    "vex_ZoneAliasDestroy",
    "vex_ZoneAliasGetName",
    "vex_ZoneAliasGetMemberCount",
    "vex_ZoneAliasListMembers",
    "vex_ZoneAliasFindMember",
    "vex_ZoneAliasAddMember",
    "vex_ZoneAliasDeleteMember",
    "vex_MemberCreate",
    "vex_MemberDestroy",
    "vex_MemberGetAttr",
    "vex_strToMemberIdentifier",
};

bool matches(const std::optional<std::string>& pattern, const std::string& key) {
    return !pattern || fnmatch(pattern->c_str(), key.c_str(), 0) == 0;
}

bool matchesAny(const std::optional<std::string>& pattern, const std::vector<std::string>& keys) {
    return !pattern || std::any_of(keys.begin(), keys.end(),
                                   [&](const std::string& key) { return matches(pattern, key); });
}

template <class Field>
void takeFirst(std::optional<Field>& field, const std::optional<Field>& next) {
    if (!field) field = next;
}

}  // namespace

bool isFunction(std::string_view name) {
    return std::find(std::begin(kFunctions), std::end(kFunctions), name) != std::end(kFunctions);
}

Effect Hits::onCall() const {
    Effect effect;
    for (const FaultRule& rule : _rules) {
        if (!effect.result && rule.effect.result) {
            effect.result = rule.effect.result;
            effect.carriedOut = rule.effect.carriedOut;
        }
        takeFirst(effect.handle, rule.effect.handle);
        effect.null = effect.null || rule.effect.null;
        effect.delayMs += rule.effect.delayMs;
        effect.uptimeSeconds += rule.effect.uptimeSeconds;
        effect.hang = effect.hang || rule.effect.hang;
        effect.lost = effect.lost || rule.effect.lost;
    }
    return effect;
}

Effect Hits::onKey(const std::string& key) const {
    Effect effect;
    for (const FaultRule& rule : _rules) {
        if (!matches(rule.key, key)) continue;
        if (!effect.status && rule.effect.status) {
            effect.status = rule.effect.status;
            effect.carriedOut = rule.effect.carriedOut;
        }
        takeFirst(effect.value, rule.effect.value);
        takeFirst(effect.truncate, rule.effect.truncate);
        effect.unterminated = effect.unterminated || rule.effect.unterminated;
        effect.inPart = effect.inPart || rule.effect.inPart;
    }
    return effect;
}

void Faults::clear(const std::string& function) {
    const auto isOver = [&](const Counted& counted) {
        return function == "*" || counted.rule.function == function;
    };
    _rules.erase(std::remove_if(_rules.begin(), _rules.end(), isOver), _rules.end());
}

Hits Faults::hit(std::string_view function, const std::vector<std::string>& keys) {
    Hits hits;
    for (Counted& counted : _rules) {
        const FaultRule& rule = counted.rule;
        const bool isAnyCall = rule.function == "*" && function != kNotification;
        if (!isAnyCall && rule.function != function) continue;
        if (!matchesAny(rule.key, keys)) continue;
        const uint64_t number = counted.seen++;
        if (number < rule.skip) continue;
        if (rule.times != 0 && number - rule.skip >= rule.times) continue;
        hits._rules.push_back(rule);
    }
    return hits;
}

}  // namespace vexsim
