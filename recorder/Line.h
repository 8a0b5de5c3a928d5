#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vexrecord {

/**
 * The memory in which a thread writes its records. A record is begun before its call and completed after it;
 * records of calls that happen meanwhile on the same thread, in a notification's callback, stand behind it
 * and are gone before it is completed. It grows and never shrinks; a notification fits in what it has at
 * first.
 */
struct Buffer {
    char* data = nullptr;
    size_t capacity = 0;
    size_t size = 0;

    /** Room for so many bytes more; false without memory, and nothing changed. */
    bool grow(size_t more);
    void release();
};

/** One record under way: JSON text at the end of a thread's buffer, which it leaves as it found it. */
class Line {
  public:
    explicit Line(Buffer& buffer);
    ~Line() { _buffer.size = _begin; }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void raw(std::string_view json);
    void number(int64_t value);
    void number(uint64_t value);
    /** A text of any bytes: what is no printable ASCII is written as \u00XX, which stands for that byte. */
    void text(std::string_view bytes);
    void name(std::string_view field) {
        text(field);
        raw(":");
    }

    /** Where the next thing will stand, for repeats(). */
    size_t position() const { return _buffer.size - _begin; }
    /** Whether text(bytes) stands at `place`, which is moved behind the text there in any case. */
    bool repeats(size_t& place, std::string_view bytes);

    /** False when memory was short: the record is not whole. */
    bool whole() const { return _whole; }
    /** The record with these fields in front of it; may be called once, at the end. */
    std::string_view completed(uint64_t number, uint64_t thread, uint64_t time, uint64_t took);

  private:
    bool grow(size_t more) { return _whole = _whole && _buffer.grow(more); }
    void append(const char* bytes, size_t size);

    Buffer& _buffer;
    const size_t _begin;
    bool _whole = true;
};

}  // namespace vexrecord
