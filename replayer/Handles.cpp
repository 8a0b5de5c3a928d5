#include "replayer/Handles.h"

#include <cstdlib>
#include <cstring>

namespace vexreplay {

using datacache::Lock;

namespace {

constexpr uintptr_t kStep = 8;

}  // namespace

void Handles::restart() {
    const Lock lock(_mutex);
    _ended.clear();
}

void* Handles::object(uint64_t number) {
    const Lock lock(_mutex);
    _ended.erase(number);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the pointer is a number, and nobody follows it
    return reinterpret_cast<void*>(static_cast<uintptr_t>(number) * kStep);
}

uint64_t Handles::numberOf(const void* object) const {
    const auto address = reinterpret_cast<uintptr_t>(object);
    return address % kStep == 0 ? address / kStep : kUnknown;
}

bool Handles::destroy(uint64_t number) {
    const Lock lock(_mutex);
    return _ended.insert(number).second;
}

char* Handles::text(uint64_t number, const std::string& bytes) {
    auto* const memory = static_cast<char*>(std::malloc(bytes.size() + 1));
    if (memory == nullptr) return nullptr;
    std::memcpy(memory, bytes.c_str(), bytes.size() + 1);
    const Lock lock(_mutex);
    _texts[memory] = number;
    return memory;
}

uint64_t Handles::numberOfText(void* memory) {
    const Lock lock(_mutex);
    const auto found = _texts.find(memory);
    return found == _texts.end() ? kUnknown : found->second;
}

bool Handles::release(void* memory) {
    const Lock lock(_mutex);
    if (_texts.erase(memory) == 0) return false;
    std::free(memory);
    return true;
}

}  // namespace vexreplay
