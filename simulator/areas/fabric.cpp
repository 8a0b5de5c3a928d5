#include <algorithm>
#include <utility>

#include "simulator/areas/Area.h"
#include "simulator/areas/Fabric.h"

namespace vexsim {
namespace {

constexpr unsigned kLowestDomain = 1;
constexpr unsigned kMostRemotePorts = 65535;

using Member = std::pair<unsigned, FabricSwitch>;

unsigned readDomain(TableReader& table, const char* field) {
    return static_cast<unsigned>(table.integer(field, kLowestDomain, kHighestDomain));
}

/** The management server's fields, which a section and a step share. */
void readManagement(TableReader& table, const char* status, const char* slow, FabricSwitch& made) {
    if (table.has(status)) {
        made.managementStatus = static_cast<uint32_t>(table.integer(status, 0, UINT32_MAX));
    }
    if (table.has(slow)) made.managementSlowSeconds = static_cast<long>(table.integer(slow, 0, 86400));
}

Member readMember(TableReader& table) {
    FabricSwitch made;
    const unsigned domain = readDomain(table, "domain");
    made.wwn = Wwn(table.wwn("wwn"));
    made.name = table.has("name") ? table.text("name") : made.wwn.tostring();
    if (table.has("hops")) made.hops = static_cast<unsigned>(table.integer("hops", 1, kUnreachable));
    if (table.has("ports")) made.ports = static_cast<unsigned>(table.integer("ports", 0, kMostRemotePorts));
    made.portWwns = table.texts("port_wwns");
    made.offline = table.numbers("offline", 0, kMostRemotePorts);
    readManagement(table, "management_status", "management_slow", made);
    return {domain, std::move(made)};
}

Wwn localName(const Switch& target) {
    return Wwn(target.value("Oper.Switch.WWN"));
}

/** Why a switch cannot be in the fabric beside those that are; empty when it can. */
std::string conflict(Switch& target, const Member& member) {
    const auto& switches = target.part<Fabric>().switches;
    const std::string domain = std::to_string(member.first);
    if (switches.count(member.first) != 0 ||
        (hasLocalSwitch(target) && localDomain(target) == member.first)) {
        return "domain " + domain + " is taken";
    }
    if (localName(target) == member.second.wwn) return "that is the local switch's name";
    for (const auto& entry : switches) {
        if (entry.second.wwn == member.second.wwn)
            return "domain " + std::to_string(entry.first) + " has that name";
    }
    return {};
}

void join(Switch& target, const Member& member) {
    const std::string reason = conflict(target, member);
    if (!reason.empty()) throw StepError("switch cannot join: " + reason);
    target.part<Fabric>().switches.insert(member);
}

FabricSwitch& memberOf(Switch& target, unsigned domain) {
    auto& switches = target.part<Fabric>().switches;
    const auto found = switches.find(domain);
    if (found == switches.end())
        throw StepError("the fabric has no other switch with domain " + std::to_string(domain));
    return found->second;
}

void leave(Switch& target, unsigned domain) {
    memberOf(target, domain);
    target.part<Fabric>().switches.erase(domain);
}

constexpr const char* kPrincipalKey = "Oper.Switch.WhoIsPrincipal";

/** A fabric chooses its principal among its switches. */
void choosePrincipal(Switch& target, const std::string& wwn) {
    if (!isInFabric(target, Wwn(wwn)))
        throw StepError("the fabric has no switch " + wwn + " to be the principal");
    target.set(kPrincipalKey, wwn);
}

/** A fabric that has formed anew: its switches, its paths or its principal. */
void raiseReformed(Switch& target, const std::string& text) {
    target.raise(VEX_EVENT_FABRIC_CHANGE, text);
    target.raise(VEX_EVENT_LSDB_CHANGE, text);
}

void setFabricDefaults(Switch& target) {
    target.set("Oper.Switch.DomainID", "1");
}

void loadFabric(TableReader& table, Switch& target) {
    if (table.has("principal")) target.set(kPrincipalKey, table.wwn("principal"));
    for (TableReader& entry : table.tables("switch")) {
        entry.rename("[[fabric.switch]]");
        Member member = readMember(entry);
        entry.finish();
        const std::string reason = conflict(target, member);
        if (!reason.empty()) entry.fail(reason);
        target.part<Fabric>().switches.insert(std::move(member));
    }
}

Action readJoin(TableReader& table) {
    return [member = readMember(table)](Switch& target) {
        join(target, member);
        raiseReformed(target, "Switch " + member.second.name + " joined");
    };
}

Action readLeave(TableReader& table) {
    return [domain = readDomain(table, "domain")](Switch& target) {
        leave(target, domain);
        raiseReformed(target, "Domain " + std::to_string(domain) + " left");
    };
}

/** A switch gets another domain ID, the simulated one included. */
Action readDomainChange(TableReader& table) {
    const unsigned from = readDomain(table, "domain");
    const unsigned to = readDomain(table, "to");
    return [from, to](Switch& target) {
        auto& switches = target.part<Fabric>().switches;
        if (switches.count(to) != 0 || localDomain(target) == to)
            throw StepError("domain " + std::to_string(to) + " is taken");
        if (localDomain(target) == from) {
            target.set("Oper.Switch.DomainID", std::to_string(to));
            target.raise(VEX_EVENT_DOMAINID_CHANGE, std::to_string(to));
        } else {
            memberOf(target, from);
            auto node = switches.extract(from);
            node.key() = to;
            switches.insert(std::move(node));
        }
        raiseReformed(target, "Domain " + std::to_string(from) + " is now " + std::to_string(to));
    };
}

Action readUnreachable(TableReader& table) {
    return [domain = readDomain(table, "domain")](Switch& target) {
        memberOf(target, domain).hops = kUnreachable;
        target.raise(VEX_EVENT_LSDB_CHANGE, "Domain " + std::to_string(domain) + " unreachable");
    };
}

Action readReachable(TableReader& table) {
    const unsigned domain = readDomain(table, "domain");
    unsigned hops = 1;
    if (table.has("hops")) hops = static_cast<unsigned>(table.integer("hops", 1, kUnreachable - 1));
    return [domain, hops](Switch& target) {
        memberOf(target, domain).hops = hops;
        target.raise(VEX_EVENT_LSDB_CHANGE, "Domain " + std::to_string(domain) + " reachable");
    };
}

/** Another fabric's switches join, and the principal of both is a new one. */
Action readMerge(TableReader& table) {
    std::vector<Member> members;
    for (TableReader& entry : table.tables("switches")) {
        members.push_back(readMember(entry));
        entry.finish();
    }
    return [members, principal = table.wwn("principal")](Switch& target) {
        for (const Member& member : members) join(target, member);
        choosePrincipal(target, principal);
        raiseReformed(target, "Fabrics merged");
    };
}

/** Switches leave together, and what stays behind has a new principal. */
Action readSegment(TableReader& table) {
    const std::set<unsigned> domains = table.numbers("domains", kLowestDomain, kHighestDomain);
    return [domains, principal = table.wwn("principal")](Switch& target) {
        for (const unsigned domain : domains) leave(target, domain);
        choosePrincipal(target, principal);
        raiseReformed(target, "Fabric segmented");
    };
}

Action readFabricRename(TableReader& table) {
    return [principal = table.wwn("principal")](Switch& target) {
        choosePrincipal(target, principal);
        target.raise(VEX_EVENT_FABRIC_CHANGE, "Principal switch " + principal);
    };
}

template <bool online>
Action readRemotePort(TableReader& table) {
    const unsigned domain = readDomain(table, "domain");
    const auto port = static_cast<unsigned>(table.integer("port", 0, kMostRemotePorts));
    return [domain, port](Switch& target) {
        FabricSwitch& owner = memberOf(target, domain);
        if (online) {
            owner.offline.erase(port);
        } else {
            owner.offline.insert(port);
        }
        const std::string name = std::to_string(domain) + '/' + std::to_string(port);
        target.raise(VEX_EVENT_LSDB_CHANGE, "Port " + name + (online ? " online" : " offline"));
    };
}

/** Sets both fields: what the step does not name is well again. The library is not told of it. */
Action readManagementServer(TableReader& table) {
    const unsigned domain = readDomain(table, "domain");
    FabricSwitch said;
    readManagement(table, "status", "slow", said);
    return [domain, said](Switch& target) {
        FabricSwitch& owner = memberOf(target, domain);
        owner.managementStatus = said.managementStatus;
        owner.managementSlowSeconds = said.managementSlowSeconds;
    };
}

}  // namespace

bool isInFabric(Switch& target, const Wwn& wwn) {
    const auto& switches = target.part<Fabric>().switches;
    return localName(target) == wwn || std::any_of(switches.begin(), switches.end(), [&](const auto& entry) {
               return entry.second.wwn == wwn;
           });
}

Area fabricArea() {
    Area made;
    made.name = "fabric";
    made.sections = {{"fabric", false, loadFabric}};
    made.steps = {
        {"switch_join", readJoin},
        {"switch_leave", readLeave},
        {"switch_domain", readDomainChange},
        {"switch_unreachable", readUnreachable},
        {"switch_reachable", readReachable},
        {"fabric_merge", readMerge},
        {"fabric_segment", readSegment},
        {"fabric_rename", readFabricRename},
        {"remote_port_online", readRemotePort<true>},
        {"remote_port_offline", readRemotePort<false>},
        {"management_server", readManagementServer},
    };
    made.defaults = setFabricDefaults;
    made.read = readFabricKey;
    return made;
}

}  // namespace vexsim
