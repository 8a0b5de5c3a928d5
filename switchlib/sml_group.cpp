#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"

using datacache::CallWatch;

namespace {

constexpr int kGrowth = 25;

bool anyStatus(const vex_smlrequest_s* records, int count) {
    for (int i = 0; i < count; ++i) {
        if (records[i].status != 0) return true;
    }
    return false;
}

/** Grows to `capacity` records, the new ones zeroed: a status is read even when the switch never wrote it. */
bool grow(vex_smlmsggroup_s& group, int capacity) {
    const size_t old = static_cast<size_t>(group.capacity);
    const size_t wanted = static_cast<size_t>(capacity);
    if (wanted > std::numeric_limits<size_t>::max() / sizeof(vex_smlrequest_s)) return false;
    void* block = std::realloc(group.records, wanted * sizeof(vex_smlrequest_s));
    if (block == nullptr) return false;
    group.records = static_cast<vex_smlrequest_s*>(block);
    group.capacity = capacity;
    for (size_t i = old; i < wanted; ++i) group.records[i] = vex_smlrequest_s{};
    return true;
}

using BatchCall = int32_t (*)(uint32_t, vex_smlrequest_s*, int32_t);

int32_t callGroup(const char* name, BatchCall call, vex_smlmsggroup_s* group) {
    const CallWatch watch(name, group->count > 0 ? group->records[0].key : nullptr,
                          static_cast<uint32_t>(group->count));
    const int32_t result = call(hSwitch, group->records, group->count);
    return anyStatus(group->records, group->count) ? 1 : result;
}

}  // namespace

vex_smlmsggroup_s* vex_smlAllocMsgGroup(int capacity) {
    if (capacity < 0) return nullptr;
    auto* group = static_cast<vex_smlmsggroup_s*>(std::calloc(1, sizeof(vex_smlmsggroup_s)));
    if (group == nullptr) return nullptr;
    // One record even for none, as a size of 0 may give null, which means no memory here.
    const size_t records = capacity == 0 ? 1 : static_cast<size_t>(capacity);
    group->records = static_cast<vex_smlrequest_s*>(std::calloc(records, sizeof(vex_smlrequest_s)));
    if (group->records == nullptr) {
        std::free(group);
        return nullptr;
    }
    group->capacity = capacity;
    return group;
}

int vex_smlAddMsgGroupV(vex_smlmsggroup_s* group, const char* format, ...) {
    if (group->count == group->capacity) {
        const bool countable = group->count <= std::numeric_limits<int32_t>::max() - kGrowth;
        if (!countable || !grow(*group, group->count + kGrowth)) {
            // Required: the old records are not freed, as callers may still read them.
            group->records = nullptr;
            std::free(group);
            return 1;
        }
    }
    vex_smlrequest_s& record = group->records[group->count];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(record.key, sizeof record.key, format, arguments);
    va_end(arguments);
    ++group->count;
    return 0;
}

void vex_smlResetMsgGroup(vex_smlmsggroup_s* group) {
    group->count = 0;
}

void vex_smlFreeMsgGroup(vex_smlmsggroup_s* group) {
    std::free(group->records);
    std::free(group);
}

int32_t vex_smlGetMsgGroup(vex_smlmsggroup_s* group) {
    return callGroup("vex_smlGetBatch", vex_smlGetBatch, group);
}

int32_t vex_smlSetMsgGroup(vex_smlmsggroup_s* group) {
    return callGroup("vex_smlSetBatch", vex_smlSetBatch, group);
}

uint32_t vex_smlGetResult(vex_smlmsggroup_s* group, int index, char** value) {
    if (index < 0 || index >= group->count) return 1;
    vex_smlrequest_s& record = group->records[index];
    *value = record.value;
    return record.status;
}

bool isErrors(const vex_smlrequest_s* records, int count) {
    constexpr uint32_t kQuiet = 24;  // how lists end: expected, so not reported
    for (int i = 0; i < count; ++i) {
        const uint32_t status = records[i].status;
        if (status == 0) continue;
        if (status != kQuiet) {
            cim_log(CIM_LOG_TRACE, "DCACHE: sml command='%.*s', smlerror='0x%x'\n", VEX_SML_KEY_SIZE,
                    records[i].key, status);
        }
        return true;
    }
    return false;
}
