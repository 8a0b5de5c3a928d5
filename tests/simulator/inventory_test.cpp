#include "tests/simulator/SimulatorTest.h"

TEST_F(SimulatorTest, SlotsAnswerAsLongAsTheChassisHasThem) {
    sim.loadSwitchText("[chassis]\nslots = 3\n[[blade]]\nslot = 1\ntype = 'IO'\ntemp_sensors = 4\n");
    const std::pair<const char*, const char*> keys[] = {
        {"Oper.Blade.0.OperState", "NotInstalled"},
        {"Oper.Blade.0.Type", ""},
        {"Oper.Blade.0.TempSensors", "0"},
        {"Oper.Blade.2.FaultList", ""},
    };
    for (const auto& [key, value] : keys) EXPECT_EQ(sim.get(key), value) << key;
    for (const char* key :
         {"Oper.Blade.3.OperState", "Oper.Blade.01.OperState", "Oper.Blade.0.Colour", "Oper.Blade..OperState",
          "Oper.Blade.-1.OperState", "Oper.Blade.65536.OperState"}) {
        EXPECT_EQ(sim.get(key), std::nullopt) << key;
    }
    sim.run("do = 'blade_remove'\nslot = 1\n");
    EXPECT_EQ(sim.get("Oper.Blade.1.OperState"), "NotInstalled");
    EXPECT_EQ(sim.get("Oper.Blade.1.TempSensors"), "0");
    sim.run("do = 'fault_list'\nslot = 1\nfaults = ['FW_POST_FAIL']\n");
    EXPECT_EQ(sim.get("Oper.Blade.1.FaultList"), "FW_POST_FAIL") << "the slot stays";
    sim.run("do = 'blade_insert'\nslot = 1\ntype = 'FAN'\n");
    EXPECT_EQ(sim.get("Oper.Blade.1.Type"), "FAN");
}

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

TEST_F(SimulatorTest, ServicesAndAddressesChange) {
    sim.loadSwitchText("[network]\nipv6_address = '2001:db8::1'\n");
    EXPECT_EQ(sim.get("Config.Services.SSHEnable"), "True") << "a default";
    sim.run("do = 'service'\nname = 'ssh'\nenabled = false\n");
    EXPECT_EQ(sim.get("Config.Services.SSHEnable"), "False");
    sim.run("do = 'ip_address'\nversion = 6\naddress = '2001:db8::2'\n");
    EXPECT_EQ(sim.get("Oper.System.Eth.0.IPv6Address.0"), "2001:db8::2");
    EXPECT_EQ(sim.get("Oper.System.Eth.0.IPv4Address"), "192.0.2.10");
}
