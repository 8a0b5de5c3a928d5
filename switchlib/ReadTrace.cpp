#include <cstring>

#include "switchlib/ReadTrace.h"

namespace datacache {

namespace {

thread_local ReadTrace* current = nullptr;

template <size_t Size>
void keep(char (&field)[Size], const char* text) {
    const size_t length = text == nullptr ? 0 : strnlen(text, Size - 1);
    if (length != 0) std::memcpy(field, text, length);
    field[length] = '\0';
}

}  // namespace

ReadTrace::ReadTrace() : _outer(current) {
    current = this;
}

ReadTrace::~ReadTrace() {
    current = _outer;
}

void ReadTrace::called() {
    if (current != nullptr) ++current->_calls;
}

void ReadTrace::failed(ReadFault fault, const char* call, const char* key, uint32_t keys, int32_t status) {
    if (current == nullptr) return;
    ReadFailure& failure = current->_last;
    failure.fault = fault;
    failure.time = std::chrono::system_clock::now();
    keep(failure.call, call);
    keep(failure.key, key);
    failure.keys = keys;
    failure.status = status;
    keep(failure.function, nullptr);
    failure.line = 0;
    if (++current->_failures == 1) current->_first = failure;
}

void ReadTrace::failedToo() {
    if (current != nullptr) ++current->_failures;
}

void ReadTrace::place(const char* function, int line) {
    if (current == nullptr) return;
    keep(current->_last.function, function);
    current->_last.line = line;
}

}  // namespace datacache
