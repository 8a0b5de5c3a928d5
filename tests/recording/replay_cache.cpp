/*
 * Plays recordings to the real library, whose vexlib is the replayer.
 *
 *     replay_cache FILE                  strictly, and prints what the library tells
 *     replay_cache --host LAST           a host of its own, which reads keys up to LAST, asks for one more in
 * a callback, and prints what happens in order replay_cache --hostile FILE COUNT  recordings made from FILE
 * by damage: so many that are refused or played, and so many that are played; none may do harm, nor when it
 *                                        is captured or reported
 */
#include <cstdio>
#include <fstream>
#include <iostream>
#include <mutex>
#include <random>
#include <sstream>

#include "capture/capture.h"
#include "replayer/vexreplay.h"
#include "report/calls.h"
#include "report/clock.h"
#include "report/timeline.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "tests/recording/CacheRun.h"

namespace {

bool deliver() {
    bool any = false;
    for (; vexreplay_next(nullptr) == VEXREPLAY_NOTIFICATION; any = true) vexreplay_deliver();
    return any;
}

/** Until the recorded cache went away, or to the very end. */
void play(CacheRun& run, bool toTheEnd) {
    run.start();
    run.settle(deliver);
    for (uint64_t place = 0; vexreplay_next(&place) != VEXREPLAY_OVER;) {
        const bool accounts = vexreplay_mentions(place, "FirstPotentialUser") != 0;
        if (accounts) run.readAccounts();
        if (!accounts && !toTheEnd) return;
        vexreplay_skip(place);
        run.settle(deliver);
    }
}

/** Damages the text behind `from`, where the lines are good that a cache needs to connect. */
std::string damaged(std::string text, size_t from, std::mt19937& random) {
    static const std::string kPieces[] = {
        "99999999999", "-1",          "18446744073709551616", "1e400",    "null", "[]",
        "{}",          "\"\\u0100\"", "\"\\u0000\"",          "\xff\xfe", "\n",   "2147483647",
        "[[[[",        "0",           std::string(300, 'x'),  "\",\"",    "}",    "1.5",
        "\"-1\""};
    const auto any = [&](size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random); };
    for (size_t changes = 1 + any(4); changes > 0 && text.size() > from; --changes) {
        const size_t place = from + any(text.size() - from);
        const size_t value = text.find_first_of("0123456789", place);
        const size_t quote = text.find('"', place);
        const size_t way = any(5), line = text.find('\n', place);
        const size_t end = line == std::string::npos ? line : text.find('\n', line + 1);
        if (way == 0) {
            text.replace(place, any(40), 1, static_cast<char>(any(256)));
        } else if (way == 1) {
            if (place > from + 1) text.resize(place);
        } else if (way == 2) {  // another value in place of a number: as a rule still a recording
            if (value != std::string::npos)
                text.replace(value, text.find_first_not_of("0123456789", value) - value,
                             kPieces[any(std::size(kPieces))]);
        } else if (way == 3) {  // another text
            if (quote != std::string::npos) text.insert(quote + 1, std::string(any(300), '9'));
        } else if (end != std::string::npos) {  // lines that come again, elsewhere
            text.insert(text.find('\n', from + any(line - from + 1)) + 1, text.substr(line + 1, end - line));
        }
    }
    return text;
}

/** What else is made of recordings; throws where it fails. */
void makeMost(const recording::Recording& recording, bool masked) {
    static_cast<void>(capture::switchFile(recording, masked));
    report::Secrets secrets(masked);
    secrets.learn(recording);
    static_cast<void>(report::callStatistics(recording, secrets));
    const auto names = [](int32_t) { return "x"; };
    static_cast<void>(report::happeningsOf(recording, report::beginOf(recording.header),
                                           report::passesOf(recording, {}), names, secrets));
    static_cast<void>(report::ClockMap(recording, recording).recordedTime(1000));
}

int playHostile(const std::string& path, int count) {
    std::stringstream whole;
    whole << std::ifstream(path).rdbuf();
    const std::string text = whole.str();
    const size_t head = text.find('\n');
    const size_t connected = text.find('\n', head + 1) + 1;
    const std::string file = path + ".hostile";
    std::mt19937 random(11);  // NOLINT: the same every time
    int played = 0, files = 0;
    for (; files < count || (played < count && files < 8 * count); ++files) {
        const bool untouchedStart = files % 10 != 0;
        std::ofstream(file, std::ios::binary) << damaged(text, untouchedStart ? connected : 0, random);
        char error[1024] = "";
        if (vexreplay_open(file.c_str(), 0, 0, error, sizeof error) != 0) {
            if (std::string(error).find(file + ':') == 0) continue;
            std::cout << "no line is told: " << error << std::endl;
            return 1;
        }
        if (files % 4 == 1) makeMost(recording::load(file), files % 8 == 1);
        if (!untouchedStart) continue;
        CacheRun run;
        play(run, true);
        ++played;
    }
    std::remove(file.c_str());
    std::cout << played << " of " << files << " were played" << std::endl;
    // Some are so damaged that they cannot be played; they may not be all.
    return played == count && files - played > count / 4 ? 0 : 1;
}

// ---- A host of its own ----

std::mutex storyMutex;
std::string story;

void note(const std::string& what) {
    const std::lock_guard<std::mutex> guard(storyMutex);
    story += what + ' ';
}

std::string readKey(const std::string& key) {
    vex_smlrequest_s record{};
    key.copy(record.key, sizeof record.key - 1);
    vex_smlGetBatch(1, &record, 1);
    return record.value;
}

void hear(void* context, vex_event_s* event, void* user) {
    note('(' + std::string(static_cast<const char*>(context)) + event->text +
         (user == nullptr ? "" : "+user"));
    if (event->text[0] == 'a') note(readKey("asked"));
    note(")");
}

int playHost(const std::string& last) {
    static char first[] = "first:", second[] = "second:";
    vex_eventreg_s code{1, 0};
    vex_enRegisterForEventList(1, hear, first, &code, 1);
    vex_enRegisterForEventList(1, hear, second, &code, 1);
    for (char key = '1'; key <= last[0]; ++key) {
        const std::string value = readKey({'k', key});
        note(value);
    }
    std::cout << story << std::endl;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3) return playHost(argv[2]);
    if (argc == 4) return playHostile(argv[2], std::atoi(argv[3]));
    char error[1024] = "";
    if (argc != 2 || vexreplay_open(argv[1], 1, 0, error, sizeof error) != 0) {
        std::cerr << error << std::endl;
        return 2;
    }
    CacheRun run;
    play(run, false);
    for (const std::string& line : run.story()) std::cout << line << '\n';
}
