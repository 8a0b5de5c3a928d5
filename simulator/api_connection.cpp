#include <chrono>
#include <set>

#include "common/export.h"
#include "simulator/Core.h"

using namespace vexsim;

namespace {

std::string text(const char* given) {
    return given == nullptr ? "(null)" : given;
}

}  // namespace

DC_EXPORT int32_t vex_IPConnect(const char* host, const char* client, const char* options, uint32_t* handle) {
    ApiCall call("vex_IPConnect", {text(host), text(client), text(options)});
    if (call.misused(host == nullptr || client == nullptr || options == nullptr || handle == nullptr))
        return call.refusal();
    *handle = call.connect();
    return call.done(Ok);
}

DC_EXPORT int32_t vex_enRegisterForEventList(uint32_t handle, vex_notification_cb callback, void* context,
                                             vex_eventreg_s* list, int32_t count) {
    std::vector<std::string> keys;
    for (int32_t i = 0; list != nullptr && i < count; ++i) keys.push_back(std::to_string(list[i].code));
    ApiCall call("vex_enRegisterForEventList", std::move(keys), handle);
    if (call.misused(callback == nullptr || list == nullptr || count < 0)) return call.refusal();
    std::set<int32_t> codes;
    for (int32_t i = 0; i < count; ++i) {
        const Effect effect = call.onKey(std::to_string(list[i].code));
        const uint32_t status = effect.status.value_or(Ok);
        list[i].result = static_cast<int32_t>(status);
        if (status == Ok || effect.carriedOut) codes.insert(list[i].code);
    }
    Core::instance().notifier.registerCallback(callback, context, std::move(codes));
    return call.done(Ok);
}

DC_EXPORT int32_t vex_libFreeMemory(void* memory) {
    ApiCall call("vex_libFreeMemory", {});
    if (call.refused()) return call.refusal();
    const std::optional<std::string> text = Core::instance().texts.take(memory);
    if (call.misused(!text)) return call.refusal();
    call.about(*text);
    return call.done(Ok);
}

DC_EXPORT void uptime(long* seconds) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    Core& core = Core::instance();
    const Lock lock(core.mutex);
    if (seconds == nullptr) {
        ++core.misuse;
        return;
    }
    *seconds = static_cast<long>(std::chrono::duration_cast<std::chrono::seconds>(now).count()) +
               core.device.clockOffset;
}
