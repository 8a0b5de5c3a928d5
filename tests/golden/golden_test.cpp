#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "common/log_hooks.h"
#include "datacache/CacheReader.h"
#include "datacache/cim_words.h"
#include "datacache/event_text.h"
#include "host/areas.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/CacheTest.h"
#include "zoning/member_text.h"

/*
 * Golden runs. A file begins with a switch file; then each "@ COMMAND" is carried out, and below it stands
 * what happened, in order:
 *     > calls to the switch library, without "vex_", each with its result where that is not 0
 *     | a log line with its level; without "2 DCACHE: ", which most begin with
 *     ! a host event
 *     = a line of the command's answer
 * "@ brief ..." tells events alone, "@ quiet ..." nothing, and "show" its calls only as "@ trace show". The
 * events that complete a pass are left out, and a last pass that had nothing to do. With GOLDEN_UPDATE set
 * the files are written anew, to be reviewed as a change.
 */

namespace {

/** What happens, in order: calls are looked up whenever a log line or an event comes. */
class Story {
  public:
    void add(const std::string& line) {
        std::string calls;
        const auto put = [&] {
            if (calls.empty()) return;
            const bool fits =
                !lines.empty() && lines.back()[0] == '|' && lines.back().size() + calls.size() < kWidth;
            if (fits)
                lines.back() += ' ' + calls;
            else
                lines.push_back(calls);
            calls.clear();
        };
        for (const vexsim::Call& call : vexsim::Simulator::instance().transcript()) {
            if (call.function == "vex_libFreeMemory") continue;  // what is left over is counted at the end
            const std::string text = call.function.substr(4) +
                                     (call.detail.empty() ? "" : ' ' + call.detail) +
                                     (call.result == 0 ? "" : " = " + std::to_string(call.result));
            if (calls.size() + text.size() > kWidth) put();
            calls += (calls.empty() ? "> " : "; ") + text;
        }
        put();
        vexsim::Simulator::instance().clearTranscript();
        if (!line.empty()) lines.push_back(line);
    }
    std::vector<std::string> take() {
        add("");
        return std::exchange(lines, {});
    }

  private:
    static constexpr size_t kWidth = 116;
    std::vector<std::string> lines;
};

Story* story = nullptr;

void tellLog(void*, unsigned int level, const char* line, size_t length, size_t message) {
    std::string text = std::to_string(level) + ' ' + std::string(line + message, length - message - 1);
    if (text.rfind("2 DCACHE: ", 0) == 0) text.erase(0, 10);
    // Some lines name the line of the source, which any change of the file may move.
    for (const char* function : {"dump:[", "get_Active_ZoneSet[", "replaceZoningDB["}) {
        const size_t at = text.find(function);
        if (at == std::string::npos) continue;
        const size_t number = text.find('[', at) + 1;
        text.replace(number, text.find(']', number) - number, "LINE");
    }
    story->add("| " + text);
}

void tellEvent(DataCacheEvent* event) {
    story->add("! " + datacache::eventText(*event));
}

using Words = std::vector<std::string>;

/** By the first letter of their words. */
const std::map<char, vex_fzs_zonemember_type_e> kMemberTypes = {
    {'w', VEX_ZMT_WWN}, {'p', VEX_ZMT_DOMAIN_PORT}, {'f', VEX_ZMT_FCID}, {'a', VEX_ZMT_ALIAS}};

/** The configuration session. */
const std::map<std::string, int (*)()> kCommands = {
    {"reqAdminMode", reqAdminMode},     {"getConfigEditMode", getConfigEditMode},
    {"saveConfigEdit", saveConfigEdit}, {"cancelConfigEdit", cancelConfigEdit},
    {"backupConfig", backupConfig},     {"restoreConfig", restoreConfig},
};

/** Zoning edits; a, b and c are the words behind the name. */
using ZoningCall = long (*)(ZoningCache& zoning, char* a, char* b, char* c);
using Z = ZoningCache;
template <auto F>
struct Call {
    static long none(Z& zoning, char*, char*, char*) { return (zoning.*F)(); }
    static long one(Z& zoning, char* a, char*, char*) { return (zoning.*F)(a); }
    static long two(Z& zoning, char* a, char* b, char*) { return (zoning.*F)(a, b); }
    static long member(Z& zoning, char* a, char* b, char* c) {
        return (zoning.*F)(a, kMemberTypes.at(*b), c);
    }
};
const std::map<std::string, ZoningCall> kZoningCalls = {
    {"ZoningLock", Call<&Z::ZoningLock>::one},
    {"ZoningUnlock", Call<&Z::ZoningUnlock>::none},
    {"createZoneAlias", Call<&Z::createZoneAlias>::one},
    {"createZoneset", Call<&Z::createZoneset>::one},
    {"removeZoneAlias", Call<&Z::removeZoneAlias>::one},
    {"removeZone", Call<&Z::removeZone>::one},
    {"removeZoneset", Call<&Z::removeZoneset>::one},
    {"addZoneToZoneset", Call<&Z::addZoneToZoneset>::two},
    {"removeZoneFromZoneset", Call<&Z::removeZoneFromZoneset>::two},
    {"addMemberToZone", Call<&Z::addMemberToZone>::member},
    {"removeMemberFromZone", Call<&Z::removeMemberFromZone>::member},
    {"addMemberToZoneAlias", Call<&Z::addMemberToZoneAlias>::member},
    {"removeMemberFromZoneAlias", Call<&Z::removeMemberFromZoneAlias>::member},
    {"replaceZoningDB", Call<&Z::replaceZoningDB>::none},
    {"createZone",
     [](Z& zoning, char* a, char* b, char*) -> long {
         return zoning.createZone(a, Z::cnvCIMZoneTypeToVEX(std::atoi(b)));
     }},
    {"removeMember",
     [](Z& zoning, char* a, char* b, char*) -> long { return zoning.removeMember(kMemberTypes.at(*a), b); }},
    {"LockIdOK",
     [](Z& zoning, char* a, char*, char*) -> long {
         bool expired = false;
         return zoning.LockIdOK(a, expired) ? 1 : expired ? -1 : 0;
     }},
    {"dump", [](Z& zoning, char*, char*, char*) -> long { return zoning.dump(), 0; }},
};

/** The numbers up to 2^16 that have a word, five a line, in front of the first what they are. */
std::string wordsOf(datacache::CimValue what) {
    const std::string none = datacache::cimWord(what, 0xFFFF);
    std::string text = "of " + std::to_string(static_cast<int>(what)) + ": ";
    for (uint32_t value = 0, found = 0; value < 0x10000; ++value) {
        const std::string word = datacache::cimWord(what, value);
        if (word == none) continue;
        text += (found == 0 ? "" : found % 5 == 0 ? "\n" : ", ") + std::to_string(value) + ' ' + word;
        ++found;
    }
    return text;
}

class Golden : public CacheTest, public ::testing::WithParamInterface<std::string> {
  protected:
    Golden() {
        story = &_story;
        observeLog(tellLog, nullptr);
    }
    ~Golden() override { observeLog(nullptr, nullptr); }

    /** Carries out the whole file; gives it as it should read. */
    std::string run(std::istream& file);

  private:
    /** Gives the answer, if there is one. */
    std::string carryOut(const std::string& command, Words words);

    Story _story;
    std::string _switch;
};

std::string Golden::carryOut(const std::string& command, Words words) {
    words.resize(std::max<size_t>(words.size(), 3));
    if (command == "start") {
        load(_switch);
        peer().callback = tellEvent;
        settle();
    } else if (command == "settle") {
        settle();
    } else if (command == "pass") {
        return pass() ? "ready" : "not ready";
    } else if (command == "readAccounts") {
        return cache().readAccounts() ? "read" : "not read";
    } else if (command == "set") {
        sim.set(words[0], words[1]);
    } else if (command == "step") {
        std::string fields;
        for (const std::string& word : words) fields += word + ' ';
        step("step = [" + fields + ']');
    } else if (command == "show") {
        std::ostringstream out;
        host::printAreas(out, host::readAreas(words[0]), false);
        return out.str().substr(out.str().find('\n') + 1);  // its heading is the command
    } else if (command == "words") {                        // for the numbers of the cache's records
        std::string all;
        for (int what = 0; what < 10; ++what) all += wordsOf(static_cast<datacache::CimValue>(what)) + '\n';
        return all;
    } else if (command == "updateSwitch") {
        cache().updateSwitch();
    } else if (command == "updateFabric") {
        cache().updateFabric();
    } else if (const auto configure = kCommands.find(command); configure != kCommands.end()) {
        return std::to_string(configure->second());
    } else if (const auto zoning = kZoningCalls.find(command); zoning != kZoningCalls.end()) {
        const datacache::CacheReader reader;
        return std::to_string(
            zoning->second(reader->zoningCache(), words[0].data(), words[1].data(), words[2].data()));
    } else {
        ADD_FAILURE() << "unknown command " << command;
    }
    return "";
}

std::string Golden::run(std::istream& file) {
    std::string result;
    const auto put = [&result](const std::string& line) { result += line + '\n'; };
    for (std::string line; std::getline(file, line);) {
        const bool isSwitch = result.find('@') == std::string::npos && line[0] != '@';
        if (isSwitch) _switch += line + '\n';
        if (isSwitch || line[0] == '@') put(line);
        if (line[0] != '@') continue;
        std::istringstream command(line.substr(1));
        Words words{std::istream_iterator<std::string>(command), {}};
        std::string view;  // how much of it is told
        if (const std::string& word = words.at(0); word == "quiet" || word == "brief" || word == "trace") {
            view = word;
            words.erase(words.begin());
        }
        std::istringstream answer(carryOut(words.at(0), {words.begin() + 1, words.end()}));
        Words told = _story.take();
        const auto hidden = [&](const std::string& one) {
            return view == "quiet" || (view == "brief" && one[0] != '!') ||
                   (words[0] == "show" && view != "trace") || one == "! DCEventDataCacheUpdateComplete";
        };
        told.erase(std::remove_if(told.begin(), told.end(), hidden), told.end());
        if (told.size() > 1 && told.back() == "| evaluateCaches") told.pop_back();
        std::for_each(told.begin(), told.end(), put);
        for (std::string one; std::getline(answer, one) && view.empty();) put("= " + one);
    }
    return result;
}

TEST_P(Golden, Run) {
    const std::string path = std::string(GOLDEN_DIR) + '/' + GetParam() + ".txt";
    std::stringstream wanted;
    wanted << std::ifstream(path).rdbuf();
    const std::string had = run(wanted);
    ASSERT_FALSE(had.empty());
    EXPECT_EQ(sim.live().texts, 0U);
    if (std::getenv("GOLDEN_UPDATE") != nullptr)
        std::ofstream(path) << had;
    else
        EXPECT_EQ(had, wanted.str()) << path << ": the run and the file";
}

std::vector<std::string> goldenNames() {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(GOLDEN_DIR)) {
        if (file.path().extension() == ".txt") names.push_back(file.path().stem());
    }
    std::sort(names.begin(), names.end());
    return names;
}

INSTANTIATE_TEST_SUITE_P(Area, Golden, ::testing::ValuesIn(goldenNames()),
                         [](const auto& golden) { return golden.param; });

}  // namespace
