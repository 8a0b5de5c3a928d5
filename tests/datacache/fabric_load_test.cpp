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
