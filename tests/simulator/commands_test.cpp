#include <array>
#include <sstream>

#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

TEST_F(SimulatorTest, CommandsNeedWhatComesBeforeThem) {
    sim.loadSwitchText(
        "zoning.limits = {zonesets = 2, zones = 2, members = 6, zones_per_zoneset = 1, "
        "members_per_zone = 4, aliases = 2, members_per_alias = 2}");
    // Sends commands, separated by blanks, until one fails; returns its status. "+" stands for Zoning.
    const auto send = [this](const std::string& commands) {
        std::istringstream words(commands);
        int32_t status = Ok;
        for (std::string word; status == Ok && words >> word;)
            status = command("Cmd." + (word[0] == '+' ? "Zoning." + word.substr(1) : word));
        return static_cast<uint32_t>(status);
    };
    const std::string edit = "Switch.ReqAdmin +FabricLock.77 +EditConfig +ClearConfig ";
    const std::pair<std::string, uint32_t> cases[] = {
        {"Switch.ReqAdmin Switch.EditConfig Cim.SaveConfig", NotInEdit},
        {"Switch.ReqAdmin Switch.EditConfig Switch.RelAdmin Switch.ReqAdmin Switch.SaveConfig", NotInEdit},
        {"+FabricLock.77", NoAdmin},
        {"Switch.ReqAdmin +EditConfig", NotLocked},
        {edit + "+EditConfig", Busy},
        {edit + "+FabricUnlock.77 +SaveConfig", NotInEdit},
        {edit + "+Alias.a.AddZoneMember.010203", NoSuchName},
        {edit + "+Alias.a.Create +Alias.b.Create +Alias.a.AddZoneMember.b", BadMember},
        {edit + "+Zone.z.Create +Zone.z.ZoneType.Hard", BadArgument},
        {edit + "+Zone.z.Create +Zone.z.AddZoneMember.0102 +Zone.z.AddZoneMember.1,2", Exists},
        {edit + "+Alias.beef.Create +Zone.z.Create +Zone.z.AddZoneMember.beef +Zone.z.AddZoneMember.BEEF",
         Ok},  // an alias that is known comes before an address
        {edit + "+Zone.a.Create +Zone.b.Create +Zone.c.Create +SaveConfig", LimitReached},
    };
    const std::string before = sim.get("Oper.Zoning.InactiveChecksum").value();
    for (const auto& [commands, status] : cases) {
        EXPECT_EQ(send(commands), status) << commands;
        send("+FabricUnlock.77");
        send("Switch.RelAdmin");
    }
    EXPECT_EQ(send(edit + "+Zone.z.Create +Zone.z.Create"), Exists);
    EXPECT_EQ(send("+SaveConfig"), Refused) << "whole or not at all";
    EXPECT_EQ(sim.get("Oper.Zoning.InactiveChecksum"), before);
}

TEST_F(SimulatorTest, FaultsMakeTheSwitchLieAboutACommit) {
    // The result, the statuses of all seven, and what the switch then has.
    const std::pair<std::string, const char*> cases[] = {
        {"{key = 'none'}", "0: 0 0 0 212 205 0 0"},
        {"{key = '*.SaveConfig', in_part = true}", "0: 0 0 0 212 0 0 0 saved"},
        {"{key = '*.SaveConfig', status = 0}", "0: 0 0 0 212 0 0 0"},
        {"{key = '*.z.AddZoneMember.*', status = 7}", "0: 0 0 0 7 0 0 0 saved"},
        {"{key = '*.z.AddZoneMember.*', status = 0}, {key = '*.FabricUnlock.77', status = 206}",
         "0: 0 0 0 0 0 206 0 saved locked"},
        {"{key = '*.SaveConfig', in_part = true}, {result = 5, carried_out = true}",
         "5: 0 0 0 212 0 0 0 saved"},
        {"{key = '*.SaveConfig', in_part = true}, {key = '*.SaveConfig', status = 6, carried_out = true}",
         "0: 0 0 0 212 6 0 0 saved"},
    };
    for (const auto& [faults, outcome] : cases) {
        sim.loadSwitchText("");
        std::string steps = "step = [" + faults + ']';
        for (size_t at = 0; (at = steps.find('{', at)) != std::string::npos; ++at)
            steps.insert(at + 1, "do = 'fault', function = 'vex_smlSetBatch', ");
        sim.run(steps);
        const std::string before = sim.get("Oper.Zoning.InactiveChecksum").value();
        EXPECT_EQ(command("Cmd.Switch.ReqAdmin") + command("Cmd.Zoning.FabricLock.77"), 0);
        std::vector<vex_smlrequest_s> group;
        for (const char* key : {"Zoning.EditConfig", "Zoning.ClearConfig", "Zoning.Zone.z.Create",
                                "Zoning.Zone.z.AddZoneMember.no", "Zoning.SaveConfig",
                                "Zoning.FabricUnlock.77", "Switch.RelAdmin"}) {
            std::snprintf(group.emplace_back().key, VEX_SML_KEY_SIZE, "Cmd.%s", key);
        }
        const int32_t result = vex_smlSetBatch(handle, group.data(), static_cast<int32_t>(group.size()));
        std::string came = std::to_string(result) + ':';
        for (const vex_smlrequest_s& record : group) came += ' ' + std::to_string(record.status);
        if (sim.get("Oper.Zoning.InactiveChecksum") != before) came += " saved";
        const bool free = command("Cmd.Switch.ReqAdmin") != 0 || command("Cmd.Zoning.FabricUnlock.77") != 0;
        EXPECT_EQ(came + (free ? "" : " locked"), outcome) << faults;
    }
}

TEST_F(SimulatorTest, WhatWouldCrashARealLibraryIsCounted) {
    char* value = nullptr;
    uint32_t extra = 0;
    void* zone = vex_ZoneCreate("z");
    void* member = vex_MemberCreate(VEX_ZMT_WWN, std::array<vex_memberid_u, 1>{}.data());
    void* zonesets[] = {vex_ZonesetCreate("s"), vex_ZonesetCreate("t")};
    EXPECT_EQ(vex_ZoneAddMember(zone, member), 0);
    EXPECT_EQ(vex_ZonesetAddZone(zonesets[0], zone), 0);
    void* copy = vex_ZoneCreateCopy(zone, "z");
    EXPECT_NE(vex_ZonesetAddZone(zonesets[0], copy), 0) << "the name is taken, and the copy stays ours";
    EXPECT_EQ(vex_ZoneDestroy(&copy), 0);
    void* stale = zone;
    void* gone = zonesets[1];
    EXPECT_EQ(sim.live().misuse, 0U);
    const bool refused[] = {
        vex_enRegisterForEventList(handle, nullptr, nullptr, nullptr, 1) != 0,
        vex_smlGet(handle, "A.1", &value, nullptr) != 0,
        vex_smlSet(handle, "Cmd.Switch.ReqAdmin", nullptr) != 0,
        vex_smlSet(handle, "Cmd.Switch.ReqAdmin", &zone) != 0,  // the slot is not null
        vex_smlGetBatch(handle + 1, nullptr, 0) != 0,
        vex_libFreeMemory(nullptr) != 0,
        vex_ZonesetGetZoneCount(nullptr) == 0,
        vex_ZoneFindMember(zone, VEX_ZMT_WWN, nullptr) == nullptr,
        vex_ZonesetAddZone(zonesets[1], zone) != 0,  // has an owner
        vex_ZoneDestroy(&stale) != 0,                // goes with its container
        vex_ZoneAliasGetMemberCount(zone) == 0,      // is no alias
        vex_ZonesetDestroy(&zonesets[1]) == 0 && vex_ZonesetDestroy(&gone) != 0,
        vex_ZonesetRemoveZone(zonesets[0], zone) == 0 && vex_ZoneGetMemberCount(zone) == 0,
    };
    EXPECT_THAT(refused, testing::Each(true));
    EXPECT_EQ(vex_ZonesetDestroy(&zonesets[0]), 0);
    const Live live = sim.live();
    EXPECT_EQ(live.zonesets + live.zones + live.members, 0U);
    uptime(nullptr);
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 1);
    EXPECT_NE(command("Cmd.Switch.EditConfig"), 0) << "a refused command was not carried out";
    sim.run("do = 'fault'\nfunction = '*'\nresult = 0");
    vex_smlSet(handle, "A", nullptr);
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 2) << "whatever a fault makes of the call";
    sim.run("do = 'clear_faults'");
    sim.set("A.1", "one");
    sim.run("do = 'fault'\nfunction = 'vex_smlGet'\nkey = 'A.*'\ntruncate = 2");
    ASSERT_EQ(vex_smlGet(handle, "A.1", &value, &extra), 0);
    EXPECT_STREQ(value, "on");
    EXPECT_NE(vex_libFreeMemory(value + 1), 0);
    EXPECT_EQ(vex_libFreeMemory(value), 0);
    EXPECT_NE(vex_libFreeMemory(value), 0) << "released twice";
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 4);
}
