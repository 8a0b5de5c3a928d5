/*
 * How each kind of argument is read from a record. Everything is checked: readers throw BadValue with a text
 * that says what is wrong, and whoever called them says where.
 */
#pragma once

#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "recording/Json.h"
#include "recording/Reader.h"
#include "recording/interface.h"

namespace recording {

struct BadValue : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** A field of an object, if it is there. */
std::optional<Json> findField(const Json& object, std::string_view name);
/** A field of an object; a BadValue names it. */
Json field(const Json& object, const char* name);
/** A whole number of a range. */
int64_t numberOf(const Json& value, int64_t least, int64_t most);
uint64_t unsignedOf(const Json& value);
/** The bytes that a text stands for. */
std::string bytesOf(const Json& value, size_t most);

Address addressOf(const Json& value);
Member memberOf(const Json& value);

template <typename T>
int64_t numberOf(const Json& value) {
    return numberOf(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
}

// ---- What is given ----

template <typename Kind>
Value readGiven(Kind, const Json& value) {
    using Type = typename Kind::Type;
    if constexpr (std::is_pointer_v<Type>) {
        return value.isNull() ? Address{} : addressOf(value);
    } else if constexpr (std::is_enum_v<Type>) {
        return numberOf<int32_t>(value);
    } else {
        return numberOf<Type>(value);
    }
}
Value readGiven(Text, const Json& value);
Value readGiven(MemberId, const Json& value);
Value readGiven(ReadRecords, const Json& value);
Value readGiven(WriteRecords, const Json& value);
Value readGiven(Registrations, const Json& value);

// ---- What is handed back ----

template <typename Kind>
Value readBack(Kind, const Json& value, const Value&) {
    using Type = std::remove_pointer_t<typename Kind::Type>;
    if (value.isNull()) return {};
    if constexpr (std::is_pointer_v<Type>) {
        return addressOf(value);
    } else if constexpr (std::is_same_v<Type, uint32_t>) {
        return numberOf<uint32_t>(value);
    } else if constexpr (std::is_same_v<Type, long>) {
        return numberOf<int64_t>(value);
    } else {
        return numberOf<int32_t>(value);
    }
}
/** `given`: what was given as this argument. */
Value readBack(ReadRecords, const Json& value, const Value& given);
Value readBack(WriteRecords, const Json& value, const Value& given);
Value readBack(Registrations, const Json& value, const Value& given);
Value readBack(NewText, const Json& value, const Value& given);
Value readBack(Name, const Json& value, const Value& given);
Value readBack(NameList, const Json& value, const Value& given);
Value readBack(Limits, const Json& value, const Value& given);
Value readBack(MemberIdBack, const Json& value, const Value& given);

}  // namespace recording
