#include "datacache/FabricCache.h"
#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

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
    EXPECT_TRUE(first->getNextPort(PortCache()).isNull());
    second->_port_base_wwn = Wwn();
    EXPECT_TRUE(second->getFirstPort().isNull());
    EXPECT_TRUE(second->getPortByLSDBPortIndex("1").isNull());
    EXPECT_EQ(PortCache().getWwn(), "");
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
        unsigned wanted;  ///< port field, or out of range
    } cases[] = {
        {Plain, "0x1F", 31},       {Plain, "255", 255},   {Plain, "256", kOut},      {Cisco, "0", 1},
        {Cisco, "255", 256},       {Cisco, "0x100", 65},  {Cisco, "0x1C5", 70},      {Cisco, "0x3F3F", 4096},
        {Cisco, "0xC03F05", 4038}, {LocalCisco, "9", 10}, {LocalCisco, "256", kOut},
    };
    for (const auto& c : cases) {
        LogCapture log;
        SwitchCache owner;
        owner._wwn = Wwn(std::string(c.kind == Plain ? "2000001122000001" : "2000000DEC000001"));
        owner._port_base_wwn = owner._wwn;
        owner._local = c.kind == LocalCisco;
        owner.addPort(c.wanted & 0xFFFU, 77);
        const PortCache port = owner.getPortByLSDBPortIndex(c.index);
        char searched[40];
        std::snprintf(searched, sizeof searched, "searching for _wwn_portno 0x%3.3x", c.wanted);
        const std::string call =
            std::string("2 DCACHE: SwitchCache::getPortByLSDBPortIndex( ") + c.index + " ) ";
        EXPECT_THAT(log.take(), ElementsAre(c.wanted == kOut ? HasSubstr(" is out of range")
                                                             : HasSubstr(call + searched)));
        EXPECT_EQ(port.isNull(), c.wanted > 4095) << c.index;
        if (port.isNull()) continue;
        unsigned field = 4096;
        port._wwn.Get_Port(field);
        EXPECT_EQ(field, c.wanted);
        EXPECT_EQ(port._port_index, 77);
    }
}

}  // namespace
