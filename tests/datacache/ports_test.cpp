#include "tests/support/CacheTest.h"

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;

class Ports : public CacheTest {
  protected:
    void startWith(const std::string& ports) {
        start("switch = {wwn = '1000001122AABBCC'}\n[ports]\n" + ports);
    }
    /** Scans the ports, all of them or those that are marked. */
    bool scan(bool all) {
        const AccessGuard guard;
        if (all) cache().localPortRefreshSet();
        return peer().getPortInfo();
    }
    size_t walked() {
        size_t ports = 0;
        std::string port = cache().getFirstRootPortIndex();
        for (; !port.empty() && ports < 300; port = cache().getNextRootPortIndex(port)) ++ports;
        return ports;
    }
    bool exists(unsigned port) {
        const AccessGuard guard;
        return peer().portState.localPortsPresent[port];
    }
};

TEST_F(Ports, OfTheLocalSwitchAreNumberedByItsKindOfNames) {
    start(
        "switch = {wwn = '2000000DEC000001'}\nports = {count = 3, port = [{numbers = [1], type = 'Donor'}]}");
    SwitchCache* const record = cache().getFabric(1)->getSwitchByWwn("2000000DEC000001");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->_port_count, 2) << "without the donor";
    EXPECT_EQ(record->_wwn_portno[0], 1) << "Cisco counts port fields from one";
    EXPECT_EQ(record->_wwn_portno[1], 3);
    EXPECT_EQ(record->_lsdb_port_index[1], 2);
    EXPECT_EQ(cache().calcPortWorldWideName(record->_wwn, 2).tostring(), *sim.get("Oper.UserPort.0.2.WWN"));
}

TEST_F(Ports, PortCountIsCappedAndMayShrink) {
    startWith("count = 200");
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
    EXPECT_TRUE(exists(127));
    EXPECT_FALSE(exists(128));
    sim.set("Oper.Switch.MaxPorts", "100");
    EXPECT_TRUE(scan(false));
    EXPECT_EQ(calls().size(), 2U) << "no port is marked";
    EXPECT_EQ(walked(), 100U);
    EXPECT_FALSE(exists(100));
    sim.set("Oper.Switch.MaxPorts", "99999999999");
    EXPECT_TRUE(scan(false));
    EXPECT_EQ(walked(), 100U) << "ports beyond the old count are read when they are marked";
    EXPECT_TRUE(scan(true));
    EXPECT_EQ(walked(), 128U);
    EXPECT_EQ(events().size(), 28U);
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
}

TEST_F(Ports, WithoutTheSwitchThereIsNoRecordAndNoEvent) {
    load("switch = {wwn = '1000001122AABBCC'}\nports = {count = 4, state = 'Offline'}");
    sim.set("Oper.Switch.WWN", "none");
    pass();
    EXPECT_TRUE(exists(1)) << "the ports are read";
    EXPECT_THAT(log(), Each(Not(HasSubstr("_processPort0Wwn"))));
    EXPECT_EQ(cache().getFabric(1)->getSwitchByWwn("1000001122AABBCC"), nullptr);
    sim.set("Oper.Switch.WWN", "1000001122AABBCC");
    sim.set("Oper.UserPort.0.3.OperState", "Online");
    cache().localPortRefreshSet(3);
    cache().updatePorts();
    pass();
    EXPECT_THAT(events(), Contains(HasSubstr("DCEventPortStatusChange"))) << "that was the first scan";
}

TEST_F(Ports, NoPortAtAllNamesPortZero) {
    startWith("count = 2\nstate = 'NotInstalled'");
    EXPECT_EQ(walked(), 0U);
    EXPECT_TRUE(scan(false));
    EXPECT_THAT(calls(), Contains(HasSubstr("Oper.UserPort.0.0.WWN,")));
    for (const char* port : {"0", "1"}) sim.set(std::string("Oper.UserPort.0.") + port + ".WWN", "no name");
    sim.set("Oper.UserPort.0.1.OperState", "Online");
    EXPECT_TRUE(scan(true));
    EXPECT_TRUE(exists(1));
    EXPECT_EQ(walked(), 0U) << "without the name from which ports are named there is no walk";
}

}  // namespace
