#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <sstream>

#include "datacache/CacheReader.h"
#include "simulator/switch_writer.h"
#include "tests/support/CacheState.h"
#include "tests/support/CacheTest.h"

/*
 * After any changes at the switch, with notifications, passes and failures in between, the cache that
 * followed them is equal to one that was started afterwards, and to what the switch's keys say, read by this
 * test alone.
 *
 * What a cache that follows is behind in, until something else has it read the area again:
 * - the switch's status takes the faults that the chassis knew at the pass before;
 * - the faults of a blade that is taken out stay, as the switch tells of the blade and not of its faults;
 * - the local switch's record gets its domain from the scan of the ports;
 * - a transceiver that is plugged in is known from its notification, with one character of its vendor;
 * - remote ports, when a management server that failed is well again: nobody tells.
 * Where one of these happened, catchUp() has that area read again.
 *
 * DIFFERENTIAL_SEEDS=N runs that many seeds.
 */
namespace {

using Lines = std::vector<std::string>;

std::string text(unsigned long long value) {
    return std::to_string(value);
}

std::string quoted(const Lines& all) {
    std::string list;
    for (const std::string& one : all) list += '"' + one + "\",";
    return '[' + list + ']';
}

/** The zoning as the steps made it. */
struct Zones {
    struct Zone {
        unsigned type = 1;
        Lines members;
    };
    std::map<std::string, Lines> aliases, zonesets;
    std::map<std::string, Zone> zones;

    /** What a zoneset holds: its zones, and the aliases that they name. */
    Zones part(const std::string& zoneset) const {
        Zones some;
        some.zonesets[zoneset] = zonesets.at(zoneset);
        for (const std::string& name : zonesets.at(zoneset)) some.zones[name] = zones.at(name);
        for (const auto& [name, zone] : some.zones) {
            for (const std::string& member : zone.members)
                if (aliases.count(member) != 0) some.aliases[member] = aliases.at(member);
        }
        return some;
    }
    void tell(const std::string& owner, Lines& lines) const {
        const auto joined = [](const Lines& all) {
            std::string line;
            for (const std::string& one : all) line += (line.empty() ? "" : ",") + one;
            return line;
        };
        for (const auto& [name, zone] : zones)
            lines.push_back("zone " + owner + ' ' + name + ' ' + text(zone.type) + ' ' +
                            joined(zone.members));
        for (const auto& [name, members] : aliases)
            lines.push_back("alias " + owner + ' ' + name + ' ' + joined(members));
    }
    size_t size() const {
        size_t members = 0;
        for (const auto& [name, zone] : zones) {
            members += zone.members.size();
            for (const std::string& member : zone.members)
                if (aliases.count(member) != 0) members += aliases.at(member).size();
        }
        for (const auto& [name, all] : aliases) members += all.size();
        return members;
    }
};

class Differential : public CacheTest {
  protected:
    static constexpr unsigned kPorts = 5, kSlots = 3;

    unsigned below(size_t bound) {
        return static_cast<unsigned>(std::uniform_int_distribution<size_t>(0, bound - 1)(_random));
    }
    std::string any(const Lines& all) { return all[below(all.size())]; }
    std::string key(const std::string& name) { return sim.get(name).value_or("?"); }

    // ---- The switch and what happens to it ----

    void begin(unsigned seed) {
        _random.seed(seed);
        _made = 0;
        _configured = {};
        _active.reset();
        sim.keepTranscript(false);
        const std::string local = any({"1000001122AABB00", "2000000DEC000001", "50000FF000000001"});
        start("[switch]\nwwn = '" + local +
              "'\ndomain = 1\n[accounts]\nusers = ['admin', 'guest']\n[ports]\ncount = " + text(kPorts) +
              "\n[chassis]\npower_supplies = 2\nfans = 2\nslots = " + text(kSlots) +
              "\nenhanced_fault_monitoring = true\n[zoning]\n");
        _faults = true;
    }

    /** A switch that was in no fabric yet, of any maker. */
    std::string newSwitch() {
        vexsim::FabricShape shape;
        shape.scheme = static_cast<vexsim::NameScheme>(below(4));
        shape.cisco = below(4) == 0;
        char number[8];
        std::snprintf(number, sizeof number, "1%02x", ++_made & 0xFFU);
        return "domain = " + text(2 + below(6)) + "@wwn = '" + generatedName(shape, 0).substr(0, 13) +
               number + "'@ports = " + text(below(8) != 0 ? below(5) : 250 + below(7));
    }
    std::string zoningStep() {
        Zones& all = _configured;
        const auto name = [this](const char* kind) { return kind + text(below(4)); };
        const auto table = [](const Zones& from) {
            std::string steps = "do = 'zoning_replace'\n";
            const auto types = Lines{"", "Soft", "HardVPF", "HardACL"};
            for (const auto& [alias, members] : from.aliases)
                steps += "[[step.alias]]\nname = '" + alias + "'\nmembers = " + quoted(members) + '\n';
            for (const auto& [zone, is] : from.zones)
                steps += "[[step.zone]]\nname = '" + zone + "'\ntype = '" + types[is.type] +
                         "'\nmembers = " + quoted(is.members) + '\n';
            for (const auto& [zoneset, zones] : from.zonesets)
                steps += "[[step.zoneset]]\nname = '" + zoneset + "'\nzones = " + quoted(zones) + '\n';
            return steps;
        };
        switch (below(6)) {
            case 0:
                _active.reset();
                return "do = 'zoneset_deactivate'";
            case 1: {
                const std::string zoneset = name("s");
                if (all.zonesets.count(zoneset) == 0) return "do = 'note'\ntext = ''";
                _active = all.part(zoneset);
                return "do = 'zoneset_activate'\nname = '" + zoneset + '\'';
            }
            case 2: {
                const std::string zone = name("z");
                if (all.zones.erase(zone) == 0) return "do = 'note'\ntext = ''";
                for (auto& [zoneset, zones] : all.zonesets)
                    zones.erase(std::remove(zones.begin(), zones.end(), zone), zones.end());
                return "do = 'zone_remove'\nname = '" + zone + '\'';
            }
            default: {
                all = {};
                for (unsigned i = below(3); i > 0; --i)
                    all.aliases[name("a")] = {"200000112200000" + text(below(9))};
                for (unsigned i = below(5); i > 0; --i) {
                    Zones::Zone& zone = all.zones[name("z")];
                    zone = {1 + below(3), {"200100112200000" + text(below(9))}};
                    for (const auto& [alias, members] : all.aliases)
                        if (below(2) == 0) zone.members.push_back(alias);
                }
                for (unsigned i = below(3); i > 0; --i) {
                    Lines& zones = all.zonesets[name("s")];
                    zones.clear();
                    for (const auto& [zone, is] : all.zones)
                        if (below(2) == 0) zones.push_back(zone);
                }
                return table(all);
            }
        }
    }
    /** The fields of a step, one a line; some cannot be carried out as the switch stands, and nothing
     * happens. */
    std::string randomStep() {
        const auto numbered = [this](const char* field, size_t bound, unsigned from = 0) {
            return '\n' + std::string(field) + " = " + text(from + below(bound));
        };
        const auto word = [this](const char* field, const Lines& words) {
            return '\n' + std::string(field) + " = '" + any(words) + '\'';
        };
        const std::string port = numbered("port", kPorts), slot = numbered("slot", kSlots);
        const std::string domain = numbered("domain", 6, 2);
        const std::string principal = "\nprincipal = '" + key("Oper.Switch.WWN") + '\'';
        const std::string account = word("name", {"admin", "guest", "oper", "cim"});
        const Lines states{"Online", "Offline", "Diagnostics", "Down", "Downed"};
        const Lines operStates{"Online", "Offline",      "Diagnostics", "Isolated",
                               "Downed", "NotInstalled", "PoweredOff"};
        const auto remote = [&](const char* step) {
            return "do = '" + std::string(step) + '\'' + domain + numbered("port", 5);
        };
        switch (below(31)) {
            case 0:
                return "do = 'port_online'" + port;
            case 1:
                return "do = 'port_offline'" + port;
            case 2:
            case 3:
                return "do = 'port_state'" + port + word("state", operStates) + word("admin", states);
            case 4:
                return "do = 'port_removed'" + port;
            case 5:
                return "do = 'port_added'" + port + word("state", operStates);
            case 6:
                return "do = 'port_type'" + port + word("type", {"G", "GL", "E", "F", "Donor", "TH", "PT"}) +
                       word("hardware", {"GL", "EXG"});
            case 7:
                _plugged.insert(static_cast<unsigned>(std::stoul(port.substr(8))));
                return "do = 'transceiver_plugged'" + port +
                       word("serial", {"SN-0123456789abc", "A B", "ABC"}) + numbered("identifier", 5);
            case 8:
                return "do = 'transceiver_pulled'" + port;
            case 9:
                return "do = 'power_supply'" + numbered("index", 2, 1) +
                       word("state", {"Good", "Bad", "NotInstalled"});
            case 10:
                return "do = 'fan'" + numbered("index", 2, 1) + word("state", {"Good", "Bad", "Unknown"});
            case 11:
                return "do = 'switch_state'" +
                       word("state", {"Online", "Offline", "Diagnostics", "Downed", "Unknown"});
            case 12:
                _faults = true;
                return "do = 'fault_list'" + (below(2) == 0 ? slot : "") + "\nfaults = " +
                       any({"[]", "[]", "['FW_POST_FAIL']", "['HW_MP_ACCESS_CPU0']",
                            "['HW_MP_ACCESS_CPU1', 'FW_POST_FAIL']"});
            case 13:
            case 14:
                return "do = 'blade_insert'" + slot + word("type", {"IO", "CPU", "PS", "FAN"}) +
                       numbered("temp_sensors", 3) + numbered("voltage_sensors", 3);
            case 15:
                _removed = _faults = true;
                return "do = 'blade_remove'" + slot;
            case 16:
                return "do = 'blade_state'" + slot +
                       word("state", {"Online", "Offline", "Downed", "Pending", "PoweredOff"}) +
                       word("admin", states) + word("diagnosis", {"Passed", "Compromised", "Failed"});
            case 17:
                return "do = 'account_add'" + account;
            case 18:
                return "do = 'account_remove'" + account;
            case 19:
                return "do = 'feature'" + word("name", {"fcoe", "ethernet_passthrough"}) +
                       "\nenabled = " + any({"true", "false"});
            case 20:
            case 21: {
                std::string made = newSwitch();
                if (below(3) == 0) {
                    for (size_t at; (at = made.find('@')) != made.npos;) made.replace(at, 1, ", ");
                    return "do = 'fabric_merge'" + principal + "\nswitches = [{" + made + "}]";
                }
                std::replace(made.begin(), made.end(), '@', '\n');
                return "do = 'switch_join'\n" + made;
            }
            case 22:
                return "do = 'switch_leave'" + domain;
            case 23: {
                const std::string ours = "\ndomain = " + key("Oper.Switch.DomainID");
                const std::string changed = below(3) == 0 ? ours : domain;
                _ownDomain = _ownDomain || changed == ours;
                return "do = 'switch_domain'" + changed + numbered("to", 6, 2);
            }
            case 24:
                return "do = 'switch_" + any({"un", ""}) + "reachable'" + domain;
            case 25:
            case 29:
            case 30:
                return remote(below(2) == 0 ? "remote_port_online" : "remote_port_offline");
            case 26:
                _servers = true;
                return "do = 'management_server'" + domain + "\nstatus = 7";
            case 27:
                return "do = 'name_server_add'\nwwn = '210000112200000" + text(below(9)) + '\'';
            default:
                return zoningStep();
        }
    }

    void catchUp() {
        sim.run("[[step]]\ndo = 'clear_faults'");
        for (unsigned domain = 2; _servers && domain < 8; ++domain)
            attempt("do = 'management_server'\ndomain = " + text(domain));
        const AccessGuard guard;
        if (_servers) cache().updateFabric();
        bool ready = false;
        for (int passes = 0; passes < 2 || !ready; ++passes) {
            settle();
            if (_ownDomain || !_plugged.empty()) cache().updatePorts();
            for (const unsigned port : _plugged) cache().localPortRefreshSet(static_cast<int>(port));
            if (_removed) cache().updateChassis();
            if (_faults) cache().updateSwitch();
            ready = pass();
            ASSERT_LT(passes, 5) << "the switch is well, and the cache is not";
        }
        cache().readAccounts();
        _servers = _ownDomain = _removed = _faults = false;
        _plugged.clear();
    }

    /** Some steps are for a switch that stands otherwise. */
    void attempt(const std::string& fields) {
        try {
            sim.run("[[step]]\n" + fields);
        } catch (const vexsim::InputError&) {
        }
    }

    // ---- What the cache should hold ----

    Lines fresh() {
        DataCache* const followed = std::exchange(DataCache::instance, nullptr);
        const uint32_t handle = hSwitch;
        DataCache::init();
        pass();
        cache().updateSwitch();  // which now takes the faults of the chassis in
        pass();
        cache().readAccounts();
        Lines lines = cacheState();
        delete std::exchange(DataCache::instance, followed);
        hSwitch = handle;
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    /** What the one has and the other has not, "-" and "+" in front. */
    static Lines difference(const Lines& one, const Lines& other) {
        Lines less, more;
        std::set_difference(one.begin(), one.end(), other.begin(), other.end(), std::back_inserter(less));
        std::set_difference(other.begin(), other.end(), one.begin(), one.end(), std::back_inserter(more));
        for (std::string& line : less) line = "- " + line;
        for (const std::string& line : more) less.push_back("+ " + line);
        return less;
    }

    static unsigned code(const std::map<std::string, unsigned>& words, const std::string& word) {
        const auto found = words.find(word);
        return found == words.end() ? 0 : found->second;
    }
    static bool down(const std::string& state) { return state == "Down" || state == "Downed"; }
    template <typename... Parts>
    static std::string line(const Parts&... parts) {
        std::ostringstream made;
        const char* blank = "";
        ((made << blank << parts, blank = " "), ...);
        return made.str();
    }

    void tellSwitch(Lines& lines) {
        bool self = false, access = false;
        Lines lists{key("Oper.Switch.FaultList")};
        for (unsigned slot = 0; slot < kSlots; ++slot)
            lists.push_back(key("Oper.Blade." + text(slot) + ".FaultList"));
        for (const std::string& list : lists) {
            self = self || list.find("FW_POST_FAIL") != list.npos;
            access = access || list.find("HW_MP_ACCESS") != list.npos;
        }
        const std::string faults = (self ? "32768," : "0,") + std::string(access ? "32769" : "0");
        unsigned state = code({{"Online", 2}, {"Offline", 10}, {"Downed", 10}, {"Diagnostics", 11}},
                              key("Oper.Switch.OperState"));
        const bool more = access && !self && state != 11;
        if (self && state != 11) state = 6;
        lines.push_back(line("switch 1", name(), text(state) + (more ? ",5," : ",") + faults, 0,
                             key("Oper.Switch.FCOEFeature") == "True",
                             key("Oper.Switch.EthernetPassthroughFeature") == "True"));
        lines.push_back("chassis 1 " + faults);
        const std::map<std::string, unsigned> units{{"Good", 1}, {"Bad", 2}, {"NotInstalled", 3}};
        for (unsigned i = 0; i < 2; ++i) {
            lines.push_back(line("supply", i, code(units, key("Oper.Chassis.0.PowerSupply." + text(i)))));
            lines.push_back(line("fan", i, code(units, key("Oper.Chassis.0.Fan." + text(i)))));
        }
        for (auto at = sim.get("Oper.Switch.FirstPotentialUser"); at;
             at = sim.get("Oper.Switch.NextPotentialUser." + *at))
            lines.push_back("account " + *at);
    }

    /** Required: of the blades only the one in the last slot is known. */
    void tellBlades(Lines& lines) {
        const std::string blade = "Oper.Blade." + text(kSlots - 1) + '.';
        const std::string state = key(blade + "OperState"), admin = key(blade + "AdminState");
        const std::string type = key(blade + "Type"), diagnosis = key(blade + "DiagStatus");
        const bool there = state != "NotInstalled" && state != "PoweredOff";
        unsigned status = diagnosis == "Failed" ? 6 : diagnosis == "Compromised" ? 3 : 2;
        if (down(state) && down(admin)) status = 6;
        const unsigned kind = there ? code({{"FAN", 1}, {"PS", 2}, {"CPU", 3}, {"IO", 4}}, type) : 0;
        const auto sensors = [&](const char* field) { return there ? key(blade + field) : "0"; };
        lines.push_back(line("blades 1", kSlots, kSlots, kind == 4 ? text(kSlots - 1) : "65535"));
        for (unsigned slot = 0; slot + 1 < kSlots; ++slot)
            lines.push_back(line("blade", slot, "0 0 0 0 0 0"));
        lines.push_back(line("blade", kSlots - 1, kind, status, sensors("TempSensors"),
                             sensors("VoltageSensors"), kind == 4, kind == 3));
    }

    void tellPorts(Lines& lines) {
        std::string first;
        for (unsigned port = 0; port < kPorts; ++port) {
            const std::string oper = "Oper.UserPort.0." + text(port) + '.';
            const std::string state = key(oper + "OperState"), admin = key(oper + "AdminState");
            const std::string type = key("Config.UserPort.0." + text(port) + ".Type"),
                              data = key(oper + "SFPData32_63");
            unsigned status = code({{"Online", 2}, {"Offline", 10}, {"Diagnostics", 11}}, state);
            if (state == "Isolated") status = down(admin) || admin == "Offline" ? 10 : 6;
            if (down(state)) status = down(admin) ? 10 : 6;
            if (state == "NotInstalled" || state == "PoweredOff") {
                lines.push_back(line("port", port, "absent", status));
                continue;
            }
            if (first.empty() && type != "PT") first = key(oper + "WWN");
            const unsigned code1 = code(
                {{"G", 2}, {"GL", 3}, {"E", 4}, {"F", 5}, {"Donor", 16000}, {"TH", 16001}, {"PT", 16004}},
                type);
            lines.push_back(line("port", port, status, code1,
                                 code({{"GL", 1}, {"EXG", 2}}, key(oper + "HWType")), key(oper + "WWN")));
            const bool media = key(oper + "DDM.Supported") == "True";
            const std::string form = key(oper + "SFPData0_31").substr(0, 2);
            std::string serial = key(oper + "SFPSerialNumber");
            serial.erase(serial.find_last_not_of(' ') + 1);
            lines.push_back(media ? line("transceiver", port, 1,
                                         form == "00"   ? 2
                                         : form == "03" ? 0
                                                        : 1,
                                         data.substr(10, 6), serial)
                                  : line("transceiver", port, 0, 2, "", ""));
            if (type == "Donor") continue;
            lines.push_back(line("memberport", name(), port, key(oper + "WWN"), port, key(oper + "WWN")));
            ++_members;
        }
        if (first.empty()) first = key("Oper.UserPort.0.0.WWN");
        lines.push_back(line("ports 1", kPorts, first));
        lines.push_back(
            line("member", name(), key("Oper.Switch.DomainID"), "local", std::exchange(_members, 0), "0 0"));
    }

    void tellFabric(Lines& lines) {
        lines.push_back(line("fabric", Wwn(key("Oper.Switch.WhoIsPrincipal")).tostring(), name(),
                             key("Oper.Switch.DomainID"), 0));
        for (unsigned domain = 1; domain < 20; ++domain) {
            const std::string record = "Oper.Eport.LsdbRecord." + text(domain),
                              ports = "Oper.TopologyAll." + text(domain);
            const std::string hops = key(record + ".Hops"), remote = Wwn(key(record + ".WWN")).tostring();
            if (hops == "?" || hops == "0" || hops == "255") continue;
            unsigned known = 0;
            for (unsigned entry = 0; entry < std::stoul(key(ports + ".PortEntries")); ++entry) {
                const auto port = sim.get(ports + ".Entry." + text(entry) + ".PortWwn");
                if (!port) continue;
                ++known;
                const std::string wwn = Wwn(*port).tostring();
                lines.push_back(line("memberport", remote, entry, wwn, entry, wwn));
            }
            lines.push_back(line("member", remote, domain, "remote", known, "0 0"));
        }
    }

    Lines oracle() {
        Lines lines;
        tellSwitch(lines);
        tellBlades(lines);
        tellPorts(lines);
        tellFabric(lines);
        lines.push_back(line("zoning 1 1", '"' + (_active ? _active->zonesets.begin()->first : "") + '"',
                             _configured.zonesets.size(), _configured.zones.size(),
                             _configured.aliases.size(), _configured.size(), 0));
        _configured.tell("-", lines);
        for (const auto& [zoneset, zones] : _configured.zonesets) {
            lines.push_back("zoneset " + zoneset + " configured");
            _configured.part(zoneset).tell(zoneset, lines);
        }
        if (_active) {
            lines.push_back("zoneset " + _active->zonesets.begin()->first + " active");
            _active->tell(_active->zonesets.begin()->first, lines);
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    std::string name() { return Wwn(key("Oper.Switch.WWN")).tostring(); }

    std::mt19937 _random;
    unsigned _members = 0;
    unsigned _made = 0;
    Zones _configured;
    std::optional<Zones> _active;
    bool _servers = false, _ownDomain = false, _removed = false, _faults = false;
    std::set<unsigned> _plugged;
};

TEST_F(Differential, ACacheThatFollowedEqualsAFreshOneAndTheSwitch) {
    const char* const wanted = std::getenv("DIFFERENTIAL_SEEDS");
    const unsigned seeds = wanted == nullptr ? 20 : static_cast<unsigned>(std::atoi(wanted));
    for (unsigned seed = 1; seed <= seeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + text(seed));
        restart();
        begin(seed);
        for (int round = 0; round < 12 && !HasFailure(); ++round) {
            std::string steps;
            for (unsigned changes = 1 + below(8); changes > 0; --changes) {
                const std::string fields = randomStep();
                steps += fields + "\n\n";
                attempt(fields);
                if (below(3) == 0)
                    attempt("do = 'fault'\nfunction = 'vex_smlGetBatch'\nresult = 1\nskip = " +
                            text(below(30)));
                if (below(3) == 0) sim.deliverPending();
                if (below(3) == 0) pass();
                if (below(4) == 0) attempt("do = 'clear_faults'");
            }
            SCOPED_TRACE(steps);
            catchUp();
            Lines followed = cacheState();
            std::sort(followed.begin(), followed.end());
            EXPECT_EQ(difference(followed, fresh()), Lines());
            EXPECT_EQ(difference(followed, oracle()), Lines());
        }
    }
}

}  // namespace
