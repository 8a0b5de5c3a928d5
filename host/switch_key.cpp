#include "host/switch_key.h"

#include "switchlib/NORV_Vex_Lib.h"

std::optional<std::string> readKey(const std::string& key) {
    char* value = nullptr;
    uint32_t extra = 0;
    if (vex_smlGetV(hSwitch, &value, &extra, "%s", key.c_str()) != 0 || value == nullptr) return std::nullopt;
    std::string text = value;
    vex_libFreeMemory(value);
    return text;
}
