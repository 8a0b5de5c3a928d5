#include "datacache/accounts_load.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Names = std::vector<std::string>;

const std::string kAdded = "DCEventUserAcctAdd wwn=1000001122AABBCC userName=";
const std::string kRemoved = "DCEventUserAcctRemove wwn=1000001122AABBCC userName=";

std::string quoted(const std::string& name) {
    return '"' + name + '"';
}

class AccountsTest : public CacheTest {
  protected:
    void start(const std::string& users) {
        load("[switch]\nwwn = \"1000001122AABBCC\"\n[accounts]\nusers = [" + users + "]\n");
        {
            const AccessGuard guard;
            EXPECT_TRUE(peer().getSwitchInfo());
        }
        events();
        calls();
        log();
    }
    bool read() {
        const AccessGuard guard;
        return cache()._getAcctInfo();
    }
    Names accounts() {
        const AccessGuard guard;
        return peer().accounts;
    }
    void fault(const std::string& fields) {
        sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\n" + fields);
    }
};

TEST_F(AccountsTest, AnEmptyListBeforeReportsNoAdditions) {
    start("");
    ASSERT_TRUE(read());
    EXPECT_THAT(accounts(), IsEmpty());
    sim.run("[[step]]\ndo = \"account_add\"\nname = \"admin\"\n");
    ASSERT_TRUE(read());
    EXPECT_THAT(events(), IsEmpty());
    sim.run("[[step]]\ndo = \"account_remove\"\nname = \"admin\"\n");
    ASSERT_TRUE(read());
    EXPECT_THAT(events(), ElementsAre(kRemoved + quoted("admin")));
}

TEST_F(AccountsTest, FailuresRestoreTheList) {
    start(R"("admin", "guest")");
    ASSERT_TRUE(read());
    sim.run("[[step]]\ndo = \"account_rename\"\nfrom = \"admin\"\nto = \"root\"\n");
    const struct {
        const char* fault;
        const char* line;
    } failures[] = {
        {"key = \"*.FirstPotentialUser\"\nresult = 9\n", "1880"},
        {"key = \"*.NextPotentialUser.guest\"\nresult = 24\n", "1880"},
        {"key = \"*.FirstPotentialUser\"\nstatus = 103\n", "1897"},
        {"key = \"*.NextPotentialUser.root\"\nstatus = 25\n", "1897"},
    };
    for (const auto& failure : failures) {
        SCOPED_TRACE(failure.fault);
        log();
        fault(failure.fault);
        EXPECT_FALSE(read());
        EXPECT_THAT(log(), ElementsAre("2 DCACHE: _getAcctInfo()",
                                       std::string("2 DCACHE: Cache update failed: DataCache:_getAcctInfo:") +
                                           failure.line));
        EXPECT_THAT(accounts(), ElementsAre("admin", "guest"));
        EXPECT_THAT(events(), IsEmpty());
    }
    ASSERT_TRUE(read());
    EXPECT_THAT(events(), ElementsAre(kAdded + quoted("root"), kRemoved + quoted("admin")));
}

TEST_F(AccountsTest, NamesFromOutsideStayInTheirFields) {
    start(R"("admin", "%s%n")");
    ASSERT_TRUE(read());
    EXPECT_THAT(calls(), ::testing::Contains("vex_smlGetBatch Oper.Switch.NextPotentialUser.%s%n"));
    fault("key = \"*.FirstPotentialUser\"\nunterminated = true\n");
    EXPECT_FALSE(read()) << "the switch knows nobody of that name";
    const std::string request = calls()[1];
    const std::string start = "vex_smlGetBatch Oper.Switch.NextPotentialUser.admin";
    EXPECT_EQ(request.substr(0, start.size()), start);
    EXPECT_EQ(request.size(), std::string("vex_smlGetBatch ").size() + 255) << "the key is cut";
}

TEST_F(AccountsTest, AListWithoutAnEndIsAFailure) {
    start(R"("admin")");
    ASSERT_TRUE(read());
    sim.keepTranscript(false);
    fault("key = \"*PotentialUser*\"\ntimes = 0\nvalue = \"again\"\n");
    EXPECT_FALSE(read());
    EXPECT_EQ(log().back(), "2 DCACHE: Cache update failed: DataCache:_getAcctInfo:1897");
    EXPECT_THAT(accounts(), ElementsAre("admin"));
}

TEST(AccountChanges, CountOccurrences) {
    const struct {
        Names before, now, added, removed;
    } cases[] = {
        {{"a", "b"}, {"b", "a"}, {}, {}},
        {{"a"}, {"a", "a"}, {"a"}, {}},
        {{"a", "b", "a"}, {"a"}, {}, {"b", "a"}},
        {{"a", "b", "a", "c"}, {"a", "d", "a", "a"}, {"d", "a"}, {"b", "c"}},
        {{"Admin", "a "}, {"admin", "a"}, {"admin", "a"}, {"Admin", "a "}},
        {{"a", ""}, {""}, {}, {"a"}},
        {{"a"}, {}, {}, {"a"}},
    };
    for (const auto& row : cases) {
        const AccountChanges changes = compareAccounts(row.before, row.now);
        EXPECT_EQ(changes.added, row.added) << ::testing::PrintToString(row.before);
        EXPECT_EQ(changes.removed, row.removed) << ::testing::PrintToString(row.before);
    }
}

}  // namespace
