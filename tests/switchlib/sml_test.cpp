#include <cstdlib>
#include <cstring>
#include <memory>

#include "switchlib/NORV_Vex_Lib.h"
#include "switchlib/SmlBatch.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheTest.h"

using namespace datacache;

namespace {

using namespace testing;

vex_smlrequest_s request(const char* key) {
    vex_smlrequest_s record{};
    std::strncpy(record.key, key, sizeof record.key - 1);
    return record;
}

class Sml : public CacheTest {
  protected:
    Sml() {
        start("switch = {wwn = '1000001122AABBCC'}\n[sml]\n'Oper.Test.A' = 'alpha'\n'Oper.Test.N' = '42x'\n");
    }
};

TEST_F(Sml, GroupGrowsInStepsOfTwentyFive) {
    const std::shared_ptr<vex_smlmsggroup_s> group(vex_smlAllocMsgGroup(0), vex_smlFreeMsgGroup);
    EXPECT_EQ(group->capacity, 0);
    for (int i = 0; i < 51; ++i) {
        ASSERT_EQ(vex_smlAddMsgGroupV(group.get(), "Oper.Test.%d", i), 0);
        EXPECT_EQ(group->count, i + 1);
        EXPECT_EQ(group->capacity, (i / 25 + 1) * 25);
        EXPECT_EQ(group->records[i].key, "Oper.Test." + std::to_string(i));
    }
    EXPECT_STREQ(group->records[0].key, "Oper.Test.0") << "records survive growing";
    vex_smlResetMsgGroup(group.get());
    EXPECT_EQ(group->count, 0);
    EXPECT_EQ(group->capacity, 75);
    EXPECT_EQ(vex_smlGetMsgGroup(group.get()), 0) << "an empty group has no failed record";
}

TEST_F(Sml, GroupKeepsLongKeysTerminatedAndRefusesImpossibleSizes) {
    const std::shared_ptr<vex_smlmsggroup_s> group(vex_smlAllocMsgGroup(2), vex_smlFreeMsgGroup);
    ASSERT_EQ(vex_smlAddMsgGroupV(group.get(), "%s", std::string(300, 'k').c_str()), 0);
    ASSERT_EQ(vex_smlAddMsgGroupV(group.get(), "%s", "next"), 0);
    EXPECT_EQ(std::string(group->records[0].key), std::string(255, 'k'));
    EXPECT_STREQ(group->records[1].key, "next");
    char untouched[] = "untouched";
    for (const int outside : {2, -1, 0x7FFFFFFF}) {
        char* kept = untouched;
        EXPECT_EQ(vex_smlGetResult(group.get(), outside, &kept), 1U) << outside;
        EXPECT_EQ(kept, untouched);
    }
    EXPECT_EQ(vex_smlAllocMsgGroup(-1), nullptr);

    // Growing beyond what can be counted fails: the group goes, its records stay with whoever still has them.
    auto* full = vex_smlAllocMsgGroup(1);
    vex_smlrequest_s* records = full->records;
    full->count = full->capacity = 0x7FFFFFF0;
    EXPECT_EQ(vex_smlAddMsgGroupV(full, "%s", "one more"), 1);
    std::free(records);
}

TEST_F(Sml, ReportsTheFirstFailedRecordUnlessItIsAnEnd) {
    vex_smlrequest_s records[] = {request("Oper.A"), request("Oper.B"), request("Oper.C")};
    records[2].status = 0x1F;
    EXPECT_FALSE(isErrors(records, 2));
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_TRUE(isErrors(records, 3));
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: sml command='Oper.C', smlerror='0x1f'"));
    records[1].status = 24;
    EXPECT_TRUE(isErrors(records, 3));
    EXPECT_THAT(log(), IsEmpty()) << "the first failure is the end of a list";
    std::memset(records[0].key, '%', sizeof records[0].key);
    records[0].status = 0xFFFFFFFF;
    EXPECT_TRUE(isErrors(records, 3));
    EXPECT_THAT(log(),
                ElementsAre("2 DCACHE: sml command='" + std::string(256, '%') + "', smlerror='0xffffffff'"));
}

TEST_F(Sml, KeysAreFormattedAndCut) {
    char* text = nullptr;
    uint32_t extra = 0;
    void* reply = nullptr;
    char value[VEX_SML_VALUE_SIZE];
    const std::string longText(400, 'k');
    vex_smlGetV(hSwitch, &text, &extra, "Oper.%s.%%%c", "Test", 'A');
    vex_smlGetV(hSwitch, &text, &extra, "%s", longText.c_str());
    vex_smlSetV(hSwitch, &reply, "%s.%d", "Cmd", -1);
    vex_smlSetV(hSwitch, &reply, "%s", longText.c_str());
    get_next_lsdb_record(longText.c_str(), value);
    get_next_attached_port("P", longText.c_str(), value);
    const auto cut = [&](const std::string& key) { return (key + longText).substr(0, 255); };
    EXPECT_THAT(calls(),
                ElementsAre("vex_smlGet Oper.Test.%A", "vex_smlGet " + cut(""), "vex_smlSet Cmd.-1",
                            "vex_smlSet " + cut(""), "vex_smlGetBatch " + cut("Oper.Eport.NextLsdbRecord."),
                            "vex_smlGetBatch " + cut("Oper.NameServerAll.P.NextNsEntry.")));
}

TEST_F(Sml, BatchReadsBoundedValues) {
    SmlBatch batch(1);
    const size_t text = batch.add("Oper.Test.%s", "A");
    const size_t number = batch.add("Oper.Test.N");
    ASSERT_TRUE(batch.read(hSwitch));
    EXPECT_EQ(batch.text(text), "alpha");
    EXPECT_EQ(batch.number(number), 42);
    sim.run("do = 'fault'\nfunction = 'vex_smlGetBatch'\nkey = 'Oper.Test.A'\nunterminated = true");
    ASSERT_TRUE(batch.read(hSwitch));
    EXPECT_EQ(batch.text(text).size(), 256U);
}

TEST_F(Sml, SaveWithoutRightsHeldHereReleasesNothing) {
    ASSERT_EQ(getConfigEditMode(), 0);
    adminModeHeld = 0;
    calls();
    EXPECT_EQ(saveConfigEdit(), 0);
    EXPECT_THAT(calls(), ElementsAre("vex_smlSet Cmd.Cim.SaveConfig"));
}

/** Each with its own memory, as C hosts use it: none is lost, and none is freed that the caller may still
 * read. */
TEST(SmlGroup, WithoutMemoryLosesNone) {
    size_t asked = 0;
    {
        const Allocations memory;
        vex_smlFreeMsgGroup(vex_smlAllocMsgGroup(1));
        asked = memory.count();
    }
    if (asked == 0) GTEST_SKIP() << "the library was not linked into the program";
    for (size_t next = 0; next < 4; ++next) {
        SCOPED_TRACE(next);
        Allocations memory;
        memory.failAfter(next);
        vex_smlmsggroup_s* const group = vex_smlAllocMsgGroup(1);
        EXPECT_EQ(group == nullptr, next < 2);
        EXPECT_EQ(memory.live(), group == nullptr ? 0U : 2U);
        if (group == nullptr) continue;
        vex_smlrequest_s* const records = group->records;
        EXPECT_EQ(vex_smlAddMsgGroupV(group, "%s", "first"), 0);
        const int added = vex_smlAddMsgGroupV(group, "%s", "second");
        EXPECT_EQ(added, next == 2 ? 1 : 0);
        if (added == 0) {
            vex_smlFreeMsgGroup(group);
        } else {
            EXPECT_EQ(memory.live(), 1U) << "the records, which are the caller's now";
            EXPECT_STREQ(records->key, "first");
            std::free(records);
        }
        EXPECT_EQ(memory.live(), 0U);
    }
}

}  // namespace
