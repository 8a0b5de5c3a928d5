#pragma once

#include <bitset>
#include <cstddef>
#include <stdexcept>

namespace datacache {

/**
 * Index tests on bit sets. The texts of the exceptions are part of the interface and shorter than those of
 * today's standard library, so the tests are made here.
 */
template <size_t Size>
bool bitTest(const std::bitset<Size>& bits, size_t index) {
    if (index >= Size) throw std::out_of_range("bitset::test");
    return bits[index];
}

template <size_t Size>
void bitSet(std::bitset<Size>& bits, size_t index) {
    if (index >= Size) throw std::out_of_range("bitset::set");
    bits[index] = true;
}

template <size_t Size>
void bitReset(std::bitset<Size>& bits, size_t index) {
    if (index >= Size) throw std::out_of_range("bitset::reset");
    bits[index] = false;
}

}  // namespace datacache
