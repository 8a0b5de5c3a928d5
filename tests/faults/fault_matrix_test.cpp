#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/faults/operations.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheState.h"
#include "tests/support/lines.h"
#include "tests/support/zoning_limits.h"

/*
 * Every call of every loader, edit and plain function fails once in every way. Which calls there are the
 * transcript of a run without failures tells. What holds for every failure is expected below; what differs
 * from place to place is text, in fault_matrix.txt:
 *
 *     [operation]
 *     call and ways to fail: what is different from the run without a failure
 *
 * where "call" stands for all results, "key" for all statuses and "any" for any call, with F for the call,
 * K for the key, R for the result or status, and # for numbers. Equal lines are shown once. A run with
 * FAULT_MATRIX_WRITE=1 writes the file anew; read what git then shows.
 */
namespace {

using datacache::AreaHealth;
using datacache::CacheArea;
using Calls = std::vector<vexsim::Call>;

const std::string kSwitch = R"(
switch = {wwn = "1000001122AABBCC"}
accounts = {users = ["admin", "guest"]}
chassis = {power_supplies = 1, fans = 1, slots = 2, enhanced_fault_monitoring = true}
blade = [{slot = 0, type = "CPU"}, {slot = 1, type = "IO"}]
ports = {count = 2}
name_server = [{port = 3, wwns = ["2100001122000001", "2100001122000002"]}]
[fabric]
switch = [{domain = 7, wwn = "1000001122000007", ports = 2}, {domain = 8, wwn = "1000001122000008"}]
[zoning]
active = "alpha"
alias = [{name = "a1", members = ["2000001122000001"]}]
zone = [{name = "z1", members = ["2000001122000003", "a1"]}, {name = "z2", type = "HardACL", members = ["1,2"]}]
zoneset = [{name = "alpha", zones = ["z1"]}, {name = "beta", zones = ["z1"]}]
)" + limitsText();

/** One way for one call to fail. */
struct Fault {
    std::string name;    ///< of the way
    std::string fields;  ///< of the step "fault"
    std::string number;  ///< the result or status, for R
    std::string key;     ///< that it hits; the call's first for a call
    bool value = false;  ///< the call gives something unexpected and does not fail
};

struct Seen {
    Lines result, log, events, state;
    Calls calls;
    std::string rights;
    datacache::Health health = DataCache::health();  ///< before it
};

Lines split(const std::string& text, char separator) {
    Lines parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

/** What `all` has more than `some`. */
Lines without(Lines all, const Lines& some) {
    for (const std::string& line : some) {
        const auto found = std::find(all.begin(), all.end(), line);
        if (found != all.end()) all.erase(found);
    }
    return all;
}

std::string replaced(const std::string& text, const std::string& pattern, const std::string& by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

bool has(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

bool isSml(const vexsim::Call& call) {
    return has(call.function, "vex_sml");
}

class FaultMatrix : public FaultedCache {
  protected:
    /** That succeed before one fails; reset where the run asked for no more. */
    std::optional<size_t> allocations;

    void restartFor(const Operation& operation) {
        session.reset();
        adminModeHeld = 0;
        restart();
        useOther = false;
        load(kSwitch);
        other = 0;
        vex_IPConnect("localhost", "test", "", &other);
        takeEvaluationRequests();
        if (operation.name != kFirstLoad && operation.kind != Kind::Plain) {
            pass();
            cache().updateSwitch();  // which now takes the chassis's faults in
            pass();
        }
        if (operation.begin) operation.begin(*this);
        sim.run(operation.change);
        allEvents();
        log();
        sim.clearTranscript();
    }

    Seen carryOut(const Operation& operation, const std::vector<Fault>& faults) {
        restartFor(operation);
        for (const Fault& fault : faults) step("do = 'fault'\n" + fault.fields);
        Seen run;
        run.health = DataCache::health();
        {
            Allocations memory;
            if (allocations) memory.failAfter(*allocations);
            try {
                run.result = operation.run(*this);
            } catch (const std::bad_alloc&) {
            }
            if (allocations && memory.count() <= *allocations) allocations.reset();
        }
        run.calls = sim.transcript();
        run.log = log();
        run.events = events();
        step("do = 'clear_faults'");
        for (const vexsim::Call& call : run.calls)
            EXPECT_TRUE(call.handle == 0 || call.handle == (useOther ? other : hSwitch)) << call.function;
        EXPECT_EQ(sim.live().misuse, misuse);
        EXPECT_TRUE(lockIsFree());
        if (operation.kind != Kind::Loader) run.rights = rights();
        for (void* text : std::exchange(owned, {})) vex_libFreeMemory(text);
        run.state = cacheState();
        return run;
    }

    /** Who holds admin rights and the fabric's lock, asked on another connection. */
    std::string rights() {
        uint32_t asking = 0;
        vex_IPConnect("localhost", "test", "", &asking);
        const auto refused = [&](const char* command) {
            void* reply = nullptr;
            return vex_smlSet(asking, command, &reply) != 0;
        };
        std::string held = refused("Cmd.Switch.ReqAdmin") ? " admin" : "";
        step("do = 'admin'\nshared = true");
        refused("Cmd.Switch.ReqAdmin");
        if (refused("Cmd.Zoning.FabricLock.77")) held += " lock";
        return held + (adminModeHeld != 0 ? " adminModeHeld" : "");
    }

    /** Nothing outlives the cache but texts whose release failed. */
    void expectNoLeak(const Calls& calls) {
        session.reset();
        delete std::exchange(DataCache::instance, nullptr);
        const vexsim::Live live = sim.live();
        EXPECT_EQ(live.zonesets + live.zones + live.aliases + live.members, 0U);
        const auto kept = std::count_if(calls.begin(), calls.end(), [](const auto& call) {
            return call.function == "vex_libFreeMemory" && call.result != 0;
        });
        EXPECT_EQ(live.texts, static_cast<size_t>(kept));
    }

    /**
     * Destruction cannot fail but by a leak. Of the many calls for one zoning object the first and the last
     * of a kind are enough.
     */
    static bool isWorthFailing(const Calls& calls, size_t index) {
        const vexsim::Call& call = calls[index];
        if (isSml(call) || has(call.function, "vex_fzs")) return true;
        const auto same = [&](const vexsim::Call& another) {
            return another.function == call.function && another.detail == call.detail;
        };
        const auto at = calls.begin() + static_cast<long>(index);
        const bool first = std::none_of(calls.begin(), at, same);
        const bool last = std::none_of(at + 1, calls.end(), same);
        return (first || last) && !has(call.function, "Destroy");
    }

    /** The ways in which call `index` of a run can fail; the first alone where others fail too. */
    static std::vector<Fault> waysToFail(const Operation& operation, const Calls& calls, size_t index,
                                         size_t depth) {
        const vexsim::Call& call = calls[index];
        const Lines keys = isSml(call) ? split(call.detail, ',') : Lines{""};
        const std::string nth = "function = '*'\nskip = " + std::to_string(index) + '\n';
        const std::string usual = std::to_string((isSml(call) ? 4093 : 6) + depth);
        std::vector<Fault> ways{{"call", nth + "result = " + usual, usual, keys[0]}};
        if (depth > 0) return ways;
        const char* const lowest = "-2147483648";
        ways.push_back({"call", nth + "result = " + lowest, lowest, keys[0]});
        if (isSml(call)) ways.push_back({"call=103", nth + "result = 103", "103", keys[0]});
        const std::string& f = call.function;
        const bool reads = isSml(call) ? operation.kind == Kind::Loader || operation.name == kWalkers
                                       : f == "vex_fzsGetZonesetList";
        if (f == "vex_smlGet" || (has(f, "vex_fzsGet") && !has(f, "Name") && !has(f, "List")))
            ways.push_back({"null", nth + "null = true", "0", keys[0], true});
        for (const std::string& key : std::set<std::string>(keys.begin(), keys.end())) {
            const auto holds = [&](const vexsim::Call& earlier) {
                return has(',' + earlier.detail + ',', (',' + key + ',').c_str());
            };
            const auto skip = std::count_if(calls.begin(), calls.begin() + static_cast<long>(index), holds);
            const std::string hit =
                key.empty() ? nth
                            : "function = '*'\nkey = '" + key + "'\nskip = " + std::to_string(skip) + '\n';
            const auto status = [&](const char* name, const std::string& number) {
                ways.push_back({name, hit + "status = " + number, number, key});
            };
            if (isSml(call)) {
                status("key", "4093");
                status("key=24", "24");
                status("key=103", "103");
            }
            if (!reads) continue;
            ways.push_back({"junk", hit + "value = '%n aBc 1'", "0", key, true});
            ways.push_back({"long", hit + "unterminated = true", "0", key, true});
            if (operation.name != kWalkers) ways.push_back({"empty", hit + "value = ''", "0", key, true});
        }
        return ways;
    }

    /** "smlGetBatch Oper.Blade.#.OperState +7" */
    static std::string shortName(const vexsim::Call& call) {
        const std::string name = call.function.substr(4) + (call.detail.empty() ? "" : ' ' + call.detail);
        if (!isSml(call)) return name;
        static std::map<std::string, std::string> known;
        std::string& shorter = known[name];
        const auto more = std::count(name.begin(), name.end(), ',');
        if (shorter.empty())
            shorter = replaced(name.substr(0, name.find(',')), "\\.\\d+", ".#") +
                      (more == 0 ? "" : " +" + std::to_string(more));
        return shorter;
    }

    static std::string normal(std::string text, const std::vector<Fault>& faults) {
        for (const Fault& fault : faults) {
            if (!fault.key.empty() && has(text, fault.key.c_str()))
                text = replaced(text, "\\b" + fault.key + "\\b", "K");
            if (fault.value) continue;
            std::ostringstream number;
            number << fault.number.substr(fault.number[0] == '-' ? 1 : 0) << '|' << std::hex
                   << static_cast<unsigned>(std::stoll(fault.number));
            text =
                replaced(text, "(\\b0x|-?\\b)(" + number.str() + ")\\b", &fault == &faults[0] ? "R" : "R2");
        }
        if (has(text, "Zon")) text = replaced(text, "\\[\\d+", "[#");  // lines of the source
        return has(text, "##") ? replaced(text, "#+", "#") : text;
    }

    std::string effect(const Seen& good, const Seen& run, const Lines& before,
                       const std::vector<Fault>& faults) {
        Lines parts = without(run.result, good.result);
        static const std::regex untold("DCACHE: (zsl =|sml command=')|OK = false|added, ");
        for (const std::string& line : without(run.log, good.log)) {
            if (!std::regex_search(line, untold))
                parts.push_back('[' + line.substr(line.find("DCACHE: ") == 2 ? 10 : 2) + ']');
        }
        // The calls that say something to the switch, or release what it gave.
        const auto requests = [](const Seen& of) {
            Lines lines;
            for (const vexsim::Call& call : of.calls) {
                if (isSml(call) || has(call.function, "vex_fzs") || call.function == "vex_libFreeMemory")
                    lines.push_back(shortName(call));
            }
            return lines;
        };
        const Lines calls = requests(run), usual = requests(good);
        const Lines more = without(calls, usual);
        if (!more.empty()) parts.push_back("calls " + joined(more, ", "));
        if (parts.empty() && run.rights == good.rights) return "";
        if (calls.size() - more.size() < usual.size()) parts.push_back("stops");
        if (run.state != good.state) parts.push_back(run.state == before ? "kept" : "mixed");
        if (run.rights != good.rights) parts.push_back("holds" + run.rights);
        parts.erase(std::unique(parts.begin(), parts.end()), parts.end());
        return normal(joined(parts, "; "), faults);
    }

    /** What every loader that failed, or went without a key, leaves behind, and that the next pass mends it.
     */
    std::string expectMended(const Operation& operation, const Seen& good, const Seen& run,
                             const Fault& fault, const vexsim::Call& call) {
        const bool accounts = operation.name == kAccounts;
        const bool endOfList = accounts && fault.name == "key=24";
        const bool reading = (isSml(call) || has(call.function, "vex_fzs")) && !endOfList && !fault.value;
        const datacache::Health health = DataCache::health();
        size_t told = 0;
        bool failed = false;
        for (size_t i = 0; i < datacache::kCacheAreas; ++i) {
            const auto index = static_cast<CacheArea>(i);
            const AreaHealth &area = health[index], &was = run.health[index];
            const bool thisFailed = area.failures != was.failures;
            failed = failed || thisFailed;
            EXPECT_EQ(area.marked, thisFailed || (area.marked && was.marked));
            if (thisFailed && static_cast<CacheArea>(i) != CacheArea::Accounts) {
                EXPECT_FALSE(area.upToDate);
                EXPECT_TRUE(cache().workToDo());
                EXPECT_FALSE(cache().isCacheReady());
            }
            if (fault.value || (!thisFailed && area.gaps == was.gaps)) continue;
            ++told;
            const datacache::ReadFailure& failure = thisFailed ? area.lastFailure : area.firstGap;
            EXPECT_EQ(failure.key, isSml(call) ? fault.key : failure.key);
            EXPECT_EQ(failure.call, call.function);
            EXPECT_NE(failure.time, datacache::WallTime());
            EXPECT_EQ(area.failuresInARow, thisFailed ? 1U : 0U);
            EXPECT_EQ(static_cast<uint32_t>(failure.status), static_cast<uint32_t>(std::stoll(fault.number)));
            const std::string line =
                "2 DCACHE: Cache update failed: DataCache:" + std::string(failure.function) + ':' +
                std::to_string(failure.line);
            const bool complains = thisFailed && failure.line != 0;
            EXPECT_EQ(std::count(run.log.begin(), run.log.end(), line), complains ? 1 : 0);
        }
        EXPECT_EQ(told, reading ? 1U : 0U) << "health names it";
        // What the first load learns of an area it does not take up where an area before it failed.
        const bool first = operation.name == kFirstLoad;
        if (first && failed) pass();
        if (first || !failed) again(!reading);
        EXPECT_TRUE(pass());
        if (accounts) cache().readAccounts();
        // Required: an active zoneset that could not be read is not asked for again before it changes.
        if (call.function == "vex_fzsGetActiveZoneset") {
            for (const char* change :
                 {"do = 'zoneset_deactivate'", "do = 'zoneset_activate'\nname = 'alpha'"}) {
                step(change);
                again(false);
                pass();
            }
        }
        EXPECT_EQ(cacheState(), good.state) << "mended";
        Lines events = run.events;
        for (const std::string& event : this->events()) events.push_back(event);
        std::string text;
        const auto tell = [&text](const char* what, const Lines& lines) {
            for (const std::string& line : lines) text += what + line.substr(0, line.find(' '));
        };
        tell("; loses ", without(good.events, events));
        tell("; adds ", without(events, good.events));
        return reading ? text : "";
    }

    /** Marks everything but the zoning that is loaded already, or that too. */
    void again(bool zoning) {
        const AccessGuard guard;
        cache().updateAll();
        cache().localPortRefreshSet();
        if (zoning) cache().reloadZoning();
        takeEvaluationRequests();
    }

    /** Adds what each failure of a call from `from` on comes to, after those of `faults`. */
    void failEach(const Operation& operation, const Seen& good, const Lines& before, const Seen& run,
                  size_t from, const std::vector<Fault>& faults, const std::string& known, Lines& table) {
        const bool loads = operation.kind == Kind::Loader;
        for (size_t index = from; index < run.calls.size(); ++index) {
            const vexsim::Call& call = run.calls[index];
            if (!isWorthFailing(run.calls, index)) continue;
            std::map<std::string, Lines> ways;  // by effect
            Lines deeper;
            const std::vector<Fault> list = waysToFail(operation, run.calls, index, faults.size());
            for (const Fault& fault : list) {
                // Required: a name of port 0 that the first load reads stays the base of the local switch's.
                if (operation.name == kFirstLoad && fault.value) continue;
                SCOPED_TRACE(operation.name + ' ' + call.function + ' ' + call.detail + ' ' + fault.fields);
                std::vector<Fault> all = faults;
                all.push_back(fault);
                const Seen failing = carryOut(operation, all);
                std::string text = effect(good, failing, before, all);
                if (loads) text += expectMended(operation, good, failing, fault, call);
                expectNoLeak(failing.calls);
                if (HasFailure()) return;
                if (loads && (fault.value || operation.name == kFirstLoad)) continue;
                if (operation.alike)
                    text = text.empty() ? "nothing of " + call.function : replaced(text, call.function, "F");
                if (text == known || text.empty()) continue;
                Lines& names = ways[text];  // "call" and "key" stand for all of theirs
                const std::string kind = fault.name.substr(0, fault.name.find('='));
                if (std::count(names.begin(), names.end(), kind) == 0 &&
                    std::count(names.begin(), names.end(), fault.name) == 0)
                    names.push_back(fault.name);
                if (operation.twice && faults.empty() && &fault == &list.front())
                    failEach(operation, good, before, failing, index + 1, all, text, deeper);
            }
            const std::string name =
                std::string(faults.size() * 2, ' ') + (operation.alike ? "any" : shortName(call)) + ' ';
            for (const auto& [text, names] : ways) {
                const std::string line = name + joined(names, ",") + ": " + text;
                const std::string nothing = name + "call: nothing of ";
                const bool more =
                    !table.empty() && line.rfind(nothing, 0) == 0 && table.back().rfind(nothing, 0) == 0;
                if (more && !has(table.back() + ',', (' ' + call.function + ',').c_str()))
                    table.back() += ", " + call.function;
                else if (!more && std::count(table.begin(), table.end(), line) == 0)
                    table.push_back(line);
            }
            table.insert(table.end(), deeper.begin(), deeper.end());
        }
    }
};

TEST_F(FaultMatrix, EveryCallFailsInEveryWay) {
    std::string table;
    for (const Operation& operation : operations()) {
        restartFor(operation);
        const Lines before = cacheState();
        Seen good = carryOut(operation, {});
        if (operation.kind == Kind::Loader) {  // what a second pass finds is what a failure must come to
            again(true);
            pass();
            if (operation.name == kFirstLoad) good.state = cacheState();
            EXPECT_EQ(cacheState(), good.state) << operation.name;
        }
        expectNoLeak(good.calls);
        Lines lines;
        failEach(operation, good, before, good, 0, {}, "", lines);
        table += '[' + operation.name + "]\n" + joined(lines, "\n") + '\n';
        if (HasFailure()) break;
    }
    if (std::getenv("FAULT_MATRIX_WRITE") != nullptr) std::ofstream(FAULT_MATRIX) << table;
    std::stringstream golden;
    golden << std::ifstream(FAULT_MATRIX).rdbuf();
    EXPECT_EQ(table, golden.str());
}

TEST_F(FaultMatrix, EveryAllocationFails) {
    for (const Operation& operation : operations()) {
        if (operation.kind == Kind::Plain) continue;
        const bool loads = operation.kind == Kind::Loader;
        restartFor(operation);
        const Lines before = cacheState();
        const Seen good = carryOut(operation, {});
        if (loads) again(true);
        if (loads) pass();
        const Lines state = cacheState();
        for (size_t next = 0;; next += 1 + next / 5) {
            SCOPED_TRACE(operation.name + ' ' + std::to_string(next));
            allocations = next;
            const Seen run = carryOut(operation, {});
            if (!allocations) break;
            EXPECT_TRUE(operation.name != kAccounts || run.state == before) << "the accounts stay whole";
            for (int passes = 0; loads && passes < 2;
                 ++passes) {  // the second takes in what the chassis tells
                again(true);
                EXPECT_TRUE(pass());
            }
            if (operation.name == kAccounts) cache().readAccounts();
            EXPECT_TRUE(!loads || cacheState() == state);
            expectNoLeak(run.calls);
            if (HasFailure()) return;
        }
        EXPECT_EQ(cacheState(), good.state) << "with memory for all that it asks for";
    }
}

}  // namespace
