#include "datacache/cim_status.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "datacache/DataCache.h"

using namespace datacache;

namespace datacache {

namespace {

struct StateWord {
    const char* word;
    uint16_t code;
};

template <size_t Size>
uint16_t codeOf(const StateWord (&table)[Size], std::string_view word) {
    const auto* row =
        std::find_if(std::begin(table), std::end(table), [&](const StateWord& w) { return word == w.word; });
    return row == std::end(table) ? uint16_t{0} : row->code;
}

bool isDown(std::string_view state) {
    return state == "Down" || state == "Downed";
}

}  // namespace

StatusList cimSwitchStatus(std::string_view operState, const StatusList& faults) {
    static constexpr StateWord kStates[] = {{"Diagnostics", CIM_IN_SERVICE},
                                            {"Online", CIM_OK},
                                            {"Offline", CIM_STOPPED},
                                            {"Downed", CIM_STOPPED}};
    const unsigned short primary = codeOf(kStates, operState);
    StatusList result;
    if (primary != CIM_IN_SERVICE) {
        if (std::count(faults.begin(), faults.end(), CIM_SELF_TEST_FAILED) != 0) {
            result.push_back(CIM_ERROR);
        } else {
            const auto pairs = std::count(faults.begin(), faults.end(), CIM_MANAGEMENT_ACCESS_FAULT);
            for (auto i = pairs; i > 0; --i) result.insert(result.end(), {primary, CIM_PREDICTIVE_FAILURE});
        }
    }
    if (result.empty()) result.push_back(primary);
    // The faults follow as they stand, zeros included: a healthy switch reports 2, 0, 0, which hosts expect.
    result.insert(result.end(), faults.begin(), faults.end());
    return result;
}

StatusList cimBladeStatus(std::string_view operState, std::string_view adminState,
                          std::string_view diagStatus) {
    unsigned short primary = CIM_OK;
    if (diagStatus == "Failed") primary = CIM_ERROR;
    if (diagStatus == "Compromised") primary = CIM_DEGRADED;
    // Unlike a port, a blade that is down by administration is in error.
    if (isDown(operState) && isDown(adminState)) primary = CIM_ERROR;

    StatusList result{primary};
    if (operState == "Pending") {
        result.push_back(adminState == "PoweredOff" ? CIM_STOPPING : CIM_STARTING);
    } else if (operState == "Diagnostics") {
        result.push_back(CIM_IN_SERVICE);
    } else if (isDown(operState) || operState == "Offline") {
        result.push_back(CIM_DORMANT);
    }
    return result;
}

uint16_t cimPortStatus(std::string_view operState, std::string_view adminState) {
    if (operState == "Online") return CIM_OK;
    if (operState == "Offline") return CIM_STOPPED;
    if (operState == "Diagnostics") return CIM_IN_SERVICE;
    // Required: administratively "Offline" stops an isolated port, but leaves a down port in error.
    if (operState == "Isolated")
        return isDown(adminState) || adminState == "Offline" ? CIM_STOPPED : CIM_ERROR;
    if (isDown(operState)) return isDown(adminState) ? CIM_STOPPED : CIM_ERROR;
    return CIM_UNKNOWN;
}

uint16_t cimPortType(std::string_view type) {
    static constexpr StateWord kTypes[] = {{"G", 2},      {"GL", 3},        {"E", 4},      {"F", 5},
                                           {"FL", 6},     {"Donor", 16000}, {"TH", 16001}, {"TF", 16002},
                                           {"TR", 16003}, {"PT", 16004}};
    return codeOf(kTypes, type);
}

uint16_t cimPortHardwareType(std::string_view type) {
    static constexpr StateWord kTypes[] = {{"GL", 1}, {"EXG", 2}};
    return codeOf(kTypes, type);
}

HardwareStatus hardwareStatus(std::string_view state) {
    static constexpr StateWord kStates[] = {
        {"Good", HARDWARE_GOOD}, {"Bad", HARDWARE_BAD}, {"NotInstalled", HARDWARE_NOT_INSTALLED}};
    return static_cast<HardwareStatus>(codeOf(kStates, state));
}

}  // namespace datacache

StatusList DataCache::smlSwitchStateToCIMOperationalStatus(const char* operState, const StatusList& faults) {
    return cimSwitchStatus(operState == nullptr ? "" : operState, faults);
}

StatusList DataCache::smlIOBladeStateToCIMOperationalStatus(const std::string& operState,
                                                            const std::string& adminState,
                                                            const std::string& diagStatus) {
    return cimBladeStatus(operState, adminState, diagStatus);
}

StatusList DataCache::smlPortStateToCIMOperationalStatus(const std::string& operState,
                                                         const std::string& adminState) {
    return {cimPortStatus(operState, adminState)};
}

uint16_t DataCache::smlTypeToCIMType(const std::string& type) {
    return cimPortType(type);
}

uint16_t DataCache::smlHWTypeToCIMHWType(const std::string& type) {
    return cimPortHardwareType(type);
}

HardwareStatus DataCache::_smlConvToHardwareStatus(char* state) {
    return hardwareStatus(state == nullptr ? "" : state);
}
