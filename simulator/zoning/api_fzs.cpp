// The switch's zoning as the library hands it out: limits, names, and zonesets as objects of the caller's.
#include <algorithm>
#include <cstring>

#include "common/export.h"
#include "simulator/Core.h"
#include "simulator/zoning/api.h"

using namespace vexsim;

namespace {

int32_t giveZoneset(ApiCall& call, void** zoneset, const ZonesetContent& content) {
    *zoneset = call.nulled() ? nullptr : call.zoning().make(content);
    return call.done(Ok);
}

}  // namespace

DC_EXPORT int32_t vex_fzsGetZoningLimitations(uint32_t handle, vex_fzs_limits_s* limits) {
    ApiCall call("vex_fzsGetZoningLimitations", {});
    if (call.refused(handle)) return call.refusal();
    if (limits == nullptr) return call.done(BadArgument);
    const std::optional<vex_fzs_limits_s>& known = call.device().zoning_limits;
    if (!known) return call.done(UnknownKey);
    *limits = *known;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_fzsGetActiveZonesetName(uint32_t handle, char* name) {
    ApiCall call("vex_fzsGetActiveZonesetName", {});
    if (call.refused(handle)) return call.refusal();
    const std::optional<ZonesetContent>& active = call.device().part<Zoning>().active;
    return active ? giveName(call, active->name, name) : call.done(Absent);
}

DC_EXPORT int32_t vex_fzsGetActiveZoneset(uint32_t handle, void** zoneset) {
    ApiCall call("vex_fzsGetActiveZoneset", {});
    if (call.refused(handle)) return call.refusal();
    if (zoneset == nullptr) return call.done(BadArgument);
    const std::optional<ZonesetContent>& active = call.device().part<Zoning>().active;
    return active ? giveZoneset(call, zoneset, *active) : call.done(Absent);
}

DC_EXPORT int32_t vex_fzsGetZoneset(uint32_t handle, const char* name, void** zoneset) {
    ApiCall call("vex_fzsGetZoneset", {textOf(name)});
    if (call.refused(handle)) return call.refusal();
    if (zoneset == nullptr) return call.done(BadArgument);
    const auto content = collect(call.device().part<Zoning>().configured, textOf(name));
    return content ? giveZoneset(call, zoneset, *content) : call.done(NoSuchName);
}

DC_EXPORT int32_t vex_fzsGetAllZonesAndAliases(uint32_t handle, const char* name, void** zoneset) {
    ApiCall call("vex_fzsGetAllZonesAndAliases", {textOf(name)});
    if (call.refused(handle)) return call.refusal();
    if (zoneset == nullptr) return call.done(BadArgument);
    const ZoningDatabase& database = call.device().part<Zoning>().configured;
    return giveZoneset(call, zoneset, {textOf(name), database.zones, database.aliases});
}

DC_EXPORT int32_t vex_fzsGetZonesetList(uint32_t handle, int32_t* count,
                                        char (**names)[VEX_ZONING_NAME_SIZE]) {
    ApiCall call("vex_fzsGetZonesetList", {});
    if (call.refused(handle)) return call.refusal();
    if (count == nullptr || names == nullptr) return call.done(BadArgument);
    using Field = char[VEX_ZONING_NAME_SIZE];
    static std::unique_ptr<Field[]> list;  // the library's, until the next call
    const auto& zonesets = call.device().part<Zoning>().configured.zonesets;
    list = std::make_unique<Field[]>(zonesets.size());
    size_t next = 0;
    for (const auto& [name, zones] : zonesets) {
        const Effect effect = call.faultless() ? Effect() : call.onKey(name);
        writeName(effect.value.value_or(name), effect.unterminated, list[next++]);
    }
    *count = static_cast<int32_t>(zonesets.size());
    *names = list.get();
    return call.done(Ok);
}
