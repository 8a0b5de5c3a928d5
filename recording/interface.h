/*
 * The interface of vexlib as data: each function with the kind and the name of its result and its arguments.
 *
 * Recorder, replayer and reader are built from this one table, so a new function is one row, and the compiler
 * compares every row with the function's declaration. A kind says of which C type an argument is, whether
 * it is given (`in`), handed back (`back`) or both, and what it means; what to do with a kind is written once
 * in the recorder (how it is written), the reader (how it is read) and the replayer (how it is compared and
 * handed back). The names are those of the fields in a recording.
 */
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/export.h"
#include "vexlib/vexlib.h"

namespace recording {

/** The version of the format; a reader refuses every other. */
constexpr int kFormatVersion = 1;

/** The names of the zoning limits in a recording, in the order of vex_fzs_limits_s. */
constexpr const char* kLimitNames[] = {"zonesets",       "zones",   "members",        "zonesPerZoneset",
                                       "membersPerZone", "aliases", "membersPerAlias"};

// ---- Kinds ----

template <typename T>
struct In {
    using Type = T;
    static constexpr bool in = true;
    static constexpr bool back = false;
};

template <typename T>
struct Back {
    using Type = T;
    static constexpr bool in = false;
    static constexpr bool back = true;
};

template <typename T>
struct InBack {
    using Type = T;
    static constexpr bool in = true;
    static constexpr bool back = true;
};

/* Given: numbers and texts. */
struct Connection : In<uint32_t> {};
struct Count : In<int32_t> {}; /**< entries of the list beside it */
struct Index : In<int32_t> {};
struct Text : In<const char*> {};
struct ZoneType : In<vex_fzs_zone_type_e> {};
struct MemberType : In<vex_fzs_zonemember_type_e> {};
struct MemberId : In<const vex_memberid_u*> {}; /**< of the type beside it */
struct Callback : In<vex_notification_cb> {};
struct Context : In<void*> {};
struct Memory : In<void*> {}; /**< a text that was handed out, to be released */

/* Given: objects. */
struct Object : In<void*> {};
struct Adopted : In<void*> {};        /**< becomes the first argument's */
struct Removed : In<void*> {};        /**< destroyed with success */
struct Destroyed : InBack<void**> {}; /**< destroyed with success, with all it holds */

/* Lists that the library completes. */
struct ReadRecords : InBack<vex_smlrequest_s*> {};  /**< keys given; values and statuses handed back */
struct WriteRecords : InBack<vex_smlrequest_s*> {}; /**< keys and values given; statuses handed back */
struct Registrations : InBack<vex_eventreg_s*> {};

/* Handed back. */
struct NewConnection : Back<uint32_t*> {};
struct Word : Back<uint32_t*> {};
struct Seconds : Back<long*> {};
struct NewText : Back<char**> {}; /**< becomes the caller's, until it is released */
struct Reply : Back<void**> {};
struct NewObject : Back<void**> {}; /**< becomes the caller's */
struct Name : Back<char*> {};       /**< VEX_ZONING_NAME_SIZE bytes */
struct Limits : Back<vex_fzs_limits_s*> {};
struct NameCount : Back<int32_t*> {};
struct NameList : Back<char (**)[VEX_ZONING_NAME_SIZE]> {}; /**< as many as the NameCount beside it */
struct ZoneTypeBack : Back<vex_fzs_zone_type_e*> {};
struct MemberTypeBack : Back<vex_fzs_zonemember_type_e*> {};
struct MemberIdBack : Back<vex_memberid_u*> {}; /**< of the type beside it */

/* Results. */
struct Status : Back<int32_t> {}; /**< what is handed back is good when it is 0; lists in any case */
struct Amount : Back<int32_t> {};
struct NoResult : Back<void> {};   /**< what is handed back is good */
struct Owned : Back<void*> {};     /**< an object that becomes the caller's */
struct Contained : Back<void*> {}; /**< an object that stays the first argument's */

// ---- The table ----

// clang-format off
/** ROW(kind of the result, function, (kind, name) of each argument, of which there are 1 to 5) */
#define VEX_INTERFACE(ROW)                                                                                    \
    ROW(Status, vex_IPConnect, (Text, host), (Text, client), (Text, options), (NewConnection, handle))        \
    ROW(Status, vex_enRegisterForEventList, (Connection, handle), (Callback, callback), (Context, context),   \
        (Registrations, list), (Count, count))                                                                \
    ROW(Status, vex_smlGetBatch, (Connection, handle), (ReadRecords, records), (Count, count))                \
    ROW(Status, vex_smlSetBatch, (Connection, handle), (WriteRecords, records), (Count, count))               \
    ROW(Status, vex_smlGet, (Connection, handle), (Text, key), (NewText, value), (Word, extra))               \
    ROW(Status, vex_smlSet, (Connection, handle), (Text, key), (Reply, reply))                                \
    ROW(Status, vex_libFreeMemory, (Memory, memory))                                                          \
    ROW(Status, vex_fzsGetZoningLimitations, (Connection, handle), (Limits, limits))                          \
    ROW(Status, vex_fzsGetActiveZonesetName, (Connection, handle), (Name, name))                              \
    ROW(Status, vex_fzsGetActiveZoneset, (Connection, handle), (NewObject, zoneset))                          \
    ROW(Status, vex_fzsGetZoneset, (Connection, handle), (Text, name), (NewObject, zoneset))                  \
    ROW(Status, vex_fzsGetAllZonesAndAliases, (Connection, handle), (Text, name), (NewObject, zoneset))       \
    ROW(Status, vex_fzsGetZonesetList, (Connection, handle), (NameCount, count), (NameList, names))           \
    ROW(Owned, vex_ZonesetCreate, (Text, name))                                                               \
    ROW(Status, vex_ZonesetDestroy, (Destroyed, zoneset))                                                     \
    ROW(Status, vex_ZonesetTestName, (Text, name))                                                            \
    ROW(Status, vex_ZonesetGetName, (Object, zoneset), (Name, name))                                          \
    ROW(Amount, vex_ZonesetGetZoneCount, (Object, zoneset))                                                   \
    ROW(Contained, vex_ZonesetListZones, (Object, zoneset), (Index, index))                                   \
    ROW(Contained, vex_ZonesetFindZone, (Object, zoneset), (Text, name))                                      \
    ROW(Status, vex_ZonesetAddZone, (Object, zoneset), (Adopted, zone))                                       \
    ROW(Status, vex_ZonesetRemoveZone, (Object, zoneset), (Removed, zone))                                    \
    ROW(Amount, vex_ZonesetGetAliasCount, (Object, zoneset))                                                  \
    ROW(Contained, vex_ZonesetListAliases, (Object, zoneset), (Index, index))                                 \
    ROW(Contained, vex_ZonesetFindAlias, (Object, zoneset), (Text, name))                                     \
    ROW(Status, vex_ZonesetAddAlias, (Object, zoneset), (Adopted, alias))                                     \
    ROW(Status, vex_ZonesetRemoveAlias, (Object, zoneset), (Removed, alias))                                  \
    ROW(Owned, vex_ZoneCreate, (Text, name))                                                                  \
    ROW(Owned, vex_ZoneCreateCopy, (Object, zone), (Text, name))                                              \
    ROW(Status, vex_ZoneDestroy, (Destroyed, zone))                                                           \
    ROW(Status, vex_ZoneGetName, (Object, zone), (Name, name))                                                \
    ROW(Status, vex_ZoneSetName, (Object, zone), (Text, name))                                                \
    ROW(Status, vex_ZoneGetType, (Object, zone), (ZoneTypeBack, type))                                        \
    ROW(Status, vex_ZoneSetType, (Object, zone), (ZoneType, type))                                            \
    ROW(Amount, vex_ZoneGetMemberCount, (Object, zone))                                                       \
    ROW(Contained, vex_ZoneListMembers, (Object, zone), (Index, index))                                       \
    ROW(Contained, vex_ZoneFindMember, (Object, zone), (MemberType, type), (MemberId, id))                    \
    ROW(Status, vex_ZoneAddMember, (Object, zone), (Adopted, member))                                         \
    ROW(Status, vex_ZoneDeleteMember, (Object, zone), (Removed, member))                                      \
    ROW(Owned, vex_ZoneAliasCreate, (Text, name))                                                             \
    ROW(Status, vex_ZoneAliasDestroy, (Destroyed, alias))                                                     \
    ROW(Status, vex_ZoneAliasGetName, (Object, alias), (Name, name))                                          \
    ROW(Amount, vex_ZoneAliasGetMemberCount, (Object, alias))                                                 \
    ROW(Contained, vex_ZoneAliasListMembers, (Object, alias), (Index, index))                                 \
    ROW(Contained, vex_ZoneAliasFindMember, (Object, alias), (MemberType, type), (MemberId, id))              \
    ROW(Status, vex_ZoneAliasAddMember, (Object, alias), (Adopted, member))                                   \
    ROW(Status, vex_ZoneAliasDeleteMember, (Object, alias), (Removed, member))                                \
    ROW(Owned, vex_MemberCreate, (MemberType, type), (MemberId, id))                                          \
    ROW(Status, vex_MemberDestroy, (Destroyed, member))                                                       \
    ROW(Status, vex_MemberGetAttr, (Object, member), (MemberTypeBack, type), (MemberIdBack, id))              \
    ROW(Status, vex_strToMemberIdentifier, (Text, text), (MemberType, type), (MemberIdBack, id))              \
    ROW(NoResult, uptime, (Seconds, seconds))
// clang-format on

// ---- What is made of a row ----

#define VEX_PAIR_KIND(kind, name) kind
#define VEX_PAIR_TYPED(kind, name) recording::kind::Type name
#define VEX_PAIR_NAME(kind, name) name
#define VEX_PAIR_STRING(kind, name) #name
#define VEX_KIND(pair) VEX_PAIR_KIND pair
#define VEX_TYPED(pair) VEX_PAIR_TYPED pair
#define VEX_NAME(pair) VEX_PAIR_NAME pair
#define VEX_STRING(pair) VEX_PAIR_STRING pair

#define VEX_EACH1(m, a) m(a)
#define VEX_EACH2(m, a, ...) m(a), VEX_EACH1(m, __VA_ARGS__)
#define VEX_EACH3(m, a, ...) m(a), VEX_EACH2(m, __VA_ARGS__)
#define VEX_EACH4(m, a, ...) m(a), VEX_EACH3(m, __VA_ARGS__)
#define VEX_EACH5(m, a, ...) m(a), VEX_EACH4(m, __VA_ARGS__)
#define VEX_PICK(a, b, c, d, e, picked, ...) picked
/** `m` of each argument, separated by commas. */
#define VEX_EACH(m, ...) \
    VEX_PICK(__VA_ARGS__, VEX_EACH5, VEX_EACH4, VEX_EACH3, VEX_EACH2, VEX_EACH1, 0)(m, __VA_ARGS__)

template <typename... Argument>
struct Kinds {};

/** A row as a type, named as its function. */
namespace row {
#define VEX_ROW_TYPE(result, function, ...)                                         \
    struct function {                                                               \
        using Result = recording::result;                                           \
        using Arguments = Kinds<VEX_EACH(VEX_KIND, __VA_ARGS__)>;                   \
        static constexpr const char* name = #function;                              \
        static constexpr const char* names[] = {VEX_EACH(VEX_STRING, __VA_ARGS__)}; \
    };
VEX_INTERFACE(VEX_ROW_TYPE)
#undef VEX_ROW_TYPE
}  // namespace row

/** Defines a row's function for all to see: it returns `HANDLER<row>::call(its arguments)`. */
#define VEX_DEFINE_BY(handler, result, function, ...)                                         \
    extern "C" DC_EXPORT recording::result::Type function(VEX_EACH(VEX_TYPED, __VA_ARGS__)) { \
        return handler<recording::row::function>::call(VEX_EACH(VEX_NAME, __VA_ARGS__));      \
    }

}  // namespace recording
