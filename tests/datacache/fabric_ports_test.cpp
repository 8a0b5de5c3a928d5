#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122000001"
domain = 1
[[fabric.switch]]
domain = 2
wwn = "1000001122000002"
)";

const std::string kName = "1000001122000002";

/** The fabric's one other switch with these port fields in its section. */
std::string fabricWith(const std::string& fields) {
    return kSwitch + fields + '\n';
}

class FabricPorts : public FabricTest {
  protected:
    const SwitchCache& remote() { return *member(kName); }

    /** The rows as "FIELD:INDEX". */
    std::vector<std::string> rows() {
        std::vector<std::string> lines;
        for (unsigned row = 0; row < remote()._port_count; ++row) {
            lines.push_back(std::to_string(remote()._wwn_portno[row]) + ':' +
                            std::to_string(remote()._lsdb_port_index[row]));
        }
        return lines;
    }
};

TEST_F(FabricPorts, KeepsOnlyNamesWithAPortField) {
    loadFabric(fabricWith(R"(port_wwns = ["2005001122000002", "", "no name", "1006001122000002",
        "0000000000000000", "2FFF001122000002", "3000123000000002", "2007001122000002"]
        offline = [7])"));
    EXPECT_THAT(rows(), ElementsAre("5:0", "4095:5", "291:6"));
    EXPECT_EQ(remote()._port_base_wwn.tostring(), "3000123000000002") << "the last one that was taken";
}

TEST_F(FabricPorts, HoldsAtMost256) {
    const struct {
        int ports;
        unsigned rows;
        size_t calls;
    } cases[] = {{0, 0, 1}, {1, 1, 2}, {255, 255, 256}, {256, 256, 257}, {300, 256, 257}, {65535, 256, 257}};
    loadFabric(kSwitch);
    for (const auto& c : cases) {
        sim.set("Oper.TopologyAll.2.PortEntries", std::to_string(c.ports));
        for (int port = 0; port < 300; ++port) {
            sim.set("Oper.TopologyAll.2.Entry." + std::to_string(port) + ".PortWwn", "2001001122000002");
        }
        calls();
        EXPECT_TRUE(reload());
        EXPECT_EQ(remote()._port_count, c.rows);
        EXPECT_EQ(calls().size(), c.calls + 4) << "four read the switches";
        EXPECT_EQ(remote()._domain_id, 2) << "what follows the tables is intact";
    }
    EXPECT_EQ(remote()._lsdb_port_index[255], 255);
}

TEST_F(FabricPorts, AreNotReadWhileTheLocalPortsAreUnknown) {
    loadFabric(fabricWith("ports = 2"));
    ASSERT_EQ(remote()._port_count, 2);
    peer().portState.port0Wwn = Wwn();
    calls();
    EXPECT_TRUE(reload());
    EXPECT_EQ(calls().size(), 4U);
    EXPECT_EQ(remote()._port_count, 0) << "the load of the switches has emptied the tables";
    EXPECT_FALSE(remote()._port_base_wwn.isNull());
}

TEST_F(FabricPorts, AServerThatFailsInTimeIsAskedAgain) {
    loadFabric(fabricWith("ports = 2"));
    act("do = \"management_server\"\ndomain = 2\nstatus = 5\nslow = 10");
    for (int errors = 1; errors <= 3; ++errors) {
        EXPECT_TRUE(reload());
        EXPECT_EQ(remote()._mserver_errors, errors);
        EXPECT_EQ(remote()._port_count, 0);
    }
    EXPECT_FALSE(remote()._mserver_timeout);
    act("do = \"management_server\"\ndomain = 2\nslow = 60");  // slow alone is no failure
    EXPECT_TRUE(reload());
    EXPECT_EQ(remote()._mserver_errors, 0);
    EXPECT_EQ(remote()._port_count, 2);
}

TEST_F(FabricPorts, AServerThatTimesOutIsNeverAskedAgain) {
    loadFabric(fabricWith("ports = 2"));
    act("do = \"management_server\"\ndomain = 2\nstatus = 5");
    EXPECT_TRUE(reload());
    act("do = \"management_server\"\ndomain = 2\nstatus = 5\nslow = 11");
    EXPECT_TRUE(reload());
    EXPECT_TRUE(remote()._mserver_timeout);
    EXPECT_EQ(remote()._mserver_errors, 1) << "a time-out is not counted";

    act("do = \"management_server\"\ndomain = 2");  // too late: it is well again
    act("do = \"switch_domain\"\ndomain = 2\nto = 9");
    log();
    calls();
    EXPECT_TRUE(reload());
    EXPECT_EQ(calls().size(), 4U);
    EXPECT_THAT(log(),
                Contains("2 DCACHE: _load_mserver_ports - skip " + kName + " due to mserver err timeout"));
    EXPECT_EQ(remote()._port_count, 0);

    // Only a new record starts afresh.
    act("do = \"switch_leave\"\ndomain = 9");
    act("do = \"switch_join\"\ndomain = 9\nwwn = \"" + kName + "\"\nports = 2");
    EXPECT_EQ(remote()._port_count, 2);
}

}  // namespace
