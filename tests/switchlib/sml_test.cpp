#include <cstdlib>
#include <cstring>
#include <memory>

#include "switchlib/NORV_Vex_Lib.h"
#include "switchlib/SmlBatch.h"
#include "tests/support/CacheTest.h"

using namespace datacache;

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct GroupDeleter {
    void operator()(vex_smlmsggroup_s* group) const { vex_smlFreeMsgGroup(group); }
};
using Group = std::unique_ptr<vex_smlmsggroup_s, GroupDeleter>;

vex_smlrequest_s request(const char* key, const char* value = "") {
    vex_smlrequest_s record{};
    std::strncpy(record.key, key, sizeof record.key - 1);
    std::strncpy(record.value, value, sizeof record.value - 1);
    return record;
}

class Sml : public CacheTest {
  protected:
    Sml() {
        start(
            "switch = {wwn = '1000001122AABBCC'}\n[sml]\n'Oper.Test.A' = 'alpha'\n"
            "'Oper.Test.Number' = ' 42x'\n'Config.Test.A' = 'old'\n");
    }
    void fault(const std::string& fields) { sim.run("step = [{do = 'fault', function = " + fields + "}]"); }
    /** The keys that a transaction sends when the one that ends in `failing` fails; it gives `result`. */
    std::vector<std::string> sentBy(int32_t (*transaction)(uint32_t, vex_smlrequest_s*, int),
                                    const std::string& failing, int32_t result) {
        if (!failing.empty()) fault("'vex_smlSet', key = '*" + failing + "', result = 11");
        vex_smlrequest_s record = request("Config.Test.A", "new");
        EXPECT_EQ(transaction(hSwitch, &record, 1), result) << failing;
        std::vector<std::string> keys;
        for (const std::string& call : calls()) keys.push_back(call.substr(call.rfind('.') + 1));
        return keys;
    }
};

TEST_F(Sml, GroupGrowsInStepsOfTwentyFive) {
    const Group group(vex_smlAllocMsgGroup(0));
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
}

TEST_F(Sml, GroupKeepsLongKeysTerminatedAndRefusesImpossibleSizes) {
    const Group group(vex_smlAllocMsgGroup(2));
    ASSERT_EQ(vex_smlAddMsgGroupV(group.get(), "%s", std::string(300, 'k').c_str()), 0);
    ASSERT_EQ(vex_smlAddMsgGroupV(group.get(), "%s", "next"), 0);
    EXPECT_EQ(std::string(group->records[0].key), std::string(255, 'k'));
    EXPECT_STREQ(group->records[1].key, "next");
    EXPECT_EQ(vex_smlAllocMsgGroup(-1), nullptr);

    // Growing beyond what can be counted fails: the group goes, its records stay with whoever still has them.
    auto* full = vex_smlAllocMsgGroup(1);
    vex_smlrequest_s* records = full->records;
    full->count = full->capacity = 0x7FFFFFF0;
    EXPECT_EQ(vex_smlAddMsgGroupV(full, "%s", "one more"), 1);
    std::free(records);
}

TEST_F(Sml, GroupGivesResultsOfItsRecordsOnly) {
    const Group group(vex_smlAllocMsgGroup(0));
    vex_smlAddMsgGroupV(group.get(), "Oper.Test.A");
    EXPECT_EQ(vex_smlGetMsgGroup(group.get()), 0);
    char* value = nullptr;
    EXPECT_EQ(vex_smlGetResult(group.get(), 0, &value), 0U);
    EXPECT_STREQ(value, "alpha");

    char untouched[] = "untouched";
    for (const int outside : {1, -1, 0x7FFFFFFF}) {
        char* kept = untouched;
        EXPECT_EQ(vex_smlGetResult(group.get(), outside, &kept), 1U) << outside;
        EXPECT_EQ(kept, untouched);
    }

    vex_smlResetMsgGroup(group.get());
    EXPECT_EQ(vex_smlGetMsgGroup(group.get()), 0) << "an empty group has no failed record";
}

TEST_F(Sml, ReportsTheFirstFailedRecordUnlessItIsAnEnd) {
    vex_smlrequest_s records[] = {request("Oper.A"), request("Oper.B"), request("Oper.C")};
    EXPECT_FALSE(isErrors(records, 3));
    EXPECT_FALSE(isErrors(nullptr, 0));
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

TEST_F(Sml, SingleKeysAreFormattedAndCut) {
    char* value = nullptr;
    uint32_t extra = 0;
    void* reply = nullptr;
    const std::string longText(400, 'k');
    vex_smlGetV(hSwitch, &value, &extra, "Oper.%s.%%%c", "Test", 'A');
    vex_smlGetV(hSwitch, &value, &extra, "%s", longText.c_str());
    vex_smlSetV(hSwitch, &reply, "%s.%d", "Cmd", -1);
    fault("'vex_smlSet', result = 103");
    EXPECT_EQ(vex_smlSetV(hSwitch, &reply, "%s", longText.c_str()), 103);
    EXPECT_THAT(log().back(), ::testing::HasSubstr("failed, sw_ret = 103")) << "expected of reads only";
    const std::string cut(255, 'k');
    EXPECT_THAT(calls(), ElementsAre("vex_smlGet Oper.Test.%A", "vex_smlGet " + cut, "vex_smlSet Cmd.-1",
                                     "vex_smlSet " + cut));
}

TEST_F(Sml, BatchReadsBoundedValues) {
    SmlBatch batch(1);
    const size_t text = batch.add("Oper.Test.%s", "A");
    const size_t number = batch.add("Oper.Test.Number");
    ASSERT_TRUE(batch.read(hSwitch));
    EXPECT_EQ(batch.text(text), "alpha");
    EXPECT_EQ(batch.number(number), 42);
    EXPECT_EQ(batch.number(text), 0);
    fault("'vex_smlGetBatch', key = 'Oper.Test.A', unterminated = true");
    ASSERT_TRUE(batch.read(hSwitch));
    EXPECT_EQ(batch.text(text).size(), 256U);
}

TEST_F(Sml, TransactionsSendTheirCommandsInOrder) {
    EXPECT_THAT(sentBy(vex_smlBatchSet, "", 0),
                ElementsAre("ReqAdmin", "EditConfig", "A", "SaveConfig", "ActConfig", "RelAdmin"));
    EXPECT_EQ(sim.get("Config.Test.A"), "new");
    EXPECT_THAT(sentBy(vex_smlBatchSet, "SaveConfig", 11),
                ElementsAre("ReqAdmin", "EditConfig", "A", "SaveConfig", "CancelConfig", "RelAdmin"));
    EXPECT_THAT(sentBy(vex_smlBatchSet, "ActConfig", 11),
                ElementsAre("ReqAdmin", "EditConfig", "A", "SaveConfig", "ActConfig", "RelAdmin"));
    EXPECT_THAT(sentBy(vex_smlBatchCimSet, "", 0),
                ElementsAre("ReqAdmin", "EditConfig", "A", "SaveConfig", "RelAdmin"));
    EXPECT_THAT(sentBy(vex_smlBatchCimSet, "Cmd.Cim.SaveConfig", 11),
                ElementsAre("ReqAdmin", "EditConfig", "A", "SaveConfig", "CancelConfig", "RelAdmin"));
}

}  // namespace
