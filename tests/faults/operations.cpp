#include "tests/faults/operations.h"

#include "host/areas.h"
#include "tests/support/Allocations.h"
#include "zoning/member_text.h"

namespace {

using datacache::ZoningSession;
using Lines = std::vector<std::string>;

/** A text that the caller now owns, and releases outside of what fails. */
std::string taken(FaultedCache& test, char* text) {
    if (text == nullptr) return "null";
    std::string copy = text;
    test.owned.push_back(text);
    return copy;
}

Lines properties(FaultedCache&) {
    const host::Json area = host::propertiesArea();
    Lines values;
    for (const auto& value : area) values.push_back(value.dump());
    return values;
}

Lines productInfo(FaultedCache& test) {
    char before[] = "what the caller's variables held before";
    char *description = before, *name = before, *serial = before, *brand = before;
    const int result = get_Product_Info(&description, &name, &serial, &brand);
    return {std::to_string(result) + " (" + taken(test, description) + ", " + taken(test, name) + ", " +
            taken(test, serial) + ", " + taken(test, brand) + ')'};
}

/** What the walkers give, and how much of the buffer they wrote. */
Lines walkers(FaultedCache&) {
    const std::vector<std::function<char*(char*)>> walks = {
        get_first_lsdb_record,
        [](char* to) { return get_next_lsdb_record("1", to); },
        [](char* to) { return get_lsdb_record_link_local_information("1", "0", to); },
        [](char* to) { return get_lsdb_record_link_remote_information("1", "0", to); },
        [](char* to) { return get_first_attached_port("3", to); },
        [](char* to) { return get_next_attached_port("3", "2100001122000001", to); }};
    Lines lines{"links " + std::to_string(get_lsdb_record_link_count("1"))};
    for (const auto& walk : walks) {
        std::string buffer(VEX_SML_VALUE_SIZE + 4, '~');
        const bool given = walk(buffer.data()) == buffer.data();
        const size_t written = buffer.find_last_not_of('~') + 1;
        lines.push_back((given ? "" : "null ") + buffer.substr(0, strnlen(buffer.data(), written)) +
                        ", wrote " + std::to_string(written));
    }
    return lines;
}

/** A group that is read, then written: what stays in its records from one call is there at the next. */
Lines group(FaultedCache&) {
    vex_smlmsggroup_s* const group = vex_smlAllocMsgGroup(1);
    for (const char* key : {"Oper.Switch.WWN", "Config.Services.SSHEnable"})
        EXPECT_EQ(vex_smlAddMsgGroupV(group, "%s", key), 0);
    Lines lines;
    const auto tell = [&](const char* what, int32_t result) {
        lines.push_back(what + (' ' + std::to_string(result)));
        for (int i = 0; i < 2; ++i) {
            char* value = nullptr;
            const uint32_t status = vex_smlGetResult(group, i, &value);
            lines.back() += ", " + std::to_string(status) + ' ' + value;
        }
    };
    tell("get", vex_smlGetMsgGroup(group));
    tell("set", vex_smlSetMsgGroup(group));
    vex_smlFreeMsgGroup(group);
    return lines;
}

/** On the second connection, as is what follows. */
Lines single(FaultedCache& test) {
    char* value = nullptr;
    uint32_t extra = 0;
    void* reply = nullptr;
    test.useOther = true;
    const int32_t got = vex_smlGetV(test.other, &value, &extra, "Oper.Switch.%s", "DomainID");
    const int32_t set = vex_smlSetV(test.other, &reply, "Cmd.Switch.%s", "ReqAdmin");
    return {"get " + std::to_string(got) + ' ' + taken(test, value), "set " + std::to_string(set)};
}

template <int32_t (*transaction)(uint32_t, vex_smlrequest_s*, int)>
Lines transact(FaultedCache& test) {
    test.useOther = true;
    vex_smlrequest_s record{"Config.Services.SSHEnable", "False", 0};
    const int32_t result = transaction(test.other, &record, 1);
    return {std::to_string(result) + " SSH=" + *test.sim.get("Config.Services.SSHEnable")};
}

template <int (*end)()>
Lines configSession(FaultedCache& test) {
    void* reply = nullptr;
    Lines lines{"begin " + std::to_string(getConfigEditMode())};
    vex_smlSet(hSwitch, "Config.Services.SSHEnable.False", &reply);
    const int ended = end();
    lines.push_back("end " + std::to_string(ended) + " SSH=" + *test.sim.get("Config.Services.SSHEnable"));
    lines.push_back("release " + std::to_string(releaseAdminMode()));
    return lines;
}

Lines backup(FaultedCache&) {
    return {"backup " + std::to_string(backupConfig()), "restore " + std::to_string(restoreConfig())};
}

Lines activeZoneset(FaultedCache&) {
    std::string name(VEX_ZONING_NAME_SIZE, '~');
    const int32_t result = get_Active_ZoneSet(name.data());
    return {std::to_string(result) + ' ' + name.c_str()};
}

Lines accounts(FaultedCache& test) {
    const bool read = test.cache().readAccounts();
    const Allocations::Pause own;
    return {read ? "read" : "not read", "removed " + host::listed(test.peer().prevAccounts)};
}

Lines dump(FaultedCache& test) {
    test.zoning().dump();
    return {};
}

Lines database(FaultedCache& test) {
    const datacache::ZoningDatabase copy = test.zoning().database();
    return {(copy.complete ? "complete " : "incomplete ") + std::to_string(copy.zones.size())};
}

/** A pass over one area. */
template <void (DataCache::*mark)()>
Lines load(FaultedCache& test) {
    (test.cache().*mark)();
    test.cache().localPortRefreshSet();
    return {test.pass() ? "ready" : "not ready"};
}

void lock(FaultedCache& test) {
    test.session.reset();
    test.session = std::make_unique<ZoningSession>(DataCache::zoningSession("c"));
}

Lines takeLock(FaultedCache& test) {
    lock(test);
    return {test.session->lockOutcome().text()};
}

Operation edit(const char* name, std::function<datacache::ZoningOutcome(ZoningSession&)> run,
               bool alike = false) {
    const auto text = [run](FaultedCache& test) { return Lines{run(*test.session).text()}; };
    return {name, Kind::Zoning, text, "", lock, alike};
}

using D = DataCache;
using S = ZoningSession;
}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = {
        {kFirstLoad, Kind::Loader, load<&D::updateAll>},
        {"switch", Kind::Loader, load<&D::updateSwitch>, "do = 'switch_state'\nstate = 'Offline'"},
        {"chassis", Kind::Loader, load<&D::updateChassis>, "do = 'power_supply'\nindex = 1\nstate = 'Bad'"},
        {"blades", Kind::Loader, load<&D::updateBlades>, "do = 'blade_remove'\nslot = 1"},
        {"single slot", Kind::Loader, load<&D::updateBlades>,
         "do = 'set'\nkey = 'Oper.Chassis.0.MaxSlots'\nvalue = '1'"},
        {"ports", Kind::Loader, load<&D::updatePorts>, "do = 'port_offline'\nport = 0"},
        {"fabric", Kind::Loader, load<&D::updateFabric>,
         "do = 'fabric_merge'\nprincipal = '1000001122000007'\n"
         "switches = [{domain = 9, wwn = '1000001122000009', ports = 1}]"},
        {"zoning", Kind::Loader, load<&D::updateZoning>, "do = 'zone_add'\nname = 'z3'\nzonesets = ['beta']"},
        {kAccounts, Kind::Loader, accounts, "do = 'account_rename'\nfrom = 'guest'\nto = 'other'",
         [](FaultedCache& test) { test.cache().readAccounts(); }},
        {"properties", Kind::Plain, properties, "", {}, true},
        {"product info", Kind::Plain, productInfo},
        {kWalkers, Kind::Plain, walkers, "", {}, true},
        {"group", Kind::Plain, group},
        {"single keys", Kind::Plain, single},
        {"batch set", Kind::Plain, transact<vex_smlBatchSet>, "", {}, false, true},
        {"batch set of CIM", Kind::Plain, transact<vex_smlBatchCimSet>},
        {"save an edit", Kind::Plain, configSession<saveConfigEdit>},
        {"cancel an edit", Kind::Plain, configSession<cancelConfigEdit>, "",
         [](FaultedCache&) { reqAdminMode(); }},
        {"backup", Kind::Plain, backup},
        {"active zoneset", Kind::Plain, activeZoneset},
        // Of zones and aliases, where the calls alone differ, one is enough.
        edit("create alias", [](S& s) { return s.createZoneAlias("a9"); }),
        edit("create zone", [](S& s) { return s.createZone("z9", VEX_ZT_HARD_ACL); }),
        edit("create zoneset", [](S& s) { return s.createZoneset("s9"); }),
        edit("remove zone", [](S& s) { return s.removeZone("z1"); }),
        edit("remove zoneset", [](S& s) { return s.removeZoneset("beta"); }),
        edit("add zone", [](S& s) { return s.addZoneToZoneset("beta", "z2"); }),
        edit("take zone", [](S& s) { return s.removeZoneFromZoneset("beta", "z1"); }),
        edit("add to zone", [](S& s) { return s.addMemberToZone("z1", VEX_ZMT_FCID, "010203"); }),
        edit("take from zone", [](S& s) { return s.removeMemberFromZone("z1", VEX_ZMT_ALIAS, "a1"); }),
        edit("remove member", [](S& s) { return s.removeMember(VEX_ZMT_WWN, "2000001122000003"); }),
        edit("commit", std::mem_fn(&S::commit), true),
        edit("abandon", std::mem_fn(&S::abandon)),
        {"lock", Kind::Zoning, takeLock},
        {"database", Kind::Zoning, database, "", {}, true},
        {"dump", Kind::Zoning, dump, "", {}, true},
    };
    return all;
}
