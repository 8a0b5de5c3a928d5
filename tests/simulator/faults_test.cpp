#include <atomic>
#include <chrono>
#include <thread>

#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

namespace {

class FaultsTest : public SimulatorTest {
  protected:
    FaultsTest() {
        sim.set("A.1", "one");
        sim.set("A.2", "two");
        sim.set("Config.C", "old");
    }

    void fault(const std::string& fields) { sim.run("do = 'fault'\n" + fields); }

    /** One call for three keys: "RESULT STATUS=VALUE,STATUS=VALUE,STATUS=VALUE". */
    std::string batch() const {
        vex_smlrequest_s records[] = {request("A.1"), request("A.2"), request("B")};
        std::string line = std::to_string(vex_smlGetBatch(handle, records, 3));
        if (line != "0") return line;
        for (const vex_smlrequest_s& record : records) {
            line += ' ' + std::to_string(record.status) + '=' + valueOf(record);
        }
        return line;
    }

    /** One single get: "RESULT" or "RESULT=VALUE". */
    std::string single(const char* key) const {
        char* value = nullptr;
        uint32_t extra = 0;
        std::string line = std::to_string(vex_smlGet(handle, key, &value, &extra));
        if (value != nullptr) line += std::string("=") + value;
        if (value != nullptr) vex_libFreeMemory(value);
        return line;
    }
};

}  // namespace

TEST_F(FaultsTest, EachEffectHitsTheKeysItNames) {
    const std::string filled(256, '#');
    const struct {
        const char* fields;
        std::string batch;
        std::string single;  // of A.1
    } cases[] = {
        {"function = 'vex_IPConnect'\nresult = 1", "0 0=one 0=two 201=", "0=one"},
        {"function = '*'\nkey = 'A.3'\nstatus = 5", "0 0=one 0=two 201=", "0=one"},
        {"function = '*'\nresult = 7", "7", "7"},
        {"function = '*'\nresult = -1", "-1", "-1"},
        {"function = '*'", "299", "299"},
        {"function = 'vex_smlGetBatch'\nkey = 'B'\nresult = 7", "7", "0=one"},
        {"function = '*'\nkey = 'A.*'\nstatus = 24", "0 24= 24= 201=", "24"},
        {"function = 'vex_smlGet'\nkey = 'A.1'\nstatus = 103", "0 0=one 0=two 201=", "103"},
        {"function = '*'\nstatus = 5", "0 5= 5= 5=", "5"},
        {"function = '*'\nkey = 'B'\nvalue = 12", "0 0=one 0=two 0=12", "0=one"},
        {"function = '*'\nkey = 'A.1'\ntruncate = 2", "0 0=on 0=two 201=", "0=on"},
        {"function = '*'\nkey = 'A.1'\nunterminated = true",
         "0 0=one" + filled.substr(3) + " 0=two 201=", "0=one" + filled.substr(3)},
        {"function = 'vex_smlGet'\nnull = true", "0 0=one 0=two 201=", "0"},
    };
    for (const auto& row : cases) {
        fault(std::string(row.fields) + "\ntimes = 0");
        EXPECT_EQ(batch(), row.batch) << row.fields;
        EXPECT_EQ(single("A.1"), row.single) << row.fields;
        sim.run("do = 'clear_faults'");
    }
    EXPECT_EQ(sim.live().texts, 0U);
}

TEST_F(FaultsTest, ADelayKeepsNobodyElseWaiting) {
    fault("function = 'vex_smlGet'\nkey = 'A.1'\ndelay_ms = 300");
    std::atomic<bool> returned{false};
    std::chrono::steady_clock::duration taken{};
    std::thread slow([&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(single("A.1"), "0=one");
        taken = std::chrono::steady_clock::now() - start;
        returned = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(single("A.2"), "0=two");
    EXPECT_FALSE(returned);
    slow.join();
    EXPECT_GE(taken, std::chrono::milliseconds(300));
}

TEST_F(FaultsTest, WhatWouldCrashARealLibraryIsCounted) {
    vex_smlrequest_s record = request("A.1");
    vex_eventreg_s code{};
    char* value = nullptr;
    uint32_t extra = 0;
    int32_t count = 0;
    char name[VEX_ZONING_NAME_SIZE];
    vex_memberid_u id{};
    void* zone = vex_ZoneCreate("z");
    char* full = name;
    const auto ignore = [](void*, vex_event_s*, void*) {};
    const bool refused[] = {
        vex_IPConnect("localhost", "cim", nullptr, &extra) != 0,
        vex_IPConnect("localhost", "cim", "", nullptr) != 0,
        vex_enRegisterForEventList(handle, nullptr, nullptr, &code, 1) != 0,
        vex_enRegisterForEventList(handle, ignore, nullptr, nullptr, 1) != 0,
        vex_smlGetBatch(handle, nullptr, 1) != 0,
        vex_smlSetBatch(handle, &record, -1) != 0,
        vex_smlGet(handle, "A.1", &value, nullptr) != 0,
        vex_smlGet(handle, nullptr, &value, &extra) != 0,
        vex_smlSet(handle, "Cmd.Switch.ReqAdmin", nullptr) != 0,
        vex_libFreeMemory(nullptr) != 0,
        vex_fzsGetZoneset(handle, nullptr, &zone) != 0,
        vex_fzsGetActiveZoneset(handle, nullptr) != 0,
        vex_smlGet(handle, "A.1", &full, &extra) != 0,
        vex_smlSet(handle, "Cmd.Switch.ReqAdmin", &zone) != 0,
        vex_fzsGetZoneset(handle, "z", &zone) != 0,
        vex_smlSetBatch(handle + 1, &record, 1) != 0,
        vex_fzsGetActiveZonesetName(handle, nullptr) != 0,
        vex_fzsGetZonesetList(handle, &count, nullptr) != 0,
        vex_fzsGetZoningLimitations(handle, nullptr) != 0,
        vex_ZonesetGetName(nullptr, name) != 0,
        vex_ZonesetGetZoneCount(nullptr) == 0,
        vex_ZoneGetName(zone, nullptr) != 0,
        vex_ZoneGetType(zone, nullptr) != 0,
        vex_ZoneSetName(zone, nullptr) != 0,
        vex_ZoneFindMember(zone, VEX_ZMT_WWN, nullptr) == nullptr,
        vex_ZoneAliasCreate(nullptr) == nullptr,
        vex_ZoneDestroy(nullptr) != 0,
        vex_MemberCreate(VEX_ZMT_WWN, nullptr) == nullptr,
        vex_strToMemberIdentifier(nullptr, VEX_ZMT_WWN, &id) != 0,
    };
    EXPECT_THAT(refused, testing::Each(true));
    uptime(nullptr);
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 1);
    EXPECT_NE(command("Cmd.Switch.EditConfig"), 0) << "a refused command was not carried out";
    fault("function = '*'\nresult = 0");
    vex_smlSet(handle, "A", nullptr);
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 2) << "whatever a fault makes of the call";
    sim.run("do = 'clear_faults'");
    ASSERT_EQ(vex_smlGet(handle, "A.1", &value, &extra), 0);
    EXPECT_NE(vex_libFreeMemory(value + 1), 0);
    EXPECT_EQ(vex_libFreeMemory(value), 0);
    EXPECT_NE(vex_libFreeMemory(value), 0) << "released twice";
    EXPECT_EQ(sim.live().misuse, std::size(refused) + 4);
}

TEST_F(FaultsTest, KeysAndValuesThatFillTheirFieldsAreReadWithABound) {
    const std::string key(256, 'k');
    sim.set(key, std::string(300, 'v'));
    vex_smlrequest_s record{};
    key.copy(record.key, sizeof record.key);
    ASSERT_EQ(vex_smlGetBatch(handle, &record, 1), 0);
    EXPECT_EQ(record.status, Ok);
    EXPECT_EQ(valueOf(record), std::string(255, 'v'));
}

TEST_F(FaultsTest, LimitsComeFromTheFile) {
    vex_fzs_limits_s limits{};
    sim.loadSwitchText(
        "[zoning.limits]\nzonesets = 1\nzones = 2\nmembers = 3\nzones_per_zoneset = 4\n"
        "members_per_zone = 5\naliases = 6\nmembers_per_alias = 7\n");
    ASSERT_EQ(vex_fzsGetZoningLimitations(handle, &limits), 0);
    const int32_t expected[] = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(std::memcmp(&limits, expected, sizeof limits), 0);
}
