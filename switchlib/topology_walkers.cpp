#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "common/bounded_text.h"
#include "common/number_text.h"
#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"

using namespace datacache;

namespace {

/** One key to read, on the stack of a caller that may be C. */
class Request {
  public:
    explicit Request(const char* format, ...) DC_PRINTF(2, 3) {
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(_record.key, sizeof _record.key, format, arguments);
        va_end(arguments);
    }

    bool read() {
        CallWatch watch("vex_smlGetBatch", _record.key, 1);
        return watch.done(vex_smlGetBatch(hSwitch, &_record, 1)) == 0 && !isErrors(&_record, 1);
    }

    /** Reads the value into `dst`; null, and `dst` untouched, on failure. */
    char* readInto(char* dst) {
        if (!read()) return nullptr;
        // A value that fills its field has no terminator; dst has room for 255 characters and one.
        const size_t length = strnlen(_record.value, sizeof _record.value - 1);
        std::memcpy(dst, _record.value, length);
        dst[length] = '\0';
        return dst;
    }

    int32_t number() const { return toInt(boundedText(_record.value)); }

  private:
    vex_smlrequest_s _record{};
};

}  // namespace

char* get_first_lsdb_record(char* dst) {
    return Request("Oper.Eport.FirstLsdbRecord").readInto(dst);
}

char* get_next_lsdb_record(const char* record, char* dst) {
    return Request("Oper.Eport.NextLsdbRecord.%s", record).readInto(dst);
}

int get_lsdb_record_link_count(const char* record) {
    Request request("Oper.Eport.LsdbRecord.%s.NumberOfLinks", record);
    return request.read() ? request.number() : -1;
}

char* get_lsdb_record_link_local_information(const char* record, const char* link, char* dst) {
    return Request("Oper.Eport.LsdbRecord.%s.Link.%s.LocalPort", record, link).readInto(dst);
}

char* get_lsdb_record_link_remote_information(const char* record, const char* link, char* dst) {
    return Request("Oper.Eport.LsdbRecord.%s.Link.%s.Neighbor", record, link).readInto(dst);
}

char* get_first_attached_port(const char* port, char* dst) {
    return Request("Oper.NameServerAll.%s.FirstNsEntry", port).readInto(dst);
}

char* get_next_attached_port(const char* port, const char* entry, char* dst) {
    return Request("Oper.NameServerAll.%s.NextNsEntry.%s", port, entry).readInto(dst);
}
