#include <algorithm>
#include <array>

#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

/** 1 - 2 - 5, and 1 - 7 by two links; 9 is out of reach. */
constexpr const char* kSwitch = R"(
[switch]
wwn = "10:00:00:11:22:aa:bb:cc"
domain = 1
[fabric]
switch = [
  {domain = 2, wwn = "10:00:00:11:22:00:00:02", ports = 4},
  {domain = 5, wwn = "10:00:00:11:22:00:00:05", ports = 4, hops = 2},
  {domain = 7, wwn = "10:00:00:11:22:00:00:07", ports = 4},
  {domain = 9, wwn = "10:00:00:11:22:00:00:09", ports = 4, hops = 255},
]
[[lsdb]]
domain = 7
links = [{local_port = 19, neighbor = 1}, {local_port = "0x105", neighbor = 1}]
[[name_server]]
port = 3
wwns = ["2100001122000001", "2100001122000002"]
[[name_server]]
port = 4
wwn = "21:00:00:11:22:00:00:03"
)";

class Walkers : public CacheTest {
  protected:
    Walkers() {
        load(kSwitch);
        calls();
        log();
    }
    void fault(const std::string& fields) {
        sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\n" + fields);
    }
    /** A caller's buffer, with room for a value and a guard behind it. */
    struct Buffer {
        std::array<char, VEX_SML_VALUE_SIZE + 8> bytes;
        Buffer() { bytes.fill('~'); }
        char* data() { return bytes.data(); }
        bool untouched(size_t from) const {
            return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
                               [](char c) { return c == '~'; });
        }
    };
    Buffer dst;
};

/** The walkers that fill a buffer, and the keys that they read for these arguments. */
const struct {
    const char* key;
    char* (*read)(char*);
} kReaders[] = {
    {"Oper.Eport.FirstLsdbRecord", [](char* dst) { return get_first_lsdb_record(dst); }},
    {"Oper.Eport.NextLsdbRecord.R", [](char* dst) { return get_next_lsdb_record("R", dst); }},
    {"Oper.Eport.LsdbRecord.R.Link.L.LocalPort",
     [](char* dst) { return get_lsdb_record_link_local_information("R", "L", dst); }},
    {"Oper.Eport.LsdbRecord.R.Link.L.Neighbor",
     [](char* dst) { return get_lsdb_record_link_remote_information("R", "L", dst); }},
    {"Oper.NameServerAll.P.FirstNsEntry", [](char* dst) { return get_first_attached_port("P", dst); }},
    {"Oper.NameServerAll.P.NextNsEntry.E", [](char* dst) { return get_next_attached_port("P", "E", dst); }},
};

TEST_F(Walkers, FailedReadsLeaveTheBuffer) {
    for (const auto& reader : kReaders) {
        SCOPED_TRACE(reader.key);
        for (const char* effect : {"result = 4\n", "status = 24\n", "status = 5\n"}) {
            fault(effect);
            EXPECT_EQ(reader.read(dst.data()), nullptr) << effect;
            EXPECT_TRUE(dst.untouched(0)) << effect;
        }
        EXPECT_EQ(calls(), Texts(3, std::string("vex_smlGetBatch ") + reader.key));
    }
    for (const char* effect : {"result = 4\n", "status = 24\n", "status = 5\n"}) {
        fault(effect);
        EXPECT_EQ(get_lsdb_record_link_count("1"), -1) << effect;
    }
    EXPECT_THAT(calls(), Each("vex_smlGetBatch Oper.Eport.LsdbRecord.1.NumberOfLinks"));
}

TEST_F(Walkers, ValuesWithoutATerminatorAreCut) {
    for (const auto& reader : kReaders) {
        SCOPED_TRACE(reader.key);
        sim.set(reader.key, "x");
        fault("unterminated = true\n");
        Buffer buffer;
        ASSERT_EQ(reader.read(buffer.data()), buffer.data());
        EXPECT_EQ(std::string(buffer.data()), 'x' + std::string(254, '#'));
        EXPECT_TRUE(buffer.untouched(VEX_SML_VALUE_SIZE));
        EXPECT_STREQ(reader.read(buffer.data()), "x");
    }
}

TEST_F(Walkers, LinkCountsAreReadAsNumbers) {
    const struct {
        const char* value;
        int count;
    } cases[] = {{"3", 3}, {" 12 links", 12}, {"", 0}, {"none", 0}, {"-2", -2}};
    for (const auto& row : cases) {
        sim.set("Oper.Eport.LsdbRecord.1.NumberOfLinks", row.value);
        EXPECT_EQ(get_lsdb_record_link_count("1"), row.count) << row.value;
    }
    fault("unterminated = true\n");
    EXPECT_EQ(get_lsdb_record_link_count("1"), -2);
}

TEST_F(Walkers, LongKeysAreCut) {
    const std::string longText(400, 'r');
    get_next_lsdb_record(longText.c_str(), dst.data());
    get_next_attached_port("P", longText.c_str(), dst.data());
    const Texts requests = calls();
    ASSERT_EQ(requests.size(), 2U);
    const std::string function = "vex_smlGetBatch ";
    EXPECT_EQ(requests[0], function + ("Oper.Eport.NextLsdbRecord." + longText).substr(0, 255));
    EXPECT_EQ(requests[1], function + ("Oper.NameServerAll.P.NextNsEntry." + longText).substr(0, 255));
}

}  // namespace
