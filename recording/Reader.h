/*
 * A recording of vexlib, read: the file is taken as hostile, every field is checked, and what comes out fits
 * the types and fields of vexlib.h.
 *
 *     for (const recording::Record& record : recording::load("switch.jsonl").records) {
 *         if (record.isCall("vex_smlGetBatch")) use(std::get<recording::SmlEntries>(record.back("records")));
 *         if (record.event) use(record.event->code, record.event->text);
 *     }
 */
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "vexlib/vexlib.h"

namespace recording {

/** A file that cannot be read as a recording; what() is one line, "FILE:LINE: message". */
struct RecordingError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** The first line. */
struct Header {
    int version = 0;
    std::string platform; /**< "linux-powerpc" */
    int wordSize = 0;     /**< 32 or 64 bits */
    bool bigEndian = false;
    std::string time; /**< when it began, UTC, ISO 8601; early recordings have whole seconds */
    bool masked = false;
};

// ---- Values ----

/** One key of a batch. Given: key, and value where it is written. Handed back: all three. Texts end at their
 * terminator when they are given; a value that is handed back is the field's bytes up to the zeros that fill
 * it, so 256 of them lack a terminator. */
struct SmlEntry {
    std::string key;
    std::string value;
    uint32_t status = 0;
};
using SmlEntries = std::vector<SmlEntry>;

/** Given: codes. Handed back: codes and results. */
using RegistrationEntries = std::vector<vex_eventreg_s>;

/** A member identifier in this machine's own representation. */
struct Member {
    vex_fzs_zonemember_type_e type =
        VEX_ZMT_UNKNOWN; /**< which part of `id` is good; UNKNOWN for all bytes */
    vex_memberid_u id{};
};

/** An address in the recorded process: an object, a text, a callback. 0 for null. */
struct Address {
    uint64_t value = 0;
    bool operator==(const Address& other) const { return value == other.value; }
};

/** A text that was handed out at an address, until it is released with vex_libFreeMemory. */
struct HandedText {
    Address memory;
    std::string text;
};

using Names = std::vector<std::string>;

/** monostate: null, or nothing. A text is a sequence of any bytes. */
using Value = std::variant<std::monostate, int64_t, Address, std::string, SmlEntries, RegistrationEntries,
                           Member, vex_fzs_limits_s, Names, HandedText>;

// ---- Records ----

/** A notification's event. The text is the field's bytes up to the zeros that fill it. */
struct Event {
    int32_t code = 0;
    vex_eventsource_s source{};
    std::string text;
};

/** What the recording knows of a function. */
struct Function {
    const char* name;
    std::vector<const char*> arguments;
};

/** A call, a notification (no function; no event either where the library delivered none), or the end. */
struct Record {
    enum class Kind { Call, Notification, End } kind = Kind::Call;
    size_t line = 0;
    size_t offset = 0;   /**< of the line in the file */
    uint64_t number = 0; /**< in the order in which calls and notifications returned */
    uint64_t thread = 0; /**< 1 for the main thread */
    uint64_t time = 0;   /**< of its begin, nanoseconds since the recording began */
    uint64_t took = 0;   /**< nanoseconds */

    const Function* function = nullptr;
    std::vector<Value> given;      /**< one an argument, monostate for those that are only handed back */
    std::vector<Value> handedBack; /**< one an argument, monostate for those that are only given */
    Value result;                  /**< int64_t, Address, or monostate */

    std::optional<Event> event;
    Address context;     /**< that the callback was registered with */
    Address user;        /**< the callback's last argument */
    uint64_t waited = 0; /**< how often the callback waited for something, such as a lock */

    uint64_t limit = 0; /**< End: the bytes that the file may have */
    uint64_t lost = 0;  /**< End: records that are missing, as memory was short */

    bool isCall(std::string_view name) const { return function != nullptr && name == function->name; }
    /** An argument by its name in the interface's table; monostate for a name that the function lacks. */
    const Value& in(std::string_view argument) const;
    const Value& back(std::string_view argument) const;
    /** The status or amount of a call; 0 for one that returns none. */
    int64_t status() const;
};

/** Reads a recording record by record, in the order of the file, which it keeps in memory. */
class Reader {
  public:
    /** Reads the file and its first line. Throws RecordingError. */
    explicit Reader(const std::string& path);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    const std::string& path() const { return _path; }
    const Header& header() const { return _header; }
    /** The next record; false at the end. Calls and kinds of records that this program does not know are
     * skipped. Throws RecordingError. */
    bool next(Record& record);
    /** The record again that next() gave from this offset. */
    Record recordAt(size_t offset) const;
    /** How many lines there may be, at most. */
    size_t lines() const;

    /** At the end: the number of a last line that is not whole and was skipped; 0 for none. */
    size_t tornLine() const { return _torn; }
    /** At the end: "FILE:LINE: where the recording was cut", for one that reached its limit. */
    const std::string& cut() const { return _cut; }
    /** At the end: a line for each kind of thing that is missing or was skipped, for the user to read. */
    std::vector<std::string> remarks() const;

  private:
    struct Text;
    struct Seen;
    [[noreturn]] void fail(const std::string& what) const;
    std::string where(size_t line) const { return _path + ':' + std::to_string(line) + ": "; }

    const std::string _path;
    std::unique_ptr<Text> _text;
    std::unique_ptr<Seen> _seen;
    Header _header;
    size_t _torn = 0;
    std::string _cut;
};

/** A whole recording, its records in the order of their numbers. */
struct Recording {
    std::string path;
    Header header;
    std::vector<Record> records;
    size_t tornLine = 0;
    std::vector<std::string> remarks; /**< Reader::remarks() */
};

/** Throws RecordingError. */
Recording load(const std::string& path);

}  // namespace recording
