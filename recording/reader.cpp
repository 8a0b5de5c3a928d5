#include "recording/Reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "recording/values.h"

namespace recording {

namespace {

constexpr size_t kLongestLine = 64 << 20;

/** A function, and how the fields of its calls are read. */
struct Shape {
    Function function;
    /** Whether the call has fields that this program does not know. */
    bool (*read)(const Json& line, Record& record);
};

/** Runs `read`, and puts `whole` and `name` in front of the text of a BadValue. */
template <typename Read>
auto about(const char* whole, const char* name, Read read) {
    try {
        return read();
    } catch (const BadValue& bad) {
        throw BadValue(std::string(whole) + name + ' ' + bad.what());
    }
}

template <typename Read>
auto about(const char* name, Read read) {
    return about("", name, read);
}

template <typename Row, typename Arguments = typename Row::Arguments>
struct ShapeOf;

template <typename Row, typename... Kind>
struct ShapeOf<Row, Kinds<Kind...>> {
    static bool read(const Json& line, Record& record) {
        using Result = typename Row::Result;
        constexpr size_t kHandedBack = (size_t{Kind::back} + ...);
        constexpr bool kHasResult = !std::is_void_v<typename Result::Type>;
        const Json given = field(line, "args");
        record.given.reserve(sizeof...(Kind));
        record.handedBack.reserve(sizeof...(Kind));
        const char* const* name = Row::names;
        const auto take = [&](auto kind) {
            Value value;
            if constexpr (decltype(kind)::in) {
                value = about("args.", *name, [&] { return readGiven(kind, fieldOf(given, *name)); });
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

        name = Row::names;
        const std::optional<Json> back = findField(line, "back");
        const auto takeBack = [&](auto kind) {
            Value value;
            if constexpr (decltype(kind)::back) {
                value = about("back.", *name, [&] {
                    if (!back) throw BadValue("is missing");
                    return readBack(kind, fieldOf(*back, *name), record.given[record.handedBack.size()]);
                });
            }
            record.handedBack.push_back(std::move(value));
            ++name;
        };
        (takeBack(Kind{}), ...);
        checkNames(record);
        constexpr size_t kFields = 6 + (kHasResult ? 1 : 0) + (kHandedBack > 0 ? 1 : 0);
        return line.size() > 2 * kFields || given.size() > 2 * (size_t{Kind::in} + ...) ||
               (back && back->size() > 2 * kHandedBack);
    }

  private:
    /** A caller reads as many names as the count says. */
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

    static Json fieldOf(const Json& object, const char* name) {
        const std::optional<Json> found = findField(object, name);
        if (!found) throw BadValue("is missing");
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

/** Null for a function that is not known. */
const Shape* shapeOf(std::string_view name) {
    static const auto* const all = [] {
        auto* const made = new std::unordered_map<std::string_view, const Shape*>;
        for (const Shape& shape : shapes()) made->emplace(shape.function.name, &shape);
        return made;
    }();
    const auto found = all->find(name);
    return found == all->end() ? nullptr : found->second;
}

Event eventOf(const Json& value) {
    Event event;
    event.code =
        static_cast<int32_t>(about("event", [&] { return numberOf<int32_t>(field(value, "code")); }));
    const Json source = field(value, "source");
    if (!source.isList() || source.size() != 3) throw BadValue("event.source has not three words");
    size_t index = 0;
    for (const Json& word : source) {
        event.source.word[index++] =
            static_cast<int32_t>(about("event.source", [&] { return numberOf<int32_t>(word); }));
    }
    event.text = about("event", [&] { return bytesOf(field(value, "text"), VEX_EVENT_TEXT_SIZE); });
    return event;
}

uint64_t counterOf(const Json& line, const char* name) {
    const Json value = field(line, name);
    return about(name, [&] { return unsignedOf(value); });
}

/** How much of a line this program knows. */
enum class Known { Whole, WithMore, Nothing };

/** Nothing: the record is of a call or a kind that this program does not know. */
Known readRecord(const Json& line, Record& record) {
    constexpr size_t kEndFields = 4, kNotificationFields = 8;
    record = {};
    record.number = counterOf(line, "n");
    if (findField(line, "end")) {
        record.kind = Record::Kind::End;
        record.limit = counterOf(line, "limit");
        record.lost = counterOf(line, "lost");
        return line.size() > 2 * kEndFields ? Known::WithMore : Known::Whole;
    }
    record.thread = counterOf(line, "thread");
    record.time = counterOf(line, "time");
    record.took = counterOf(line, "took");
    const std::optional<Json> call = findField(line, "call");
    if (call) {
        if (!call->isText()) throw BadValue("call is no text");
        const Shape* const shape = shapeOf(call->text());
        if (shape == nullptr) return Known::Nothing;
        record.function = &shape->function;
        return shape->read(line, record) ? Known::WithMore : Known::Whole;
    }
    record.kind = Record::Kind::Notification;
    const std::optional<Json> event = findField(line, "event");
    if (!event) return Known::Nothing;
    if (!event->isNull()) record.event = eventOf(*event);
    record.waited = counterOf(line, "waited");
    record.context = about("context:", [&] { return addressOf(field(line, "context")); });
    record.user = about("user:", [&] { return addressOf(field(line, "user")); });
    return line.size() > 2 * kNotificationFields ? Known::WithMore : Known::Whole;
}

Header headerOf(const Json& line) {
    const std::optional<Json> name = findField(line, "recording");
    if (!name || !name->isText() || name->text() != "vexlib")
        throw BadValue("this is no recording of vexlib");
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
    header.bigEndian = about("byteOrder:", [&] { return bytesOf(field(line, "byteOrder"), 64); }) == "big";
    header.time = about("time:", [&] { return bytesOf(field(line, "time"), 64); });
    header.masked = field(line, "masked").isTrue();
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

/** The file, and the line that is read. */
struct Reader::Text {
    /** The lines from `begin` on; `end` is behind the line's last character. */
    bool next() {
        begin = behind;
        if (begin >= bytes.size()) return false;
        ++number;
        end = bytes.find('\n', begin);
        ended = end != std::string::npos;
        if (!ended) end = bytes.size();
        behind = end + 1;
        if (end - begin > kLongestLine) throw BadValue("the line is too long");
        return true;
    }

    std::string_view line() const { return std::string_view(bytes).substr(begin, end - begin); }

    std::string bytes;
    JsonLine json;
    size_t begin = 0;
    size_t end = 0;
    size_t behind = 0;
    bool ended = false;
    size_t number = 0;
};

/** What remarks() needs. */
struct Reader::Seen {
    uint64_t records = 0;
    uint64_t last = 0;  ///< number
    uint64_t lost = 0;
    struct Lines {
        size_t count = 0;
        size_t first = 0;
        void add(size_t line) {
            if (count++ == 0) first = line;
        }
    };
    Lines unknown;   ///< calls and records
    Lines withMore;  ///< records with fields that this program does not know
};

namespace {

/** All bytes of a file; a folder or a file that cannot be read is a BadValue. */
std::string bytesOfFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    struct stat status {};
    if (file == nullptr || fstat(fileno(file.get()), &status) != 0 || S_ISDIR(status.st_mode))
        throw BadValue("the file cannot be read");
    std::string bytes;
    try {
        const size_t known = S_ISREG(status.st_mode) ? static_cast<size_t>(status.st_size) : 0;
        // As large as it is, and a little larger, so that its end is seen without growing it.
        size_t size = 0;
        bytes.resize(known + 1);
        for (;;) {
            const size_t got = std::fread(&bytes[size], 1, bytes.size() - size, file.get());
            size += got;
            if (got == 0) break;
            if (size == bytes.size()) bytes.resize(size + std::max<size_t>(size / 2, 1 << 16));
        }
        bytes.resize(size);
    } catch (const std::bad_alloc&) {
        throw BadValue("the file is too large for the memory");
    }
    if (std::ferror(file.get()) != 0) throw BadValue("the file cannot be read");
    return bytes;
}

}  // namespace

void Reader::fail(const std::string& what) const {
    throw RecordingError(where(std::max<size_t>(_text->number, 1)) + what);
}

Reader::Reader(const std::string& path)
    : _path(path), _text(std::make_unique<Text>()), _seen(std::make_unique<Seen>()) {
    try {
        _text->bytes = bytesOfFile(path);
        if (!_text->next() || !_text->json.parse(_text->line())) fail("this is no recording of vexlib");
        _header = headerOf(_text->json.root());
    } catch (const BadValue& bad) {
        fail(bad.what());
    }
}

Reader::~Reader() = default;

bool Reader::next(Record& record) {
    try {
        while (_text->next()) {
            if (!_text->json.parse(_text->line())) {
                if (_text->ended) fail("the line is no record");
                _torn = _text->number;
                return false;
            }
            const Known known = readRecord(_text->json.root(), record);
            const size_t line = _text->number;
            if (record.kind == Record::Kind::End) {
                _seen->lost = record.lost;
                if (_cut.empty())
                    _cut = where(line) + "the recording was cut here, at its limit of " +
                           std::to_string(record.limit) + " bytes";
            } else {
                ++_seen->records;
                _seen->last = std::max(_seen->last, record.number);
            }
            if (known == Known::WithMore) _seen->withMore.add(line);
            if (known == Known::Nothing) {
                _seen->unknown.add(line);
                continue;
            }
            record.line = line;
            record.offset = _text->begin;
            return true;
        }
        return false;
    } catch (const BadValue& bad) {
        fail(bad.what());
    }
}

Record Reader::recordAt(size_t offset) const {
    const std::string_view rest = std::string_view(_text->bytes).substr(offset);
    JsonLine json;
    Record record;
    json.parse(rest.substr(0, rest.find('\n')));
    readRecord(json.root(), record);
    record.offset = offset;
    return record;
}

size_t Reader::lines() const {
    return static_cast<size_t>(std::count(_text->bytes.begin(), _text->bytes.end(), '\n')) + 1;
}

std::vector<std::string> Reader::remarks() const {
    std::vector<std::string> all;
    if (_torn != 0) all.push_back(where(_torn) + "the last line is not whole and was skipped");
    if (!_cut.empty()) all.push_back(_cut);
    const uint64_t missing = _seen->last > _seen->records ? _seen->last - _seen->records : 0;
    if (missing != 0 || _seen->lost != 0) {
        all.push_back(_path + ": records are missing: " + std::to_string(std::max(missing, _seen->lost)));
    }
    if (_seen->unknown.count != 0) {
        all.push_back(where(_seen->unknown.first) +
                      "calls or records that this program does not know were skipped: " +
                      std::to_string(_seen->unknown.count) + ", of which this is the first");
    }
    if (_seen->withMore.count != 0) {
        all.push_back(where(_seen->withMore.first) + "records with fields that this program does not know: " +
                      std::to_string(_seen->withMore.count) + ", of which this is the first");
    }
    return all;
}

Recording load(const std::string& path) {
    Reader reader(path);
    Recording recording{path, reader.header(), {}, 0, {}};
    recording.records.reserve(reader.lines());
    Record record;
    while (reader.next(record)) recording.records.push_back(std::move(record));
    recording.tornLine = reader.tornLine();
    recording.remarks = reader.remarks();
    // Threads write side by side, so a record may stand before one with a smaller number.
    std::sort(recording.records.begin(), recording.records.end(), [](const Record& one, const Record& other) {
        return std::tie(one.number, one.line) < std::tie(other.number, other.line);
    });
    return recording;
}

}  // namespace recording
