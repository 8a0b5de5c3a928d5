#include "datacache/FabricCache.h"
#include "datacache/fabric_compare.h"
#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>

using namespace datacache;

namespace {

using namespace testing;

class FabricRecords : public ::testing::Test {
  protected:
    /** A switch of the fabric with ports: pairs of port field and index. */
    SwitchCache* add(const std::string& name, const std::string& base, uint8_t domain,
                     const std::vector<std::pair<unsigned, unsigned>>& ports) {
        auto* const made = new SwitchCache;
        made->_wwn = Wwn(name);
        made->_port_base_wwn = Wwn(base);
        made->_domain_id = domain;
        for (const auto& [field, index] : ports) made->addPort(field, index);
        fabric._switches.add(Element<SwitchCache>::alloc(made, true));
        return made;
    }
    LogCapture log;
    FabricCache fabric;
    SwitchCache* first = add("1000001122000002", "2005001122000002", 44, {{5, 0}, {6, 1}, {9, 7}});
    SwitchCache* second = add("5001122000000003", "3000001000000003", 3, {{1, 0}, {2, 0}, {3, 0}});
};

TEST_F(FabricRecords, FindSwitchesByDomainAndName) {
    EXPECT_EQ(fabric.getSwitchByDomainID("300"), first) << "cut to 8 bits";
    EXPECT_EQ(fabric.getSwitchByDomainID("003"), second);
    log.take();
    EXPECT_EQ(fabric.getSwitchByDomainID("431"), nullptr);
    EXPECT_THAT(log.take(),
                ElementsAre("2 DCACHE: findSwitchCacheElement()domain af not found from 2 elements"));
    EXPECT_EQ(fabric.getSwitchByDomainID("4294967295"), nullptr);
    EXPECT_THAT(log.take(), IsEmpty()) << "an overflow is not looked for";
    EXPECT_EQ(fabric.getSwitchByWwn("5001122000000003"), second);
    EXPECT_EQ(fabric.getSwitchByWwn("10:00:00:11:22:00:00:02"), nullptr);
    EXPECT_EQ(fabric.getSwitchByPortWwn("3ABC003000000003"), second) << "those bits are not part of a name";
    EXPECT_EQ(fabric.getSwitchByPortWwn(""), nullptr);
    second->_port_base_wwn = first->_port_base_wwn;
    second->addPort(6, 1);
    EXPECT_EQ(fabric.getSwitchByPortWwn("2006001122000002"), first) << "the first in the list";
}

TEST_F(FabricRecords, ASwitchHasAsManyPortsAsItsTable) {
    while (first->getPortCount() < SwitchCache::kMaxPorts) ASSERT_TRUE(first->addPort(1, 1));
    EXPECT_FALSE(first->addPort(1, 1));
}

TEST_F(FabricRecords, WalksEndWhereTheyCannotGoOn) {
    EXPECT_EQ(fabric.getNextSwitch(second), nullptr);
    EXPECT_EQ(fabric.getNextSwitch(nullptr), nullptr);
    EXPECT_EQ(FabricCache().getFirstSwitch(), nullptr);
    EXPECT_EQ(first->getNextPort(PortCache(Wwn(std::string("2999999999999999")), 1)).getWwn(),
              "2009001122000002")
        << "the name of the port before does not matter";
    EXPECT_TRUE(first->getNextPort(PortCache(Wwn(), 7)).isNull());
    // Indexes that come twice: the walk goes by the first of them.
    EXPECT_EQ(second->getNextPort(PortCache(Wwn(), 0)).getWwn(), "3000002000000003");
    first->_port_count = 0;
    EXPECT_TRUE(first->getFirstPort().isNull());
    second->_port_base_wwn = Wwn();
    EXPECT_TRUE(second->getFirstPort().isNull());
}

TEST_F(FabricRecords, FindPortsByName) {
    EXPECT_EQ(first->getPortByWwn("2009001122000002")._port_index, 7);
    for (const char* other : {"2009001122000003", "3009001122000002", "200A001122000002"})
        EXPECT_TRUE(first->getPortByWwn(other).isNull()) << other;
    EXPECT_EQ(second->getPortByWwn("3FFF002000000003").getWwn(), "3FFF002000000003") << "as it was given";
    // A base of NAA 1 has the right bytes, but no port of its kind has a port field.
    first->_port_base_wwn = Wwn(std::string("1000001122000002"));
    EXPECT_TRUE(first->getPortByWwn("1005001122000002").isNull());
}

TEST(SwitchPorts, ByIndexOfTheLinkStateDatabase) {
    enum Kind { Plain, Cisco, LocalCisco };
    constexpr unsigned kOut = 9999;
    const struct {
        Kind kind;
        const char* index;
        unsigned wanted;   ///< port field, or out of range
        const char* told;  ///< behind the index
    } cases[] = {
        {Plain, "0x1F", 31, " ) searching for _wwn_portno 0x01f"},
        {Plain, "255", 255, " ) searching for _wwn_portno 0x0ff"},
        {Plain, "256", kOut, " ) port=256 is out of range"},
        {Cisco, "0", 1, " ) searching for _wwn_portno 0x001"},
        {Cisco, "255", 256, " ) searching for _wwn_portno 0x100"},
        {Cisco, "0x1C5", 70, " ) searching for _wwn_portno 0x046"},
        {Cisco, "0x3F3F", kOut, " ) searching for _wwn_portno 0x1000"},
        {Cisco, "0xC03F05", 4038, " ) searching for _wwn_portno 0xfc6"},
        {LocalCisco, "9", 10, " ) searching for _wwn_portno 0x00a"},
        {LocalCisco, "256", kOut, " ) port=256 is out of range"},
    };
    LogCapture log;
    for (const auto& c : cases) {
        SwitchCache owner;
        owner._wwn = Wwn(std::string(c.kind == Plain ? "2000001122000001" : "2000000DEC000001"));
        owner._port_base_wwn = owner._wwn;
        owner._local = c.kind == LocalCisco;
        owner.addPort(c.wanted == kOut ? 0 : c.wanted, 77);
        const PortCache port = owner.getPortByLSDBPortIndex(c.index);
        unsigned field = kOut;
        port._wwn.Get_Port(field);
        EXPECT_EQ(field, c.wanted) << c.index;
        EXPECT_EQ(port._port_index, c.wanted == kOut ? 0 : 77);
        const std::string call = std::string("2 DCACHE: SwitchCache::getPortByLSDBPortIndex( ") + c.index;
        EXPECT_THAT(log.take(), ElementsAre(StartsWith(call + c.told)));
    }
}

/** Names of a fabric: 'a' is the switch 1000001122000061. */
std::vector<Wwn> namesOf(const std::string& letters) {
    std::vector<Wwn> names;
    for (const char letter : letters) {
        char name[17];
        std::snprintf(name, sizeof name, "10000011220000%02X", static_cast<unsigned>(letter));
        names.emplace_back(std::string(name));
    }
    return names;
}

/** "+ P b": switch b joined fabric P. */
std::string describe(const FabricStep& step) {
    if (step.kind == FabricStep::LogText) return step.text;
    static constexpr const char* kKinds[] = {"+fabric", "-fabric", "grown", "shrunk", "+",
                                             "-",       "",        "?",     "??"};
    std::string line = kKinds[step.kind];
    for (const Wwn& name : {step.fabric, step.member, step.original}) {
        for (char letter = 'A'; letter <= 'z'; ++letter) {
            if (name == namesOf({letter})[0]) line += std::string(" ") + letter;
        }
    }
    return line + '\n';
}

TEST(FabricCompare, TellsEachChangeInOrder) {
    const struct {
        const char *before, *now;  ///< the fabric's letter, then its switches'
        std::string steps;
    } cases[] = {
        // Gain and loss: the loss is told first.
        {"Pabc", "Pbdc",
         "DCACHE: _fabric._fabric_name == _origFabricName\nDCACHE: Checking for new switches in the fabric\n"
         "? P b\n? P d\n+ P d\n? P c\n?? P b a\n?? P d a\n?? P c a\n- P a\n?? P b b\n?? P b c\n?? P d c\n"
         "?? P c c\nshrunk P\ngrown P\n"},
        // Segmented: only known switches are told of.
        {"Pabc", "Qcda",
         "DCACHE: _fabric._fabric_name != _origFabricName\nDCACHE: Segmentation in original fabric\nshrunk "
         "P\n"
         "DCACHE: Creation of new fabric\n+fabric Q\n+ Q c\n+ Q a\n"},
        // Renamed: the switches in the order of before.
        {"Pabc", "Qcba",
         "DCACHE: _fabric._fabric_name != _origFabricName\nDCACHE: Delete original fabric\n-fabric P\n"
         "DCACHE: Create new fabric\n+fabric Q\n+ Q a\n+ Q b\n+ Q c\n"},
        // Merged: the newcomers are not told of.
        {"Pab", "Qcbda",
         "DCACHE: _fabric._fabric_name != _origFabricName\nDCACHE: Merge fabric\ngrown Q\n"
         "DCACHE: Delete old fabric\n-fabric P\n+ Q b\n+ Q a\n"},
    };
    for (const auto& c : cases) {
        const std::vector<Wwn> fabrics = namesOf({c.before[0], c.now[0]});
        const std::vector<Wwn> before = namesOf(c.before + 1), now = namesOf(c.now + 1);
        std::string steps;
        compareFabrics({fabrics[0], before}, {fabrics[1], now},
                       [&](const FabricStep& step) { steps += describe(step); });
        EXPECT_EQ(steps, c.steps) << c.before << ' ' << c.now;
    }
}

}  // namespace
