#include <cstdarg>
#include <cstdio>

#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"

using datacache::CallWatch;

uint32_t hSwitch = 0;

int32_t vex_smlGetV(uint32_t handle, char** value, uint32_t* extra, const char* format, ...) {
    constexpr int32_t kExpected = 103;  // a failure that callers expect: never reported
    char key[VEX_SML_KEY_SIZE];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(key, sizeof key, format, arguments);
    va_end(arguments);
    cim_log(CIM_LOG_TRACE, "DCACHE: vex_smlGet '%s'\n", key);
    const CallWatch watch("vex_smlGet", key, 1);
    const int32_t result = vex_smlGet(handle, key, value, extra);
    if (result != 0 && result != kExpected) {
        cim_log(CIM_LOG_CRITICAL, "CRIT:%s:%s[%d] vex_smlGet '%s' failed, sw_ret = 0x%x\n", "NORV_Vex_Lib",
                "vex_smlGetV", 50, key, static_cast<unsigned>(result));
    }
    return result;
}

int32_t vex_smlSetV(uint32_t handle, void** reply, const char* format, ...) {
    char key[VEX_SML_KEY_SIZE];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(key, sizeof key, format, arguments);
    va_end(arguments);
    cim_log(CIM_LOG_TRACE, "DCACHE: vex_smlSet '%s'\n", key);
    const CallWatch watch("vex_smlSet", key, 1);
    const int32_t result = vex_smlSet(handle, key, reply);
    if (result != 0) {
        cim_log(CIM_LOG_CRITICAL, "CRIT:%s:%s[%d] vex_smlSet '%s' failed, sw_ret = %d\n", "NORV_Vex_Lib",
                "vex_smlSetV", 78, key, result);
    }
    return result;
}
