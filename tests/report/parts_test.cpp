#include <gmock/gmock.h>

#include "report/log_lines.h"
#include "report/timeline.h"

using namespace report;
using ::testing::ElementsAre;

TEST(Report, LogLinesAreFoldedAndThoseOfOthersLeftOut) {
    const std::string first = "11/21 08:00:00.001 7/71 ";
    const std::string later = "11/21 08:00:01.002 7/72 ";
    const std::string other = "11/21 08:00:01.000 77/1 same\n";
    for (const auto& [text, expected] : {
             std::pair("half a line\n" + first + "same\n" + other + "of the other\n" + later + "same\n" +
                           later + "same",
                       R"([["same",3,"11/21 08:00:01.002"]])"),
             {first + "one\nmore\n" + first + "one\n" + first + "one\nmore\n",
              R"([["one\nmore"],["one"],["one\nmore"]])"},
             {first + "1\n" + first + "2\n" + first + "3\n" + first + "4", R"([["2"],["3"],["4"]])"},
             {"11/21 08:00:00.001 7\n11/21 08:00:00.001 \n11/21 08:00:00.001 7/\n\n", "[]"},
         }) {
        Json lines = Json::array();
        const Json log = foldedLog(text, 7, 3, Secrets(true));
        for (const Json& line : log["lines"]) {
            lines.push_back(Json::array({line["text"]}));
            for (const char* more : {"times", "until"}) {
                if (line.contains(more)) lines.back().push_back(line[more]);
            }
        }
        EXPECT_EQ(lines.dump(), expected);
    }
}

/** Calls are told by their begins and ends in ms, notifications by one time; all on thread 2. */
static recording::Recording recorded(const std::vector<std::vector<uint64_t>>& times) {
    static const recording::Function batch{"vex_smlGetBatch", {}};
    recording::Recording recording;
    for (const std::vector<uint64_t>& time : times) {
        recording::Record& record = recording.records.emplace_back();
        if (time.size() == 1) record.kind = recording::Record::Kind::Notification;
        record.function = &batch;
        record.thread = 2;
        record.time = time.front() * 1'000'000;
        record.took = (time.back() - time.front()) * 1'000'000;
    }
    return recording;
}

TEST(Report, TimesOfAReplayBecomeThoseOfTheRecording) {
    const auto told =
        recorded({{10, 20}, {30, 40}, {1000}, {1010, 1020}, {1030, 1050}, {9000}, {8990}, {9010, 9020}});
    const auto replay = recorded({{1, 2}, {2, 3}, {4}, {5, 6}, {6, 7}, {7, 8}, {8}, {9}, {9, 10}, {11}});
    std::vector<uint64_t> times;
    for (uint64_t at = 0; at <= 12; ++at)
        times.push_back(ClockMap(told, replay).recordedTime(at * 1'000'000) / 1'000'000);
    EXPECT_THAT(times, ElementsAre(0, 0, 20, 40, 1000, 1000, 1020, 1050, 9000, 9000, 9020, 9020, 9020));
}

TEST(Report, APassEndsAtAPauseOrWhereTheCacheSaysSo) {
    std::vector<std::vector<uint64_t>> passes;
    const auto recording =
        recorded({{1, 2}, {3, 4}, {5, 6}, {7, 8}, {40, 41}, {50, 90}, {91, 92}, {130, 131}});
    for (const Pass& pass : passesOf(recording, {4'500'000, 20'000'000, 93'000'000}))
        passes.push_back(
            {pass.begin / 1'000'000, pass.end / 1'000'000, pass.calls.size(), pass.complete ? 1U : 0});
    EXPECT_THAT(passes, ElementsAre(ElementsAre(1, 4, 2, 1), ElementsAre(5, 20, 2, 1),
                                    ElementsAre(40, 93, 3, 1), ElementsAre(130, 131, 1, 0)));
}
