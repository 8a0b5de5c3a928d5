#include "simulator/TextHeap.h"

#include <cstdlib>
#include <cstring>

namespace vexsim {

char* TextHeap::give(const std::string& text) {
    void* const memory = std::malloc(text.size() + 1);
    if (memory == nullptr) return nullptr;
    std::memcpy(memory, text.c_str(), text.size() + 1);
    const Lock lock(_mutex);
    _texts.insert(memory);
    return static_cast<char*>(memory);
}

std::optional<std::string> TextHeap::take(void* memory) {
    const Lock lock(_mutex);
    if (_texts.erase(memory) == 0 && _earlier.erase(memory) == 0) return std::nullopt;
    std::string text = static_cast<const char*>(memory);
    std::free(memory);
    return text;
}

size_t TextHeap::live() const {
    const Lock lock(_mutex);
    return _texts.size();
}

void TextHeap::restartCounts() {
    const Lock lock(_mutex);
    _earlier.merge(_texts);
    _texts.clear();
}

}  // namespace vexsim
