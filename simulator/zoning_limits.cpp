#include "common/export.h"
#include "simulator/Core.h"

using namespace vexsim;

DC_EXPORT int32_t vex_fzsGetZoningLimitations(uint32_t handle, vex_fzs_limits_s* limits) {
    ApiCall call("vex_fzsGetZoningLimitations", {});
    if (call.refused(handle)) return call.refusal();
    if (limits == nullptr) return call.done(BadArgument);
    const std::optional<vex_fzs_limits_s>& known = call.device().zoning_limits;
    if (!known) return call.done(UnknownKey);
    *limits = *known;
    return call.done(Ok);
}
