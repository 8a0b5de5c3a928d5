#include "switchlib/ReadTrace.h"

#include "common/bounded_text.h"

namespace datacache {

namespace {

thread_local ReadTrace* current = nullptr;

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
    copyBounded(failure.call, call);
    copyBounded(failure.key, key);
    failure.keys = keys;
    failure.status = status;
    copyBounded(failure.function, nullptr);
    failure.line = 0;
    if (++current->_failures == 1) current->_first = failure;
}

void ReadTrace::failedToo() {
    if (current != nullptr) ++current->_failures;
}

void ReadTrace::failedBefore(const ReadFailure& failure) {
    if (current == nullptr || failure.fault == ReadFault::None) return;
    current->_last = failure;
    if (++current->_failures == 1) current->_first = failure;
}

ReadFailure ReadTrace::latest() {
    return current == nullptr ? ReadFailure{} : current->_last;
}

void ReadTrace::place(const char* function, int line) {
    if (current == nullptr) return;
    copyBounded(current->_last.function, function);
    current->_last.line = line;
}

}  // namespace datacache
