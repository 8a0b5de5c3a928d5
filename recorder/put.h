/*
 * How each kind of argument is written into a record: give() what the caller gives, before the call;
 * handBack() what the library hands back, after it. Texts that are given end at their terminator. Fields that
 * are handed back are written whole, up to the zeros that fill them.
 */
#pragma once

#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "common/bounded_text.h"
#include "recorder/Line.h"
#include "recording/interface.h"
#include "recording/mask.h"

namespace vexrecord {

using datacache::boundedText;
using recording::Mask;

/** What the arguments of one call need to know of each other. */
struct CallParts {
    bool masked = false;
    bool secret = false;            /**< a text that is given is a key whose value is secret */
    bool good = false;              /**< the call succeeded */
    int32_t count = 0;              /**< of the list */
    size_t list = 0;                /**< where the given list stands in the line */
    int32_t type = VEX_ZMT_UNKNOWN; /**< of the member */
};

constexpr size_t kLongestText = 1 << 20; /**< of a text without a field; a longer one is cut */

// ---- Parts that kinds have in common ----

inline void putPointer(Line& line, const void* pointer) {
    line.number(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pointer)));
}

inline void putValue(Line& line, std::string_view value, bool secret) {
    line.text(secret && !value.empty() ? Mask(value).text() : value);
}

/** A key, whose end may be secret. */
template <typename Put>
void withKey(const CallParts& parts, std::string_view key, bool& secret, Put put) {
    const size_t begin = parts.masked ? recording::secretPart(key) : std::string_view::npos;
    secret = begin != std::string_view::npos;
    if (!secret || begin == key.size()) return put(key);
    char text[2 * VEX_SML_KEY_SIZE];
    const Mask mask(key.substr(begin));
    const size_t head = std::min(begin, sizeof text - mask.text().size());
    std::memcpy(text, key.data(), head);
    std::memcpy(text + head, mask.text().data(), mask.text().size());
    put(std::string_view(text, head + mask.text().size()));
}

/** A field that the library filled: all of it, which may lack a terminator or have more behind it. */
template <size_t Size>
std::string_view wholeField(const char (&field)[Size], bool masked) {
    if (masked) return boundedText(field);  // what is behind the text may be an older one
    size_t size = Size;
    while (size > 0 && field[size - 1] == '\0') --size;
    return {field, size};
}

inline void putHex(Line& line, const uint8_t* bytes, size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    char text[2 * sizeof(vex_memberid_u)];
    for (size_t i = 0; i < size; ++i) {
        text[2 * i] = kDigits[bytes[i] >> 4];
        text[2 * i + 1] = kDigits[bytes[i] & 0xf];
    }
    line.text({text, 2 * size});
}

/** A member identifier, as its type reads it, so that it means the same on every platform. */
inline void putMember(Line& line, int32_t type, const vex_memberid_u& id) {
    switch (type) {
        case VEX_ZMT_WWN:
        case VEX_ZMT_NODENAME:
            line.raw(type == VEX_ZMT_WWN ? "{\"wwn\":" : "{\"node\":");
            putHex(line, id.wwn, sizeof id.wwn);
            break;
        case VEX_ZMT_FCID:
            line.raw("{\"fcid\":");
            putHex(line, id.fcid, sizeof id.fcid);
            break;
        case VEX_ZMT_DOMAIN_PORT:
            line.raw("{\"domain\":");
            line.number(uint64_t{id.domain_port.domain});
            line.raw(",\"port\":");
            line.number(uint64_t{id.domain_port.port});
            break;
        case VEX_ZMT_ALIAS:
            line.raw("{\"alias\":");
            line.text(boundedText(id.alias));
            break;
        default:
            line.raw("{\"bytes\":");
            putHex(line, id.bytes, sizeof id.bytes);
            break;
    }
    line.raw("}");
}

/** A list as "[...]", each entry written by `put`. */
template <typename Entry, typename Put>
void putList(Line& line, const Entry* list, int32_t count, Put put) {
    line.raw("[");
    for (int32_t i = 0; list != nullptr && i < count; ++i) {
        if (i > 0) line.raw(",");
        put(list[i]);
    }
    line.raw("]");
}

// ---- What is given ----

/** Numbers. */
template <typename Kind>
std::enable_if_t<Kind::in && !std::is_pointer_v<typename Kind::Type>> give(Line& line, CallParts& parts, Kind,
                                                                           typename Kind::Type value) {
    if constexpr (std::is_same_v<Kind, recording::MemberType>) parts.type = value;
    line.number(int64_t{value});
}

/** Objects and other pointers. */
template <typename Kind>
std::enable_if_t<Kind::in && std::is_same_v<typename Kind::Type, void*>> give(Line& line, CallParts&, Kind,
                                                                              void* value) {
    putPointer(line, value);
}

inline void give(Line& line, CallParts&, recording::Callback, vex_notification_cb callback) {
    line.number(uint64_t{reinterpret_cast<uintptr_t>(callback)});
}

inline void give(Line& line, CallParts& parts, recording::Text, const char* text) {
    if (text == nullptr) return line.raw("null");
    withKey(parts, {text, strnlen(text, kLongestText)}, parts.secret,
            [&](std::string_view key) { line.text(key); });
}

inline void give(Line& line, CallParts& parts, recording::MemberId, const vex_memberid_u* id) {
    if (id == nullptr) return line.raw("null");
    putMember(line, parts.type, *id);
}

inline void give(Line& line, CallParts&, recording::Destroyed, void** handle) {
    if (handle == nullptr) return line.raw("null");
    putPointer(line, *handle);
}

inline void give(Line& line, CallParts& parts, recording::ReadRecords, vex_smlrequest_s* records) {
    parts.list = line.position();
    putList(line, records, parts.count, [&](const vex_smlrequest_s& record) {
        bool secret = false;
        withKey(parts, boundedText(record.key), secret, [&](std::string_view key) { line.text(key); });
    });
}

inline void give(Line& line, CallParts& parts, recording::WriteRecords, vex_smlrequest_s* records) {
    parts.list = line.position();
    putList(line, records, parts.count, [&](const vex_smlrequest_s& record) {
        bool secret = false;
        line.raw("[");
        withKey(parts, boundedText(record.key), secret, [&](std::string_view key) { line.text(key); });
        line.raw(",");
        putValue(line, boundedText(record.value), secret);
        line.raw("]");
    });
}

inline void give(Line& line, CallParts& parts, recording::Registrations, vex_eventreg_s* list) {
    putList(line, list, parts.count, [&](const vex_eventreg_s& entry) { line.number(int64_t{entry.code}); });
}

// ---- What is handed back ----

/** Numbers and pointers. */
template <typename Kind>
std::enable_if_t<Kind::back> handBack(Line& line, CallParts& parts, Kind, typename Kind::Type value) {
    if (!parts.good || value == nullptr) return line.raw("null");
    if constexpr (std::is_same_v<Kind, recording::MemberTypeBack>) parts.type = *value;
    if constexpr (std::is_same_v<Kind, recording::NameCount>) parts.count = *value;
    if constexpr (std::is_same_v<typename Kind::Type, void**>) {
        putPointer(line, *value);
    } else {
        line.number(int64_t{*value});
    }
}

/** [status, "value"] for each key that was read, and the key behind it where the library changed it. */
inline void handBack(Line& line, CallParts& parts, recording::ReadRecords, vex_smlrequest_s* records) {
    size_t given = parts.list + 1;
    putList(line, records, parts.count, [&](const vex_smlrequest_s& record) {
        bool secret = false;
        line.raw("[");
        line.number(uint64_t{record.status});
        line.raw(",");
        withKey(parts, boundedText(record.key), secret, [&](std::string_view key) {
            putValue(line, wholeField(record.value, parts.masked), secret);
            if (line.repeats(given, key)) return;
            line.raw(",");
            line.text(key);
        });
        line.raw("]");
        ++given;  // the comma
    });
}

/** [status] for each key that was written, and value and key behind it where the library changed one. */
inline void handBack(Line& line, CallParts& parts, recording::WriteRecords, vex_smlrequest_s* records) {
    size_t given = parts.list + 2;
    putList(line, records, parts.count, [&](const vex_smlrequest_s& record) {
        bool secret = false;
        line.raw("[");
        line.number(uint64_t{record.status});
        withKey(parts, boundedText(record.key), secret, [&](std::string_view key) {
            const std::string_view value = boundedText(record.value);
            const Mask mask(value);
            const bool sameKey = line.repeats(given, key);
            ++given;
            const bool sameValue = line.repeats(given, secret && !value.empty() ? mask.text() : value);
            given += 3;  // to the next key
            if (sameKey && sameValue) return;
            line.raw(",");
            putValue(line, value, secret);
            line.raw(",");
            line.text(key);
        });
        line.raw("]");
    });
}

inline void handBack(Line& line, CallParts& parts, recording::Registrations, vex_eventreg_s* list) {
    putList(line, list, parts.count,
            [&](const vex_eventreg_s& entry) { line.number(int64_t{entry.result}); });
}

inline void handBack(Line& line, CallParts& parts, recording::NewText, char** text) {
    if (!parts.good || text == nullptr || *text == nullptr) return line.raw("null");
    line.raw("[");
    putPointer(line, *text);
    line.raw(",");
    putValue(line, {*text, strnlen(*text, kLongestText)}, parts.secret);
    line.raw("]");
}

inline void handBack(Line& line, CallParts& parts, recording::Name, char* name) {
    if (!parts.good || name == nullptr) return line.raw("null");
    char field[VEX_ZONING_NAME_SIZE];
    std::memcpy(field, name, sizeof field);
    line.text(wholeField(field, false));
}

inline void handBack(Line& line, CallParts& parts, recording::NameList,
                     char (**names)[VEX_ZONING_NAME_SIZE]) {
    if (!parts.good || names == nullptr || *names == nullptr) return line.raw("null");
    using Field = char[VEX_ZONING_NAME_SIZE];
    putList(line, *names, parts.count, [&](const Field& name) { line.text(wholeField(name, false)); });
}

inline void handBack(Line& line, CallParts& parts, recording::Limits, vex_fzs_limits_s* limits) {
    if (!parts.good || limits == nullptr) return line.raw("null");
    int32_t numbers[sizeof *limits / sizeof(int32_t)];
    static_assert(std::size(numbers) == std::size(recording::kLimitNames));
    std::memcpy(numbers, limits, sizeof numbers);
    for (size_t i = 0; i < std::size(numbers); ++i) {
        line.raw(i == 0 ? "{" : ",");
        line.name(recording::kLimitNames[i]);
        line.number(int64_t{numbers[i]});
    }
    line.raw("}");
}

inline void handBack(Line& line, CallParts& parts, recording::MemberIdBack, vex_memberid_u* id) {
    if (!parts.good || id == nullptr) return line.raw("null");
    putMember(line, parts.type, *id);
}

}  // namespace vexrecord
