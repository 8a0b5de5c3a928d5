#pragma once

#include <cstdint>
#include <string>

#include "common/export.h"

/**
 * A Fibre Channel world wide name: 8 bytes, byte 0 most significant (FC-FS name formats).
 *
 * The top four bits of byte 0, the NAA, say how the rest is read: 1 is a switch's own IEEE 48-bit name, 2 the
 * extended form in which a switch vendor places the port number of the name's port, 3 a locally assigned
 * name, 5 an IEEE registered one. Besides comparing and printing names, this class knows where the 12-bit
 * port number (two halves of 6 bits, "upper" and "lower") stands in the names of ports, so that a port's name
 * can be made from its switch's and the other way round.
 *
 * The all-zero name is the null name: every failed parse and every failed lookup yields it. Names are plain
 * values of exactly 8 bytes; no operation fails loudly.
 */
class DC_EXPORT Wwn {
  public:
    /** The null name. */
    Wwn() = default;
    /** Bytes 0 to 3, and bytes 4 to 7. */
    constexpr Wwn(uint32_t high, uint32_t low) : _high(high), _low(low) {}
    /**
     * Parses 16 hexadecimal digits of either case; any other text gives the null name. That includes the form
     * of 23 characters with colons: its last pair is not read, and half a name would be worse than none.
     */
    Wwn(const std::string& text);  // NOLINT(google-explicit-constructor): texts are names everywhere
    Wwn(const Wwn&) = default;
    Wwn& operator=(const Wwn&) = default;

    bool operator==(Wwn other) const { return _high == other._high && _low == other._low; }
    bool operator!=(Wwn other) const { return !(*this == other); }
    bool isNull() const { return _high == 0 && _low == 0; }

    /** 16 upper-case hexadecimal digits, byte 0 first. */
    std::string tostring() const;

    /** Whether bytes 2 to 4 hold the company identifier 08-00-88, whatever the NAA. */
    bool isMcDATA() const;
    /** Whether bytes 2 to 4 hold the company identifier 00-0D-EC, whatever the NAA. */
    bool isCisco() const;

    /**
     * Writes the port number: 12 bits, or two times 6; wider values are cut. NAA 2 and 3 only, other names
     * stay as they are. In a name of NAA 3 it also zeroes the low nibble of byte 0 and all of byte 1.
     */
    void Set_Port(unsigned int port);
    void Set_Port(unsigned int upper, unsigned int lower);

    /** Reads the port number. The arguments are written for NAA 2 and 3 only: initialise them. */
    void Get_Port(unsigned int& port) const;
    void Get_Port(unsigned int& upper, unsigned int& lower) const;

    /**
     * Whether both names belong to the same switch: equal but for the port number. The NAA of this name
     * decides which bits count; false for an NAA other than 1, 2, 3 and 5.
     */
    bool Same_Base(Wwn other) const;

    /** Turns a port's name into its switch's name, in place: NAA 2 to 1 (or, for Cisco, 2) and NAA 3 to 5. */
    Wwn& convertToSwitchName();

    /** Turns a name of NAA 1 or 2 into the name of one of its ports, NAA 2, and returns 1; else 0, unchanged.
     */
    int Make_Fabric_Port_Wwn(unsigned int upper, unsigned int lower);
    /** Becomes the port name 2u:uu:FF:FF:FF:FF:FF:FF. Returns 1. */
    int Make_Fabric_Port_Wwn_Null_Mac(unsigned int upper, unsigned int lower);

  private:
    unsigned int naa() const { return _high >> 28; }
    void setNaa(unsigned int naa) { _high = (_high & 0x0FFFFFFFU) | (naa << 28); }

    uint32_t _high = 0;  ///< bytes 0 to 3
    uint32_t _low = 0;   ///< bytes 4 to 7
};

static_assert(sizeof(Wwn) == 8, "a name is 8 bytes and nothing else");
