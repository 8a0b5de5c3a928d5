#include "datacache/metrics.h"

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <set>
#include <sstream>
#include <tuple>

#include "datacache/HealthRecord.h"
#include "tests/support/CacheTest.h"

namespace {

// Each binding names all fields of its record: a new one does not compile before it is named here, and is
// not good before it has its line.
auto fieldsOf(ReadFailure& record) {
    auto& [a, b, c, d, e, f, g, h] = record;
    return std::tie(a, b, c, d, e, f, g, h);
}
auto fieldsOf(PendingCall& record) {
    auto& [a, b, c, d] = record;
    return std::tie(a, b, c, d);
}
auto fieldsOf(ConnectionHealth& record) {
    auto& [a, b, c, d, e, f] = record;
    return std::tie(a, b, c, d, e, f);
}
auto fieldsOf(RegistrationHealth& record) {
    auto& [a, b, c, d] = record;
    return std::tie(a, b, c, d);
}
auto fieldsOf(LimitsHealth& record) {
    auto& [a, b, c] = record;
    return std::tie(a, b, c);
}
auto fieldsOf(AreaHealth& record) {
    auto& [a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p] = record;
    return std::tie(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p);
}
auto fieldsOf(PassHealth& record) {
    auto& [a, b, c, d, e, f, g, h, i, j, k, l, m] = record;
    return std::tie(a, b, c, d, e, f, g, h, i, j, k, l, m);
}
auto fieldsOf(EventHealth& record) {
    auto& [a, b, c, d, e] = record;
    return std::tie(a, b, c, d, e);
}
auto fieldsOf(CapacityHealth& record) {
    auto& [a, b, c, d, e] = record;
    return std::tie(a, b, c, d, e);
}
auto fieldsOf(LockHealth& record) {
    auto& [a, b, c, d, e] = record;
    return std::tie(a, b, c, d, e);
}
auto fieldsOf(HealthRecord& record) {
    auto& [a, b, c, d, e, f, g, h, i, j, k] = record;
    return std::tie(a, b, c, d, e, f, g, h, i, j, k);
}

void vary(bool& flag) {
    flag = !flag;
}
void vary(uint32_t& number) {
    --number;
}
void vary(int32_t& number) {
    --number;
}
void vary(char& first) {
    first = 'x';
}
void vary(WallTime& time) {
    time += std::chrono::seconds(1);
}
void vary(Duration& duration) {
    duration += Duration(1);
}
template <typename Enum, std::enable_if_t<std::is_enum_v<Enum>, int> = 0>
void vary(Enum& value) {
    value = static_cast<Enum>(static_cast<int>(value) + 1);
}

/** Has each plain field in turn another value while `check` runs. */
template <typename Field, typename Check>
auto eachVaried(Field& field, const Check& check) -> decltype(vary(field)) {
    const Field before = field;
    vary(field);
    check();
    field = before;
}
template <size_t Size, typename Check>
void eachVaried(char (&text)[Size], const Check& check) {
    eachVaried(text[0], check);
}
template <typename Field, size_t Size, typename Check>
void eachVaried(std::array<Field, Size>& fields, const Check& check);
template <typename Record, typename Check>
auto eachVaried(Record& record, const Check& check) -> decltype(fieldsOf(record), void()) {
    std::apply([&](auto&... field) { (eachVaried(field, check), ...); }, fieldsOf(record));
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
    eachVaried(record, [&] {
        ++fields;
        EXPECT_NE(textOf(record), before) << "field " << fields;
    });
    EXPECT_GT(fields, 300U);
}

TEST(Metrics, AreWellFormedWhateverTheSwitchSays) {
    HealthRecord record = full();
    std::snprintf(record.calls[0].key, sizeof record.calls[0].key, "%s", "a\"b\\c\nd\x1b\x9b\xc3\xa4 {},=#");
    record.passes.last = Duration(1'500'001);
    record.connection.failingSince = WallTime(std::chrono::microseconds(-1));
    const std::string text = textOf(record);
    for (const char* part : {"key=\"a\\\"b\\\\c\\\\x0ad\\\\x1b\\\\x9b\\\\xc3\\\\xa4 {},=#\"",
                             "\ndatacache_pass_last_duration_seconds 1.500001\n", " -0.000001\n",
                             "\ndatacache_area_up_to_date{area=\"switch\"} 0\n", "\ndatacache_well 0\n"}) {
        EXPECT_THAT(text, ::testing::HasSubstr(part));
    }
    const std::regex sample("([a-z_]+)(\\{([a-z]+=\"([^\"\\\\]|\\\\.)*\",?)+\\})? -?[0-9.]+");
    std::istringstream lines(text);
    std::set<std::string> seen;
    std::string line, name, last;
    for (std::smatch found; std::getline(lines, line); last = line) {
        EXPECT_TRUE(seen.insert(line).second) << line;
        if (line.rfind("# TYPE ", 0) == 0) {
            name = line.substr(7, line.rfind(' ') - 7);
            const bool counts = name.size() > 6 && name.substr(name.size() - 6) == "_total";
            EXPECT_EQ(line, "# TYPE " + name + (counts ? " counter" : " gauge"));
            EXPECT_EQ(last.rfind("# HELP " + name + ' ', 0), 0U) << last;
        } else if (line[0] != '#') {
            EXPECT_TRUE(std::regex_match(line, found, sample) && found[1] == name) << line;
        }
    }
    EXPECT_EQ(last, "# EOF");
    if (std::system("command -v promtool > /dev/null 2>&1") != 0) return;
    FILE* const promtool = popen("promtool check metrics", "w");
    ASSERT_NE(promtool, nullptr);
    std::fputs(text.c_str(), promtool);
    EXPECT_EQ(pclose(promtool), 0);
}

}  // namespace
