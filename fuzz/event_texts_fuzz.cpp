/* Feeds arbitrary bytes, as an event's text field, to everything that reads such texts. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "common/bounded_text.h"
#include "datacache/event_texts.h"
#include "datacache/transceivers.h"
#include "vexlib/vexlib.h"

using namespace datacache;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

template <typename Describe>
void checkAlarm(Describe describe) {
    try {
        require(!describe().empty());
    } catch (const std::out_of_range& error) {
        require(std::strcmp(error.what(), "basic_string::substr") == 0);
    }
}

void checkMedia(const std::string& text) {
    const MediaInserted inserted = parseMediaInserted(text);
    require(inserted.items >= -1 && inserted.items <= MediaInserted::kItems);
    require(inserted.vendorSN.size() <= 16);
    const MediaRemoved removed = parseMediaRemoved(text);
    require(removed.items >= -1 && removed.items <= MediaRemoved::kItems);
    require(sanitizedSerial(text).size() <= 17);
    require(vendorOUIOf(text).size() == 6);
}

void checkNameServer(const std::string& text) {
    size_t position = 0;
    std::string name;
    for (size_t before = 0; nextNameServerEntry(text, position, name); before = position) {
        require(position > before && position <= text.size());
        require(name.find(';') == std::string::npos);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // On the heap and without a terminator, so that a read beyond the field is found.
    auto* const event = new vex_event_s;
    std::memset(event->text, 0, sizeof event->text);
    if (size > 0) std::memcpy(event->text, data, size < sizeof event->text ? size : sizeof event->text);
    const std::string text(boundedText(event->text));
    delete event;

    checkAlarm([&] { return overheatDescription(text); });
    checkAlarm([&] { return voltageDescription(text, true); });
    checkAlarm([&] { return voltageDescription(text, false); });
    checkMedia(text);
    checkNameServer(text);
    return 0;
}
