#include "host/cim_words.h"

#include "datacache/ChassisState.h"

namespace {

struct Word {
    uint16_t code;
    const char* text;
};

constexpr Word operationalStatusWords[] = {
    {0, "Unknown"},
    {1, "Other"},
    {2, "OK"},
    {3, "Degraded"},
    {4, "Stressed"},
    {5, "Predictive Failure"},
    {6, "Error"},
    {7, "Non-Recoverable Error"},
    {8, "Starting"},
    {9, "Stopping"},
    {10, "Stopped"},
    {11, "In Service"},
    {12, "No Contact"},
    {13, "Lost Communication"},
    {14, "Aborted"},
    {15, "Dormant"},
    {16, "Supporting Entity in Error"},
    {17, "Completed"},
    {18, "Power Mode"},
    {32768, "Self test failed"},
    {32769, "Management processor fault"},
};

constexpr Word hardwareStatusWords[] = {
    {HARDWARE_UNKNOWN, "unknown"},
    {HARDWARE_GOOD, "good"},
    {HARDWARE_BAD, "bad"},
    {HARDWARE_NOT_INSTALLED, "not installed"},
};

constexpr Word portTypeWords[] = {
    {0, "unknown"},   {2, "G"},      {3, "GL"},     {4, "E"},      {5, "F"},      {6, "FL"},
    {16000, "Donor"}, {16001, "TH"}, {16002, "TF"}, {16003, "TR"}, {16004, "PT"},
};

constexpr Word portHardwareWords[] = {{0, "unknown"}, {1, "GL"}, {2, "EXG"}};

constexpr Word transceiverWords[] = {{0, "SFP"}, {1, "other"}, {2, "unknown"}};

template <size_t Size>
Json withWord(const Word (&words)[Size], uint16_t code) {
    const char* text = "?";
    for (const Word& word : words) {
        if (word.code == code) text = word.text;
    }
    return {{"code", code}, {"text", text}};
}

}  // namespace

Json operationalStatus(uint16_t value) {
    return withWord(operationalStatusWords, value);
}

Json switchStatus(const std::vector<uint16_t>& values) {
    Json list = Json::array();
    for (const uint16_t value : values) {
        const bool noFault = value == 0 && !list.empty();
        list.push_back(noFault ? Json{{"code", 0}, {"text", "no fault"}} : operationalStatus(value));
    }
    return list;
}

Json hardwareStatus(uint16_t value) {
    return withWord(hardwareStatusWords, value);
}

Json portType(uint16_t value) {
    return withWord(portTypeWords, value);
}

Json portHardwareType(uint16_t value) {
    return withWord(portHardwareWords, value);
}

Json transceiverFormat(uint16_t value) {
    return withWord(transceiverWords, value);
}
