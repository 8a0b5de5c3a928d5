#include <array>
#include <cstring>

#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

TEST_F(SimulatorTest, EachEffectOfAFaultHitsTheKeysItNames) {
    sim.set("A.1", "one");
    sim.set("A.2", "two");
    const std::pair<const char*, std::string> cases[] = {
        {"key = 'A.3'\nstatus = 5", "0 0=one 0=two 201="},
        {"result = 7", "7 0= 0= 0="},
        {"", "299 0= 0= 0="},
        {"key = 'A.*'\nstatus = 24", "0 24= 24= 201="},
        {"status = 5", "0 5= 5= 5="},
        {"key = 'B'\nvalue = 12", "0 0=one 0=two 0=12"},
        {"key = 'A.1'\ntruncate = 2", "0 0=on 0=two 201="},
        {"key = 'A.1'\nunterminated = true", "0 0=one" + std::string(253, '#') + " 0=two 201="},
    };
    for (const auto& [fields, answer] : cases) {
        sim.run(std::string("do = 'fault'\nfunction = 'vex_smlGetBatch'\ntimes = 0\n") + fields);
        vex_smlrequest_s records[] = {request("A.1"), request("A.2"), request("B")};
        std::string line = std::to_string(vex_smlGetBatch(handle, records, 3));
        for (const vex_smlrequest_s& record : records) {
            line += ' ' + std::to_string(record.status) + '=';
            line.append(record.value, strnlen(record.value, sizeof record.value));
        }
        EXPECT_EQ(line, answer) << fields;
        sim.run("do = 'clear_faults'");
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
    ASSERT_EQ(vex_smlGet(handle, "A.1", &value, &extra), 0);
    EXPECT_NE(vex_libFreeMemory(value + 1), 0);
    EXPECT_EQ(vex_libFreeMemory(value), 0);
    EXPECT_NE(vex_libFreeMemory(value), 0) << "released twice";
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 4);
}
