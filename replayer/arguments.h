/*
 * How each kind of argument is replayed: observe() makes of what is given the value that a recording has of
 * it, to be compared; handBack() gives the caller what was handed back when it was recorded.
 */
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include "common/bounded_text.h"
#include "recording/Reader.h"
#include "recording/interface.h"
#include "replayer/Handles.h"

namespace vexreplay {

using datacache::boundedText;
using recording::Value;

/** What the arguments of one call need to know of each other. */
struct Parts {
    Handles& handles;
    int32_t count = 0;              /**< of the list */
    int32_t type = VEX_ZMT_UNKNOWN; /**< of the member */
};

// ---- What is given ----

template <typename Kind>
Value observe(Parts& parts, Kind, typename Kind::Type value) {
    using Type = typename Kind::Type;
    if constexpr (!Kind::in || std::is_same_v<Kind, recording::Callback> ||
                  std::is_same_v<Kind, recording::Context>) {
        return {};
    } else if constexpr (std::is_same_v<Kind, recording::Memory>) {
        return recording::Address{parts.handles.numberOfText(value)};
    } else if constexpr (std::is_same_v<Kind, recording::Destroyed>) {
        return recording::Address{value == nullptr ? 0 : parts.handles.numberOf(*value)};
    } else if constexpr (std::is_same_v<Type, void*>) {
        return recording::Address{parts.handles.numberOf(value)};
    } else {
        if constexpr (std::is_same_v<Kind, recording::MemberType>) parts.type = value;
        return int64_t{value};
    }
}

inline Value observe(Parts&, recording::Text, const char* text) {
    if (text == nullptr) return {};
    return std::string(text);
}

inline Value observe(Parts& parts, recording::MemberId, const vex_memberid_u* id) {
    if (id == nullptr) return {};
    recording::Member member;
    const bool known = parts.type >= VEX_ZMT_WWN && parts.type <= VEX_ZMT_ALIAS;
    if (known) member.type = static_cast<vex_fzs_zonemember_type_e>(parts.type);
    member.id = *id;
    return member;
}

inline Value observe(Parts& parts, recording::ReadRecords, vex_smlrequest_s* records) {
    recording::SmlEntries entries;
    for (int32_t i = 0; records != nullptr && i < parts.count; ++i)
        entries.push_back({std::string(boundedText(records[i].key)), "", 0});
    return entries;
}

inline Value observe(Parts& parts, recording::WriteRecords, vex_smlrequest_s* records) {
    recording::SmlEntries entries;
    for (int32_t i = 0; records != nullptr && i < parts.count; ++i) {
        entries.push_back(
            {std::string(boundedText(records[i].key)), std::string(boundedText(records[i].value)), 0});
    }
    return entries;
}

inline Value observe(Parts& parts, recording::Registrations, vex_eventreg_s* list) {
    recording::RegistrationEntries entries;
    if (list != nullptr && parts.count > 0) entries.assign(list, list + parts.count);
    return entries;
}

// ---- What is handed back ----

/** Fills a field with bytes, and zeros behind them. */
template <size_t Size>
void fillField(char (&field)[Size], const std::string& bytes) {
    const size_t size = std::min(bytes.size(), Size);
    std::memcpy(field, bytes.data(), size);
    std::memset(field + size, 0, Size - size);
}

/** Numbers and objects. Null, in the recording or from the caller, leaves things as they are. */
template <typename Kind>
void handBack(Parts& parts, Kind, typename Kind::Type place, const Value& value) {
    if constexpr (Kind::back) {
        if (place == nullptr) return;
        if constexpr (std::is_same_v<typename Kind::Type, void**>) {
            if (const auto* const address = std::get_if<recording::Address>(&value)) {
                *place = parts.handles.object(address->value);
            }
        } else {
            using Number = std::remove_pointer_t<typename Kind::Type>;
            if (const auto* const number = std::get_if<int64_t>(&value))
                *place = static_cast<Number>(*number);
        }
    }
}

inline void handBackEntries(const Parts& parts, vex_smlrequest_s* records, const Value& value) {
    const auto* const entries = std::get_if<recording::SmlEntries>(&value);
    if (entries == nullptr || records == nullptr) return;
    const auto count = static_cast<size_t>(std::max(parts.count, 0));
    for (size_t i = 0; i < std::min(count, entries->size()); ++i) {
        const recording::SmlEntry& entry = (*entries)[i];
        if (entry.key != boundedText(records[i].key)) fillField(records[i].key, entry.key);
        fillField(records[i].value, entry.value);
        records[i].status = entry.status;
    }
}

inline void handBack(Parts& parts, recording::ReadRecords, vex_smlrequest_s* records, const Value& value) {
    handBackEntries(parts, records, value);
}

inline void handBack(Parts& parts, recording::WriteRecords, vex_smlrequest_s* records, const Value& value) {
    handBackEntries(parts, records, value);
}

inline void handBack(Parts& parts, recording::Registrations, vex_eventreg_s* list, const Value& value) {
    const auto* const entries = std::get_if<recording::RegistrationEntries>(&value);
    if (entries == nullptr || list == nullptr) return;
    const auto count = static_cast<size_t>(std::max(parts.count, 0));
    for (size_t i = 0; i < std::min(count, entries->size()); ++i) list[i].result = (*entries)[i].result;
}

/** A text that becomes the caller's; null where the library gave none. */
inline void handBack(Parts& parts, recording::NewText, char** text, const Value& value) {
    if (text == nullptr) return;
    const auto* const handed = std::get_if<recording::HandedText>(&value);
    *text = handed == nullptr ? nullptr : parts.handles.text(handed->memory.value, handed->text);
}

inline void handBack(Parts&, recording::Name, char* name, const Value& value) {
    const auto* const bytes = std::get_if<std::string>(&value);
    if (bytes == nullptr || name == nullptr) return;
    char field[VEX_ZONING_NAME_SIZE];
    fillField(field, *bytes);
    std::memcpy(name, field, sizeof field);
}

inline void handBack(Parts&, recording::NameList, char (**list)[VEX_ZONING_NAME_SIZE], const Value& value) {
    const auto* const names = std::get_if<recording::Names>(&value);
    if (names == nullptr || list == nullptr) return;
    using Field = char[VEX_ZONING_NAME_SIZE];
    // The library's until the next call; one a thread, so that threads do not take each other's away.
    static thread_local std::unique_ptr<Field[]> fields;
    fields = std::make_unique<Field[]>(names->size());
    for (size_t i = 0; i < names->size(); ++i) fillField(fields[i], (*names)[i]);
    *list = fields.get();
}

inline void handBack(Parts&, recording::Limits, vex_fzs_limits_s* limits, const Value& value) {
    const auto* const known = std::get_if<vex_fzs_limits_s>(&value);
    if (known != nullptr && limits != nullptr) *limits = *known;
}

inline void handBack(Parts&, recording::MemberIdBack, vex_memberid_u* id, const Value& value) {
    const auto* const member = std::get_if<recording::Member>(&value);
    if (member != nullptr && id != nullptr) *id = member->id;
}

}  // namespace vexreplay
