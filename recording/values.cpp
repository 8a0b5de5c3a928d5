#include "recording/values.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace recording {

namespace {

constexpr size_t kLongestText = 1 << 20;  // as the recorder cuts them

/** Adds to what was said, what it is about. */
[[noreturn]] void wrong(const std::string& what) {
    throw BadValue(what);
}

const Json& listOf(const Json& value) {
    if (!value.is_array()) wrong("is no list");
    return value;
}

const Json& entryOf(const Json& list, size_t index) {
    if (!list.is_array() || list.size() <= index) wrong("has an entry that is too short");
    return list[index];
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

const Json& field(const Json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end()) wrong(std::string(name) + " is missing");
    return *found;
}

int64_t numberOf(const Json& value, int64_t least, int64_t most) {
    if (!value.is_number_integer()) {
        wrong(value.is_number() ? value.dump() + " is too large or no whole number" : "is no number");
    }
    const bool beyond =
        value.is_number_unsigned() && value.get<uint64_t>() > static_cast<uint64_t>(INT64_MAX);
    if (beyond || value.get<int64_t>() > most) wrong(value.dump() + " is too large");
    if (value.get<int64_t>() < least) wrong(value.dump() + " is too small");
    return value.get<int64_t>();
}

uint64_t unsignedOf(const Json& value) {
    if (value.is_number_unsigned()) return value.get<uint64_t>();
    return static_cast<uint64_t>(numberOf(value, 0, INT64_MAX));
}

std::string bytesOf(const Json& value, size_t most) {
    if (!value.is_string()) wrong("is no text");
    const auto& text = value.get_ref<const std::string&>();
    std::string bytes;
    bytes.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80) {
            bytes += text[i];
        } else if ((first & 0xfc) == 0xc0 && i + 1 < text.size()) {  // a character up to U+00FF is one byte
            const auto second = static_cast<unsigned char>(text[++i]);
            bytes += static_cast<char>((first & 3) << 6 | (second & 0x3f));
        } else {
            wrong("has a character that stands for no byte");
        }
    }
    if (bytes.size() > most) wrong("is longer than " + std::to_string(most) + " bytes");
    return bytes;
}

Address addressOf(const Json& value) {
    return {unsignedOf(value)};
}

Member memberOf(const Json& value) {
    if (!value.is_object() || value.empty()) wrong("is no member");
    Member member;
    const std::string& kind = value.begin().key();
    if (kind == "wwn" || kind == "node") {
        member.type = kind == "wwn" ? VEX_ZMT_WWN : VEX_ZMT_NODENAME;
        hexOf(*value.begin(), member.id.wwn, sizeof member.id.wwn);
    } else if (kind == "fcid") {
        member.type = VEX_ZMT_FCID;
        hexOf(*value.begin(), member.id.fcid, sizeof member.id.fcid);
    } else if (kind == "alias") {
        member.type = VEX_ZMT_ALIAS;
        const std::string name = bytesOf(*value.begin(), sizeof member.id.alias);
        std::copy(name.begin(), name.end(), member.id.alias);
    } else if (kind == "bytes") {
        hexOf(*value.begin(), member.id.bytes, sizeof member.id.bytes);
    } else {
        member.type = VEX_ZMT_DOMAIN_PORT;
        member.id.domain_port.domain = static_cast<uint8_t>(numberOf<uint8_t>(field(value, "domain")));
        member.id.domain_port.port = static_cast<uint32_t>(numberOf<uint32_t>(field(value, "port")));
    }
    return member;
}

// ---- What is given ----

Value readGiven(Text, const Json& value) {
    if (value.is_null()) return {};
    return bytesOf(value, kLongestText);
}

Value readGiven(MemberId, const Json& value) {
    if (value.is_null()) return {};
    return memberOf(value);
}

Value readGiven(ReadRecords, const Json& value) {
    SmlEntries entries;
    for (const Json& key : listOf(value)) entries.push_back({keyOf(key), "", 0});
    return entries;
}

Value readGiven(WriteRecords, const Json& value) {
    SmlEntries entries;
    for (const Json& entry : listOf(value)) {
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

/** [status, value, key] for each entry that was given; what is not there is as it was. */
Value entriesOf(const Json& value, const Value& given) {
    auto entries = std::get<SmlEntries>(given);
    if (listOf(value).size() != entries.size()) wrong("has not as many entries as were given");
    for (size_t i = 0; i < entries.size(); ++i) {
        const Json& entry = value[i];
        entries[i].status = static_cast<uint32_t>(numberOf<uint32_t>(entryOf(entry, 0)));
        if (entry.size() > 1) entries[i].value = valueOf(entry[1]);
        if (entry.size() > 2) entries[i].key = keyOf(entry[2]);
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
    for (size_t i = 0; i < entries.size(); ++i) {
        entries[i].result = static_cast<int32_t>(numberOf<int32_t>(value[i]));
    }
    return entries;
}

Value readBack(NewText, const Json& value, const Value&) {
    if (value.is_null()) return {};
    return HandedText{addressOf(entryOf(value, 0)), bytesOf(entryOf(value, 1), kLongestText)};
}

Value readBack(Name, const Json& value, const Value&) {
    if (value.is_null()) return {};
    return bytesOf(value, VEX_ZONING_NAME_SIZE);
}

Value readBack(NameList, const Json& value, const Value&) {
    if (value.is_null()) return {};
    Names names;
    for (const Json& name : listOf(value)) names.push_back(bytesOf(name, VEX_ZONING_NAME_SIZE));
    return names;
}

Value readBack(Limits, const Json& value, const Value&) {
    if (value.is_null()) return {};
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
    if (value.is_null()) return {};
    return memberOf(value);
}

}  // namespace recording
