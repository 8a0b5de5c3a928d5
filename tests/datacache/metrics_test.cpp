#include "datacache/metrics.h"

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <sstream>
#include <tuple>

#include "datacache/HealthRecord.h"
#include "tests/support/CacheTest.h"

namespace {

// Each names all fields of its record: a new one does not compile before it is named here, and is not good
// before it has its line.
#define DC_FIELDS(Record, ...)        \
    auto fieldsOf(Record& record) {   \
        auto& [__VA_ARGS__] = record; \
        return std::tie(__VA_ARGS__); \
    }
DC_FIELDS(ReadFailure, a, b, c, d, e, f, g, h)
DC_FIELDS(PendingCall, a, b, c, d)
DC_FIELDS(ConnectionHealth, a, b, c, d, e, f)
DC_FIELDS(RegistrationHealth, a, b, c, d)
DC_FIELDS(LimitsHealth, a, b, c)
DC_FIELDS(AreaHealth, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p)
DC_FIELDS(PassHealth, a, b, c, d, e, f, g, h, i, j, k, l, m)
DC_FIELDS(EventHealth, a, b, c, d, e)
DC_FIELDS(CapacityHealth, a, b, c, d, e)
DC_FIELDS(LockHealth, a, b, c, d, e)
DC_FIELDS(HealthRecord, a, b, c, d, e, f, g, h, i, j, k)

template <typename Field>
void vary(Field& field) {
    if constexpr (std::is_same_v<Field, bool>)
        field = !field;
    else if constexpr (std::is_same_v<Field, char>)
        field = 'x';
    else if constexpr (std::is_enum_v<Field>)
        field = static_cast<Field>(1);
    else if constexpr (std::is_integral_v<Field>)
        --field;
    else
        field += std::chrono::seconds(1);
}

/** Has each plain field in turn another value while `check` runs. */
template <typename Field, typename Check>
void eachVaried(Field& field, const Check& check) {
    if constexpr (std::is_array_v<Field>) {
        eachVaried(field[0], check);  // a text
    } else if constexpr (std::is_aggregate_v<Field>) {
        std::apply([&](auto&... part) { (eachVaried(part, check), ...); }, fieldsOf(field));
    } else {
        const Field before = field;
        vary(field);
        check();
        field = before;
    }
}
template <typename Field, size_t Size, typename Check>
void eachVaried(std::array<Field, Size>& fields, const Check& check) {
    for (Field& field : fields) eachVaried(field, check);
}

HealthRecord full() {
    HealthRecord record;
    record.registration.refused = RegistrationHealth::kMostRefused;
    for (size_t i = 0; i < record.registration.refusedCodes.size(); ++i) {
        record.registration.refusedCodes[i] = static_cast<int32_t>(i + 1);
    }
    record.pendingCalls = HealthRecord::kMostCalls;
    return record;
}

std::string textOf(const HealthRecord& record) {
    return metricsText(Health(std::make_shared<HealthRecord>(record)));
}

TEST(Metrics, EveryFieldHasALine) {
    HealthRecord record = full();
    const std::string before = textOf(record);
    size_t fields = 0;
    eachVaried(record, [&] { EXPECT_TRUE(++fields != 0 && textOf(record) != before) << "field " << fields; });
    EXPECT_GT(fields, 300U);
}

TEST(Metrics, AreWellFormedWhateverTheSwitchSays) {
    HealthRecord record = full();
    std::snprintf(record.calls[0].key, sizeof record.calls[0].key, "%s", "a\"b\\c\nd\x1b\x9b\xc3\xa4 {},=#");
    record.passes.last = Duration(1'500'001);
    record.connection.failingSince = WallTime(std::chrono::microseconds(-1));
    const std::string text = textOf(record);
    for (const char* part :
         {"key=\"a\\\"b\\\\c\\\\x0ad\\\\x1b\\\\x9b\\\\xc3\\\\xa4 {},=#\"",
          "\ndatacache_pass_last_duration_seconds 1.500001\n", " -0.000001\n",
          "\ndatacache_area_up_to_date{area=\"switch\"} 0\n", "\ndatacache_well 0\n", "\n# EOF\n"}) {
        EXPECT_THAT(text, ::testing::HasSubstr(part));
    }
    const std::regex sample("([a-z_]+)(\\{([a-z]+=\"([^\"\\\\]|\\\\.)*\",?)+\\})? -?[0-9.]+");
    std::istringstream lines(text);
    std::string line, name;
    for (std::smatch found; std::getline(lines, line);) {
        if (line.rfind("# TYPE ", 0) == 0) name = line.substr(7, line.rfind(' ') - 7);
        EXPECT_TRUE(line[0] == '#' || (std::regex_match(line, found, sample) && found[1] == name)) << line;
    }
    if (std::system("command -v promtool > /dev/null 2>&1") != 0) return;
    FILE* const promtool = popen("promtool check metrics", "w");
    ASSERT_NE(promtool, nullptr);
    std::fputs(text.c_str(), promtool);
    EXPECT_EQ(pclose(promtool), 0);
}

}  // namespace
