#include "datacache/transceivers.h"

#include "common/cim_log.h"
#include "datacache/DataCache.h"
#include "datacache/event_texts.h"

namespace {

/** The library names no bound for the port of a media event: one that the tables have no row for is ignored.
 */
bool hasRow(int32_t port) {
    return port >= 0 && port < static_cast<int32_t>(kPortRows);
}

}  // namespace

std::string DataCache::_sanitizedMediaVendorSN(const char* text) {
    return sanitizedSerial(text == nullptr ? "" : text);
}

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
