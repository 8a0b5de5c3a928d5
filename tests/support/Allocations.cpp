#include "tests/support/Allocations.h"

#include <cstdlib>
#include <new>

#include "common/export.h"
#include "simulator/Simulator.h"

// What is linked into unit_tests asks these for memory; see its link options. They are exported, because the
// linker would also have the shared libraries beside the program find them.
extern "C" {
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);
}

namespace {

constexpr size_t kNever = static_cast<size_t>(-1);

thread_local size_t counted = 0;
thread_local size_t freed = 0;
thread_local size_t failing = kNever;

/** What the simulated switch needs is not the library's. */
bool watched() {
    return Allocations::counting && !vexsim::Simulator::serving();
}

bool fails() {
    return watched() && counted++ == failing;
}

void* allocate(size_t size) {
    if (fails()) throw std::bad_alloc();
    if (void* block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}

void release(void* block) noexcept {
    if (block != nullptr && watched()) ++freed;
    __real_free(block);
}

}  // namespace

// The standard library's other forms come down to these.
void* operator new(size_t size) {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, size_t) noexcept {
    release(block);
}

extern "C" {
DC_EXPORT void* __wrap_calloc(size_t count, size_t size) {
    return fails() ? nullptr : __real_calloc(count, size);
}
DC_EXPORT void* __wrap_realloc(void* block, size_t size) {
    if (fails()) return nullptr;
    if (block != nullptr && watched()) ++freed;
    return __real_realloc(block, size);
}
DC_EXPORT void __wrap_free(void* block) {
    release(block);
}
}

Allocations::Allocations() {
    counted = freed = 0;
    failing = kNever;
    counting = true;
}

Allocations::~Allocations() {
    counting = false;
}

size_t Allocations::count() const {
    return counted;
}

size_t Allocations::live() const {
    return counted - (failing < counted ? 1 : 0) - freed;
}

void Allocations::failAfter(size_t more) {
    failing = counted + more;
}
