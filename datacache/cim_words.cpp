#include "datacache/cim_words.h"

#include <cstddef>

#include "datacache/event_codes.h"
#include "datacache/event_text.h"

namespace datacache {

namespace {

struct Word {
    uint16_t value;
    const char* text;
};

constexpr Word kOperationalStatus[] = {
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
constexpr Word kPortTypes[] = {
    {0, "unknown"},   {2, "G"},      {3, "GL"},     {4, "E"},      {5, "F"},      {6, "FL"},
    {16000, "Donor"}, {16001, "TH"}, {16002, "TF"}, {16003, "TR"}, {16004, "PT"},
};
constexpr Word kHardwareTypes[] = {{0, "unknown"}, {1, "GL"}, {2, "EXG"}};
constexpr Word kHardwareStatus[] = {{0, "unknown"}, {1, "good"}, {2, "bad"}, {3, "not installed"}};
constexpr Word kComponents[] = {
    {0, "none"}, {1, "fan"}, {2, "power supply"}, {3, "CPU blade"}, {4, "I/O blade"}};
constexpr Word kTransceivers[] = {{0, "SFP"}, {1, "other"}, {2, "unknown"}};
constexpr Word kMemberTypes[] = {{0, "unknown"}, {1, "wwn"},  {2, "port"},
                                 {3, "fcid"},    {4, "node"}, {5, "alias"}};
constexpr Word kZoneTypes[] = {{1, "Soft"}, {2, "HardVPF"}, {3, "HardACL"}};

template <size_t Size>
const char* wordOf(const Word (&words)[Size], uint32_t value) {
    for (const Word& word : words) {
        if (word.value == value) return word.text;
    }
    return "?";
}

}  // namespace

const char* cimWord(CimValue what, uint32_t value) {
    switch (what) {
        case CimValue::OperationalStatus:
            return wordOf(kOperationalStatus, value);
        case CimValue::PortType:
            return wordOf(kPortTypes, value);
        case CimValue::PortHardwareType:
            return wordOf(kHardwareTypes, value);
        case CimValue::HardwareStatus:
            return wordOf(kHardwareStatus, value);
        case CimValue::ComponentKind:
            return wordOf(kComponents, value);
        case CimValue::TransceiverFormat:
            return wordOf(kTransceivers, value);
        case CimValue::MemberType:
            return wordOf(kMemberTypes, value);
        case CimValue::ZoneType:
            return wordOf(kZoneTypes, value);
        case CimValue::EventType:
            return eventName(static_cast<int32_t>(value));
        case CimValue::SwitchEvent:
            return eventCodeName(static_cast<int32_t>(value));
    }
    return "?";
}

}  // namespace datacache
