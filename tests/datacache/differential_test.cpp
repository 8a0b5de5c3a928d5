#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "simulator/switch_writer.h"
#include "tests/support/CacheState.h"
#include "tests/support/CacheTest.h"
#include "tests/support/ZoningModel.h"

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
 * Meanwhile each pass leaves a snapshot that shows what a reader finds, and that no later pass changes.
 *
 * DIFFERENTIAL_SEEDS=N runs that many seeds.
 */
namespace {

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
    std::string newSwitch(const char* separator) {
        vexsim::FabricShape shape;
        shape.scheme = static_cast<vexsim::NameScheme>(below(4));
        shape.cisco = below(4) == 0;
        char number[8];
        std::snprintf(number, sizeof number, "1%02x", ++_made & 0xFFU);
        return joined({"domain = " + text(2 + below(6)),
                       "wwn = '" + generatedName(shape, 0).substr(0, 13) + number + '\'',
                       "ports = " + text(below(8) != 0 ? below(5) : 250 + below(7))},
                      separator);
    }

    std::string zoningStep() {
        Zones& all = _configured;
        const auto name = [this](const char* kind) { return kind + text(below(3)); };
        const std::string zoneset = name("s");
        switch (below(5)) {
            case 0:
                _active.reset();
                return "do = 'zoneset_deactivate'";
            case 1:
                if (all.zonesets.count(zoneset) != 0) _active = all.part(zoneset);
                return "do = 'zoneset_activate'\nname = '" + zoneset + '\'';
        }
        all = {};
        for (unsigned i = below(3); i > 0; --i) all.aliases[name("a")] = {"200000112200000" + text(below(9))};
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
        return all.replaceStep();
    }

    /** The fields of a step, one a line; some cannot be carried out as the switch stands, and nothing
     * happens. */
    std::string randomStep() {
        if (below(10) == 0) return zoningStep();
        const auto number = [this](const char* field, size_t bound, unsigned from = 0) {
            return '\n' + std::string(field) + " = " + text(from + below(bound));
        };
        const auto word = [this](const char* field, const Lines& words) {
            return '\n' + std::string(field) + " = '" + any(words) + '\'';
        };
        const unsigned plugged = below(kPorts);
        const std::string port = "\nport = " + text(plugged), slot = number("slot", kSlots);
        const std::string ours = "\ndomain = " + key("Oper.Switch.DomainID"), domain = number("domain", 6, 2);
        const std::string account = word("name", {"admin", "guest", "oper", "cim"});
        const std::string admin = word("admin", {"Online", "Offline", "Diagnostics", "Down", "Downed"});
        const std::string state = word("state", {"Online", "Offline", "Diagnostics", "Isolated", "Downed",
                                                 "NotInstalled", "PoweredOff", "Pending"});
        const std::string step = any({
            "port_online'" + port,
            "port_offline'" + port,
            "port_state'" + port + state + admin,
            "port_state'" + port + state + admin,
            "port_removed'" + port,
            "port_added'" + port + state,
            "port_type'" + port + word("type", {"G", "GL", "E", "F", "Donor", "TH", "PT"}) +
                word("hardware", {"GL", "EXG"}),
            "transceiver_plugged'" + port + word("serial", {"SN-0123456789abc", "A B", "ABC"}) +
                number("identifier", 5),
            "transceiver_pulled'" + port,
            "power_supply'" + number("index", 2, 1) + word("state", {"Good", "Bad", "NotInstalled"}),
            "fan'" + number("index", 2, 1) + word("state", {"Good", "Bad", "Unknown"}),
            "switch_state'" + word("state", {"Online", "Offline", "Diagnostics", "Downed", "Unknown"}),
            "fault_list'" + any({slot, ""}) + "\nfaults = " +
                any({"[]", "[]", "['FW_POST_FAIL']", "['HW_MP_ACCESS_CPU0']",
                     "['HW_MP_ACCESS_CPU1', 'FW_POST_FAIL']"}),
            "blade_insert'" + slot + word("type", {"IO", "CPU", "PS", "FAN"}) + number("temp_sensors", 3) +
                number("voltage_sensors", 3),
            "blade_insert'" + slot + word("type", {"IO", "CPU"}),
            "blade_remove'" + slot,
            "blade_state'" + slot + state + admin + word("diagnosis", {"Passed", "Compromised", "Failed"}),
            "account_add'" + account,
            "account_remove'" + account,
            "feature'" + word("name", {"fcoe", "ethernet_passthrough"}) +
                "\nenabled = " + any({"true", "false"}),
            "switch_join'\n" + newSwitch("\n"),
            "switch_join'\n" + newSwitch("\n"),
            "fabric_merge'\nprincipal = '" + key("Oper.Switch.WWN") + "'\nswitches = [{" + newSwitch(", ") +
                "}]",
            "switch_leave'" + domain,
            "switch_domain'" + any({ours, domain}) + number("to", 6, 2),
            "switch_" + any({"un", ""}) + "reachable'" + domain,
            "remote_port_" + any({"online'", "offline'"}) + domain + number("port", 5),
            "remote_port_" + any({"online'", "offline'"}) + domain + number("port", 5),
            "management_server'" + domain + "\nstatus = 7",
            "name_server_add'\nwwn = '210000112200000" + text(below(9)) + '\'',
        });
        const auto is = [&step](const std::string& start) {
            return step.compare(0, start.size(), start) == 0;
        };
        if (is("transceiver_plugged")) _plugged.insert(plugged);
        _faults = _faults || is("fault_list") || is("blade_remove");
        _removed = _removed || is("blade_remove");
        _ownDomain = _ownDomain || is("switch_domain'" + ours);
        _servers = _servers || is("management_server");
        return "do = '" + step;
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

    /** After a pass, whatever failed in it, the newest snapshot shows what a reader finds. */
    void expectSnapshot() {
        const auto newest = DataCache::snapshot();
        ASSERT_NE(newest, nullptr);
        const std::string shown = joined(cacheState(), "\n");
        EXPECT_EQ(joined(stateOf(*newest), "\n"), shown);
        if (!_kept.empty()) {
            EXPECT_GE(newest->serial(), _kept.back().first->serial());
        }
        _kept.emplace_back(newest, shown);
    }

    /** Some steps are for a switch that stands otherwise. */
    void attempt(const std::string& fields) {
        try {
            sim.run("[[step]]\n" + fields);
        } catch (const vexsim::InputError&) {
        }
    }

    // ---- What the cache should hold ----

    static unsigned code(const std::map<std::string, unsigned>& words, const std::string& word) {
        const auto found = words.find(word);
        return found == words.end() ? 0 : found->second;
    }
    static bool down(const std::string& state) { return state == "Down" || state == "Downed"; }
    template <typename... Parts>
    void tell(const Parts&... parts) {
        _told.push_back(line(parts...));
    }

    void tellSwitch() {
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
        tell("switch 1", name(), text(state) + (more ? ",5," : ",") + faults, 0,
             key("Oper.Switch.FCOEFeature") == "True",
             key("Oper.Switch.EthernetPassthroughFeature") == "True");
        tell("chassis 1 " + faults);
        const std::map<std::string, unsigned> units{{"Good", 1}, {"Bad", 2}, {"NotInstalled", 3}};
        for (unsigned i = 0; i < 2; ++i) {
            tell("supply", i, code(units, key("Oper.Chassis.0.PowerSupply." + text(i))));
            tell("fan", i, code(units, key("Oper.Chassis.0.Fan." + text(i))));
        }
        for (auto at = sim.get("Oper.Switch.FirstPotentialUser"); at;
             at = sim.get("Oper.Switch.NextPotentialUser." + *at))
            tell("account " + *at);
    }

    /** Required: of the blades only the one in the last slot is known. */
    void tellBlades() {
        const std::string blade = "Oper.Blade." + text(kSlots - 1) + '.';
        const std::string state = key(blade + "OperState"), admin = key(blade + "AdminState");
        const std::string type = key(blade + "Type"), diagnosis = key(blade + "DiagStatus");
        const bool there = state != "NotInstalled" && state != "PoweredOff";
        unsigned status = diagnosis == "Failed" ? 6 : diagnosis == "Compromised" ? 3 : 2;
        if (down(state) && down(admin)) status = 6;
        const unsigned kind = there ? code({{"FAN", 1}, {"PS", 2}, {"CPU", 3}, {"IO", 4}}, type) : 0;
        const auto sensors = [&](const char* field) { return there ? key(blade + field) : "0"; };
        tell("blades 1", kSlots);
        for (unsigned slot = 0; slot + 1 < kSlots; ++slot) tell("blade", slot, "0 0 0 0 0 0");
        tell("blade", kSlots - 1, kind, status, sensors("TempSensors"), sensors("VoltageSensors"), kind == 4,
             kind == 3);
    }

    void tellPorts() {
        std::string first;
        unsigned members = 0;
        for (unsigned port = 0; port < kPorts; ++port) {
            const std::string oper = "Oper.UserPort.0." + text(port) + '.';
            const std::string state = key(oper + "OperState"), admin = key(oper + "AdminState");
            const std::string type = key("Config.UserPort.0." + text(port) + ".Type"),
                              data = key(oper + "SFPData32_63");
            unsigned status = code({{"Online", 2}, {"Offline", 10}, {"Diagnostics", 11}}, state);
            if (state == "Isolated") status = down(admin) || admin == "Offline" ? 10 : 6;
            if (down(state)) status = down(admin) ? 10 : 6;
            if (state == "NotInstalled" || state == "PoweredOff") {
                tell("port", port, "absent", status);
                continue;
            }
            if (first.empty() && type != "PT") first = key(oper + "WWN");
            const unsigned code1 = code(
                {{"G", 2}, {"GL", 3}, {"E", 4}, {"F", 5}, {"Donor", 16000}, {"TH", 16001}, {"PT", 16004}},
                type);
            tell("port", port, status, code1, code({{"GL", 1}, {"EXG", 2}}, key(oper + "HWType")),
                 key(oper + "WWN"));
            const bool media = key(oper + "DDM.Supported") == "True";
            const std::string form = key(oper + "SFPData0_31").substr(0, 2);
            std::string serial = key(oper + "SFPSerialNumber");
            serial.erase(serial.find_last_not_of(' ') + 1);
            const unsigned shape = !media || form == "00" ? 2 : form == "03" ? 0 : 1;
            tell("transceiver", port, media, shape, media ? data.substr(10, 6) : kNoVendorOUI,
                 media ? serial : kNoVendorSN);
            if (type == "Donor") continue;
            tell("memberport", name(), port, key(oper + "WWN"));
            ++members;
        }
        if (first.empty()) first = key("Oper.UserPort.0.0.WWN");
        tell("ports 1", kPorts, first);
        tell("member", name(), key("Oper.Switch.DomainID"), "local", members, "0 0");
    }

    void tellFabric() {
        tell("fabric", Wwn(key("Oper.Switch.WhoIsPrincipal")).tostring(), name(), key("Oper.Switch.DomainID"),
             0);
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
                tell("memberport", remote, entry, wwn);
            }
            tell("member", remote, domain, "remote", known, "0 0");
        }
    }

    Lines oracle() {
        _told.clear();
        tellSwitch();
        tellBlades();
        tellPorts();
        tellFabric();
        tell("zoning 1 1", '"' + (_active ? _active->zonesets.begin()->first : "") + '"',
             _configured.zonesets.size(), _configured.zones.size(), _configured.aliases.size(),
             _configured.size(), 0);
        _configured.tellAll(_active, _told);
        std::sort(_told.begin(), _told.end());
        return _told;
    }
    std::string name() { return Wwn(key("Oper.Switch.WWN")).tostring(); }

    std::mt19937 _random;
    Lines _told;
    unsigned _made = 0;
    Zones _configured;
    std::optional<Zones> _active;
    bool _servers = false, _ownDomain = false, _removed = false, _faults = false;
    std::set<unsigned> _plugged;
    std::vector<std::pair<std::shared_ptr<const Snapshot>, std::string>> _kept;  ///< and what each showed
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
            DataCache::setSnapshots(true);
            for (unsigned changes = 1 + below(8); changes > 0; --changes) {
                const std::string fields = randomStep();
                steps += fields + "\n\n";
                attempt(fields);
                if (below(3) == 0)
                    attempt("do = 'fault'\nfunction = 'vex_smlGetBatch'\nresult = 1\nskip = " +
                            text(below(30)));
                if (below(3) == 0) sim.deliverPending();
                if (below(3) == 0) pass(), expectSnapshot();
                if (below(4) == 0) attempt("do = 'clear_faults'");
            }
            SCOPED_TRACE(steps);
            catchUp();
            expectLookups();
            expectSnapshot();
            for (const auto& [kept, shown] : _kept) EXPECT_EQ(joined(stateOf(*kept), "\n"), shown);
            DataCache::setSnapshots(false);  // of the next cache
            _kept.clear();
            const std::string followed = joined(cacheState(), "\n");
            EXPECT_EQ(followed, joined(freshState(), "\n"));
            EXPECT_EQ(followed, joined(oracle(), "\n"));
        }
    }
}

}  // namespace
