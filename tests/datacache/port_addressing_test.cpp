#include <stdexcept>

#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

constexpr uint16_t kUnknown = 65535;

const std::string kPlain = "1000001122000001";
const std::string kCisco = "2000000DEC000001";
const std::string kRemote = "5001122000000002";

class PortAddressing : public FabricTest {
  protected:
    void startWith(const std::string& local) { startFabric(local, kRemote, "ports = 3"); }
    std::string indexOf(const std::string& port) { return cache().calcPortIndex(kRemote, port); }
    std::string nameOf(const std::string& index) { return cache().calcPortWwn(kRemote, index); }
};

TEST_F(PortAddressing, LocalIndexFromName) {
    const struct {
        std::string local, port, area;  ///< the area as it is logged
        uint16_t index;
    } cases[] = {
        {kPlain, "2000001122000001", "0", 0},
        {kPlain, "2003999999999999", "3", 3},  // whose name it is does not matter, only its port field
        {kPlain, "2004001122000001", "4", kUnknown},
        {kPlain, "2100001122000001", "256", kUnknown},
        {kPlain, "1003001122000001", "257", kUnknown},
        {kCisco, "2000000DEC000001", "0", 0},
        {kCisco, "2001000DEC000001", "0", 0},
        {kCisco, "2004000DEC000001", "3", 3},
        {kCisco, "2005000DEC000001", "4", kUnknown},
        {kCisco, "2100000DEC000001", "255", kUnknown},
        {kCisco, "no name", "256", kUnknown},
    };
    for (const auto& c : cases) {
        restart();
        startWith(c.local);
        const Wwn port(c.port);
        EXPECT_EQ(cache().calcPortIndex(Wwn(c.local), port), c.index) << c.port;
        EXPECT_THAT(log(), ElementsAre("2 DCACHE: calcPortIndex() port_wwn=" + port.tostring() +
                                           ", switch_wwn=" + c.local + ", root_switch_wwn=" + c.local,
                                       "2 DCACHE: calcPortIndex()local, area=" + c.area +
                                           ", result=" + std::to_string(c.index)));
    }
    // A port field of 0 is local port 0, if there is one.
    peer().portState.localPortsPresent[0] = false;
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2000000DEC000001"), "");
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2002000DEC000001"), "1");
    peer().portState.localPortsPresent[255] = true;
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2100000DEC000001"), "255");
    EXPECT_EQ(cache().calcPortWwn(kCisco, "255"), "2100000DEC000001");
}

TEST_F(PortAddressing, RemoteIndexFromName) {
    startWith(kPlain);
    const std::string remote = "2 DCACHE: calcPortIndex() remote, ";
    EXPECT_EQ(indexOf("3000002000000002"), "2");
    EXPECT_EQ(log().back(), remote + "result=2");
    EXPECT_EQ(indexOf("3000009000000002"), "");
    EXPECT_THAT(log(), Contains(remote + "port wwn not found on switch"));
    EXPECT_EQ(cache().calcPortIndex("1000001122000009", "3000002000000002"), "");
    EXPECT_EQ(log().back(), remote + "result=65535");
    EXPECT_EQ(cache().calcPortIndex("", ""), "");
}

TEST_F(PortAddressing, NameFromIndex) {
    startWith(kPlain);
    const std::pair<const char*, const char*> cases[] = {{"0", "2000001122000001"},
                                                         {"3", "2003001122000001"},
                                                         {"4", ""},
                                                         {"65539", "2003001122000001"},
                                                         {"-65533", "2003001122000001"},
                                                         {"junk", "2000001122000001"},
                                                         {"0x3", "2000001122000001"},
                                                         {"4294967295", ""},
                                                         {"-1", ""}};
    for (const auto& [index, name] : cases) EXPECT_EQ(cache().calcPortWwn(kPlain, index), name) << index;
    for (const char* index : {"256", "65535"}) {
        try {
            cache().calcPortWwn(kPlain, index);
            ADD_FAILURE() << "no exception";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "bitset::test");
        }
    }
    EXPECT_TRUE(lockIsFree()) << "the exception has let go of it";

    EXPECT_EQ(nameOf("2"), "3000002000000002");
    EXPECT_EQ(nameOf("300"), "") << "remote indexes are not bounded";
    EXPECT_EQ(cache().calcPortWwn("1000001122000009", "0"), "");
    SwitchCache& remote = *fabric().getSwitchByWwn(kRemote);
    remote.addPort(9, 2);
    EXPECT_EQ(nameOf("2"), "3000009000000002") << "the last of the rows with this index";
    remote._port_count = 0;
    EXPECT_EQ(nameOf("0"), "");
    peer().portState.port0Wwn = Wwn();
    EXPECT_EQ(cache().calcPortWwn(kPlain, "300"), "") << "nothing is known, so nothing is tested";
}

}  // namespace
