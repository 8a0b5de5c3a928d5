#include "datacache/event_texts.h"

#include <stdexcept>
#include <string_view>

#include "datacache/TextScan.h"

namespace datacache {

namespace {

constexpr const char* kUnknown = "unknown";
constexpr auto kNone = std::string::npos;

/** `text.substr`, with the text of the exception that hosts know; today's standard library prints more. */
std::string piece(const std::string& text, size_t start, size_t length) {
    if (start > text.size()) throw std::out_of_range("basic_string::substr");
    return text.substr(start, length);
}

/** The piece from `start` up to `end`; an end before the start means the rest of the text. */
std::string sensorBetween(const std::string& text, size_t start, size_t end) {
    return piece(text, start, end - start) + " sensor";
}

/** The long wording, "... (NUMBER) the NAME PHRASE": the name begins five characters behind the last ")". */
std::string sensorBefore(const std::string& text, const char* phrase) {
    const size_t end = text.find(phrase);
    if (end == kNone) return kUnknown;
    const size_t parenthesis = text.rfind(')');
    if (parenthesis == kNone) return kUnknown;
    return sensorBetween(text, parenthesis + 6, end);
}

}  // namespace

std::string overheatDescription(const std::string& text) {
    static constexpr std::string_view kHead = "Temp overheat, ";
    const size_t head = text.find(kHead);
    if (head == kNone) return sensorBefore(text, " temp sensor reading is out of range, it is too high");
    const size_t start = head + kHead.size();
    // Required: the end is where the character whose code is the start's position stands, from position 32
    // on.
    const size_t end = text.find(static_cast<char>(static_cast<unsigned char>(start)), 32);
    return end == kNone ? kUnknown : sensorBetween(text, start, end);
}

std::string voltageDescription(const std::string& text, bool tooHigh) {
    const size_t end = text.find(" voltage sensor shows ");
    if (end == kNone) {
        return sensorBefore(text, tooHigh ? " voltage supply is out of range, it is too high"
                                          : " voltage supply is out of range, it is too low");
    }
    const size_t bracket = text.rfind('[');
    return bracket == kNone ? kUnknown : sensorBetween(text, bracket + 1, end);
}

MediaInserted parseMediaInserted(const std::string& text) {
    MediaInserted media;
    int32_t unused = 0;
    TextScan scan(text);
    scan.number(unused).literal(';').number(unused).literal(';').number(unused).literal(';');
    scan.number(media.port).literal(';').number(media.presence).literal(';');
    // The serial number takes every character that is not blank, ';' too: only one of 16 ends before the ';'.
    scan.number(media.vendorOUI).literal(';').word(media.vendorSN, 16).literal(';').number(media.format);
    media.items = scan.items();
    return media;
}

MediaRemoved parseMediaRemoved(const std::string& text) {
    MediaRemoved media;
    int32_t unused = 0;
    TextScan scan(text);
    scan.number(unused).literal(';').number(unused).literal(';').number(unused).literal(';').number(
        media.port);
    media.items = scan.items();
    return media;
}

bool nextNameServerEntry(const std::string& text, size_t& position, std::string& portName) {
    const size_t first = text.find(',', position);
    if (first == kNone) return false;
    const size_t second = text.find(',', first + 1);
    if (second == kNone) return false;
    const size_t end = text.find(';', second + 1);
    portName = text.substr(second + 1, end == kNone ? kNone : end - second - 1);
    position = end == kNone ? text.size() : end + 1;
    return true;
}

}  // namespace datacache
