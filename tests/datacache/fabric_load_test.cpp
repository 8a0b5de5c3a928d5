#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;

using Lines = std::vector<std::string>;

constexpr const char* kFabric = R"(
[switch]
wwn = "1000001122000001"
domain = 1
[fabric]
principal = "1000001122000002"
[[fabric.switch]]
domain = 2
wwn = "1000001122000002"
ports = 2
[[fabric.switch]]
domain = 3
wwn = "1000001122000003"
ports = 1
)";

const std::string kList = "vex_smlGetBatch Oper.Eport.LsdbRecordList.255";
const std::string kOwn = "vex_smlGetBatch Oper.Switch.WhoIsPrincipal,Oper.Switch.WWN,Oper.Switch.DomainID";

std::string recordCall(int domain) {
    const std::string key = "Oper.Eport.LsdbRecord." + std::to_string(domain);
    return "vex_smlGetBatch " + key + ".WWN," + key + ".Hops";
}

std::string topologyCall(int domain, const std::string& field) {
    return "vex_smlGetBatch Oper.TopologyAll." + std::to_string(domain) + '.' + field;
}

/** Every call of one load of kFabric. */
Lines loadCalls() {
    return {kOwn,
            kList,
            recordCall(1),
            recordCall(2),
            recordCall(3),
            topologyCall(2, "PortEntries"),
            topologyCall(2, "Entry.0.PortWwn"),
            topologyCall(2, "Entry.1.PortWwn"),
            topologyCall(3, "PortEntries"),
            topologyCall(3, "Entry.0.PortWwn")};
}

class FabricLoad : public FabricTest {
  protected:
    void start(const std::string& toml = kFabric) {
        loadFabric(toml);
        EXPECT_THAT(fabricEvents(), IsEmpty()) << "the first load reports nothing";
        calls();
        log();
    }
    /** Fails the call that follows `skip` others. */
    void failCall(size_t skip) {
        sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nresult = 9\nskip = " +
                std::to_string(skip));
    }
};

TEST_F(FabricLoad, FillsTheFabricInTheOrderOfTheList) {
    start();
    EXPECT_THAT(members(), ElementsAre("2 1000001122000002 ports=2", "3 1000001122000003 ports=1"));
    EXPECT_EQ(fabric().getFabricWwn(), "1000001122000002");
    EXPECT_EQ(fabric()._local_switch_wwn, Wwn(std::string(kLocal)));
    EXPECT_EQ(cache().getRootSwitchDomainID(), 1);
    EXPECT_EQ(fabric().getSwitchCount(), 3) << "the local switch's record among them";
    EXPECT_EQ(member("1000001122000003")->getStatus(), 2);
    EXPECT_EQ(cache().getFabric(0), nullptr);
    EXPECT_EQ(cache().getFabric(2), nullptr);
}

TEST_F(FabricLoad, MakesTheSameCallsAtEveryLoad) {
    start();
    EXPECT_TRUE(reload());
    EXPECT_THAT(calls(), ElementsAreArray(loadCalls()));
    EXPECT_THAT(fabricEvents(), IsEmpty());
    sim.run("[[step]]\ndo = \"remote_port_offline\"\ndomain = 2\nport = 1");
    EXPECT_TRUE(reload());
    EXPECT_THAT(calls(), ElementsAreArray(loadCalls()));
    EXPECT_EQ(members().front(), "2 1000001122000002 ports=1");
}

TEST_F(FabricLoad, LogsTheFirstLoad) {
    loadFabric(kFabric);
    EXPECT_THAT(memberLog(),
                ElementsAre("2 DCACHE: _load_switch_domain_list()",  //
                            "2 DCACHE: LsdbRecordList: 1,2,3",       //
                            "2 DCACHE: Validating domainID 1",       //
                            "2 DCACHE: _load_switch_domain_list() - skip local switch 1000001122000001",
                            "2 DCACHE: Validating domainID 2",
                            "2 DCACHE: _load_switch_domain_list() - add 1000001122000002",
                            "2 DCACHE: Validating domainID 3",
                            "2 DCACHE: _load_switch_domain_list() - add 1000001122000003"));
}

TEST_F(FabricLoad, LogsASwitchThatIsLost) {
    start();
    act("do = \"switch_unreachable\"\ndomain = 3");
    const Lines lines = log();
    EXPECT_THAT(lines, Contains("2 DCACHE: Initializing _origFabric with 1000001122000003"));
    EXPECT_THAT(lines,
                Contains("2 DCACHE: _load_switch_domain_list() - skip stale switch, 1000001122000003"));
    EXPECT_THAT(lines, Contains("2 DCACHE: _load_switch_domain_list() - found 1000001122000002"));
    const auto end = std::find(lines.begin(), lines.end(), "2 DCACHE: _load_mserver_ports()");
    const auto from =
        std::find(lines.begin(), end, "2 DCACHE: _load_switch_domain_list() - delete 1000001122000003");
    EXPECT_THAT(Lines(from, end),
                ElementsAre("2 DCACHE: _load_switch_domain_list() - delete 1000001122000003",
                            "2 DCACHE: _fabricInitialized = true",
                            "2 DCACHE: _fabric._fabric_name == _origFabricName",
                            "2 DCACHE: Checking for new switches in the fabric",
                            "2 DCACHE: Checking 1000001122000001", "2 DCACHE: Checking 1000001122000002",
                            "2 DCACHE: Evaluating switch 1000001122000001 for deletion",
                            "2 DCACHE: _origFabric[i] = 1000001122000001",
                            "2 DCACHE: Evaluating switch 1000001122000001 for deletion",
                            "2 DCACHE: _origFabric[i] = 1000001122000002",
                            "2 DCACHE: Evaluating switch 1000001122000002 for deletion",
                            "2 DCACHE: _origFabric[i] = 1000001122000002",
                            "2 DCACHE: Evaluating switch 1000001122000001 for deletion",
                            "2 DCACHE: _origFabric[i] = 1000001122000003",
                            "2 DCACHE: Evaluating switch 1000001122000002 for deletion",
                            "2 DCACHE: _origFabric[i] = 1000001122000003"));
}

struct Change {
    const char* what;
    const char* steps;
    Lines events;
    Lines members;
};

const std::string p = " wwn=1000001122000002";  // the principal before
const std::string q = " wwn=1000001122000003";  // and after
const std::string r = " wwn=1000001122000004";  // and after a merge
const std::string s = " switchWwn=100000112200000";

const Change kChanges[] = {
    {"Join",
     "do = \"switch_join\"\ndomain = 4\nwwn = \"1000001122000004\"",
     {"DCEventSwitchAdd" + p + s + "4", "DCEventFabricChange" + p + " grown=true"},
     {"2 1000001122000002 ports=2", "3 1000001122000003 ports=1", "4 1000001122000004 ports=0"}},
    {"Leave",
     "do = \"switch_leave\"\ndomain = 3",
     {"DCEventSwitchRemove" + p + s + "3", "DCEventFabricChange" + p + " grown=false"},
     {"2 1000001122000002 ports=2"}},
    {"Replace",
     "do = \"switch_leave\"\ndomain = 3\n"
     "[[step]]\ndo = \"switch_join\"\ndomain = 3\nwwn = \"1000001122000004\"",
     {"DCEventSwitchAdd" + p + s + "4", "DCEventSwitchRemove" + p + s + "3",
      "DCEventFabricChange" + p + " grown=false", "DCEventFabricChange" + p + " grown=true"},
     {"2 1000001122000002 ports=2", "3 1000001122000004 ports=0"}},
    {"Domain",
     "do = \"switch_domain\"\ndomain = 3\nto = 200",
     {},
     {"2 1000001122000002 ports=2", "200 1000001122000003 ports=1"}},
    {"Unreachable",
     "do = \"switch_unreachable\"\ndomain = 2",
     {"DCEventSwitchRemove" + p + s + "2", "DCEventFabricChange" + p + " grown=false"},
     {"3 1000001122000003 ports=1"}},
    {"Rename",
     "do = \"fabric_rename\"\nprincipal = \"1000001122000003\"",
     {"DCEventFabricRemove" + p, "DCEventFabricAdd" + q, "DCEventSwitchAdd" + q + s + "1",
      "DCEventSwitchAdd" + q + s + "2", "DCEventSwitchAdd" + q + s + "3"},
     {"2 1000001122000002 ports=2", "3 1000001122000003 ports=1"}},
    {"Merge",
     "do = \"fabric_merge\"\nprincipal = \"1000001122000004\"\n"
     "switches = [{domain = 4, wwn = \"1000001122000004\"}, {domain = 5, wwn = \"1000001122000005\"}]",
     {"DCEventFabricChange" + r + " grown=true", "DCEventFabricRemove" + p, "DCEventSwitchAdd" + r + s + "1",
      "DCEventSwitchAdd" + r + s + "2", "DCEventSwitchAdd" + r + s + "3"},
     {"2 1000001122000002 ports=2", "3 1000001122000003 ports=1", "4 1000001122000004 ports=0",
      "5 1000001122000005 ports=0"}},
    {"Segment",
     "do = \"fabric_segment\"\nprincipal = \"1000001122000003\"\ndomains = [2]",
     {"DCEventFabricChange" + p + " grown=false", "DCEventFabricAdd" + q, "DCEventSwitchAdd" + q + s + "1",
      "DCEventSwitchAdd" + q + s + "3"},
     {"3 1000001122000003 ports=1"}},
};

void PrintTo(const Change& change, std::ostream* out) {
    *out << change.what;
}

class FabricChange : public FabricLoad, public ::testing::WithParamInterface<Change> {};

TEST_P(FabricChange, IsToldOnceAndInOrder) {
    start();
    act(GetParam().steps);
    EXPECT_EQ(fabricEvents(), GetParam().events);
    EXPECT_EQ(members(), GetParam().members);
    EXPECT_TRUE(reload());
    EXPECT_THAT(fabricEvents(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(, FabricChange, ::testing::ValuesIn(kChanges),
                         [](const auto& row) { return row.param.what; });

struct Failure {
    size_t call;  ///< of loadCalls()
    const char* line;
    const char* name;  ///< the fabric's name after the failure
};

const Failure kFailures[] = {
    {0, "_load_fabric_info:1981", "1000001122000002"},
    {1, "_load_switch_domain_list:2038", "1000001122000002"},
    {2, "_load_switch_domain_list:2074", "1000001122000002"},
    {4, "_load_switch_domain_list:2074", "1000001122000002"},
    {5, "_load_mserver_ports:2380", "1000001122000003"},  // told already: the members were complete
    {7, "_load_mserver_ports:2400", "1000001122000003"},
    {9, "_load_mserver_ports:2400", "1000001122000003"},
};

void PrintTo(const Failure& failure, std::ostream* out) {
    *out << failure.line;
}

class FabricFailure : public FabricLoad, public ::testing::WithParamInterface<Failure> {};

TEST_P(FabricFailure, LosesNoChangeAndTellsNoneTwice) {
    start();
    failCall(GetParam().call);
    sim.run("[[step]]\ndo = \"fabric_rename\"\nprincipal = \"1000001122000003\"");
    EXPECT_FALSE(reload());
    EXPECT_EQ(calls().size(), GetParam().call + 1);
    EXPECT_THAT(log(), Contains(std::string("2 DCACHE: Cache update failed: DataCache:") + GetParam().line));
    EXPECT_EQ(fabric().getFabricWwn(), GetParam().name);
    Lines told = fabricEvents();
    EXPECT_TRUE(reload());
    for (const std::string& line : fabricEvents()) told.push_back(line);
    EXPECT_THAT(told, ElementsAre("DCEventFabricRemove wwn=1000001122000002",  //
                                  "DCEventFabricAdd wwn=1000001122000003",
                                  "DCEventSwitchAdd wwn=1000001122000003 switchWwn=1000001122000001",
                                  "DCEventSwitchAdd wwn=1000001122000003 switchWwn=1000001122000002",
                                  "DCEventSwitchAdd wwn=1000001122000003 switchWwn=1000001122000003"));
    EXPECT_THAT(members(), ElementsAre("2 1000001122000002 ports=2", "3 1000001122000003 ports=1"));
    EXPECT_EQ(fabric().getFabricWwn(), "1000001122000003");
}

INSTANTIATE_TEST_SUITE_P(, FabricFailure, ::testing::ValuesIn(kFailures),
                         [](const auto& row) { return "Call" + std::to_string(row.param.call); });

TEST_F(FabricLoad, ARecordThatFailsIsAFailedLoadAndLeavesMarksForTheNext) {
    start();
    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nkey = \"*LsdbRecord.2.Hops\"\nstatus = "
        "24");
    EXPECT_FALSE(reload());
    EXPECT_TRUE(member("1000001122000002")->_stale);
    EXPECT_TRUE(member("1000001122000003")->_stale);
    EXPECT_FALSE(member(kLocal)->_stale);
    EXPECT_TRUE(reload());
    EXPECT_FALSE(member("1000001122000003")->_stale);
    EXPECT_THAT(fabricEvents(), IsEmpty());
    EXPECT_THAT(members(), ElementsAre("2 1000001122000002 ports=2", "3 1000001122000003 ports=1"));
}

TEST_F(FabricLoad, AnEmptyListChangesNothing) {
    start();
    sim.set("Oper.Eport.LsdbRecordList.255", "");
    act("do = \"fabric_rename\"\nprincipal = \"1000001122000003\"");
    EXPECT_THAT(log(), Contains("4 DCACHE: _load_switch_domain_list - no domains reported"));
    EXPECT_THAT(fabricEvents(), IsEmpty());
    EXPECT_EQ(fabric().getFabricWwn(), "1000001122000002");
    EXPECT_EQ(members().size(), 2U);

    // A status other than 0 is only remarked; what the value says counts.
    sim.erase("Oper.Eport.LsdbRecordList.255");
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"*\"\nkey = \"*LsdbRecordList.255\"\nstatus = 77");
    EXPECT_TRUE(reload());
    EXPECT_THAT(log(), Contains("2 DCACHE: smlerror = 77"));
    EXPECT_EQ(members().size(), 2U);
}

TEST_F(FabricLoad, NothingCountsAsInitializedBeforeAListCame) {
    load(std::string(kFabric) + "[ports]\ncount = 4\n");
    sim.set("Oper.Eport.LsdbRecordList.255", "");
    settle();
    sim.erase("Oper.Eport.LsdbRecordList.255");
    EXPECT_TRUE(reload());
    EXPECT_THAT(fabricEvents(), IsEmpty());
    EXPECT_EQ(members().size(), 2U);
}

TEST_F(FabricLoad, TakesDomainsAsTheyAreWritten) {
    start();
    // A comma at the end makes an empty domain, which is asked for like any other.
    sim.set("Oper.Eport.LsdbRecordList.255", ",2,,3,");
    EXPECT_FALSE(reload());
    EXPECT_THAT(calls(),
                ElementsAre(kOwn, kList, recordCall(2), recordCall(3),
                            "vex_smlGetBatch Oper.Eport.LsdbRecord..WWN,Oper.Eport.LsdbRecord..Hops"));
    sim.set("Oper.Eport.LsdbRecord..WWN", "1000001122000009");
    sim.set("Oper.Eport.LsdbRecord..Hops", "2");
    sim.set("Oper.Eport.LsdbRecord.300x.WWN", "1000001122000008");
    sim.set("Oper.Eport.LsdbRecord.300x.Hops", "000");
    sim.set("Oper.Eport.LsdbRecord.bad.WWN", "no name");
    sim.set("Oper.Eport.LsdbRecord.bad.Hops", "1");
    sim.set("Oper.Eport.LsdbRecordList.255", "2,300x,bad,2,");
    log();
    EXPECT_TRUE(reload());
    EXPECT_THAT(memberLog(), Contains("2 DCACHE: _load_switch_domain_list() - skip bad wwn no name"));
    EXPECT_THAT(members(), ElementsAre("2 1000001122000002 ports=2", "44 1000001122000008 ports=0",
                                       "0 1000001122000009 ports=0"));
}

TEST_F(FabricLoad, ReadsValuesThatFillTheirField) {
    start();
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"*\"\nkey = \"*LsdbRecordList.255\"\nunterminated = true");
    EXPECT_FALSE(reload()) << "the last domain is followed by garbage";
    EXPECT_TRUE(reload());
    EXPECT_EQ(members().size(), 2U);
}

TEST_F(FabricLoad, ATransparentSwitchHasNoFabric) {
    load(std::string(kFabric) +
         "[features]\ntransparent = true\n[sml]\n\"Config.Switch.TransparentMode\" = true\n");
    settle();
    ASSERT_TRUE(cache().isTransparentSwitch());
    calls();
    EXPECT_TRUE(reload());
    EXPECT_THAT(calls(), ElementsAre("vex_smlGetBatch Oper.Switch.WWN"));
    EXPECT_EQ(fabric().getFabricWwn(), "0000000000000000");
    EXPECT_EQ(fabric()._local_switch_wwn, Wwn(std::string(kLocal)));
    EXPECT_EQ(cache().getRootSwitchDomainID(), 0);
    EXPECT_THAT(log(), Not(Contains("2 DCACHE: LsdbRecordList: 1,2,3")));
}

TEST(FabricLists, SplitsAtCommas) {
    const struct {
        const char* text;
        Lines fields;
    } cases[] = {
        {"", {}},      {"7", {"7"}},         {"1,2", {"1", "2"}}, {"1,2,", {"1", "2", ""}},
        {",1", {"1"}}, {"1,,2", {"1", "2"}}, {",", {""}},         {" 1 , 2", {" 1 ", " 2"}},
    };
    for (const auto& c : cases) EXPECT_EQ(CachePeer::parseSMLList(c.text), c.fields) << c.text;
}

}  // namespace
