#include "tests/simulator/SimulatorTest.h"

TEST_F(SimulatorTest, StepsThatCannotBeAreRefused) {
    sim.loadSwitchText("[chassis]\nslots = 2\n[[blade]]\nslot = 1\ntype = 'IO'\n");
    const std::pair<const char*, const char*> steps[] = {
        {"do = 'blade_insert'\nslot = 1\ntype = 'IO'\n", "f:1: slot 1 is not empty"},
        {"do = 'blade_insert'\nslot = 2\ntype = 'IO'\n", "f:1: the chassis has no slot 2"},
        {"do = 'blade_remove'\nslot = 0\n", "f:1: slot 0 is empty"},
        {"do = 'blade_state'\nslot = 1\n",
         "f:1: step \"blade_state\" needs \"state\", \"admin\" or \"diagnosis\""},
        {"do = 'account_remove'\nname = 'nobody'\n", "f:1: the switch has no account \"nobody\""},
        {"do = 'account_rename'\nfrom = 'nobody'\nto = 'x'\n", "f:1: the switch has no account \"nobody\""},
        {"do = 'service'\nname = 'fax'\nenabled = true\n", "f:2: unknown service \"fax\""},
        {"do = 'ip_address'\nversion = 5\naddress = 'x'\n", "f:2: \"version\" must be 4 or 6"},
        {"do = 'ip_address'\nversion = 6\naddress = '192.0.2.1'\n",
         "f:3: \"address\" must be an IPv6 address like \"2001:db8::10\""},
        {"do = 'fabric_rename'\nprincipal = '1000001122000009'\n",
         "f:1: the fabric has no switch 1000001122000009 to be the principal"},
        {"do = 'fabric_segment'\nprincipal = '1000001122000009'\ndomains = [7, 7]\n",
         "f:3: \"domains\" names 7 twice"},
        {"do = 'lsdb_links'\ndomain = 8\n", "f:1: the fabric has no domain 8"},
    };
    for (const auto& [text, message] : steps) {
        EXPECT_EQ(errorOf([&, step = text] { sim.run(step, "f"); }), message) << text;
    }
}
