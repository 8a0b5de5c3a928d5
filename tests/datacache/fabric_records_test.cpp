#include "datacache/FabricCache.h"
#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/** A switch with ports: pairs of port field and index. */
SwitchCache* makeSwitch(const std::string& name, const std::string& base, unsigned domain,
                        const std::vector<std::pair<unsigned, unsigned>>& ports = {}) {
    auto* const made = new SwitchCache;
    made->_wwn = Wwn(name);
    made->_port_base_wwn = Wwn(base);
    made->_domain_id = static_cast<uint8_t>(domain);
    for (const auto& [field, index] : ports) made->addPort(field, index);
    return made;
}

class FabricRecords : public ::testing::Test {
  protected:
    FabricRecords() {
        for (SwitchCache* made : {first, second}) {
            fabric._switches.add(Element<SwitchCache>::alloc(made, true));
        }
    }
    LogCapture log;
    FabricCache fabric;
    SwitchCache* first = makeSwitch("1000001122000002", "2005001122000002", 44, {{5, 0}, {6, 1}, {9, 7}});
    SwitchCache* second = makeSwitch("5001122000000003", "3000001000000003", 3, {{1, 0}, {2, 0}, {3, 0}});
};

TEST_F(FabricRecords, WalkTheSwitches) {
    EXPECT_EQ(fabric.getFirstSwitch(), first);
    EXPECT_EQ(fabric.getNextSwitch(first), second);
    EXPECT_EQ(fabric.getNextSwitch(second), nullptr);
    const SwitchCache stranger;
    EXPECT_EQ(fabric.getNextSwitch(&stranger), nullptr);
    EXPECT_EQ(fabric.getNextSwitch(nullptr), nullptr);
    EXPECT_EQ(FabricCache().getFirstSwitch(), nullptr);
}

TEST_F(FabricRecords, FindSwitchesByDomain) {
    const struct {
        const char* text;
        const SwitchCache* found;
    } cases[] = {{"44", first},   {"300", first},          {" 44 and more", first}, {"-212", first},
                 {"003", second}, {"0x2c", nullptr},       {"", nullptr},           {"4294967295", nullptr},
                 {"-1", nullptr}, {"99999999999", nullptr}};
    for (const auto& c : cases) EXPECT_EQ(fabric.getSwitchByDomainID(c.text), c.found) << c.text;
    log.take();
    fabric.getSwitchByDomainID("431");
    EXPECT_THAT(log.take(),
                ElementsAre("2 DCACHE: findSwitchCacheElement()domain af not found from 2 elements"));
    fabric.getSwitchByDomainID("4294967295");
    EXPECT_THAT(log.take(), IsEmpty()) << "an overflow is not looked for";
}

TEST_F(FabricRecords, FindSwitchesByName) {
    EXPECT_EQ(fabric.getSwitchByWwn("1000001122000002"), first);
    EXPECT_EQ(fabric.getSwitchByWwn("5001122000000003"), second);
    EXPECT_EQ(fabric.getSwitchByWwn("10:00:00:11:22:00:00:02"), nullptr);
    EXPECT_EQ(fabric.getSwitchByPortWwn("2006001122000002"), first);
    EXPECT_EQ(fabric.getSwitchByPortWwn("3ABC003000000003"), second) << "those bits are not part of a name";
    EXPECT_EQ(fabric.getSwitchByPortWwn("2007001122000002"), nullptr);
    EXPECT_EQ(fabric.getSwitchByPortWwn(""), nullptr);
    second->_port_base_wwn = first->_port_base_wwn;
    second->addPort(6, 1);
    EXPECT_EQ(fabric.getSwitchByPortWwn("2006001122000002"), first) << "the first in the list";
}

TEST_F(FabricRecords, WalkThePortsByIndex) {
    PortCache port = first->getFirstPort();
    EXPECT_EQ(port.getWwn(), "2005001122000002");
    port = first->getNextPort(port);
    EXPECT_EQ(port.getWwn(), "2006001122000002");
    port = first->getNextPort(PortCache(Wwn(std::string("2999999999999999")), port._port_index));
    EXPECT_EQ(port.getWwn(), "2009001122000002") << "the name of the port before does not matter";
    EXPECT_EQ(port._port_index, 7);
    EXPECT_TRUE(first->getNextPort(port).isNull());
    EXPECT_TRUE(first->getNextPort(PortCache(Wwn(), 3)).isNull());
    // Indexes that come twice: the walk goes by the first of them.
    EXPECT_EQ(second->getNextPort(PortCache(Wwn(), 0)).getWwn(), "3000002000000003");

    first->_port_count = 1;
    EXPECT_TRUE(first->getNextPort(first->getFirstPort()).isNull());
    first->_port_count = 0;
    EXPECT_TRUE(first->getFirstPort().isNull());
    EXPECT_TRUE(first->getNextPort(PortCache()).isNull());
    second->_port_base_wwn = Wwn();
    EXPECT_TRUE(second->getFirstPort().isNull());
    EXPECT_TRUE(second->getNextPort(PortCache()).isNull());
    EXPECT_TRUE(second->getPortByLSDBPortIndex("1").isNull());
    EXPECT_EQ(PortCache().getWwn(), "");
}

TEST_F(FabricRecords, FindPortsByName) {
    EXPECT_EQ(first->getPortByWwn("2009001122000002")._port_index, 7);
    EXPECT_TRUE(first->getPortByWwn("2009001122000003").isNull()) << "another switch's";
    EXPECT_TRUE(first->getPortByWwn("3009001122000002").isNull());
    EXPECT_TRUE(first->getPortByWwn("200A001122000002").isNull());
    EXPECT_EQ(second->getPortByWwn("3FFF002000000003").getWwn(), "3FFF002000000003") << "as it was given";
    // A base of NAA 1 has the right bytes, but no port of its kind has a port field.
    first->_port_base_wwn = Wwn(std::string("1000001122000002"));
    EXPECT_TRUE(first->getPortByWwn("1005001122000002").isNull());
}

TEST(SwitchPorts, ByIndexOfTheLinkStateDatabase) {
    enum Kind { Plain, Cisco, LocalCisco };
    const struct {
        Kind kind;
        const char* index;
        unsigned wanted;  ///< port field; 9999: out of range
    } cases[] = {
        {Plain, "0", 0},       {Plain, "31", 31},         {Plain, "0x1F", 31},     {Plain, "037", 31},
        {Plain, "255", 255},   {Plain, "256", 9999},      {Plain, "300", 9999},    {Plain, "junk", 0},
        {Plain, "-1", 9999},   {Cisco, "0", 1},           {Cisco, "255", 256},     {Cisco, "0x100", 65},
        {Cisco, "0x105", 70},  {Cisco, "0x3F3F", 4096},   {Cisco, "0x3F3E", 4095}, {Cisco, "0xC03F05", 4038},
        {LocalCisco, "9", 10}, {LocalCisco, "256", 9999}, {Cisco, "0x1C5", 70},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        LogCapture log;
        SwitchCache owner;
        owner._wwn = Wwn(std::string(c.kind == Plain ? "2000001122000001" : "2000000DEC000001"));
        owner._port_base_wwn = owner._wwn;
        owner._local = c.kind == LocalCisco;
        owner.addPort(c.wanted & 0xFFFU, 77);
        const PortCache port = owner.getPortByLSDBPortIndex(c.index);
        const std::vector<std::string> lines = log.take();
        ASSERT_EQ(lines.size(), 1U);
        if (c.wanted > 4095) {
            EXPECT_TRUE(port.isNull());
            EXPECT_NE(lines[0].find(c.wanted == 9999 ? " is out of range" : "_wwn_portno 0x1000"),
                      std::string::npos);
            continue;
        }
        char expected[120];
        std::snprintf(expected, sizeof expected,
                      "2 DCACHE: SwitchCache::getPortByLSDBPortIndex( %s ) searching for _wwn_portno 0x%3.3x",
                      c.index, c.wanted);
        EXPECT_EQ(lines[0], expected);
        unsigned field = 4096;
        port._wwn.Get_Port(field);
        EXPECT_EQ(field, c.wanted);
        EXPECT_EQ(port._port_index, 77);
    }
}

}  // namespace
