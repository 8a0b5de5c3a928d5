#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

class FabricPorts : public FabricTest {
  protected:
    void startWith(const std::string& fields) { startFabric("1000001122000001", kName, fields); }
    const SwitchCache& remote() { return *fabric().getSwitchByWwn(kName); }
    void server(const std::string& fields) {
        step("step = [{do = 'management_server', domain = 2" + fields + "}]");
    }
    const std::string kName = "1000001122000002";
};

TEST_F(FabricPorts, KeepsOnlyNamesWithAPortField) {
    startWith(R"(port_wwns = ["2005001122000002", "", "no name", "1006001122000002",
        "0000000000000000", "2FFF001122000002", "3000123000000002", "2007001122000002"]
        offline = [7])");
    std::vector<std::string> rows;
    for (unsigned row = 0; row < remote()._port_count; ++row) {
        rows.push_back(std::to_string(remote()._wwn_portno[row]) + ':' +
                       std::to_string(remote()._lsdb_port_index[row]));
    }
    EXPECT_THAT(rows, ElementsAre("5:0", "4095:5", "291:6"));
    EXPECT_EQ(remote()._port_base_wwn.tostring(), "3000123000000002") << "the last one that was taken";
}

TEST_F(FabricPorts, HoldsAtMost256) {
    startWith("");
    for (int port = 0; port < 300; ++port)
        sim.set("Oper.TopologyAll.2.Entry." + std::to_string(port) + ".PortWwn", "2001001122000002");
    for (const unsigned ports : {0U, 1U, 255U, 256U, 257U, 65535U}) {
        sim.set("Oper.TopologyAll.2.PortEntries", std::to_string(ports));
        calls();
        EXPECT_TRUE(reload());
        EXPECT_EQ(remote()._port_count, std::min(ports, 256U));
        EXPECT_EQ(calls().size(), 5 + std::min(ports, 256U)) << "four read the switches, one the count";
        EXPECT_EQ(remote()._domain_id, 2) << "what follows the tables is intact";
    }
    EXPECT_EQ(remote()._lsdb_port_index[255], 255);
    peer().portState.port0Wwn = Wwn();
    calls();
    EXPECT_TRUE(reload());
    EXPECT_EQ(calls().size(), 4U) << "not read while the local ports are unknown";
    EXPECT_EQ(remote()._port_count, 0) << "the load of the switches has emptied the tables";
}

TEST_F(FabricPorts, AServerIsAskedUntilItTimesOut) {
    startWith("ports = 2\n");
    server(", status = 5, slow = 10");
    for (int errors = 1; errors <= 3; ++errors) {
        EXPECT_TRUE(reload());
        EXPECT_EQ(remote()._mserver_errors, errors);
        EXPECT_EQ(remote()._port_count, 0);
    }
    server(", slow = 60");  // slow alone is no failure
    EXPECT_TRUE(reload());
    EXPECT_EQ(remote()._mserver_errors, 0);
    EXPECT_EQ(remote()._port_count, 2);

    server(", status = 5, slow = 11");
    EXPECT_TRUE(reload());
    EXPECT_TRUE(remote()._mserver_timeout);
    EXPECT_EQ(remote()._mserver_errors, 0) << "a time-out is not counted";
    server("");  // too late: it is well again
    step("step = [{do = 'switch_domain', domain = 2, to = 9}]");
    EXPECT_THAT(log(),
                Contains("2 DCACHE: _load_mserver_ports - skip " + kName + " due to mserver err timeout"));
    EXPECT_EQ(remote()._port_count, 0);
    // Only a new record starts afresh.
    step("step = [{do = 'switch_leave', domain = 9}]");
    step("step = [{do = 'switch_join', domain = 9, wwn = '" + kName + "', ports = 2}]");
    EXPECT_EQ(remote()._port_count, 2);
}

}  // namespace
