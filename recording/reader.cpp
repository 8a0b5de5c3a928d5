#include "recording/Reader.h"

#include <algorithm>
#include <fstream>
#include <tuple>
#include <type_traits>
#include <utility>

#include "recording/values.h"

namespace recording {

namespace {

constexpr size_t kLongestLine = 64 << 20;

/** A function, and how the fields of its calls are read. */
struct Shape {
    Function function;
    void (*read)(const Json& line, Record& record);
};

/** Runs `read`; what is wrong is then about `name`. */
template <typename Read>
auto about(const std::string& name, Read read) {
    try {
        return read();
    } catch (const BadValue& bad) {
        throw BadValue(name + ' ' + bad.what());
    }
}

template <typename Row, typename Arguments = typename Row::Arguments>
struct ShapeOf;

template <typename Row, typename... Kind>
struct ShapeOf<Row, Kinds<Kind...>> {
    static void read(const Json& line, Record& record) {
        using Result = typename Row::Result;
        const Json& given = field(line, "args");
        record.given.clear();
        const char* const* name = Row::names;
        const auto take = [&](auto kind) {
            Value value;
            if constexpr (decltype(kind)::in) {
                value = about(std::string("args.") + *name,
                              [&] { return readGiven(kind, fieldOf(given, *name)); });
            }
            record.given.push_back(std::move(value));
            ++name;
        };
        (take(Kind{}), ...);

        if constexpr (std::is_pointer_v<typename Result::Type>) {
            record.result = about("result", [&] { return addressOf(fieldOf(line, "result")); });
        } else if constexpr (!std::is_void_v<typename Result::Type>) {
            record.result = about("result", [&] { return numberOf<int32_t>(fieldOf(line, "result")); });
        }

        record.handedBack.clear();
        name = Row::names;
        const auto takeBack = [&](auto kind) {
            Value value;
            if constexpr (decltype(kind)::back) {
                value = about(std::string("back.") + *name, [&] {
                    const Json& back = field(line, "back");
                    return readBack(kind, fieldOf(back, *name), record.given[record.handedBack.size()]);
                });
            }
            record.handedBack.push_back(std::move(value));
            ++name;
        };
        (takeBack(Kind{}), ...);
        checkNames(record);
    }

  private:
    /** Whoever is told of so many names reads so many. */
    static void checkNames(const Record& record) {
        int64_t count = 0;
        const Names* names = nullptr;
        size_t index = 0;
        const auto look = [&](auto kind) {
            const Value& value = record.handedBack[index++];
            if constexpr (std::is_same_v<decltype(kind), NameCount>) {
                if (const auto* const number = std::get_if<int64_t>(&value)) count = *number;
            } else if constexpr (std::is_same_v<decltype(kind), NameList>) {
                names = std::get_if<Names>(&value);
            }
        };
        (look(Kind{}), ...);
        if (names != nullptr && static_cast<int64_t>(names->size()) != std::max<int64_t>(count, 0)) {
            throw BadValue("back.names has not as many entries as back.count says");
        }
    }

    static const Json& fieldOf(const Json& object, const char* name) {
        const auto found = object.find(name);
        if (found == object.end()) throw BadValue("is missing");
        return *found;
    }
};

const std::vector<Shape>& shapes() {
    static const auto* const all = new std::vector<Shape>{
#define VEX_SHAPE(result, function, ...) \
    {{#function, {VEX_EACH(VEX_STRING, __VA_ARGS__)}}, &ShapeOf<row::function>::read},
        VEX_INTERFACE(VEX_SHAPE)
#undef VEX_SHAPE
    };
    return *all;
}

const Shape& shapeOf(const std::string& name) {
    const auto found = std::find_if(shapes().begin(), shapes().end(),
                                    [&](const Shape& shape) { return name == shape.function.name; });
    if (found == shapes().end()) throw BadValue("call is no function of vexlib");
    return *found;
}

Event eventOf(const Json& value) {
    Event event;
    event.code =
        static_cast<int32_t>(about("event", [&] { return numberOf<int32_t>(field(value, "code")); }));
    const Json& source = field(value, "source");
    if (!source.is_array() || source.size() != 3) throw BadValue("event.source has not three words");
    for (size_t i = 0; i < 3; ++i) {
        event.source.word[i] =
            static_cast<int32_t>(about("event.source", [&] { return numberOf<int32_t>(source[i]); }));
    }
    event.text = about("event", [&] { return bytesOf(field(value, "text"), VEX_EVENT_TEXT_SIZE); });
    return event;
}

uint64_t counterOf(const Json& line, const char* name) {
    const Json& value = field(line, name);
    return about(name, [&] { return unsignedOf(value); });
}

void readRecord(const Json& line, Record& record) {
    record = {};
    record.number = counterOf(line, "n");
    if (line.contains("end")) {
        record.kind = Record::Kind::End;
        record.limit = counterOf(line, "limit");
        record.lost = counterOf(line, "lost");
        return;
    }
    record.thread = counterOf(line, "thread");
    record.time = counterOf(line, "time");
    record.took = counterOf(line, "took");
    if (line.contains("call")) {
        const Shape& shape = shapeOf(about("call", [&] { return bytesOf(line["call"], 64); }));
        record.function = &shape.function;
        shape.read(line, record);
        return;
    }
    record.kind = Record::Kind::Notification;
    const Json& event = field(line, "event");
    if (!event.is_null()) record.event = eventOf(event);
    record.waited = counterOf(line, "waited");
    record.context = about("context:", [&] { return addressOf(field(line, "context")); });
}

Header headerOf(const Json& line) {
    if (line.value("recording", Json()) != "vexlib") throw BadValue("this is no recording of vexlib");
    Header header;
    header.version =
        static_cast<int>(about("version:", [&] { return numberOf<int>(field(line, "version")); }));
    if (header.version != kFormatVersion) {
        throw BadValue("a recording of version " + std::to_string(header.version) +
                       ", and this program reads " + std::to_string(kFormatVersion));
    }
    header.platform = about("platform:", [&] { return bytesOf(field(line, "platform"), 64); });
    header.wordSize =
        static_cast<int>(about("wordSize:", [&] { return numberOf(field(line, "wordSize"), 8, 128); }));
    header.bigEndian = field(line, "byteOrder") == "big";
    header.time = about("time:", [&] { return bytesOf(field(line, "time"), 64); });
    header.masked = field(line, "masked") == true;
    return header;
}

const Value& named(const Record& record, const std::vector<Value>& values, std::string_view argument) {
    static const Value none;
    for (size_t i = 0; i < values.size(); ++i) {
        if (argument == record.function->arguments[i]) return values[i];
    }
    return none;
}

}  // namespace

const Value& Record::in(std::string_view argument) const {
    return named(*this, given, argument);
}

const Value& Record::back(std::string_view argument) const {
    return named(*this, handedBack, argument);
}

int64_t Record::status() const {
    const auto* const returned = std::get_if<int64_t>(&result);
    return returned == nullptr ? 0 : *returned;
}

/** The lines of a file, of which none may be longer than the limit. */
struct Reader::Lines {
    explicit Lines(const std::string& path) : file(path, std::ios::binary) {}

    /** False at the end. `ended`: the line has its line end. */
    bool next() {
        ++number;
        text.clear();
        std::streambuf& bytes = *file.rdbuf();
        int byte = first();
        for (; byte != std::char_traits<char>::eof() && byte != '\n'; byte = bytes.sbumpc()) {
            if (text.size() == kLongestLine) throw BadValue("the line is too long");
            text += static_cast<char>(byte);
        }
        ended = byte == '\n';
        return ended || !text.empty();
    }

    /** The next byte of a file that may be none at all, but a folder. */
    int first() {
        try {
            return file.rdbuf()->sbumpc();
        } catch (const std::ios_base::failure&) {
            throw BadValue("the file cannot be read");
        }
    }

    std::ifstream file;
    std::string text;
    bool ended = false;
    size_t number = 0;
};

void Reader::fail(const std::string& what) const {
    throw RecordingError(_path + ':' + std::to_string(std::max<size_t>(_lines->number, 1)) + ": " + what);
}

Reader::Reader(const std::string& path) : _path(path), _lines(std::make_unique<Lines>(path)) {
    if (!_lines->file) fail("the file cannot be read");
    try {
        const bool any = _lines->next();
        const Json line = Json::parse(_lines->text, nullptr, false);
        if (!any || !line.is_object()) fail("this is no recording of vexlib");
        _header = headerOf(line);
    } catch (const BadValue& bad) {
        fail(bad.what());
    }
}

Reader::~Reader() = default;

bool Reader::next(Record& record) {
    try {
        if (!_lines->next()) return false;
        const Json line = Json::parse(_lines->text, nullptr, false);
        if (!_lines->ended && line.is_discarded()) {
            _torn = _lines->number;
            return false;
        }
        if (!line.is_object()) fail("the line is no record");
        readRecord(line, record);
        record.line = _lines->number;
        return true;
    } catch (const BadValue& bad) {
        fail(bad.what());
    }
}

Recording load(const std::string& path) {
    Reader reader(path);
    Recording recording{path, reader.header(), {}, 0};
    Record record;
    while (reader.next(record)) recording.records.push_back(std::move(record));
    recording.tornLine = reader.tornLine();
    // Threads write side by side, so a record may stand before one with a smaller number.
    std::sort(recording.records.begin(), recording.records.end(), [](const Record& one, const Record& other) {
        return std::tie(one.number, one.line) < std::tie(other.number, other.line);
    });
    return recording;
}

}  // namespace recording
