#include <map>
#include <random>

#include "simulator/switch_writer.h"
#include "tests/datacache/FabricTest.h"

namespace {

using vexsim::FabricShape;
using vexsim::NameScheme;

/**
 * Any sequence of changes of the fabric: when the cache is quiet, it says what the switch says, and every
 * port's name and index lead to each other.
 */
class FabricProperty : public FabricTest, public ::testing::WithParamInterface<unsigned> {
  protected:
    unsigned random(unsigned below) { return std::uniform_int_distribution<unsigned>(0, below - 1)(_engine); }

    FabricShape randomShape() {
        FabricShape shape;
        shape.switches = 1 + random(8);
        shape.ports = random(4) != 0 ? random(8) : 256;
        shape.scheme = static_cast<NameScheme>(random(4));
        shape.cisco = random(4) == 0;
        return shape;
    }

    /** A switch that no fabric of this test has had yet, of any vendor. */
    std::string newSwitch(unsigned domain) {
        FabricShape shape = randomShape();
        const std::string name = generatedName(shape, 0).substr(0, 13) + "1" + hexByte(++_made);
        return "domain = " + std::to_string(domain) + ", wwn = \"" + name +
               "\", ports = " + std::to_string(random(8) != 0 ? random(6) : 250 + random(7));
    }

    static std::string hexByte(unsigned value) {
        char text[16];
        std::snprintf(text, sizeof text, "%02x", value & 0xFFU);
        return text;
    }

    /** The fields of one step; empty when the fabric as it is does not allow the one that was drawn. */
    std::string randomStep(const std::vector<unsigned>& domains) {
        const bool any = !domains.empty();
        const unsigned domain = any ? domains[random(static_cast<unsigned>(domains.size()))] : 0;
        const unsigned other = 2 + random(238);
        const bool free = std::find(domains.begin(), domains.end(), other) == domains.end();
        const std::string about = "\ndomain = " + std::to_string(domain);
        const std::string port = "\nport = " + std::to_string(random(6));
        const unsigned chosen = any ? domains[random(static_cast<unsigned>(domains.size()))] : domain;
        const std::string principal =
            "\nprincipal = \"" + (chosen == domain ? *sim.get("Oper.Switch.WWN") : nameOf(chosen)) + "\"";
        switch (random(10)) {
            case 0:
            case 1:
                return free ? "do = \"switch_join\"\n" + lines(newSwitch(other)) : "";
            case 2:
                return any ? "do = \"switch_leave\"" + about : "";
            case 3:
                return any && free ? "do = \"switch_domain\"" + about + "\nto = " + std::to_string(other)
                                   : "";
            case 4:
                return any ? "do = \"switch_unreachable\"" + about : "";
            case 5:
                return any ? "do = \"switch_reachable\"" + about : "";
            case 6:
                return free
                           ? "do = \"fabric_merge\"" + principal + "\nswitches = [{" + newSwitch(other) + "}]"
                           : "";
            case 7:
                return any ? "do = \"fabric_segment\"" + principal + "\ndomains = [" +
                                 std::to_string(domain) + "]"
                           : "";
            case 8:
                return "do = \"fabric_rename\"" + principal;
            default:
                return any ? std::string("do = \"remote_port_") +
                                 (random(2) == 0 ? "online\"" : "offline\"") + about + port
                           : "";
        }
    }

    static std::string lines(std::string fields) {
        for (size_t comma; (comma = fields.find(", ")) != std::string::npos;) fields.replace(comma, 2, "\n");
        return fields;
    }

    /** The domains of the link state database, less the local one, by the switch's own keys. */
    std::vector<unsigned> domains(bool reachable) {
        std::vector<unsigned> found;
        for (unsigned domain = 2; domain <= 239; ++domain) {
            const auto hops = sim.get("Oper.Eport.LsdbRecord." + std::to_string(domain) + ".Hops");
            if (hops && (!reachable || *hops != "255")) found.push_back(domain);
        }
        return found;
    }

    std::string nameOf(unsigned domain) {
        return *sim.get("Oper.Eport.LsdbRecord." + std::to_string(domain) + ".WWN");
    }

    void expectCacheEqualsSwitch() {
        EXPECT_EQ(fabric().getFabricWorldWideName(), Wwn(*sim.get("Oper.Switch.WhoIsPrincipal")));
        const std::vector<unsigned> present = domains(true);
        EXPECT_EQ(fabric().getSwitchCount(), present.size() + 1);
        for (const unsigned domain : present) {
            SCOPED_TRACE(domain);
            const std::string number = std::to_string(domain);
            const std::string name = Wwn(nameOf(domain)).tostring();
            const SwitchCache* const found = member(name);
            ASSERT_NE(found, nullptr);
            EXPECT_EQ(fabric().getSwitchByDomainID(number), found);
            expectPortsEqual(*found, number);
        }
        const std::string local = Wwn(*sim.get("Oper.Switch.WWN")).tostring();
        const int ports = std::stoi(*sim.get("Oper.Switch.MaxPorts"));
        for (int port = 0; port < ports; ++port) {
            const std::string name = cache().calcPortWwn(local, std::to_string(port));
            EXPECT_EQ(name, Wwn(*sim.get("Oper.UserPort.0." + std::to_string(port) + ".WWN")).tostring());
            EXPECT_EQ(cache().calcPortIndex(local, name), std::to_string(port));
        }
    }

    void expectPortsEqual(const SwitchCache& found, const std::string& domain) {
        const std::string topology = "Oper.TopologyAll." + domain;
        const int entries = std::stoi(*sim.get(topology + ".PortEntries"));
        PortCache walked = found.getFirstPort();
        for (int entry = 0; entry < entries; ++entry) {
            const std::string index = std::to_string(entry);
            const auto name = sim.get(topology + ".Entry." + index + ".PortWwn");
            if (!name) {
                EXPECT_EQ(cache().calcPortWwn(found.getWwn(), index), "");
                continue;
            }
            EXPECT_EQ(walked.getWwn(), *name);
            walked = found.getNextPort(walked);
            EXPECT_EQ(cache().calcPortIndex(found.getWwn(), *name), index);
            EXPECT_EQ(cache().calcPortWwn(found.getWwn(), index), *name);
            EXPECT_EQ(fabric().getSwitchByPortWwn(*name), &found);
            EXPECT_EQ(found.getPortByLSDBPortIndex(index).getWwn(), *name);
        }
        EXPECT_TRUE(walked.isNull());
    }

    std::mt19937 _engine{GetParam()};
    unsigned _made = 0;
};

TEST_P(FabricProperty, CacheEqualsSwitchWhenQuiet) {
    sim.keepTranscript(false);
    loadGenerated(writeSwitchFile(randomShape()));
    expectCacheEqualsSwitch();
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        std::string steps;
        for (unsigned changes = 1 + random(3); changes > 0; --changes) {
            const std::string fields = randomStep(domains(false));
            if (fields.empty()) continue;
            sim.run("[[step]]\n" + fields);
            steps += fields + "\n\n";
        }
        SCOPED_TRACE(steps);
        if (random(4) == 0) {  // something fails on the way, and a pass that fails is made again
            sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nresult = 1\nskip = " +
                    std::to_string(random(30)));
        }
        settle();
        sim.run("[[step]]\ndo = \"clear_faults\"");
        if (!peer().fabricOK) pass();
        expectCacheEqualsSwitch();
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, FabricProperty, ::testing::Range(1U, 9U));

}  // namespace
