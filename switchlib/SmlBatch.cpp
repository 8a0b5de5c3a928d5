#include <cstdarg>
#include <cstdio>

#include "common/bounded_text.h"
#include "common/number_text.h"
#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "switchlib/ReadTrace.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

namespace {

constexpr const char* kCall = "vex_smlGetBatch";

}  // namespace

size_t SmlBatch::add(const char* format, ...) {
    vex_smlrequest_s& record = _records.emplace_back();
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(record.key, sizeof record.key, format, arguments);
    va_end(arguments);
    return _records.size() - 1;
}

bool SmlBatch::get(uint32_t handle, uint32_t expected) {
    const auto count = static_cast<uint32_t>(_records.size());
    ReadTrace::called();
    CallWatch watch(kCall, _records.front().key, count);
    const int32_t result = watch.done(vex_smlGetBatch(handle, _records.data(), static_cast<int32_t>(count)));
    if (result != 0) {
        ReadTrace::failed(ReadFault::CallFailed, kCall, _records.front().key, count, result);
        return false;
    }
    bool noted = false;  // the first one, as in the log; the others are counted
    for (const vex_smlrequest_s& record : _records) {
        if (record.status == 0 || record.status == expected) continue;
        if (noted) {
            ReadTrace::failedToo();
        } else {
            ReadTrace::failed(ReadFault::KeyFailed, kCall, record.key, count,
                              static_cast<int32_t>(record.status));
        }
        noted = true;
    }
    return true;
}

bool SmlBatch::errors() const {
    return isErrors(_records.data(), static_cast<int>(_records.size()));
}

std::string_view SmlBatch::text(size_t index) const {
    return boundedText(_records[index].value);
}

int32_t SmlBatch::number(size_t index) const {
    return toInt(text(index));
}

void SmlBatch::note(ReadFault fault, size_t index) const {
    ReadTrace::failed(fault, kCall, _records[index].key, static_cast<uint32_t>(_records.size()), 0);
}
