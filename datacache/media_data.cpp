#include "datacache/media_data.h"

#include "common/number_text.h"

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
