#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>

#include "datacache/CacheReader.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheState.h"
#include "tests/support/CacheTest.h"
#include "zoning/ZoningSession.h"
#include "zoning/member_text.h"

/*
 * Every call of every loader, edit and plain function fails once in every way. Which calls there are the
 * transcript of a run without failures tells. What holds for every failure is expected below; what differs
 * from place to place is text, in fault_matrix.txt:
 *
 *     [operation]
 *     call and ways to fail: what is different from the run without a failure
 *
 * where "call" stands for all results, "key" for all statuses and a star for a line that tells of the key,
 * with K for the key, R for the result or status, and # for numbers. Equal lines are shown once. A run with
 * FAULT_MATRIX_WRITE=1 writes the file anew; read what git then shows.
 */
namespace {

using datacache::AreaHealth;
using datacache::CacheArea;
using datacache::ZoningSession;
using Lines = std::vector<std::string>;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
domain = 1
[accounts]
users = ["admin", "guest"]
[chassis]
power_supplies = 1
fans = 1
slots = 2
enhanced_fault_monitoring = true
[[blade]]
slot = 0
type = "CPU"
[[blade]]
slot = 1
type = "IO"
[ports]
count = 2
[fabric]
switch = [{domain = 7, wwn = "1000001122000007", ports = 2}, {domain = 8, wwn = "1000001122000008"}]
[[name_server]]
port = 3
wwns = ["2100001122000001", "2100001122000002"]
[zoning.limits]
zonesets = 20
zones = 20
members = 400
zones_per_zoneset = 20
members_per_zone = 20
aliases = 20
members_per_alias = 20
[zoning]
active = "alpha"
[[zoning.alias]]
name = "a1"
members = ["2000001122000001"]
[[zoning.zone]]
name = "z1"
members = ["2000001122000003", "a1"]
[[zoning.zone]]
name = "z2"
type = "HardACL"
members = ["1,2"]
[[zoning.zoneset]]
name = "alpha"
zones = ["z1"]
[[zoning.zoneset]]
name = "beta"
zones = ["z1"]
)";

const char* const kFirstLoad = "first load";
const char* const kAccounts = "accounts";
const char* const kLimits = "limits";
const char* const kWalkers = "walkers";

class FaultMatrix;
using Action = std::function<void(FaultMatrix&)>;

struct Operation {
    const char* name;
    const char* change;  ///< steps at the switch before it
    Action begin;        ///< what comes before it and does not fail
    std::function<Lines(FaultMatrix&)> run;
    bool loads = false;    ///< it reads areas of the cache
    int atOnce = 1;        ///< how many of its calls fail in one run
    bool isPlain = false;  ///< functions for C, which ask for no memory but that of a group
    bool alike = false;    ///< its calls are many of one kind, whose failures are told once
};

/** One way for one call to fail. */
struct Fault {
    std::string name;    ///< of the way
    std::string fields;  ///< of the step "fault"
    std::string number;  ///< the result or status, for R
    std::string key;     ///< that it hits; the call's first for a call
    bool value = false;  ///< the call gives something unexpected and does not fail
    bool again = false;  ///< another call may fail too
};

struct Seen {
    Lines result, log, events, state;
    std::vector<vexsim::Call> calls;
    std::string rights;
    datacache::Health health;  ///< before it
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

std::string joined(const Lines& lines, const char* separator = " ") {
    std::string text;
    for (const std::string& line : lines) text += (text.empty() ? "" : separator) + line;
    return text;
}

bool isSml(const vexsim::Call& call) {
    return call.function.compare(0, 7, "vex_sml") == 0;
}

/** With # for every number behind that character. */
std::string withoutNumbers(const std::string& text, char before) {
    std::string made;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
        if (digit && !made.empty() && made.back() == before) made += '#';
        if (!digit || made.empty() || made.back() != '#') made += text[i];
    }
    return made;
}

bool has(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

class FaultMatrix : public CacheTest {
  public:
    using CacheTest::cache;
    using CacheTest::pass;
    using CacheTest::peer;
    using CacheTest::sim;

    uint32_t other = 0;        ///< a second connection, which is not hSwitch
    bool useOther = false;     ///< the operation is asked to use it
    std::vector<void*> owned;  ///< texts that the operation handed over
    std::unique_ptr<ZoningSession> session;
    ZoningCache& zoning() { return datacache::CacheReader().zoning(); }
    void step(const std::string& fields) { sim.run("[[step]]\n" + fields); }

  protected:
    std::optional<size_t>
        allocations;  ///< that succeed before one fails; reset where the run asked for no more

    void restartFor(const Operation& operation) {
        session.reset();
        adminModeHeld = 0;
        restart();
        useOther = false;
        load(kSwitch);
        other = 0;
        vex_IPConnect("localhost", "test", "", &other);
        takeEvaluationRequests();
        if (operation.name != kFirstLoad && !operation.isPlain) pass();
        if (operation.name != kFirstLoad && operation.loads) {
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
        if (allocations) {
            Allocations memory;
            memory.failAfter(*allocations);
            try {
                run.result = operation.run(*this);
            } catch (const std::bad_alloc&) {
            }
            if (memory.count() <= *allocations) allocations.reset();
        } else {
            run.result = operation.run(*this);
        }
        run.calls = sim.transcript();
        run.log = log();
        run.events = events();
        step("do = 'clear_faults'");
        for (const vexsim::Call& call : run.calls)
            EXPECT_TRUE(call.handle == 0 || call.handle == (useOther ? other : hSwitch)) << call.function;
        EXPECT_EQ(sim.live().misuse, misuse);
        EXPECT_TRUE(lockIsFree());
        if (!operation.loads) run.rights = rights();
        for (void* text : std::exchange(owned, {})) vex_libFreeMemory(text);
        run.state = cacheState();
        expectNoLeak(run.calls);
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

    /** Nothing is held but what the cache reaches, and texts whose release failed. */
    void expectNoLeak(const std::vector<vexsim::Call>& calls) {
        const datacache::ZoningDatabase zoning = this->zoning().database();
        vexsim::Live reached;
        const auto count = [&](const auto& holder) {
            ++reached.zonesets;
            reached.zones += holder.zones.size();
            reached.aliases += holder.aliases.size();
            for (const auto& zone : holder.zones) reached.members += zone.members.size();
            for (const auto& alias : holder.aliases) reached.members += alias.members.size();
        };
        for (const auto& zoneset : zoning.zonesets) count(zoneset);
        if (this->zoning().getUberZoneset() != nullptr) count(zoning);
        const vexsim::Live live = sim.live();
        EXPECT_EQ(live.zonesets, reached.zonesets);
        EXPECT_EQ(live.zones, reached.zones);
        EXPECT_EQ(live.aliases, reached.aliases);
        EXPECT_EQ(live.members, reached.members);
        EXPECT_EQ(live.texts,
                  static_cast<size_t>(std::count_if(calls.begin(), calls.end(), [](const auto& call) {
                      return call.function == "vex_libFreeMemory" && call.result != 0;
                  })));
    }

    /**
     * Destruction cannot fail but by a leak. Of the many calls for one zoning object the first and the last
     * of a kind are enough.
     */
    static bool isWorthFailing(const std::vector<vexsim::Call>& calls, size_t index) {
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

    /** The ways in which call `index` of a run can fail. */
    static std::vector<Fault> waysToFail(const Operation& operation, const std::vector<vexsim::Call>& calls,
                                         size_t index, size_t depth) {
        const vexsim::Call& call = calls[index];
        const Lines keys = isSml(call) ? split(call.detail, ',') : Lines{""};
        const std::string nth = "function = '*'\nskip = " + std::to_string(index) + '\n';
        std::vector<Fault> ways;
        const auto fail = [&](const std::string& name, const std::string& effect, const std::string& number) {
            ways.push_back({name, nth + effect + number, number, keys[0]});
        };
        fail("call", "result = ", std::to_string((isSml(call) ? 4093 : 6) + depth));
        ways.back().again = true;
        if (depth > 0) return ways;
        if (isSml(call)) fail("call", "result = ", "-4093");
        fail("call", "result = ", "-2147483648");
        if (isSml(call))
            for (const char* number : {"24", "103"}) fail(std::string("call=") + number, "result = ", number);
        const std::string& f = call.function;
        const bool reads =
            isSml(call) ? operation.loads || operation.name == kWalkers : f == "vex_fzsGetZonesetList";
        if (f == "vex_smlGet" || (has(f, "vex_fzsGet") && !has(f, "Name") && !has(f, "List")))
            ways.push_back({"null", nth + "null = true", "0", keys[0], true});
        for (const std::string& key : std::set<std::string>(keys.begin(), keys.end())) {
            const auto holds = [&](const vexsim::Call& earlier) {
                const Lines all = split(earlier.detail, ',');
                return std::find(all.begin(), all.end(), key) != all.end();
            };
            const auto skip = std::count_if(calls.begin(), calls.begin() + static_cast<long>(index), holds);
            const std::string hit =
                key.empty() ? nth
                            : "function = '*'\nkey = '" + key + "'\nskip = " + std::to_string(skip) + '\n';
            if (isSml(call))
                for (const std::string number : {"4093", "2147483648", "24", "103"})
                    ways.push_back({"key" + (number.size() > 3 ? "" : '=' + number),
                                    hit + "status = " + number, number, key, false, number == "4093"});
            if (!reads) continue;
            ways.push_back({"junk", hit + "value = '%n aBc 1'", "0", key, true});
            if (f == "vex_smlGet") continue;  // whose texts are whole
            if (operation.loads) ways.push_back({"empty", hit + "value = ''", "0", key, true});
            ways.push_back({"long", hit + "unterminated = true", "0", key, true});
        }
        return ways;
    }

    /** "smlGetBatch Oper.Blade.#.OperState +7" */
    static std::string shortName(const vexsim::Call& call) {
        const Lines keys = isSml(call) ? split(call.detail, ',') : Lines{call.detail};
        std::string name = call.function.substr(4) + (call.detail.empty() ? "" : ' ' + keys[0]);
        if (isSml(call)) name = withoutNumbers(name, '.');
        return name + (keys.size() > 1 ? " +" + std::to_string(keys.size() - 1) : "");
    }

    static std::string normal(std::string text, const std::vector<Fault>& faults) {
        const auto replace = [&text](const std::string& part, const char* by) {
            for (size_t at = 0; !part.empty() && (at = text.find(part, at)) != std::string::npos; ++at) {
                const size_t end = at + part.size();
                if (end < text.size() && std::isalnum(static_cast<unsigned char>(text[end])) != 0) continue;
                if (at > 0 && std::isalnum(static_cast<unsigned char>(text[at - 1])) != 0) continue;
                text.replace(at, part.size(), by);
            }
        };
        for (size_t i = 0; i < faults.size(); ++i) {
            const Fault& fault = faults[i];
            const char* const r = i == 0 ? "R" : i == 1 ? "R2" : "R3";
            replace(fault.key, "K");
            if (fault.value) continue;
            char hex[16];
            std::snprintf(hex, sizeof hex, "%x", static_cast<unsigned>(std::stoll(fault.number)));
            for (const char* prefix : {"0x", "-", ""}) replace(prefix + std::string(hex), r);
            replace(std::to_string(static_cast<int32_t>(std::stoll(fault.number))), r);
            replace(fault.number, r);
            replace(std::to_string(static_cast<uint32_t>(std::stoll(fault.number))), r);
        }
        if (has(text, "Zon")) text = withoutNumbers(text, '[');  // lines of the source
        while (has(text, "####")) text.replace(text.find("####"), 4, "#");
        return text;
    }

    /** What isErrors() tells of a key. */
    static bool isKeyLine(const std::string& line) { return has(line, "DCACHE: sml command='"); }

    /** The calls that say something to the switch, or release what it gave. */
    static Lines requests(const Seen& run) {
        Lines lines;
        for (const vexsim::Call& call : run.calls) {
            if (isSml(call) || has(call.function, "vex_fzs") || call.function == "vex_libFreeMemory")
                lines.push_back(shortName(call));
        }
        return lines;
    }

    std::string effect(const Operation& operation, const Seen& good, const Seen& run, const Lines& before,
                       const std::vector<Fault>& faults) {
        Lines parts = without(run.result, good.result);
        for (const std::string& line : without(run.log, good.log)) {
            const bool counts = has(line, "DCACHE: zsl =") && operation.name != kLimits;
            if (!counts && !has(line, "OK = false") && !has(line, "added, ") && !isKeyLine(line))
                parts.push_back('[' + line.substr(line.find("DCACHE: ") == 2 ? 10 : 2) + ']');
        }
        const Lines calls = requests(run), usual = requests(good);
        const Lines more = without(calls, usual);
        if (!more.empty()) parts.push_back("calls " + joined(more, ", "));
        if (parts.empty() && run.rights == good.rights) return "";
        if (calls.size() - more.size() < usual.size()) parts.push_back("stops");
        if (run.state != good.state) parts.push_back(run.state == before ? "kept" : "mixed");
        if (run.rights != good.rights) parts.push_back("holds" + run.rights);
        Lines shown;
        for (size_t i = 0, last = 0; i < parts.size(); i = last) {
            while (last < parts.size() && parts[last] == parts[i]) ++last;
            shown.push_back(parts[i] + (last - i > 1 ? " x" + std::to_string(last - i) : ""));
        }
        return normal(joined(shown, "; "), faults);
    }

    /** What every loader that failed, or went without a key, leaves behind, and that the next pass mends it.
     */
    std::string expectMended(const Operation& operation, const Seen& good, const Seen& run,
                             const Fault& fault, const vexsim::Call& call) {
        const datacache::Health& before = run.health;
        const datacache::Health health = DataCache::health();
        size_t told = 0;
        bool failed = false;
        for (size_t i = 0; i < datacache::kCacheAreas; ++i) {
            const AreaHealth& area = health.areas[i];
            const bool thisFailed = area.failures != before.areas[i].failures;
            failed = failed || thisFailed;
            EXPECT_EQ(area.marked, thisFailed || (area.marked && before.areas[i].marked));
            if (thisFailed && static_cast<CacheArea>(i) != CacheArea::Accounts) {
                EXPECT_FALSE(area.upToDate);
                EXPECT_TRUE(cache().workToDo());
                EXPECT_FALSE(cache().isCacheReady());
            }
            const datacache::ReadFailure& failure = thisFailed ? area.lastFailure : area.firstGap;
            if (!thisFailed && area.gaps == before.areas[i].gaps) continue;
            if (fault.value) continue;
            ++told;
            EXPECT_EQ(failure.key, isSml(call) ? fault.key : failure.key);
            EXPECT_EQ(failure.call, call.function);
            EXPECT_NE(failure.time, datacache::WallTime());
            EXPECT_EQ(area.failuresInARow, thisFailed ? 1U : 0U);
            EXPECT_EQ(static_cast<uint32_t>(failure.status), static_cast<uint32_t>(std::stoll(fault.number)));
            if (!thisFailed) continue;
            const auto lines = std::count_if(run.log.begin(), run.log.end(), [](const std::string& line) {
                return has(line, "Cache update failed");
            });
            EXPECT_EQ(lines, failure.line == 0 ? 0 : 1);
            const std::string line =
                "2 DCACHE: Cache update failed: DataCache:" + std::string(failure.function) + ':' +
                std::to_string(failure.line);
            EXPECT_EQ(std::count(run.log.begin(), run.log.end(), line), lines);
        }
        const bool accounts = operation.name == kAccounts;
        const bool endOfList = accounts && fault.name == "key=24";
        const bool reading = (isSml(call) || has(call.function, "vex_fzs")) && !endOfList;
        EXPECT_EQ(told, reading && !fault.value ? 1U : 0U) << "health names it";
        // What the first load learns of an area it does not take up where an area before it failed.
        const bool first = operation.name == kFirstLoad;
        if (first && failed) pass();
        if (first || !failed) again(fault.value || !reading);
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
        if (fault.value || !reading) return "";
        std::string text;
        for (const std::string& event : without(good.events, events))
            text += "; loses " + event.substr(0, event.find(' '));
        for (const std::string& event : without(events, good.events))
            text += "; adds " + event.substr(0, event.find(' '));
        return text;
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
        for (size_t index = from; index < run.calls.size(); ++index) {
            const vexsim::Call& call = run.calls[index];
            if (!isWorthFailing(run.calls, index)) continue;
            std::map<std::string, Lines> ways;  // by effect
            Lines effects;
            Lines deeper;
            for (const Fault& fault : waysToFail(operation, run.calls, index, faults.size())) {
                // Required: a name of port 0 that the first load reads stays the base of the local switch's.
                if (operation.name == kFirstLoad && fault.value) continue;
                SCOPED_TRACE(std::string(operation.name) + ' ' + call.function + ' ' + call.detail + ' ' +
                             fault.fields);
                std::vector<Fault> all = faults;
                all.push_back(fault);
                const Seen failing = carryOut(operation, all);
                std::string text = effect(operation, good, failing, before, all);
                if (operation.loads) text += expectMended(operation, good, failing, fault, call);
                if (HasFailure()) return;
                if (operation.loads && (fault.value || operation.name == kFirstLoad)) continue;
                if (text == known || text.empty()) continue;
                if (ways[text].empty()) effects.push_back(text);
                Lines& names =
                    ways[text];  // those that need saying: "call" and "key" stand for all of theirs
                const std::string kind = fault.name.substr(0, fault.name.find('='));
                if (std::count(names.begin(), names.end(), kind) == 0 &&
                    std::count(names.begin(), names.end(), fault.name) == 0)
                    names.push_back(fault.name);
                if (operation.atOnce > static_cast<int>(all.size()) && fault.again)
                    failEach(operation, good, before, failing, index + 1, all, text, deeper);
            }
            const std::string name = std::string(faults.size() * 2, ' ') + shortName(call);
            for (const std::string& text : effects) {
                const bool alike = operation.alike && !has(text, "%");
                std::string line = (alike ? call.function.substr(4) + " K" : name) + ' ' +
                                   joined(ways[text], ",") + ": " + text;
                if (std::find(table.begin(), table.end(), line) == table.end()) table.push_back(line);
            }
            table.insert(table.end(), deeper.begin(), deeper.end());
        }
    }
};

Lines one(const std::string& line) {
    return {line};
}

/** A pass over one area. */
Operation loader(const char* name, const char* change, void (DataCache::*mark)(), Action begin = {}) {
    return {name, change, std::move(begin),
            [mark](FaultMatrix& test) {
                (test.cache().*mark)();
                test.cache().localPortRefreshSet();
                return one(test.pass() ? "ready" : "not ready");
            },
            true};
}

/** Functions that may be called from C. */
Operation plain(const char* name, std::function<Lines(FaultMatrix&)> run, int atOnce = 1, Action begin = {},
                bool alike = false) {
    return {name, "", std::move(begin), std::move(run), false, atOnce, true, alike};
}

Operation edit(const char* name, std::function<datacache::ZoningOutcome(ZoningSession&)> run,
               bool alike = false) {
    const auto lock = [](FaultMatrix& test) {
        test.session = std::make_unique<ZoningSession>(test.zoning(), "c");
    };
    return {name,  "", lock,  [run](FaultMatrix& test) { return one(run(*test.session).text()); },
            false, 1,  false, alike};
}

/** A text that the caller now owns, and releases outside of what fails. */
std::string taken(FaultMatrix& test, char* text) {
    if (text == nullptr) return "null";
    std::string copy = text;
    test.owned.push_back(text);
    return copy;
}

Lines properties(FaultMatrix& test) {
    Lines values;
    for (char* (*get)() : {get_Switch_Telnet_Enabled,
                           get_Switch_SSH_Enabled,
                           get_Switch_EmbeddedGUI_Enabled,
                           is_Switch_SSLEnabled,
                           is_Switch_SNMP_Enabled,
                           get_Switch_SNMPReadCommunity,
                           get_Switch_IPv6Address,
                           get_Switch_IPv6Feature,
                           get_Switch_IPv6Enable,
                           get_Switch_IPv4Address,
                           get_Switch_IPv4Feature,
                           get_Switch_IPv4Enable,
                           get_Switch_PlanarPartNum,
                           get_Switch_ChassisSerialNum,
                           get_Switch_ChassisPartNum,
                           get_Switch_ActiveVer,
                           get_Switch_OemActiveVer,
                           get_Switch_Type,
                           get_Switch_Brand_Name,
                           get_Switch_Domain_ID,
                           get_Principal_Switch_World_Wide_Name,
                           get_Local_Switch_World_Wide_Name})
        values.push_back(taken(test, get()));
    return values;
}

Lines productInfo(FaultMatrix& test) {
    char *description = nullptr, *name = nullptr, *serial = nullptr, *brand = nullptr;
    const int result = get_Product_Info(&description, &name, &serial, &brand);
    return one(std::to_string(result) + " (" + taken(test, description) + ", " + taken(test, name) + ", " +
               taken(test, serial) + ", " + taken(test, brand) + ')');
}

/** What the walkers give, and how much of the buffer they wrote. */
Lines walkers(FaultMatrix&) {
    const std::vector<std::function<char*(char*)>> walks = {
        get_first_lsdb_record,
        [](char* to) { return get_next_lsdb_record("1", to); },
        [](char* to) { return get_lsdb_record_link_local_information("1", "0", to); },
        [](char* to) { return get_lsdb_record_link_remote_information("1", "0", to); },
        [](char* to) { return get_first_attached_port("3", to); },
        [](char* to) { return get_next_attached_port("3", "2100001122000001", to); }};
    Lines lines{"links " + std::to_string(get_lsdb_record_link_count("1"))};
    for (const auto& walk : walks) {
        std::string buffer(VEX_SML_VALUE_SIZE + 4, '~');
        const bool given = walk(buffer.data()) == buffer.data();
        const size_t written = buffer.find_last_not_of('~') + 1;
        lines.push_back((given ? "" : "null ") + buffer.substr(0, strnlen(buffer.data(), written)) +
                        ", wrote " + std::to_string(written));
    }
    return lines;
}

/** A group that is read twice, then written: what stays in its records from one call is there at the next. */
Lines group(FaultMatrix&) {
    vex_smlmsggroup_s* const group = vex_smlAllocMsgGroup(1);
    for (const char* key : {"Oper.Switch.WWN", "Config.Services.SSHEnable"})
        vex_smlAddMsgGroupV(group, "%s", key);
    Lines lines;
    const auto tell = [&](const char* what, int32_t result) {
        lines.push_back(what + (' ' + std::to_string(result)));
        for (int i = 0; i < 2; ++i) {
            char* value = nullptr;
            const uint32_t status = vex_smlGetResult(group, i, &value);
            lines.back() += ", " + std::to_string(status) + ' ' + value;
        }
    };
    tell("get", vex_smlGetMsgGroup(group));
    tell("get again", vex_smlGetMsgGroup(group));
    tell("set", vex_smlSetMsgGroup(group));
    vex_smlFreeMsgGroup(group);
    return lines;
}

/** On the second connection, as is what follows. */
Lines single(FaultMatrix& test) {
    char* value = nullptr;
    uint32_t extra = 0;
    void* reply = nullptr;
    test.useOther = true;
    const int32_t got = vex_smlGetV(test.other, &value, &extra, "Oper.Switch.%s", "DomainID");
    const int32_t set = vex_smlSetV(test.other, &reply, "Cmd.Switch.%s", "ReqAdmin");
    return {"get " + std::to_string(got) + ' ' + taken(test, value), "set " + std::to_string(set)};
}

template <int32_t (*transaction)(uint32_t, vex_smlrequest_s*, int)>
Lines transact(FaultMatrix& test) {
    test.useOther = true;
    vex_smlrequest_s record{"Config.Services.SSHEnable", "False", 0};
    const int32_t result = transaction(test.other, &record, 1);
    return one(std::to_string(result) + " SSH=" + *test.sim.get("Config.Services.SSHEnable"));
}

template <int (*end)()>
Lines configSession(FaultMatrix& test) {
    void* reply = nullptr;
    Lines lines{"begin " + std::to_string(getConfigEditMode())};
    vex_smlSet(hSwitch, "Config.Services.SSHEnable.False", &reply);
    const int ended = end();
    lines.push_back("end " + std::to_string(ended) + " SSH=" + *test.sim.get("Config.Services.SSHEnable"));
    lines.push_back("release " + std::to_string(releaseAdminMode()));
    return lines;
}

const std::vector<Operation>& operations() {
    const auto readAccounts = [](FaultMatrix& test) { test.cache().readAccounts(); };
    const auto hold = [](FaultMatrix&) { reqAdminMode(); };
    static const std::vector<Operation> all = {
        loader(kFirstLoad, "", &DataCache::updateAll),
        loader("switch", "do = 'switch_state'\nstate = 'Offline'", &DataCache::updateSwitch),
        loader("chassis", "do = 'power_supply'\nindex = 1\nstate = 'Bad'", &DataCache::updateChassis),
        loader("blades", "do = 'blade_remove'\nslot = 1", &DataCache::updateBlades),
        loader("single slot", "", &DataCache::updateBlades,
               [](FaultMatrix& test) { test.sim.set("Oper.Chassis.0.MaxSlots", "1"); }),
        loader("ports", "do = 'port_offline'\nport = 0", &DataCache::updatePorts),
        loader("fabric",
               "[[step]]\ndo = 'switch_join'\ndomain = 9\nwwn = '1000001122000009'\nports = 1\n"
               "[[step]]\ndo = 'fabric_rename'\nprincipal = '1000001122000007'",
               &DataCache::updateFabric),
        loader("zoning", "do = 'zone_add'\nname = 'z3'\nzonesets = ['beta']", &DataCache::updateZoning),
        {kAccounts, "do = 'account_rename'\nfrom = 'guest'\nto = 'other'", readAccounts,
         [](FaultMatrix& test) {
             const bool read = test.cache().readAccounts();
             return Lines{read ? "read" : "not read", "removed " + joined(test.peer().prevAccounts)};
         },
         true},
        plain("properties", properties, 1, {}, true),
        plain("product info", productInfo, 2),
        plain(kWalkers, walkers, 1, {}, true),
        plain("group", group),
        plain("single keys", single),
        plain("batch set", transact<vex_smlBatchSet>, 3),
        plain("batch set of CIM", transact<vex_smlBatchCimSet>),
        plain("save an edit", configSession<saveConfigEdit>),
        plain("cancel an edit", configSession<cancelConfigEdit>, 1, hold),
        plain("backup",
              [](FaultMatrix&) {
                  return Lines{"backup " + std::to_string(backupConfig()),
                               "restore " + std::to_string(restoreConfig())};
              }),
        plain("active zoneset",
              [](FaultMatrix&) {
                  std::string name(VEX_ZONING_NAME_SIZE, '~');
                  const int32_t result = get_Active_ZoneSet(name.data());
                  return one(std::to_string(result) + ' ' + name.c_str());
              }),
        edit("create alias", [](ZoningSession& s) { return s.createZoneAlias("a9"); }),
        edit("create zone", [](ZoningSession& s) { return s.createZone("z9", VEX_ZT_HARD_ACL); }),
        edit("create zoneset", [](ZoningSession& s) { return s.createZoneset("s9"); }),
        edit("remove alias", [](ZoningSession& s) { return s.removeZoneAlias("a1"); }),
        edit("remove zone", [](ZoningSession& s) { return s.removeZone("z1"); }),
        edit("remove zoneset", [](ZoningSession& s) { return s.removeZoneset("beta"); }),
        edit("add zone", [](ZoningSession& s) { return s.addZoneToZoneset("beta", "z2"); }),
        edit("take zone", [](ZoningSession& s) { return s.removeZoneFromZoneset("beta", "z1"); }),
        edit("add to zone", [](ZoningSession& s) { return s.addMemberToZone("z1", VEX_ZMT_FCID, "010203"); }),
        edit("take from zone",
             [](ZoningSession& s) { return s.removeMemberFromZone("z1", VEX_ZMT_ALIAS, "a1"); }),
        edit("add to alias",
             [](ZoningSession& s) { return s.addMemberToZoneAlias("a1", VEX_ZMT_WWN, "2000001122000009"); }),
        edit("take from alias",
             [](ZoningSession& s) {
                 return s.removeMemberFromZoneAlias("a1", VEX_ZMT_WWN, "2000001122000001");
             }),
        edit("remove member",
             [](ZoningSession& s) { return s.removeMember(VEX_ZMT_WWN, "2000001122000003"); }),
        edit(
            "commit", [](ZoningSession& s) { return s.commit(); }, true),
        edit("abandon", [](ZoningSession& s) { return s.abandon(); }),
        {"lock",
         "",
         {},
         [](FaultMatrix& test) {
             test.session = std::make_unique<ZoningSession>(test.zoning(), "c");
             return one(test.session->lockOutcome().text());
         }},
        {"limits",
         "",
         {},
         [](FaultMatrix& test) { return one(test.zoning().initZoningLimits() ? "read" : "not read"); }},
        {"database",
         "",
         {},
         [](FaultMatrix& test) {
             const datacache::ZoningDatabase copy = test.zoning().database();
             return one((copy.complete ? "complete " : "incomplete ") + std::to_string(copy.zones.size()));
         },
         false,
         1,
         false,
         true},
        {"dump",
         "",
         {},
         [](FaultMatrix& test) {
             test.zoning().dump();
             return Lines();
         },
         false,
         1,
         false,
         true},
    };
    return all;
}

TEST_F(FaultMatrix, EveryCallFailsInEveryWay) {
    std::string table;
    for (const Operation& operation : operations()) {
        restartFor(operation);
        const Lines before = cacheState();
        Seen good = carryOut(operation, {});
        if (operation.loads) {  // what a second pass finds is what a failure must come to
            again(true);
            pass();
            if (operation.name == kFirstLoad) good.state = cacheState();
            EXPECT_EQ(cacheState(), good.state) << operation.name;
        }
        Lines lines;
        failEach(operation, good, before, good, 0, {}, "", lines);
        table += '[' + std::string(operation.name) + "]\n" + joined(lines, "\n") + '\n';
        if (HasFailure()) break;
    }
    if (std::getenv("FAULT_MATRIX_WRITE") != nullptr) std::ofstream(FAULT_MATRIX) << table;
    std::stringstream golden;
    golden << std::ifstream(FAULT_MATRIX).rdbuf();
    const Lines now = split(table, '\n'), then = split(golden.str(), '\n');
    EXPECT_EQ(joined(without(now, then), "\n"), "");
    EXPECT_EQ(joined(without(then, now), "\n"), "");
    EXPECT_TRUE(now == then) << "perhaps in another order";
}

TEST_F(FaultMatrix, EveryAllocationFails) {
    for (const Operation& operation : operations()) {
        if (operation.isPlain) continue;
        restartFor(operation);
        const Lines before = cacheState();
        const Seen good = carryOut(operation, {});
        if (operation.loads) again(true);
        if (operation.loads) pass();
        const Lines state = cacheState();
        for (size_t next = 0;; next += 1 + next / 5) {
            SCOPED_TRACE(operation.name + (' ' + std::to_string(next)));
            allocations = next;
            const Seen run = carryOut(operation, {});
            if (!allocations) break;
            EXPECT_TRUE(operation.name != kAccounts || run.state == before) << "the accounts stay whole";
            if (!operation.loads) continue;
            again(true);
            EXPECT_TRUE(pass());
            again(true);  // the switch takes in what the chassis tells
            EXPECT_TRUE(pass());
            if (operation.name == kAccounts) cache().readAccounts();
            EXPECT_EQ(cacheState(), state);
            if (HasFailure()) return;
        }
        EXPECT_EQ(cacheState(), good.state) << "with memory for all that it asks for";
    }
}

/** Each with its own memory, as C hosts use it: none is lost, and none is freed that the caller may still
 * read. */
TEST_F(FaultMatrix, GroupsWithoutMemory) {
    size_t asked = 0;
    {
        const Allocations memory;
        vex_smlFreeMsgGroup(vex_smlAllocMsgGroup(1));
        asked = memory.count();
    }
    if (asked == 0) GTEST_SKIP() << "the library was not linked into the program";
    for (size_t next = 0; next < 4; ++next) {
        SCOPED_TRACE(next);
        Allocations memory;
        memory.failAfter(next);
        vex_smlmsggroup_s* const group = vex_smlAllocMsgGroup(1);
        EXPECT_EQ(group == nullptr, next < 2);
        EXPECT_EQ(memory.live(), group == nullptr ? 0U : 2U);
        if (group == nullptr) continue;
        vex_smlrequest_s* const records = group->records;
        EXPECT_EQ(vex_smlAddMsgGroupV(group, "%s", "first"), 0);
        const int added = vex_smlAddMsgGroupV(group, "%s", "second");
        EXPECT_EQ(added, next == 2 ? 1 : 0);
        if (added == 0) {
            vex_smlFreeMsgGroup(group);
        } else {
            EXPECT_EQ(memory.live(), 1U) << "the records, which are the caller's now";
            EXPECT_STREQ(records->key, "first");
            std::free(records);
        }
        EXPECT_EQ(memory.live(), 0U);
    }
}

}  // namespace
