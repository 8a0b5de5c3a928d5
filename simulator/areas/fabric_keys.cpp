#include <charconv>
#include <string_view>

#include "simulator/areas/Fabric.h"
#include "simulator/domain_list.h"

namespace vexsim {
namespace {

/** Takes a prefix off the front of a text. */
bool skip(std::string_view& text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) return false;
    text.remove_prefix(prefix.size());
    return true;
}

/** Takes a decimal number off the front of a text. */
std::optional<unsigned> skipNumber(std::string_view& text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return number;
}

/** Every domain of the link state database, in order: the fabric's and the simulated switch's own. */
std::set<unsigned> domainsOf(Switch& target) {
    std::set<unsigned> domains;
    if (hasLocalSwitch(target)) domains.insert(localDomain(target));
    for (const auto& entry : target.part<Fabric>().switches) domains.insert(entry.first);
    return domains;
}

Reading domainAfter(Switch& target, unsigned domain) {
    const std::set<unsigned> domains = domainsOf(target);
    const auto next = domains.upper_bound(domain);
    return next == domains.end() ? Reading{EndOfList, {}} : Reading{Ok, std::to_string(*next)};
}

std::optional<Reading> lsdbRecord(Switch& target, unsigned domain, std::string_view field) {
    const bool local = hasLocalSwitch(target) && domain == localDomain(target);
    const auto& switches = target.part<Fabric>().switches;
    const auto found = switches.find(domain);
    if (!local && found == switches.end()) return Reading{EndOfList, {}};
    if (field == ".WWN") {
        return Reading{Ok, local ? target.value("Oper.Switch.WWN") : found->second.wwn.tostring()};
    }
    if (field == ".Hops") return Reading{Ok, local ? "0" : std::to_string(found->second.hops)};
    return std::nullopt;  // links are the walks'
}

Reading portWwn(const FabricSwitch& owner, unsigned port) {
    if (owner.offline.count(port) != 0) return Reading{EndOfList, {}};
    if (!owner.portWwns.empty()) {
        if (port >= owner.portWwns.size()) return Reading{EndOfList, {}};
        return {Ok, owner.portWwns[port]};
    }
    if (port >= owner.ports) return Reading{EndOfList, {}};
    return {Ok, portName(owner.wwn, port).tostring()};
}

/** What the management server of one switch answers. */
Reading topology(Switch& target, unsigned domain, std::string_view field) {
    auto& switches = target.part<Fabric>().switches;
    const auto found = switches.find(domain);
    if (found == switches.end()) return {EndOfList, {}};
    const FabricSwitch& owner = found->second;
    if (field == ".PortEntries") {
        target.clockOffset += owner.managementSlowSeconds;  // time that passes without anybody waiting
        if (owner.managementStatus != 0) return {owner.managementStatus, {}};
        return {Ok, std::to_string(owner.portWwns.empty() ? owner.ports : owner.portWwns.size())};
    }
    if (!skip(field, ".Entry.")) return {UnknownKey, {}};
    const std::optional<unsigned> port = skipNumber(field);
    if (!port || field != ".PortWwn") return {UnknownKey, {}};
    if (owner.managementStatus != 0) return {owner.managementStatus, {}};
    return portWwn(owner, *port);
}

}  // namespace

Wwn portName(const Wwn& switchName, unsigned port) {
    std::string text = switchName.tostring();
    if (text[0] == '1') text[0] = '2';
    if (text[0] == '5') text[0] = '3';
    Wwn name(text);
    if (text[0] != '2' && text[0] != '3') return switchName;
    name.Set_Port(switchName.isCisco() ? port + 1 : port);
    return name;
}

unsigned localDomain(const Switch& target) {
    return static_cast<unsigned>(target.number("Oper.Switch.DomainID"));
}

bool hasLocalSwitch(const Switch& target) {
    return target.has("Oper.Switch.WWN") && target.has("Oper.Switch.DomainID");
}

std::optional<Reading> readFabricKey(Switch& target, const std::string& key) {
    std::string_view rest = key;
    if (skip(rest, "Oper.TopologyAll.")) {
        const std::optional<unsigned> domain = skipNumber(rest);
        return domain ? topology(target, *domain, rest) : Reading{UnknownKey, {}};
    }
    if (!skip(rest, "Oper.Eport.")) return std::nullopt;
    if (rest == "LsdbRecordList.255") return Reading{Ok, domainList(domainsOf(target))};
    if (rest == "FirstLsdbRecord") return domainAfter(target, 0);
    const bool next = skip(rest, "NextLsdbRecord.");
    if (!next && !skip(rest, "LsdbRecord.")) return std::nullopt;
    const std::optional<unsigned> domain = skipNumber(rest);
    if (!domain) return Reading{UnknownKey, {}};
    return next ? domainAfter(target, *domain) : lsdbRecord(target, *domain, rest);
}

}  // namespace vexsim
