#include "datacache/AreaPrints.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "common/export.h"
#include "datacache/cim_status.h"

namespace datacache {

namespace {

/** A name's two words, byte 0 most significant. */
struct NameWords {
    explicit NameWords(const Wwn& name) {
        static_assert(sizeof(Wwn) == sizeof word && std::is_trivially_copyable_v<Wwn>);
        std::memcpy(word, &name, sizeof word);
    }
    uint32_t word[2];
};

/** The FNV-1a hash of what is added. */
class Hash {
  public:
    Hash& add(std::string_view text) {
        for (const char c : text) step(static_cast<uint8_t>(c));
        return add(static_cast<uint32_t>(text.size()));
    }
    Hash& add(uint32_t number) {
        for (int shift = 0; shift < 32; shift += 8) step(static_cast<uint8_t>(number >> shift));
        return *this;
    }
    Hash& addName(const Wwn& name) {
        const NameWords words(name);
        return add(words.word[0]).add(words.word[1]);
    }
    uint32_t value() const { return _value; }

  private:
    void step(uint8_t byte) { _value = (_value ^ byte) * 16777619U; }
    uint32_t _value = 2166136261U;
};

uint32_t hashOf(const std::vector<unsigned short>& numbers) {
    Hash hash;
    for (const unsigned short number : numbers) hash.add(uint32_t{number});
    return hash.value();
}

/** Takes the first difference that it is told of. */
class Finding {
  public:
    void note(bool differs, const char* format, ...) DC_PRINTF(3, 4) {
        if (!differs || _found.any) return;
        _found.any = true;
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(_found.words, sizeof _found.words, format, arguments);
        va_end(arguments);
    }
    /** The same about a switch's or a fabric's name, with the words before and after it. */
    void noteName(bool differs, const char* before, const Wwn& name, const char* after = "") {
        if (!differs || _found.any) return;
        const NameWords words(name);
        _found.any = true;
        std::snprintf(_found.words, sizeof _found.words, "%s%08X%08X%s", before, words.word[0], words.word[1],
                      after);
    }
    const Difference& found() const { return _found; }

  private:
    Difference _found;
};

}  // namespace

uint32_t printOf(std::string_view text) {
    return Hash().add(text).value();
}

Difference AreaPrints::compare(const SwitchState& state, const std::vector<unsigned short>& faults) {
    const std::vector<unsigned short>& status = state.operationalStatus;
    const Switch now{
        Hash().addName(state.switchWwn).value(), status.empty() ? 0U : status.front(), hashOf(faults),
        (state.transparent ? 1U : 0U) | (state.fcoe ? 2U : 0U) | (state.ethernetPassthrough ? 4U : 0U)};
    Finding finding;
    if (_switch) {
        finding.noteName(now.name != _switch->name, "name is now ", state.switchWwn);
        // A failed self test takes the place of the state: where the faults have changed, it is their news.
        const bool alike =
            now.faults == _switch->faults || (now.status != CIM_ERROR && _switch->status != CIM_ERROR);
        finding.note(alike && now.status != _switch->status, "status is now %u", now.status);
        finding.note(now.mode != _switch->mode, "mode of operation");
    }
    _switch = now;
    return finding.found();
}

Difference AreaPrints::compare(const ChassisState& state) {
    Chassis now;
    now.supplies = state.powerSupplyCount;
    now.fans = state.fanCount;
    now.faults = hashOf(state.switchFaults);
    std::copy(state.powerSupplyStatus.begin(), state.powerSupplyStatus.end(), now.supply.begin());
    std::copy(state.fanStatus.begin(), state.fanStatus.end(), now.fan.begin());
    Finding finding;
    if (_chassis) {
        finding.note(now.supplies != _chassis->supplies, "%u power supplies, not %u", now.supplies,
                     _chassis->supplies);
        finding.note(now.fans != _chassis->fans, "%u fans, not %u", now.fans, _chassis->fans);
        for (size_t i = 0; i < kMaxChassisParts; ++i) {
            finding.note(now.supply[i] != _chassis->supply[i], "power supply %zu: status", i + 1);
            finding.note(now.fan[i] != _chassis->fan[i], "fan %zu: status", i + 1);
        }
        finding.note(now.faults != _chassis->faults, "faults of the switch");
    }
    _chassis = now;
    return finding.found();
}

Difference AreaPrints::compare(const BladeState& state) {
    Blades now;
    now.slots = state.slotCount;
    for (size_t slot = 0; slot < kMaxSlots; ++slot) {
        now.slot[slot] = Hash()
                             .add(uint32_t{state.kind[slot]})
                             .add(uint32_t{state.operStatus[slot]})
                             .add(uint32_t{state.tempSensors[slot]})
                             .add(uint32_t{state.voltageSensors[slot]})
                             .value();
    }
    Finding finding;
    if (_blades) {
        finding.note(now.slots != _blades->slots, "%u slots, not %u", now.slots, _blades->slots);
        for (size_t slot = 0; slot < kMaxSlots; ++slot) {
            finding.note(now.slot[slot] != _blades->slot[slot], "slot %zu", slot);
        }
    }
    _blades = now;
    return finding.found();
}

Difference AreaPrints::compare(const PortState& ports, const TransceiverState& media, const PortSet& read) {
    Difference found;
    found.portsRead = read;
    for (size_t port = 0; port < kPortRows; ++port) {
        // A port behind the number of ports is gone, though nobody asks for it.
        if (port < ports.portCount ? !read[port] : !_ports[port].known) continue;
        const Port now{
            true,
            Hash().add(uint32_t{ports.portStatus[port]}).add(uint32_t{ports.localPortsPresent[port]}).value(),
            Hash().add(uint32_t{ports.portType[port]}).add(uint32_t{ports.portHWType[port]}).value(),
            Hash().add(uint32_t{media.mediaPresent[port]}).add(media.mediaVendorSN[port]).value()};
        const Port before = _ports[port];
        _ports[port] = now;
        if (!before.known) continue;
        found.ofPort[port] = static_cast<uint8_t>(
            (now.status != before.status ? PORT_STATUS : 0) | (now.type != before.type ? PORT_TYPE : 0) |
            (now.transceiver != before.transceiver ? PORT_TRANSCEIVER : 0));
        if (found.ofPort[port] != 0) found.ports.set(port);
    }
    found.any = found.ports.any();
    return found;
}

Difference AreaPrints::compare(const std::vector<std::string>& accounts) {
    Hash hash;
    for (const std::string& name : accounts) hash.add(name);
    Finding finding;
    finding.note(_accounts && *_accounts != hash.value(), "list of accounts");
    _accounts = hash.value();
    return finding.found();
}

const AreaPrints::Member* AreaPrints::Fabric::find(const Wwn& wanted) const {
    for (size_t i = 0; i < count; ++i) {
        if (members[i].name == wanted) return &members[i];
    }
    return nullptr;
}

Difference AreaPrints::compare(const FabricCache& fabric) {
    _fabricNow.name = fabric._fabric_name;
    _fabricNow.count = 0;
    const auto* element = fabric._switches.get_first();
    for (; element != nullptr && _fabricNow.count < _fabricNow.members.size();
         element = element->get_next()) {
        const SwitchCache& record = *element->item();
        if (record._local) continue;
        Member& member = _fabricNow.members[_fabricNow.count++];
        Hash ports;
        ports.addName(record._port_base_wwn);
        for (unsigned row = 0; row < record._port_count; ++row) {
            ports.add(uint32_t{record._wwn_portno[row]}).add(uint32_t{record._lsdb_port_index[row]});
        }
        member = {record._wwn, record._domain_id, ports.value(),
                  record._mserver_errors == 0 && !record._mserver_timeout};
    }
    Finding finding;
    if (_fabricKnown) {
        finding.noteName(!(_fabricNow.name == _fabric.name), "fabric's name is now ", _fabricNow.name);
        for (size_t i = 0; i < _fabricNow.count; ++i) {
            const Member& now = _fabricNow.members[i];
            const Member* before = _fabric.find(now.name);
            finding.noteName(before == nullptr, "switch ", now.name, " joined");
            if (before == nullptr) continue;
            finding.noteName(now.domain != before->domain, "switch ", now.name, ": domain");
            finding.noteName(now.portsKnown && before->portsKnown && now.ports != before->ports, "switch ",
                             now.name, ": ports");
        }
        for (size_t i = 0; i < _fabric.count; ++i) {
            const Wwn& name = _fabric.members[i].name;
            finding.noteName(_fabricNow.find(name) == nullptr, "switch ", name, " left");
        }
    }
    _fabric = _fabricNow;
    _fabricKnown = true;
    return finding.found();
}

Difference AreaPrints::compare(const ZoningPrint& zoning) {
    Finding finding;
    if (_zoning) {
        finding.note(zoning.activeName != _zoning->activeName, "name of the active zoneset");
        finding.note(zoning.activeChecksum != _zoning->activeChecksum, "active zoneset");
        finding.note(zoning.inactiveChecksum != _zoning->inactiveChecksum, "configured zoning");
    }
    _zoning = zoning;
    return finding.found();
}

}  // namespace datacache
