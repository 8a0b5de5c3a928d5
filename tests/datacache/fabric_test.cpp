#include <stdexcept>

#include "tests/support/CacheTest.h"

namespace {

using namespace testing;

constexpr uint16_t kUnknown = 65535;

const std::string kPlain = "1000001122000001";
const std::string kCisco = "2000000DEC000001";
const std::string kRemote = "5001122000000002";

/** A switch with four ports, numbered 0 to 3, beside one other switch, of domain 2. */
class FabricTest : public CacheTest {
  protected:
    /** With these fields more in the remote switch's section, or sections behind it. */
    void startFabric(const std::string& fields, const std::string& local = kPlain) {
        start("[switch]\nwwn = '" + local + "'\n[ports]\ncount = 4\n[[fabric.switch]]\ndomain = 2\nwwn = '" +
              kRemote + "'\n" + fields);
    }
    /** A load of the fabric, as the pass makes it; false when it failed. */
    bool reload() {
        const AccessGuard guard;
        return peer().getFabricInfo();
    }
    FabricCache& fabric() { return *cache().getFabric(1); }
    SwitchCache& remote() { return *fabric().getSwitchByWwn(kRemote); }
    /** What happens to the remote switch's management server. */
    void server(const std::string& fields) {
        step("step = [{do = 'management_server', domain = 2" + fields + "}]");
    }
    std::string indexOf(const std::string& port) { return cache().calcPortIndex(kRemote, port); }
    std::string nameOf(const std::string& index) { return cache().calcPortWwn(kRemote, index); }
};

TEST_F(FabricTest, TakesDomainsAsTheyAreWritten) {
    startFabric("ports = 2");
    const std::pair<const char*, const char*> values[] = {
        {"300x.WWN", "1000001122000008"}, {"300x.Hops", "000"}, {"bad.WWN", "no name"}, {"bad.Hops", "1"},
        {".WWN", "1000001122000009"},     {".Hops", "2"}};
    for (const auto& [key, value] : values) sim.set(std::string("Oper.Eport.LsdbRecord.") + key, value);
    // A comma at the end makes an empty domain, which is asked for like any other.
    sim.set("Oper.Eport.LsdbRecordList.255", ",2,,300x,bad,");
    EXPECT_TRUE(reload());
    EXPECT_THAT(log(), Contains("2 DCACHE: _load_switch_domain_list() - skip bad wwn no name"));
    std::vector<std::string> members;
    for (const SwitchCache* s = fabric().getFirstSwitch(); s != nullptr; s = fabric().getNextSwitch(s)) {
        members.push_back(std::to_string(s->getDomainID()) + ' ' + s->getWwn());
    }
    EXPECT_THAT(members,
                ElementsAre("1 " + kPlain, "2 " + kRemote, "44 1000001122000008", "0 1000001122000009"));
    EXPECT_EQ(fabric().getSwitchCount(), 4U);
    EXPECT_EQ(fabric().getFirstSwitch()->getStatus(), 2);
    for (const size_t length : {251U, 252U}) {
        sim.set("Oper.Eport.LsdbRecordList.255", std::string(length, '7'));
        reload();
        EXPECT_EQ(DataCache::health().capacity().domainListFull, length == 252);
    }
}

TEST_F(FabricTest, ATransparentSwitchHasNoFabric) {
    startFabric("[features]\ntransparent = true\n[sml]\n'Config.Switch.TransparentMode' = true\n");
    EXPECT_TRUE(reload());
    EXPECT_THAT(calls(), ElementsAre("vex_smlGetBatch Oper.Switch.WWN"));
    EXPECT_EQ(fabric().getFabricWwn(), "0000000000000000");
    EXPECT_EQ(fabric()._local_switch_wwn.tostring(), kPlain);
    EXPECT_EQ(cache().getRootSwitchDomainID(), 0);
}

TEST_F(FabricTest, KeepsOnlyNamesWithAPortField) {
    startFabric(R"(port_wwns = ["2005001122000002", "", "no name", "1006001122000002",
        "0000000000000000", "2FFF001122000002", "3000123000000002", "2007001122000002"]
        offline = [7])");
    std::vector<std::pair<unsigned, unsigned>> rows;
    for (unsigned row = 0; row < remote()._port_count; ++row)
        rows.emplace_back(remote()._wwn_portno[row], remote()._lsdb_port_index[row]);
    EXPECT_THAT(rows, ElementsAre(Pair(5, 0), Pair(4095, 5), Pair(291, 6)));
    EXPECT_EQ(remote()._port_base_wwn.tostring(), "3000123000000002") << "the last one that was taken";
}

TEST_F(FabricTest, HoldsAtMost256) {
    startFabric("");
    for (int port = 0; port < 300; ++port)
        sim.set("Oper.TopologyAll.2.Entry." + std::to_string(port) + ".PortWwn", "2001001122000002");
    for (const unsigned ports : {0U, 256U, 257U, 65535U}) {
        sim.set("Oper.TopologyAll.2.PortEntries", std::to_string(ports));
        calls();
        EXPECT_TRUE(reload());
        EXPECT_EQ(remote()._port_count, std::min(ports, 256U));
        EXPECT_EQ(DataCache::health().capacity().portEntriesBeyond, ports - std::min(ports, 256U));
        EXPECT_EQ(calls().size(), 5 + std::min(ports, 256U)) << "four read the switches, one the count";
        EXPECT_EQ(remote()._domain_id, 2) << "what follows the tables is intact";
    }
    EXPECT_EQ(remote()._lsdb_port_index[255], 255);
    peer().portState.port0Wwn = Wwn();
    EXPECT_TRUE(reload());
    EXPECT_EQ(remote()._port_count, 0) << "emptied, and not read while the local ports are unknown";
}

TEST_F(FabricTest, AServerIsAskedUntilItTimesOut) {
    startFabric("ports = 2\n");
    server(", status = 5, slow = 10");
    for (int errors = 1; errors <= 2; ++errors) {
        EXPECT_TRUE(reload());
        EXPECT_EQ(remote()._mserver_errors, errors);
    }
    server(", slow = 60");  // slow alone is no failure
    EXPECT_TRUE(reload());
    EXPECT_EQ(remote()._mserver_errors, 0);
    server(", status = 5, slow = 11");
    EXPECT_TRUE(reload());
    EXPECT_EQ(remote()._mserver_errors, 0) << "a time-out is not counted";
    server("");  // too late: it is well again
    step("step = [{do = 'switch_domain', domain = 2, to = 9}]");
    EXPECT_THAT(log(),
                Contains("2 DCACHE: _load_mserver_ports - skip " + kRemote + " due to mserver err timeout"));
    EXPECT_EQ(DataCache::health().capacity().switchesGivenUp, 1U);
    EXPECT_EQ(remote()._port_count, 0);
    // Only a new record starts afresh.
    step("step = [{do = 'switch_leave', domain = 9}]");
    step("step = [{do = 'switch_join', domain = 9, wwn = '" + kRemote + "', ports = 2}]");
    EXPECT_EQ(remote()._port_count, 2);
}

TEST_F(FabricTest, LocalIndexFromName) {
    const struct {
        std::string local, port, area;  ///< the area as it is logged
        uint16_t index;
    } cases[] = {
        {kPlain, "2003999999999999", "3", 3},  // whose name it is does not matter, only its port field
        {kPlain, "2004001122000001", "4", kUnknown}, {kPlain, "1003001122000001", "257", kUnknown},
        {kCisco, "2004000DEC000001", "3", 3},        {kCisco, "no name", "256", kUnknown},
        {kCisco, "2000000DEC000001", "0", 0},  // a port field of 0 is local port 0, if there is one
    };
    for (const auto& c : cases) {
        restart();
        startFabric("", c.local);
        const Wwn port(c.port);
        EXPECT_EQ(cache().calcPortIndex(Wwn(c.local), port), c.index) << c.port;
        EXPECT_THAT(log(), ElementsAre("2 DCACHE: calcPortIndex() port_wwn=" + port.tostring() +
                                           ", switch_wwn=" + c.local + ", root_switch_wwn=" + c.local,
                                       "2 DCACHE: calcPortIndex()local, area=" + c.area +
                                           ", result=" + std::to_string(c.index)));
    }
    peer().portState.localPortsPresent[0] = false;
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2000000DEC000001"), "");
    peer().portState.localPortsPresent[255] = true;
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2100000DEC000001"), "255");
    EXPECT_EQ(cache().calcPortWwn(kCisco, "255"), "2100000DEC000001");
}

TEST_F(FabricTest, RemoteIndexesAndNames) {
    startFabric("ports = 3");
    const std::pair<const char*, const char*> cases[] = {
        {"3", "2003001122000001"}, {"4", ""}, {"65539", "2003001122000001"}, {"4294967295", ""}};
    for (const auto& [index, name] : cases) EXPECT_EQ(cache().calcPortWwn(kPlain, index), name) << index;
    for (const char* index : {"256", "65535"})
        EXPECT_THROW(cache().calcPortWwn(kPlain, index), std::out_of_range) << index;
    EXPECT_TRUE(lockIsFree()) << "the exception has let go of it";

    const std::string line = "2 DCACHE: calcPortIndex() remote, ";
    log();
    EXPECT_EQ(indexOf("3000002000000002"), "2");
    EXPECT_EQ(log().back(), line + "result=2");
    EXPECT_EQ(indexOf("3000009000000002"), "");
    EXPECT_THAT(log(), Contains(line + "port wwn not found on switch"));
    EXPECT_EQ(cache().calcPortIndex("1000001122000009", "3000002000000002"), "");
    EXPECT_EQ(log().back(), line + "result=65535");
    EXPECT_EQ(nameOf("300"), "") << "remote indexes are not bounded";
    EXPECT_EQ(cache().calcPortWwn("1000001122000009", "0"), "");
    remote().addPort(9, 2);
    EXPECT_EQ(nameOf("2"), "3000009000000002") << "the last of the rows with this index";
    peer().portState.port0Wwn = Wwn();
    EXPECT_EQ(cache().calcPortWwn(kPlain, "300"), "") << "nothing is known, so nothing is tested";
}

}  // namespace
