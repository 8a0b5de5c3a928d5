#include <cstdarg>
#include <cstdio>

#include "common/bounded_text.h"
#include "common/number_text.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "switchlib/SmlBatch.h"

size_t SmlBatch::add(const char* format, ...) {
    vex_smlrequest_s& record = _records.emplace_back();
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(record.key, sizeof record.key, format, arguments);
    va_end(arguments);
    return _records.size() - 1;
}

bool SmlBatch::get(uint32_t handle) {
    return vex_smlGetBatch(handle, _records.data(), static_cast<int32_t>(_records.size())) == 0;
}

bool SmlBatch::errors() const {
    return isErrors(_records.data(), static_cast<int>(_records.size()));
}

std::string SmlBatch::text(size_t index) const {
    return boundedText(_records[index].value);
}

int32_t SmlBatch::number(size_t index) const {
    return toInt(text(index));
}
