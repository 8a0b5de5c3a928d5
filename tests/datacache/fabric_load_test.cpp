#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

using FabricLoad = FabricTest;

TEST_F(FabricLoad, TakesDomainsAsTheyAreWritten) {
    startFabric("1000001122000001", "1000001122000002", "ports = 2");
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
    EXPECT_THAT(members, ElementsAre("1 1000001122000001", "2 1000001122000002", "44 1000001122000008",
                                     "0 1000001122000009"));
}

TEST_F(FabricLoad, ATransparentSwitchHasNoFabric) {
    startFabric("1000001122000001", "1000001122000002",
                "[features]\ntransparent = true\n[sml]\n'Config.Switch.TransparentMode' = true\n");
    ASSERT_TRUE(cache().isTransparentSwitch());
    EXPECT_TRUE(reload());
    EXPECT_THAT(calls(), ElementsAre("vex_smlGetBatch Oper.Switch.WWN"));
    EXPECT_EQ(fabric().getFabricWwn(), "0000000000000000");
    EXPECT_EQ(fabric()._local_switch_wwn.tostring(), "1000001122000001");
    EXPECT_EQ(cache().getRootSwitchDomainID(), 0);
}

TEST(FabricLists, SplitsAtCommas) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"", {}},      {"7", {"7"}},         {"1,2", {"1", "2"}}, {"1,2,", {"1", "2", ""}},
        {",1", {"1"}}, {"1,,2", {"1", "2"}}, {",", {""}},         {" 1 , 2", {" 1 ", " 2"}},
    };
    for (const auto& [text, fields] : cases) EXPECT_EQ(CachePeer::parseSMLList(text), fields) << text;
}

}  // namespace
