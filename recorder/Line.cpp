#include "recorder/Line.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace vexrecord {

namespace {

constexpr size_t kFirstBytes = 16384;  // a notification of 1400 bytes that are all escaped takes 8.5 KB
constexpr size_t kFrontBytes = 128;    // kept free for the fields that are known last
constexpr size_t kLongestEscape = 6;
constexpr size_t kLongestNumber = 24;

bool isPlain(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7f && byte != '"' && byte != '\\';
}

/** Writes the text with its quotes; `to` has room for the longest. */
char* escape(char* to, std::string_view bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    *to++ = '"';
    for (const char one : bytes) {
        const auto byte = static_cast<unsigned char>(one);
        if (isPlain(byte)) {
            *to++ = one;
        } else if (one == '"' || one == '\\') {
            *to++ = '\\';
            *to++ = one;
        } else {
            to = std::copy_n("\\u00", 4, to);
            *to++ = kDigits[byte >> 4];
            *to++ = kDigits[byte & 0xf];
        }
    }
    *to++ = '"';
    return to;
}

}  // namespace

bool Buffer::grow(size_t more) {
    if (more <= capacity - size) return true;
    const size_t wanted = std::max({size + more, capacity * 2, kFirstBytes});
    void* const moved = std::realloc(data, wanted);
    if (moved == nullptr) return false;
    data = static_cast<char*>(moved);
    capacity = wanted;
    return true;
}

void Buffer::release() {
    std::free(data);
    *this = {};
}

Line::Line(Buffer& buffer) : _buffer(buffer), _begin(buffer.size) {
    if (grow(kFrontBytes)) _buffer.size += kFrontBytes;
}

void Line::append(const char* bytes, size_t size) {
    if (!grow(size)) return;
    std::memcpy(_buffer.data + _buffer.size, bytes, size);
    _buffer.size += size;
}

void Line::raw(std::string_view json) {
    append(json.data(), json.size());
}

void Line::number(int64_t value) {
    char digits[kLongestNumber];
    append(digits, static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
}

void Line::number(uint64_t value) {
    char digits[kLongestNumber];
    append(digits, static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
}

void Line::text(std::string_view bytes) {
    if (!grow(bytes.size() * kLongestEscape + 2)) return;
    const char* const end = escape(_buffer.data + _buffer.size, bytes);
    _buffer.size = static_cast<size_t>(end - _buffer.data);
}

bool Line::repeats(size_t& place, std::string_view bytes) {
    const size_t before = _buffer.size;
    text(bytes);
    if (!_whole) return true;
    const size_t size = _buffer.size - before;
    _buffer.size = before;
    const char* const there = _buffer.data + _begin + place;
    const char* end = there + 1;
    while (*end != '"') end += *end == '\\' ? 2 : 1;
    const auto length = static_cast<size_t>(end + 1 - there);
    place += length;
    return length == size && std::memcmp(there, _buffer.data + before, size) == 0;
}

std::string_view Line::completed(uint64_t number, uint64_t thread, uint64_t time, uint64_t took) {
    char front[kFrontBytes];
    char* to = front;
    const auto put = [&](std::string_view field, uint64_t value) {
        if (static_cast<size_t>(front + sizeof front - to) < field.size())
            return;  // never: four short numbers
        to = std::copy(field.begin(), field.end(), to);
        to = std::to_chars(to, front + sizeof front, value).ptr;
    };
    put("{\"n\":", number);
    put(",\"thread\":", thread);
    put(",\"time\":", time);
    put(",\"took\":", took);
    raw("}\n");
    if (!_whole) return {};
    const auto size = static_cast<size_t>(to - front);
    char* const begin = _buffer.data + _begin + kFrontBytes - size;
    std::memcpy(begin, front, size);
    return {begin, static_cast<size_t>(_buffer.data + _buffer.size - begin)};
}

}  // namespace vexrecord
