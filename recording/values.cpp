#include "recording/values.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <system_error>

namespace recording {

namespace {

constexpr size_t kLongestText = 1 << 20;  // as the recorder cuts them
constexpr size_t kLongestNumber = 40;     ///< of a number in a message

[[noreturn]] void wrong(const std::string& what) {
    throw BadValue(what);
}

const Json& listOf(const Json& value) {
    if (!value.isList()) wrong("is no list");
    return value;
}

/** An entry of a short list. */
Json entryOf(const Json& list, size_t index) {
    auto entry = listOf(list).begin();
    for (; index > 0 && entry != list.end(); --index) ++entry;
    if (!(entry != list.end())) wrong("has an entry that is too short");
    return *entry;
}

/** The entries of a batch: more than a switch could ever be given are refused before they take memory. */
SmlEntries batchOf(const Json& list) {
    constexpr size_t kLongestBatch = 1 << 16;
    const size_t size = listOf(list).size();
    if (size > kLongestBatch) wrong("has more than " + std::to_string(kLongestBatch) + " entries");
    SmlEntries entries;
    entries.reserve(size);
    return entries;
}

uint8_t nibbleOf(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<uint8_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<uint8_t>(digit - 'a' + 10);
    wrong("is no hexadecimal number");
}

/** Reads exactly so many bytes from hexadecimal digits. */
void hexOf(const Json& value, uint8_t* bytes, size_t size) {
    const std::string digits = bytesOf(value, 2 * size);
    if (digits.size() != 2 * size) wrong("has not " + std::to_string(2 * size) + " digits");
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<uint8_t>(nibbleOf(digits[2 * i]) << 4 | nibbleOf(digits[2 * i + 1]));
    }
}

std::string keyOf(const Json& value) {
    return bytesOf(value, VEX_SML_KEY_SIZE);
}

std::string valueOf(const Json& value) {
    return bytesOf(value, VEX_SML_VALUE_SIZE);
}

}  // namespace

std::optional<Json> findField(const Json& object, std::string_view name) {
    if (!object.isObject()) return std::nullopt;
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const bool same = entry->text() == name;
        ++entry;
        if (same) return *entry;
    }
    return std::nullopt;
}

Json field(const Json& object, const char* name) {
    const std::optional<Json> found = findField(object, name);
    if (!found) wrong(std::string(name) + " is missing");
    return *found;
}

int64_t numberOf(const Json& value, int64_t least, int64_t most) {
    if (!value.isNumber()) wrong("is no number");
    const std::string_view digits = value.digits();
    int64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc() && end != digits.data() + digits.size())
        wrong(std::string(digits.substr(0, kLongestNumber)) + " is no whole number");
    if (error != std::errc() ? digits[0] != '-' : number > most)
        wrong(std::string(digits.substr(0, kLongestNumber)) + " is too large");
    if (error != std::errc() || number < least)
        wrong(std::string(digits.substr(0, kLongestNumber)) + " is too small");
    return number;
}

uint64_t unsignedOf(const Json& value) {
    if (value.isNumber()) {
        const std::string_view digits = value.digits();
        uint64_t number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error == std::errc() && end == digits.data() + digits.size()) return number;
    }
    return static_cast<uint64_t>(numberOf(value, 0, INT64_MAX));
}

std::string bytesOf(const Json& value, size_t most) {
    if (!value.isText()) wrong("is no text");
    const std::string_view text = value.text();
    std::string bytes;
    // Each byte takes 2 characters at most.
    if (text.size() > 2 * most) wrong("is longer than " + std::to_string(most) + " bytes");
    bytes.reserve(std::min(text.size(), most));
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned code = static_cast<unsigned char>(text[i]);
        if ((code & 0xfc) == 0xc0 && i + 1 < text.size()) {  // U+0080 to U+00FF
            code = (code & 3) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3f);
        } else if (code >= 0x80) {
            wrong("has a character that stands for no byte");
        }
        if (bytes.size() == most) wrong("is longer than " + std::to_string(most) + " bytes");
        bytes += static_cast<char>(code);
    }
    return bytes;
}

Address addressOf(const Json& value) {
    return {unsignedOf(value)};
}

Member memberOf(const Json& value) {
    if (!value.isObject() || !(value.begin() != value.end())) wrong("is no member");
    Member member;
    auto entry = value.begin();
    const std::string_view kind = entry->text();
    ++entry;
    if (kind == "wwn" || kind == "node") {
        member.type = kind == "wwn" ? VEX_ZMT_WWN : VEX_ZMT_NODENAME;
        hexOf(*entry, member.id.wwn, sizeof member.id.wwn);
    } else if (kind == "fcid") {
        member.type = VEX_ZMT_FCID;
        hexOf(*entry, member.id.fcid, sizeof member.id.fcid);
    } else if (kind == "alias") {
        member.type = VEX_ZMT_ALIAS;
        const std::string name = bytesOf(*entry, sizeof member.id.alias);
        std::copy(name.begin(), name.end(), member.id.alias);
    } else if (kind == "bytes") {
        hexOf(*entry, member.id.bytes, sizeof member.id.bytes);
    } else {
        member.type = VEX_ZMT_DOMAIN_PORT;
        member.id.domain_port.domain = static_cast<uint8_t>(numberOf<uint8_t>(field(value, "domain")));
        member.id.domain_port.port = static_cast<uint32_t>(numberOf<uint32_t>(field(value, "port")));
    }
    return member;
}

// ---- What is given ----

Value readGiven(Text, const Json& value) {
    if (value.isNull()) return {};
    return bytesOf(value, kLongestText);
}

Value readGiven(MemberId, const Json& value) {
    if (value.isNull()) return {};
    return memberOf(value);
}

Value readGiven(ReadRecords, const Json& value) {
    SmlEntries entries = batchOf(value);
    for (const Json& key : value) entries.push_back({keyOf(key), "", 0});
    return entries;
}

Value readGiven(WriteRecords, const Json& value) {
    SmlEntries entries = batchOf(value);
    for (const Json& entry : value) {
        entries.push_back({keyOf(entryOf(entry, 0)), valueOf(entryOf(entry, 1)), 0});
    }
    return entries;
}

Value readGiven(Registrations, const Json& value) {
    RegistrationEntries entries;
    for (const Json& code : listOf(value)) {
        entries.push_back({static_cast<int32_t>(numberOf<int32_t>(code)), 0});
    }
    return entries;
}

// ---- What is handed back ----

namespace {

/** [status, value, key] for each entry that was given; a value or key that is left out did not change. */
Value entriesOf(const Json& value, const Value& given) {
    auto entries = std::get<SmlEntries>(given);
    if (listOf(value).size() != entries.size()) wrong("has not as many entries as were given");
    auto entry = value.begin();
    for (SmlEntry& one : entries) {
        const Json parts = *entry;
        ++entry;
        one.status = static_cast<uint32_t>(numberOf<uint32_t>(entryOf(parts, 0)));
        auto part = ++parts.begin();
        if (part != parts.end()) {
            one.value = valueOf(*part);
            if (++part != parts.end()) one.key = keyOf(*part);
        }
    }
    return entries;
}

}  // namespace

Value readBack(ReadRecords, const Json& value, const Value& given) {
    return entriesOf(value, given);
}

Value readBack(WriteRecords, const Json& value, const Value& given) {
    return entriesOf(value, given);
}

Value readBack(Registrations, const Json& value, const Value& given) {
    auto entries = std::get<RegistrationEntries>(given);
    if (listOf(value).size() != entries.size()) wrong("has not as many entries as were given");
    auto result = value.begin();
    for (vex_eventreg_s& entry : entries) {
        entry.result = static_cast<int32_t>(numberOf<int32_t>(*result));
        ++result;
    }
    return entries;
}

Value readBack(NewText, const Json& value, const Value&) {
    if (value.isNull()) return {};
    return HandedText{addressOf(entryOf(value, 0)), bytesOf(entryOf(value, 1), kLongestText)};
}

Value readBack(Name, const Json& value, const Value&) {
    if (value.isNull()) return {};
    return bytesOf(value, VEX_ZONING_NAME_SIZE);
}

Value readBack(NameList, const Json& value, const Value&) {
    if (value.isNull()) return {};
    Names names;
    for (const Json& name : listOf(value)) names.push_back(bytesOf(name, VEX_ZONING_NAME_SIZE));
    return names;
}

Value readBack(Limits, const Json& value, const Value&) {
    if (value.isNull()) return {};
    int32_t numbers[std::size(kLimitNames)];
    for (size_t i = 0; i < std::size(kLimitNames); ++i) {
        numbers[i] = static_cast<int32_t>(numberOf<int32_t>(field(value, kLimitNames[i])));
    }
    vex_fzs_limits_s limits{};
    static_assert(sizeof limits == sizeof numbers);
    std::memcpy(&limits, numbers, sizeof limits);
    return limits;
}

Value readBack(MemberIdBack, const Json& value, const Value&) {
    if (value.isNull()) return {};
    return memberOf(value);
}

}  // namespace recording
