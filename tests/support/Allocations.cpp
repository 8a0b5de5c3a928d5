#include "tests/support/Allocations.h"

#include <cstdlib>
#include <new>

namespace {

constexpr size_t kNever = static_cast<size_t>(-1);

thread_local bool counting = false;
thread_local size_t counted = 0;
thread_local size_t failing = kNever;

void* allocate(size_t size) {
    if (counting && counted++ == failing) throw std::bad_alloc();
    if (void* block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}

}  // namespace

// The standard library's other forms come down to these.
void* operator new(size_t size) {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}

Allocations::Allocations() {
    counted = 0;
    failing = kNever;
    counting = true;
}

Allocations::~Allocations() {
    counting = false;
}

size_t Allocations::count() const {
    return counted;
}

void Allocations::failAfter(size_t more) {
    failing = counted + more;
}
