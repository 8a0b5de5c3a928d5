#include "datacache/accounts_load.h"

#include <gtest/gtest.h>

using namespace datacache;

TEST(AccountChanges, CountOccurrences) {
    using Names = std::vector<std::string>;
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
