#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "common/Wwn.h"
#include "common/export.h"
#include "datacache/PortCache.h"

/**
 * One switch of the fabric with its ports.
 *
 * A port costs three bytes here: all names of a switch's ports are equal but for the port field (see Wwn), so
 * one of them is kept whole and each port's row holds only its port field and its number in the switch's
 * port list. Ports are made from the rows on request.
 *
 * The fabric owns the record. The access lock guards those of the cache, and a pointer to one is good while
 * that lock is held; those of a snapshot are never changed, and good for as long as the snapshot.
 */
class DC_EXPORT SwitchCache {
  public:
    static constexpr unsigned kMaxPorts = 256;  ///< rows of the port tables
    /** Wider than any port field: what stays of it after Wwn::Get_Port() tells a name that has none. */
    static constexpr unsigned kNoPortField = 4096;

    SwitchCache();

    unsigned char getDomainID() const;
    Wwn getWorldWideName() const;
    /** The switch's name as 16 hexadecimal digits. */
    std::string getWwn() const;
    bool isLocal() const;
    unsigned char getStatus() const;
    /** Ports that are known, at most 256. */
    uint16_t getPortCount() const;
    /** How often the management server failed for this switch since it last answered well (modulo 256). */
    uint8_t getManagementServerErrors() const;
    /** Whether it failed for more than 10 seconds, after which the switch's ports are never read again. */
    bool isManagementServerGivenUp() const;

    /** Walks the ports in the order of the rows; the null port at the end. The next port is found by index.
     */
    PortCache getFirstPort() const;
    PortCache getNextPort(const PortCache& port) const;
    /** The port of this name, which the answer carries as it was given. */
    PortCache getPortByWorldWideName(const Wwn& name) const;
    /** The same for 16 hexadecimal digits. */
    PortCache getPortByWwn(const std::string& name) const;
    /**
     * The port of an LSDB port index, given in decimal, octal (0) or hexadecimal (0x). For a remote Cisco
     * switch an index above 255 is a slot in bits 8 to 13 and a port in bits 0 to 5; for others it is out of
     * range.
     */
    PortCache getPortByLSDBPortIndex(const std::string& index) const;

    /** Adds a port that the tables have room for; the caller sees to _port_base_wwn. False when full. */
    bool addPort(unsigned portField, unsigned index);

    Wwn _wwn;
    Wwn _port_base_wwn;                             ///< name of one port; null: the ports are not known
    uint16_t _port_count = 0;                       ///< valid rows, at most kMaxPorts
    std::array<uint16_t, kMaxPorts> _wwn_portno{};  ///< port field of the port's name, 12 bits
    std::array<uint8_t, kMaxPorts> _lsdb_port_index{};
    uint8_t _domain_id = 0;
    bool _mserver_timeout = false;  ///< the management server kept failing: never asked again
    uint8_t _mserver_errors = 0;    ///< failures of the management server since its last good answer
    bool _stale = false;            ///< not seen yet in the load that is going on
    bool _local = false;
    uint8_t _status = 2;
};
