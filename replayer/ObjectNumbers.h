#pragma once

#include <cstdint>
#include <unordered_map>
#include <variant>
#include <vector>

#include "recording/Reader.h"

namespace vexreplay {

/** Whether a call is given any object, null counted. */
bool hasObjects(const std::vector<recording::Value>& given);

/** Empties the arguments that differ from process to process: callbacks and their contexts. */
void dropCallbacks(recording::Record& record);

/** Calls `look` with each object of a call, always in the same order. */
template <typename Look>
void visitObjects(recording::Record& record, Look look) {
    for (recording::Value& value : record.given) {
        if (auto* const address = std::get_if<recording::Address>(&value)) look(address->value);
    }
    for (recording::Value& value : record.handedBack) {
        if (auto* const address = std::get_if<recording::Address>(&value)) look(address->value);
        if (auto* const text = std::get_if<recording::HandedText>(&value)) look(text->memory.value);
    }
    if (auto* const address = std::get_if<recording::Address>(&record.result)) look(address->value);
}

/**
 * Numbers the objects of a recording, whose records it is shown in their order. Each number is given once: an
 * address that is used again after its object was destroyed gets another number. An object that is destroyed
 * takes the objects in it with it.
 */
class ObjectNumbers {
  public:
    /** Writes the origin of each object (call_text.h) into `origins`, at the object's number. */
    explicit ObjectNumbers(std::vector<uint64_t>& origins) : _origins(origins) {}

    /** Replaces the addresses in a call by numbers, and drops its callbacks. Returns originOf() the call. */
    uint64_t replaceAddresses(recording::Record& record);

  private:
    uint64_t make(uint64_t address);
    uint64_t find(uint64_t address);
    void destroy(uint64_t number);

    std::vector<uint64_t>& _origins;
    uint64_t _origin = 0; /**< of the call whose addresses are replaced */
    uint64_t _last = 0;
    std::unordered_map<uint64_t, uint64_t> _numbers;           /**< of the object at an address */
    std::unordered_map<uint64_t, uint64_t> _addresses;         /**< of an object */
    std::unordered_map<uint64_t, std::vector<uint64_t>> _held; /**< the objects in an object */
};

}  // namespace vexreplay
