#include "datacache/transceivers.h"

#include "common/cim_log.h"
#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/event_texts.h"

using namespace datacache;

namespace datacache {

namespace {

/** The library names no bound for the port of a media event: one that the tables have no row for is ignored.
 */
bool hasRow(int32_t port) {
    return port >= 0 && port < static_cast<int32_t>(kPortRows);
}

}  // namespace

void mediaInserted(TransceiverState& transceivers, const std::string& text) {
    const MediaInserted media = parseMediaInserted(text);
    if (media.items != MediaInserted::kItems) {
        cim_log(CIM_LOG_TRACE,
                "DCACHE: VEX_EVENT_PORT_MEDIA_INSTERTED event only contains %d items, string = '%s'\n",
                media.items, text.c_str());
        return;
    }
    if (!hasRow(media.port)) return;
    const auto port = static_cast<size_t>(media.port);
    transceivers.clear(port);
    if (media.presence == 0) return;
    transceivers.mediaPresent[port] = true;
    // Required: the vendor OUI becomes one character, the low byte of the number; the next scan reads it
    // whole.
    transceivers.mediaVendorOUI[port].assign(1, static_cast<char>(media.vendorOUI & 0xFF));
    transceivers.mediaVendorSN[port] = sanitizedSerial(media.vendorSN);
    transceivers.mediaFormat[port] = static_cast<uint8_t>(media.format);
}

void mediaRemoved(TransceiverState& transceivers, const std::string& text) {
    const MediaRemoved media = parseMediaRemoved(text);
    if (media.items != MediaRemoved::kItems) {
        cim_log(CIM_LOG_TRACE,
                "DCACHE: VEX_EVENT_PORT_MEDIA_REMOVED event only contains %d items, string = '%s'\n",
                media.items, text.c_str());
        return;
    }
    if (hasRow(media.port)) transceivers.clear(static_cast<size_t>(media.port));
}

MediaFormat mediaFormatOf(std::string_view data0to31) {
    // Required: the two hexadecimal digits are read as a decimal number, so that 0x0B counts as 0.
    switch (toInt(data0to31.substr(0, 2))) {
        case 0:
            return MEDIA_UNKNOWN;
        case 3:
            return MEDIA_SFP;
        default:
            return MEDIA_OTHER;
    }
}

std::string vendorOUIOf(std::string_view data32to63) {
    constexpr size_t kStart = size_t{2} * (37 - 32);
    constexpr size_t kDigits = 6;
    // Data that end before the identifier tell of none.
    if (data32to63.size() < kStart + kDigits) return kNoVendorOUI;
    return std::string(data32to63.substr(kStart, kDigits));
}

std::string sanitizedSerial(std::string_view serial) {
    constexpr size_t kMost = 17;
    std::string copy(serial.substr(0, kMost));
    // Required: trailing spaces are looked for from the whole text's end, where a longer text's copy has
    // none.
    if (serial.size() <= kMost) copy.erase(copy.find_last_not_of(' ') + 1);
    bool inRun = false;
    for (char& c : copy) {
        const bool space = c == ' ';
        if (space && inRun) c = '_';
        inRun = space;
    }
    return copy;
}

}  // namespace datacache

std::string DataCache::_sanitizedMediaVendorSN(const char* text) {
    return sanitizedSerial(text == nullptr ? "" : text);
}
