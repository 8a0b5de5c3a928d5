#include <random>
#include <set>

#include "tests/support/CacheTest.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
principal = "1000001122000001"
domain = 7
[ports]
count = 6
state = "Offline"
[[ports.port]]
numbers = [0]
type = "PT"
[[ports.port]]
numbers = [2]
type = "Donor"
[[ports.port]]
numbers = [4]
state = "NotInstalled"
)";

const std::string kFailed = "2 DCACHE: Cache update failed: DataCache:_getPortInfo:";

std::string portName(unsigned port) {
    char name[20];
    std::snprintf(name, sizeof name, "2%03X001122AABBCC", port);
    return name;
}

class Ports : public CacheTest {
  protected:
    void start(const std::string& toml = kSwitch) {
        load(toml);
        settle();
        EXPECT_THAT(events(), Not(Contains(HasSubstr("Port")))) << "the first scan reports nothing";
        calls();
        log();
    }
    /** Scans the ports, all of them or those that are marked. */
    bool scan(bool all = true) {
        const AccessGuard guard;
        if (all) cache().localPortRefreshSet();
        return peer().getPortInfo();
    }
    /** The ports whose eight keys were read, and what else was. */
    std::vector<std::string> reads() {
        std::vector<std::string> short_lines;
        for (const std::string& call : calls()) {
            const size_t port = call.find("Oper.UserPort.0.");
            if (call.find("SFPSerialNumber") == std::string::npos || port == std::string::npos) {
                short_lines.push_back(call.substr(call.find(' ') + 1));
            } else {
                const std::string rest = call.substr(port + 16);
                short_lines.push_back(rest.substr(0, rest.find('.')));
            }
        }
        return short_lines;
    }
    void doStep(const std::string& kind, unsigned port, const std::string& more = "") {
        step("[[step]]\ndo = \"" + kind + "\"\nport = " + std::to_string(port) + "\n" + more + "\n");
    }
    std::vector<std::string> walk() {
        std::vector<std::string> ports;
        for (std::string port = cache().getFirstRootPortIndex(); !port.empty() && ports.size() < 300;
             port = cache().getNextRootPortIndex(port))
            ports.push_back(port);
        return ports;
    }
    unsigned statusOf(unsigned port) {
        const AccessGuard guard;
        return peer().portState.portStatus[port];
    }
    bool exists(unsigned port) {
        const AccessGuard guard;
        return peer().portState.localPortsPresent[port];
    }
};

TEST_F(Ports, FirstScanReadsEveryPortAndReportsNone) {
    load(kSwitch);
    settle();
    EXPECT_THAT(events(), Not(Contains(HasSubstr("Port"))));
    const std::vector<std::string> all = calls();
    EXPECT_THAT(all, Contains("vex_smlGetBatch Oper.UserPort.0.3.OperState,Oper.UserPort.0.3.AdminState,"
                              "Config.UserPort.0.3.Type,Oper.UserPort.0.3.DDM.Supported,"
                              "Oper.UserPort.0.3.SFPData0_31,Oper.UserPort.0.3.SFPData32_63,"
                              "Oper.UserPort.0.3.SFPSerialNumber,Oper.UserPort.0.3.HWType"));
    const auto scans = std::count_if(all.begin(), all.end(), [](const std::string& call) {
        return call.find("SFPSerialNumber") != std::string::npos;
    });
    EXPECT_EQ(scans, 6);
    // Port 0 is a pass-through port, so port 1 names the ports.
    EXPECT_THAT(all, Contains("vex_smlGetBatch Oper.UserPort.0.1.WWN,Oper.Switch.DomainID,"
                              "Oper.Switch.WhoIsPrincipal"));
    EXPECT_EQ(cache().getMaxRootPorts(), 6);
    EXPECT_THAT(walk(), ElementsAre("1", "2", "3", "5"));
    EXPECT_EQ(cache().getNextRootPortIndex("-1"), "");
    EXPECT_EQ(cache().getNextRootPortIndex("255"), "");
    EXPECT_EQ(cache().getPortType("0"), 16004);
    EXPECT_EQ(cache().getPortType("3"), 5);
    EXPECT_EQ(cache().getPortHWType("3"), 1);
    EXPECT_EQ(cache().getPortType("4"), 0) << "the type of a port that does not exist is not taken";
    EXPECT_EQ(cache().calcPortWorldWideName(cache().getRootSwitchWorldWideName(), 3).tostring(), portName(3));
}

TEST_F(Ports, LocalSwitchGetsItsRecord) {
    load(kSwitch);
    settle();
    const std::string process = "2 DCACHE: _processPort0Wwn() ";
    std::vector<std::string> lines;
    for (const std::string& line : log()) {
        if (line.find("_processPort0Wwn") != std::string::npos) lines.push_back(line);
    }
    EXPECT_THAT(
        lines,
        ElementsAre(process + "update local switch in fabric", process + "adding port 0 with smlindex 0",
                    process + "adding port 1 with smlindex 1", process + "skipping port 2 with smlindex 2",
                    process + "adding port 2 with smlindex 3", process + "adding port 3 with smlindex 5"));
    const AccessGuard guard;
    SwitchCache* const record = peer().fabric.getSwitchByWwn("1000001122AABBCC");
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(record->isLocal());
    EXPECT_EQ(record->getDomainID(), 7);
    EXPECT_EQ(record->_port_base_wwn.tostring(), portName(1));
    ASSERT_EQ(record->_port_count, 4);
    EXPECT_EQ(record->_lsdb_port_index[3], 5);
    EXPECT_EQ(record->_wwn_portno[3], 5);

    sim.set("Oper.Switch.DomainID", "300");
    sim.set("Oper.UserPort.0.1.WWN", "2ABC00112233AABB");
    record->_stale = true;
    EXPECT_TRUE(scan());
    EXPECT_EQ(peer().fabric._switches.size(), 1U) << "the record is used again";
    EXPECT_EQ(record->getDomainID(), 300 & 255);
    EXPECT_FALSE(record->_stale);
    EXPECT_EQ(record->_port_base_wwn.tostring(), portName(1)) << "the base name stays";
    EXPECT_EQ(peer().portState.port0Wwn.tostring(), "2ABC00112233AABB");
}

TEST_F(Ports, CiscoCountsPortFieldsFromOne) {
    start("[switch]\nwwn = \"2000000DEC000001\"\n[ports]\ncount = 3\n");
    const AccessGuard guard;
    SwitchCache* const record = peer().fabric.getSwitchByWwn("2000000DEC000001");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->_wwn_portno[0], 1);
    EXPECT_EQ(record->_wwn_portno[2], 3);
    EXPECT_EQ(record->_lsdb_port_index[2], 2);
    EXPECT_EQ(cache().calcPortWorldWideName(record->_wwn, 2).tostring(), *sim.get("Oper.UserPort.0.2.WWN"));
}

TEST_F(Ports, PortComesOnline) {
    start();
    sim.run("[[step]]\ndo = \"port_online\"\nport = 3\n");
    settle();
    EXPECT_THAT(allEvents(),
                ElementsAre("DCEventPortStatusChange wwn=1000001122AABBCC portWwn=" + portName(3) +
                                " fabricWwn=1000001122000001 previousStatus=[10] currentStatus=[2]",
                            "DCEventDataCacheUpdateComplete", "DCEventDataCacheUpdateComplete"))
        << "the dispatch asks for a pass of its own, which finds nothing left to do";
    EXPECT_THAT(log(), Contains("2 DCACHE: _processPort0Wwn() send DCEventPortStatusChange for port 3, " +
                                portName(3) + ", fabricWwn=1000001122000001, currstatus=2, origstatus=10"));
    EXPECT_THAT(reads(), ElementsAre("Oper.Switch.MaxPorts", "3",
                                     "Oper.UserPort.0.1.WWN,Oper.Switch.DomainID,Oper.Switch.WhoIsPrincipal"))
        << "one port changed, one port is read";
    doStep("port_offline", 5);
    EXPECT_THAT(reads(), ElementsAre("Oper.Switch.MaxPorts", "5", HasSubstr("WhoIsPrincipal")))
        << "and the one before it no more";
}

TEST_F(Ports, StatusFollowsBothStates) {
    start();
    const struct {
        const char* fields;
        unsigned status;
    } kStates[] = {{"state = \"Diagnostics\"", 11}, {"state = \"Isolated\"", 6}, {"admin = \"Offline\"", 10},
                   {"state = \"Down\"", 6},         {"admin = \"Downed\"", 10},  {"state = \"Unknown\"", 0}};
    for (const auto& state : kStates) {
        doStep("port_state", 3, state.fields);
        EXPECT_EQ(statusOf(3), state.status) << state.fields;
        EXPECT_THAT(events(), ElementsAre(HasSubstr("currentStatus=[" + std::to_string(state.status) + "]")));
    }
    doStep("port_type", 3, "type = \"E\"\nhardware = \"EXG\"");
    EXPECT_THAT(events(), IsEmpty()) << "a type is no status";
    EXPECT_EQ(cache().getPortType("3"), 4);
    EXPECT_EQ(cache().getPortHWType("3"), 2);
}

TEST_F(Ports, PortsComeAndGo) {
    start();
    doStep("port_added", 4);
    EXPECT_THAT(events(), ElementsAre("DCEventPortAdd wwn=1000001122AABBCC portWwn=" + portName(4) +
                                      " fromNameServer=false"));
    EXPECT_THAT(log(),
                Contains("2 DCACHE: _processPort0Wwn() send DCEventPortAdd for port 4, " + portName(4)));
    doStep("port_removed", 3);
    EXPECT_THAT(events(), IsEmpty()) << "a port that goes is not reported";
    EXPECT_THAT(walk(), ElementsAre("1", "2", "4", "5"));
    EXPECT_EQ(cache().getPortType("3"), 5) << "what it was stays";
    doStep("port_state", 5, "state = \"PoweredOff\"");
    EXPECT_FALSE(exists(5));
    doStep("port_added", 3, "state = \"Online\"");
    EXPECT_THAT(events(), ElementsAre(StartsWith("DCEventPortAdd"))) << "no status change beside it";
}

TEST_F(Ports, EventsComeInPortOrder) {
    start();
    sim.run(
        "[[step]]\ndo = \"port_online\"\nport = 5\n[[step]]\ndo = \"port_added\"\nport = 4\n"
        "[[step]]\ndo = \"port_online\"\nport = 1\n");
    settle();
    EXPECT_THAT(events(),
                ElementsAre(HasSubstr(portName(1)), HasSubstr(portName(4)), HasSubstr(portName(5))));
    EXPECT_THAT(reads(), ElementsAre("Oper.Switch.MaxPorts", "1", "4", "5", HasSubstr("WhoIsPrincipal")));
}

TEST_F(Ports, PortCountIsCappedAndMayShrink) {
    start("[switch]\nwwn = \"1000001122AABBCC\"\n[ports]\ncount = 200\n");
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
    EXPECT_TRUE(exists(127));
    EXPECT_FALSE(exists(128));
    sim.set("Oper.Switch.MaxPorts", "100");
    EXPECT_TRUE(scan(false));
    EXPECT_THAT(reads(), ElementsAre("Oper.Switch.MaxPorts", HasSubstr("WhoIsPrincipal")));
    EXPECT_EQ(walk().size(), 100U);
    EXPECT_FALSE(exists(100));
    sim.set("Oper.Switch.MaxPorts", "128");
    EXPECT_TRUE(scan(false));
    EXPECT_EQ(walk().size(), 100U) << "ports beyond the old count are read when they are marked";
    EXPECT_TRUE(scan());
    EXPECT_EQ(walk().size(), 128U);
    EXPECT_EQ(events().size(), 28U);
    sim.set("Oper.Switch.MaxPorts", "99999999999");
    EXPECT_TRUE(scan(false));
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
}

TEST_F(Ports, FailedReadsPutBackWhatTheyMust) {
    start();
    const struct {
        const char* name;
        const char* key;
        const char* line;
        bool restores;
    } kFaults[] = {
        {"count", "Oper.Switch.MaxPorts", "1617", true},  // nothing was changed yet
        {"a port", "Oper.UserPort.0.5.HWType", "1659", true},
        {"names", "Oper.Switch.WhoIsPrincipal", "1758", false},
    };
    for (const auto& fault : kFaults) {
        for (const char* effect : {"result = 5", "status = 5"}) {
            SCOPED_TRACE(std::string(fault.name) + ", " + effect);
            doStep("port_offline", 3);
            EXPECT_EQ(statusOf(3), 10U);
            events();
            log();
            sim.run(
                std::string("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\ntimes = 1\nkey = \"") +
                fault.key + "\"\n" + effect + "\n");
            sim.set("Oper.UserPort.0.3.OperState", "Online");
            EXPECT_FALSE(scan());
            EXPECT_THAT(log(), Contains(kFailed + fault.line));
            EXPECT_EQ(statusOf(3), fault.restores ? 10U : 2U);
            EXPECT_THAT(events(), IsEmpty());
            EXPECT_TRUE(scan(false)) << "the ports stay marked";
            EXPECT_EQ(statusOf(3), 2U);
            EXPECT_EQ(events().size(), fault.restores ? 1U : 0U);
        }
    }
}

TEST_F(Ports, NoPortsIsAFailure) {
    start();
    const struct { const char* count; } kCounts[] = {{"0"}, {""}, {"none"}, {"-1"}};
    for (const auto& row : kCounts) {
        sim.set("Oper.Switch.MaxPorts", row.count);
        EXPECT_FALSE(scan()) << row.count;
        EXPECT_THAT(log(), Contains(kFailed + "1630"));
        EXPECT_EQ(cache().getMaxRootPorts(), 6) << "the earlier state is put back";
        EXPECT_THAT(walk(), ElementsAre("1", "2", "3", "5"));
    }
}

TEST_F(Ports, FirstScanThatFailsIsStillTheFirst) {
    load(kSwitch);
    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\ntimes = 1\nkey = "
        "\"Oper.UserPort.0.4.HWType\"\n"
        "result = 5\n");
    EXPECT_FALSE(pass());
    EXPECT_THAT(walk(), IsEmpty());
    EXPECT_TRUE(pass());
    EXPECT_THAT(walk(), ElementsAre("1", "2", "3", "5"));
    EXPECT_THAT(events(), Not(Contains(HasSubstr("Port"))));
}

TEST_F(Ports, WithoutTheSwitchThereIsNoRecordAndNoEvent) {
    load(kSwitch);
    sim.set("Oper.Switch.WWN", "none");
    pass();
    EXPECT_TRUE(exists(1)) << "the ports are read";
    EXPECT_THAT(log(), Each(Not(HasSubstr("_processPort0Wwn"))));
    {
        const AccessGuard guard;
        EXPECT_TRUE(peer().portState.portsLoaded);
        EXPECT_TRUE(peer().localPortRefresh.none());
        EXPECT_EQ(peer().fabric.getSwitchByWwn("1000001122AABBCC"), nullptr);
    }
    sim.set("Oper.Switch.WWN", "1000001122AABBCC");
    sim.set("Oper.UserPort.0.3.OperState", "Online");
    {
        const AccessGuard guard;
        cache().localPortRefreshSet(3);
        cache().updatePorts();
    }
    pass();
    EXPECT_THAT(events(), Contains(HasSubstr("DCEventPortStatusChange"))) << "that was the first scan";
}

TEST_F(Ports, NoPortAtAllNamesPortZero) {
    start("[switch]\nwwn = \"1000001122AABBCC\"\n[ports]\ncount = 2\nstate = \"NotInstalled\"\n");
    EXPECT_THAT(walk(), IsEmpty());
    EXPECT_TRUE(scan(false));
    EXPECT_THAT(reads(), Contains(HasSubstr("Oper.UserPort.0.0.WWN,")));
    sim.set("Oper.UserPort.0.0.WWN", "no name");
    sim.set("Oper.UserPort.0.1.WWN", "no name");
    sim.set("Oper.UserPort.0.1.OperState", "Online");
    EXPECT_TRUE(scan());
    EXPECT_TRUE(exists(1));
    EXPECT_THAT(walk(), IsEmpty()) << "without the name from which ports are named there is no walk";
}

/** Whatever happens to the ports, a quiet cache says what the switch says. */
TEST_F(Ports, QuietCacheEqualsTheSwitch) {
    start("[switch]\nwwn = \"1000001122AABBCC\"\n[ports]\ncount = 12\n[ports.transceiver]\noui = 0x123456\n");
    std::mt19937 generator(31);
    const auto random = [&] { return static_cast<unsigned>(generator()); };
    std::set<unsigned> plugged;  // their vendor OUI is one character until their next scan
    const auto value = [&](const char* area, unsigned port, const char* field) {
        return sim.get(std::string(area) + ".UserPort.0." + std::to_string(port) + '.' + field).value();
    };
    const auto pick = [&](std::initializer_list<const char*> words) {
        return std::string(words.begin()[random() % words.size()]);
    };
    for (int round = 0; round < 400; ++round) {
        const unsigned port = random() % 12;
        const unsigned kind = random() % 6;
        if (kind == 0) doStep("port_online", port);
        if (kind == 1)
            doStep("port_state", port,
                   "state = \"" + pick({"Offline", "Isolated", "Down", "PoweredOff", "NotInstalled"}) +
                       "\"\nadmin = \"" + pick({"Online", "Offline", "Down"}) + '"');
        if (kind == 2) doStep("port_type", port, "type = \"" + pick({"E", "F", "GL", "PT", "Donor"}) + '"');
        if (kind == 3) {
            char serial[20];
            std::snprintf(serial, sizeof serial, "%016u", random());
            doStep("transceiver_plugged", port,
                   std::string("oui = 0x4142\nserial = \"") + serial +
                       "\"\nidentifier = " + pick({"0", "3", "17"}));
        }
        if (kind == 4) doStep("transceiver_pulled", port);
        if (kind == 5) doStep("port_added", port, "state = \"" + pick({"Online", "Offline"}) + '"');
        if (kind == 3) plugged.insert(port);
        if (kind != 3) plugged.erase(port);

        std::vector<std::string> expected;
        for (unsigned p = 0; p < 12; ++p) {
            SCOPED_TRACE("port " + std::to_string(p) + ", round " + std::to_string(round));
            const std::string state = value("Oper", p, "OperState");
            const bool present = state != "NotInstalled" && state != "PoweredOff";
            const bool ddm = value("Oper", p, "DDM.Supported") == "True" && present;
            const std::string index = std::to_string(p);
            const std::string identifier = value("Oper", p, "SFPData0_31").substr(0, 2);
            ASSERT_EQ(exists(p), present);
            if (present) {
                const std::string type = value("Config", p, "Type");
                ASSERT_EQ(statusOf(p), DataCache::smlPortStateToCIMOperationalStatus(
                                           state, value("Oper", p, "AdminState"))[0]);
                ASSERT_EQ(cache().getPortType(index), DataCache::smlTypeToCIMType(type));
                if (type != "PT") expected.push_back(index);
            }
            ASSERT_EQ(cache().getTransceiverDDMSupported(index), ddm);
            if (!ddm) continue;
            ASSERT_EQ(cache().getTransceiverVendorSN(index), value("Oper", p, "SFPSerialNumber"));
            ASSERT_EQ(cache().getTransceiverVendorOUI(index),
                      plugged.count(p) != 0 ? "B" : value("Oper", p, "SFPData32_63").substr(10, 6));
            ASSERT_EQ(cache().getTransceiverFormat(index), identifier == "03"   ? 0
                                                           : identifier == "00" ? 2
                                                                                : 1);
        }
        ASSERT_EQ(walk(), expected) << "round " << round;
        const AccessGuard guard;
        const SwitchCache* const record = peer().fabric.getSwitchByWwn("1000001122AABBCC");
        ASSERT_NE(record, nullptr);
        for (unsigned row = 0; row < record->_port_count; ++row) {
            const unsigned p = record->_lsdb_port_index[row];
            ASSERT_TRUE(exists(p));
            const Wwn name = cache().calcPortWorldWideName(record->_wwn, static_cast<unsigned short>(p));
            ASSERT_EQ(cache().calcPortIndex(record->_wwn, name), p);
        }
    }
}

}  // namespace
