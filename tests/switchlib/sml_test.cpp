#include <cstdlib>
#include <cstring>
#include <memory>

#include "switchlib/NORV_Vex_Lib.h"
#include "switchlib/SmlBatch.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
[sml]
"Oper.Test.A" = "alpha"
"Oper.Test.Number" = " 42x"
"Config.Test.A" = "old"
)";

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
        load(kSwitch);
        calls();
        log();
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

TEST_F(Sml, GroupResultPrefersAFailedRecord) {
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

    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nresult = 77\ntimes = 1\n");
    EXPECT_EQ(vex_smlGetMsgGroup(group.get()), 77) << "no record failed: the call's own result";
    vex_smlAddMsgGroupV(group.get(), "Oper.Test.Unknown");
    EXPECT_EQ(vex_smlGetMsgGroup(group.get()), 1);
    EXPECT_NE(vex_smlGetResult(group.get(), 1, &value), 0U);
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

TEST_F(Sml, SingleKeysLogWhatFailsExceptTheExpected) {
    char* value = nullptr;
    uint32_t extra = 0;
    EXPECT_EQ(vex_smlGetV(hSwitch, &value, &extra, "Oper.%s.%c", "Test", 'A'), 0);
    EXPECT_STREQ(value, "alpha");
    vex_libFreeMemory(std::exchange(value, nullptr));
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: vex_smlGet 'Oper.Test.A'"));

    const std::string fault = "[[step]]\ndo = \"fault\"\ntimes = 1\nfunction = ";
    sim.run(fault + "\"vex_smlGet\"\nresult = 103\n");
    EXPECT_EQ(vex_smlGetV(hSwitch, &value, &extra, "Oper.Test.A"), 103);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: vex_smlGet 'Oper.Test.A'"));

    sim.run(fault + "\"vex_smlGet\"\nresult = 255\n");
    EXPECT_EQ(vex_smlGetV(hSwitch, &value, &extra, "Oper.Test.%%"), 255);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: vex_smlGet 'Oper.Test.%'",
                                   "4 CRIT:NORV_Vex_Lib:vex_smlGetV[50] vex_smlGet 'Oper.Test.%' failed, "
                                   "sw_ret = 0xff"));

    void* reply = nullptr;
    sim.run(fault + "\"vex_smlSet\"\nresult = -5\n");
    EXPECT_EQ(vex_smlSetV(hSwitch, &reply, "Cmd.Switch.%s", "ReqAdmin"), -5);
    EXPECT_THAT(log(),
                ElementsAre("2 DCACHE: vex_smlSet 'Cmd.Switch.ReqAdmin'",
                            "4 CRIT:NORV_Vex_Lib:vex_smlSetV[78] vex_smlSet 'Cmd.Switch.ReqAdmin' failed, "
                            "sw_ret = -5"));
    sim.run(fault + "\"vex_smlSet\"\nresult = 103\n");
    EXPECT_EQ(vex_smlSetV(hSwitch, &reply, "%s", std::string(400, 'k').c_str()), 103);
    EXPECT_EQ(log().size(), 2U) << "103 is expected of reads only";
    EXPECT_EQ(calls().back(), "vex_smlSet " + std::string(255, 'k'));
}

TEST_F(Sml, BatchReadsBoundedValues) {
    SmlBatch batch(1);
    const size_t text = batch.add("Oper.Test.%s", "A");
    const size_t number = batch.add("Oper.Test.Number");
    ASSERT_TRUE(batch.read(hSwitch));
    EXPECT_EQ(batch.text(text), "alpha");
    EXPECT_EQ(batch.number(number), 42);
    EXPECT_EQ(batch.number(text), 0);
    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nkey = \"Oper.Test.A\"\nunterminated = "
        "true\n");
    ASSERT_TRUE(batch.read(hSwitch));
    EXPECT_EQ(batch.text(text).size(), 256U);
}

/** A transaction with the step that fails: what it sends, and what it returns. */
struct Transaction {
    const char* failing;  ///< key glob; null for none
    const char* failingToo;
    int32_t result;
    std::vector<std::string> sent;
};

class Transactions : public Sml {
  protected:
    void check(int32_t (*transaction)(uint32_t, vex_smlrequest_s*, int),
               const std::vector<Transaction>& cases) {
        for (const Transaction& c : cases) {
            sim.run("[[step]]\ndo = \"clear_faults\"\n");
            int32_t status = 11;
            for (const char* key : {c.failing, c.failingToo}) {
                if (key == nullptr) continue;
                const bool batch = std::string(key) == "batch";
                sim.run("[[step]]\ndo = \"fault\"\nfunction = \"" +
                        std::string(batch ? "vex_smlSetBatch" : "vex_smlSet") + "\"\nresult = " +
                        std::to_string(status++) + (batch ? "\n" : "\nkey = \"" + std::string(key) + "\"\n"));
            }
            vex_smlrequest_s record = request("Config.Test.A", "new");
            const std::string what =
                std::string(c.failing ? c.failing : "none") + " " + (c.failingToo ? c.failingToo : "");
            EXPECT_EQ(transaction(hSwitch, &record, 1), c.result) << what;
            EXPECT_EQ(sent(), c.sent) << what;
            sim.run("[[step]]\ndo = \"clear_faults\"\n");
            void* reply = nullptr;
            vex_smlSet(hSwitch, "Cmd.Switch.RelAdmin", &reply);  // a release that failed leaves admin held
            calls();
        }
    }

    std::vector<std::string> sent() {
        std::vector<std::string> keys;
        for (const std::string& call : calls()) keys.push_back(call.substr(call.find(' ') + 1));
        return keys;
    }
};

TEST_F(Transactions, SwitchConfigurationAlwaysReleasesAdmin) {
    const std::string req = "Cmd.Switch.ReqAdmin", edit = "Cmd.Switch.EditConfig",
                      save = "Cmd.Switch.SaveConfig", act = "Cmd.Switch.ActConfig",
                      cancel = "Cmd.Switch.CancelConfig", rel = "Cmd.Switch.RelAdmin", set = "Config.Test.A";
    check(vex_smlBatchSet, {
                               {nullptr, nullptr, 0, {req, edit, set, save, act, rel}},
                               {"*ReqAdmin", nullptr, 11, {req}},
                               {"*EditConfig", nullptr, 11, {req, edit, rel}},
                               {"*EditConfig", "*RelAdmin", 12, {req, edit, rel}},
                               {"batch", nullptr, 11, {req, edit, set, cancel, rel}},
                               {"batch", "*CancelConfig", 12, {req, edit, set, cancel, rel}},
                               {"batch", "*RelAdmin", 12, {req, edit, set, cancel, rel}},
                               {"*SaveConfig", nullptr, 11, {req, edit, set, save, cancel, rel}},
                               {"*ActConfig", nullptr, 11, {req, edit, set, save, act, rel}},
                               {"*ActConfig", "*RelAdmin", 12, {req, edit, set, save, act, rel}},
                           });
    EXPECT_EQ(sim.get("Config.Test.A"), "new");
}

TEST_F(Transactions, CimConfigurationHasNoActivation) {
    const std::string req = "Cmd.Switch.ReqAdmin", edit = "Cmd.Cim.EditConfig", save = "Cmd.Cim.SaveConfig",
                      cancel = "Cmd.Cim.CancelConfig", rel = "Cmd.Switch.RelAdmin", set = "Config.Test.A";
    check(vex_smlBatchCimSet, {
                                  {nullptr, nullptr, 0, {req, edit, set, save, rel}},
                                  {"*RelAdmin", nullptr, 11, {req, edit, set, save, rel}},
                                  {"*EditConfig", nullptr, 11, {req, edit, rel}},
                                  {"*SaveConfig", "*CancelConfig", 12, {req, edit, set, save, cancel, rel}},
                              });
}

}  // namespace
