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

}  // namespace
