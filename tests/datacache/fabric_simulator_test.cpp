// The simulated fabric itself: what its switch says and which notifications its steps raise.
#include "simulator/Simulator.h"

#include "simulator/switch_writer.h"
#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using vexsim::FabricShape;
using vexsim::InputError;
using vexsim::NameScheme;

constexpr const char* kFabric = R"(
[switch]
wwn = "1000001122000001"
[[fabric.switch]]
domain = 20
wwn = "1000001122000020"
ports = 2
[[fabric.switch]]
domain = 3
wwn = "1000001122000003"
hops = 2
[[name_server]]
wwn = "1000001122CC0001"
port = 2
)";

class SimulatedFabric : public FabricTest {
  protected:
    /** The notifications of a step as "CODE text". */
    std::vector<std::string> raised(const std::string& fields) {
        sim.run("[[step]]\n" + fields);
        sim.deliverPending();
        std::vector<std::string> lines;
        for (const vex_event_s* event : peer().eventQueue) {
            lines.push_back(std::to_string(event->code) + ' ' + event->text);
        }
        settle();
        return lines;
    }
    std::string refusal(const std::string& fields) {
        try {
            sim.run("[[step]]\n" + fields);
        } catch (const InputError& error) {
            return error.what();
        }
        return "no refusal";
    }
};

TEST_F(SimulatedFabric, StepsRaiseWhatASwitchRaises) {
    loadFabric(kFabric);
    EXPECT_THAT(raised("do = \"switch_join\"\ndomain = 4\nwwn = \"1000001122000004\"\nname = \"roof\""),
                ElementsAre("1 Switch roof joined", "7 Switch roof joined"));
    EXPECT_THAT(raised("do = \"switch_unreachable\"\ndomain = 4"), ElementsAre("7 Domain 4 unreachable"));
    EXPECT_THAT(raised("do = \"switch_leave\"\ndomain = 4"),
                ElementsAre("1 Domain 4 left", "7 Domain 4 left"));
    EXPECT_THAT(raised("do = \"fabric_rename\"\nprincipal = \"1000001122000003\""),
                ElementsAre("1 Principal switch 1000001122000003"));
    EXPECT_THAT(raised("do = \"name_server_add\"\nport = 17\nwwns = [\"20:00:00:11:22:aa:00:01\", "
                       "\"2000001122AA0002\"]"),
                ElementsAre("79 011100,N,2000001122AA0001;011100,N,2000001122AA0002"));
    EXPECT_THAT(raised("do = \"name_server_remove\"\nwwn = \"2000001122AA0001\""),
                ElementsAre("80 011100,N,2000001122AA0001"));
    EXPECT_THAT(raised("do = \"switch_domain\"\ndomain = 1\nto = 99"),
                ElementsAre("1 Domain 1 is now 99", "7 Domain 1 is now 99"));
}

TEST_F(SimulatedFabric, RefusesWhatCannotBe) {
    loadFabric(kFabric);
    const auto join = [&](const std::string& fields) { return refusal("do = \"switch_join\"\n" + fields); };
    EXPECT_THAT(join("domain = 1\nwwn = \"1000001122000009\""), HasSubstr("domain 1 is taken"));
    EXPECT_THAT(join("domain = 3\nwwn = \"1000001122000009\""), HasSubstr("domain 3 is taken"));
    EXPECT_THAT(join("domain = 9\nwwn = \"1000001122000003\""), HasSubstr("domain 3 has that name"));
    EXPECT_THAT(join("domain = 9\nwwn = \"1000001122000001\""), HasSubstr("the local switch's name"));
    EXPECT_THAT(refusal("do = \"switch_leave\"\ndomain = 4"), HasSubstr("no other switch with domain 4"));
    EXPECT_THAT(refusal("do = \"switch_domain\"\ndomain = 3\nto = 20"), HasSubstr("domain 20 is taken"));
    EXPECT_THAT(refusal("do = \"name_server_remove\"\nwwn = \"1000001122000003\""), HasSubstr("has no 1000"));
    EXPECT_THROW(sim.loadSwitchText(std::string(kFabric) +
                                    "[[fabric.switch]]\ndomain = 3\nwwn = \"1000001122000004\""),
                 InputError);
}

TEST_F(SimulatedFabric, IsWalkedRecordByRecord) {
    loadFabric(kFabric);
    std::vector<std::string> walked;
    for (auto at = sim.get("Oper.Eport.FirstLsdbRecord"); at;
         at = sim.get("Oper.Eport.NextLsdbRecord." + *at)) {
        walked.push_back(*at);
    }
    EXPECT_THAT(walked, ElementsAre("1", "3", "20"));
    const std::string entries = "Oper.NameServerAll.2.";
    EXPECT_EQ(sim.get(entries + "FirstNsEntry"), "1000001122CC0001");
    EXPECT_EQ(sim.get(entries + "NextNsEntry.1000001122CC0001"), std::nullopt);
    EXPECT_EQ(sim.get("Oper.NameServerAll.3.FirstNsEntry"), std::nullopt);
}

TEST_F(SimulatedFabric, GeneratedFabricsLoadWhole) {
    const struct {
        FabricShape shape;
        const char* port;  ///< the name of port 255 of domain 88
    } cases[] = {
        {{88, 256, NameScheme::Naa1, false}, "20FF001122000058"},
        {{88, 256, NameScheme::Naa2, false}, "20FF001122000058"},
        {{88, 256, NameScheme::Naa3, false}, "30000FF011220058"},
        {{88, 256, NameScheme::Naa5, false}, "30000FF000000058"},
        {{88, 256, NameScheme::Naa2, true}, "2100000DEC000058"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.port);
        loadGenerated(writeSwitchFile(c.shape));
        EXPECT_EQ(fabric().getSwitchCount(), 88);
        const SwitchCache* const last = fabric().getSwitchByDomainID("88");
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(last->_port_count, 256);
        EXPECT_EQ(cache().calcPortWwn(last->getWwn(), "255"), c.port);
        EXPECT_EQ(cache().calcPortIndex(last->getWwn(), c.port), "255");
        restart();
    }
}

TEST_F(SimulatedFabric, AListHoldsAsManyDomainsAsAValueHasRoomFor) {
    FabricShape shape;
    shape.switches = 239;
    sim.loadSwitchText(writeSwitchFile(shape));
    const std::string list = *sim.get("Oper.Eport.LsdbRecordList.255");
    EXPECT_EQ(list.size(), 254U);
    EXPECT_EQ(list.substr(list.size() - 6), ",87,88");
    EXPECT_EQ(sim.get("Oper.TopologyAll.239.PortEntries"), "16") << "the others are there all the same";
    EXPECT_THAT(vexsim::shortcomings(shape), ElementsAre(HasSubstr("only 88 of the 239 switches")));
    EXPECT_THAT(vexsim::shortcomings({88, 128, NameScheme::Naa1, false}), ElementsAre());
    EXPECT_THAT(vexsim::shortcomings({88, 129, NameScheme::Naa1, false}),
                ElementsAre(HasSubstr("only 128 of the 129")));
}

}  // namespace
