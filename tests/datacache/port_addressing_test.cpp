#include <stdexcept>

#include "tests/datacache/FabricTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

constexpr uint16_t kUnknown = 65535;

/** A local switch of one kind of names beside a remote switch of another; each remote has 3 ports. */
std::string fabricOf(const std::string& local, const std::string& remote) {
    return "[switch]\nwwn = \"" + local +
           "\"\ndomain = 1\n[[fabric.switch]]\ndomain = 2\nports = 3\nwwn = \"" + remote + "\"\n";
}

const std::string kPlain = "1000001122000001";
const std::string kCisco = "2000000DEC000001";
const std::string kRemote = "5001122000000002";

class PortAddressing : public FabricTest {};

TEST_F(PortAddressing, LocalIndexFromName) {
    const struct {
        const std::string& local;
        const char* port;
        const char* area;  ///< as it is logged
        uint16_t index;
    } cases[] = {
        {kPlain, "2000001122000001", "0", 0},          {kPlain, "2003001122000001", "3", 3},
        {kPlain, "2003999999999999", "3", 3},  // whose name it is does not matter, only its port field
        {kPlain, "2004001122000001", "4", kUnknown},   {kPlain, "2100001122000001", "256", kUnknown},
        {kPlain, "1003001122000001", "257", kUnknown}, {kCisco, "2000000DEC000001", "0", 0},
        {kCisco, "2001000DEC000001", "0", 0},          {kCisco, "2004000DEC000001", "3", 3},
        {kCisco, "2005000DEC000001", "4", kUnknown},   {kCisco, "2100000DEC000001", "255", kUnknown},
        {kCisco, "no name", "256", kUnknown},
    };
    for (const std::string* local : {&kPlain, &kCisco}) {
        loadFabric(fabricOf(*local, kRemote));
        for (const auto& c : cases) {
            if (&c.local != local) continue;
            SCOPED_TRACE(*local + ' ' + c.port);
            log();
            EXPECT_EQ(cache().calcPortIndex(Wwn(c.local), Wwn(std::string(c.port))), c.index);
            EXPECT_THAT(log(), ElementsAre("2 DCACHE: calcPortIndex() port_wwn=" +
                                               Wwn(std::string(c.port)).tostring() +
                                               ", switch_wwn=" + c.local + ", root_switch_wwn=" + c.local,
                                           std::string("2 DCACHE: calcPortIndex()local, area=") + c.area +
                                               ", result=" + std::to_string(c.index)));
        }
        restart();
    }
}

TEST_F(PortAddressing, ACiscoPortFieldOf0IsLocalPort0IfThereIsOne) {
    loadFabric(fabricOf(kCisco, kRemote));
    peer().portState.localPortsPresent[0] = false;
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2000000DEC000001"), "");
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2002000DEC000001"), "1");
    peer().portState.localPortsPresent[255] = true;
    EXPECT_EQ(cache().calcPortIndex(kCisco, "2100000DEC000001"), "255");
    EXPECT_EQ(cache().calcPortWwn(kCisco, "255"), "2100000DEC000001");
}

TEST_F(PortAddressing, RemoteIndexFromName) {
    loadFabric(fabricOf(kPlain, kRemote));
    const std::string result = "2 DCACHE: calcPortIndex() remote, result=";
    log();
    EXPECT_EQ(cache().calcPortIndex(kRemote, "3000002000000002"), "2");
    EXPECT_THAT(log(), Contains(result + "2"));
    EXPECT_EQ(cache().calcPortIndex(kRemote, "3000009000000002"), "");
    EXPECT_THAT(log(), ::testing::IsSupersetOf(
                           {std::string("2 DCACHE: calcPortIndex() remote, port wwn not found on switch"),
                            result + "65535"}));
    EXPECT_EQ(cache().calcPortIndex("1000001122000009", "3000002000000002"), "");
    EXPECT_THAT(log(), Contains(result + "65535"));
    EXPECT_EQ(cache().calcPortIndex("", ""), "");
}

TEST_F(PortAddressing, NameFromLocalIndex) {
    loadFabric(fabricOf(kPlain, kRemote));
    const struct {
        const char* index;
        const char* name;
    } cases[] = {{"0", "2000001122000001"},
                 {"3", "2003001122000001"},
                 {"4", ""},
                 {"65539", "2003001122000001"},
                 {"junk", "2000001122000001"},
                 {"-65533", "2003001122000001"},
                 {"4294967295", ""},
                 {"99999999999999999999", ""},
                 {"-1", ""},
                 {"0x3", "2000001122000001"}};
    for (const auto& c : cases) EXPECT_EQ(cache().calcPortWwn(kPlain, c.index), c.name) << c.index;
    for (const char* index : {"256", "300", "65535"}) {
        try {
            cache().calcPortWwn(kPlain, index);
            ADD_FAILURE() << "no exception";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "bitset::test");
        }
    }
    // Another thread can have the lock, so the exception has let go of it.
    EXPECT_TRUE(lockIsFree());
    peer().portState.port0Wwn = Wwn();
    EXPECT_EQ(cache().calcPortWwn(kPlain, "300"), "") << "nothing is known, so nothing is tested";
    EXPECT_EQ(cache().calcPortWwn(kRemote, "0"), "");
}

TEST_F(PortAddressing, NameFromRemoteIndex) {
    loadFabric(fabricOf(kPlain, kRemote));
    EXPECT_EQ(cache().calcPortWwn(kRemote, "2"), "3000002000000002");
    EXPECT_EQ(cache().calcPortWwn(kRemote, "3"), "");
    EXPECT_EQ(cache().calcPortWwn(kRemote, "300"), "") << "remote indexes are not bounded";
    EXPECT_EQ(cache().calcPortWwn("1000001122000009", "0"), "");
    member(kRemote)->addPort(9, 2);
    EXPECT_EQ(cache().calcPortWwn(kRemote, "2"), "3000009000000002")
        << "the last of the rows with this index";
    member(kRemote)->_port_count = 0;
    EXPECT_EQ(cache().calcPortWwn(kRemote, "0"), "");
}

}  // namespace
