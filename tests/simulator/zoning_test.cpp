#include <sstream>

#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

namespace {

using ::testing::IsEmpty;

std::vector<int32_t> received;

void receive(void*, vex_event_s* event, void*) {
    received.push_back(event->code);
}

constexpr const char* kZoning = R"(
[[zoning.alias]]
name = "beef"
members = ["2000001122000001"]
[[zoning.zone]]
name = "z1"
members = ["beef", "cafe", "010203", "3,4"]
[[zoning.zoneset]]
name = "s1"
zones = ["z1"]
[zoning.limits]
zonesets = 2
zones = 2
members = 6
zones_per_zoneset = 1
members_per_zone = 4
aliases = 2
members_per_alias = 2
)";

class SimulatedZoning : public SimulatorTest {
  protected:
    SimulatedZoning() {
        sim.loadSwitchText(kZoning);
        received.clear();
        vex_eventreg_s list[] = {{VEX_EVENT_ZONE_CHANGE, 0}};
        vex_enRegisterForEventList(handle, receive, nullptr, list, 1);
    }
    /** Sends commands, separated by blanks, until one fails; returns its status. */
    uint32_t send(const std::string& commands) {
        std::istringstream words(commands);
        uint32_t status = Ok;
        for (std::string word; status == Ok && words >> word;)
            status = static_cast<uint32_t>(
                command(word[0] == '+' ? "Cmd.Zoning." + word.substr(1) : "Cmd." + word));
        return status;
    }
    uint32_t edit(const std::string& commands) {
        send("+FabricUnlock.77");
        send("Switch.RelAdmin");
        return send("Switch.ReqAdmin +FabricLock.77 +EditConfig +ClearConfig " + commands);
    }
    /** The members of a zone of the switch, as "TYPE" digits. */
    std::string memberTypes(const char* zone) {
        void* all = nullptr;
        EXPECT_EQ(vex_fzsGetAllZonesAndAliases(handle, "all", &all), 0);
        void* found = vex_ZonesetFindZone(all, zone);
        std::string types;
        for (int32_t i = 0; found != nullptr && i < vex_ZoneGetMemberCount(found); ++i) {
            vex_fzs_zonemember_type_e type{};
            vex_memberid_u id{};
            vex_MemberGetAttr(vex_ZoneListMembers(found, i), &type, &id);
            types += std::to_string(type);
        }
        vex_ZonesetDestroy(&all);
        return types;
    }
    std::string checksum() { return sim.get("Oper.Zoning.InactiveChecksum").value(); }
};

TEST_F(SimulatedZoning, CommandsAreChecked) {
    const struct {
        const char* commands;
        uint32_t status;
    } cases[] = {
        {"+Alias.a.Create +Alias.a.Create", Exists},
        {"+Alias.9a.Create", BadName},
        {"+Alias.a.AddZoneMember.010203", NoSuchName},
        {"+Alias.a.Create +Alias.a.AddZoneMember.zz", BadMember},
        {"+Alias.a.Create +Alias.b.Create +Alias.a.AddZoneMember.b", BadMember},
        {"+Zone.z.Create +Zone.z.ZoneType.Hard", BadArgument},
        {"+Zone.z.Create +Zone.z.AddZoneMember.0102 +Zone.z.AddZoneMember.1,2", Exists},
        {"+Zone.z.Create +Zone.z.AddZoneMember.nobody", BadMember},
        {"+Zone.z.Create +ZoneSet.s.Create +ZoneSet.s.Create +ZoneSet.s.AddZone.z +ZoneSet.s.AddZone.z", Ok},
        {"+ZoneSet.s.Create +ZoneSet.s.AddZone.z", NoSuchName},
        {"+Zone.z.Create.more", UnknownKey},
        {"+Zone.z.Destroy", UnknownKey},
        {"+Zone", UnknownKey},
        {"+EditConfig", Busy},
        {"+CancelConfig +SaveConfig", NotInEdit},
        {"Switch.RelAdmin +SaveConfig", NotInEdit},
        {"+FabricUnlock.77 +SaveConfig", NotInEdit},
    };
    for (const auto& row : cases) EXPECT_EQ(edit(row.commands), row.status) << row.commands;
    send("+FabricUnlock.77");
    EXPECT_EQ(send("+EditConfig"), NotLocked);
    EXPECT_EQ(send("+FabricUnlock.77"), NotLocked);
    send("Switch.RelAdmin");
    EXPECT_EQ(send("+FabricLock.77"), NoAdmin);
    EXPECT_EQ(send("Switch.ReqAdmin +FabricLock.77 Switch.ReqAdmin +FabricLock.77"), Ok) << "it has them";
    uint32_t other = 0;
    sim.run("do = 'admin'\nshared = true");
    ASSERT_EQ(vex_IPConnect("localhost", "other", "", &other), 0);
    EXPECT_EQ(command(other, "Cmd.Switch.ReqAdmin"), 0);
    EXPECT_EQ(command(other, "Cmd.Zoning.FabricLock.77"), static_cast<int32_t>(Refused));
    EXPECT_EQ(send("Switch.ReqAdmin +FabricUnlock.77"), Ok);
    sim.run("do = 'fabric_lock'\nheld_elsewhere = true");
    EXPECT_EQ(send("+FabricLock.77"), Refused);
}

TEST_F(SimulatedZoning, AnEditIsSavedWholeOrNotAtAll) {
    const std::string before = checksum();
    EXPECT_EQ(edit("+Zone.z.Create +Zone.z.Create"), Exists);
    EXPECT_EQ(send("+SaveConfig"), Refused) << "after a command that failed";
    for (const char* full :
         {"+ZoneSet.a.Create +ZoneSet.b.Create +ZoneSet.c.Create",
          "+Zone.a.Create +Zone.b.Create +Zone.c.Create", "+Alias.a.Create +Alias.b.Create +Alias.c.Create",
          "+Zone.a.Create +Zone.b.Create +ZoneSet.s.Create +ZoneSet.s.AddZone.a +ZoneSet.s.AddZone.b",
          "+Alias.a.Create +Alias.a.AddZoneMember.1,1 +Alias.a.AddZoneMember.1,2 +Alias.a.AddZoneMember.1,3"})
        EXPECT_EQ(edit(std::string(full) + " +SaveConfig"), LimitReached) << full;
    EXPECT_EQ(edit("+Zone.z.Create +CancelConfig"), Ok);
    EXPECT_EQ(checksum(), before);
    EXPECT_EQ(memberTypes("z1"), "5232");
    sim.deliverPending();
    EXPECT_THAT(received, IsEmpty());

    EXPECT_EQ(
        edit("+Alias.beef01.Create +Zone.z.Create +Zone.z.AddZoneMember.beef01 +Zone.z.AddZoneMember.BEEF01 "
             "+Zone.z.AddZoneMember.20:00:00:11:22:00:00:01 +Zone.z.AddZoneMember.0a0b +SaveConfig"),
        Ok);
    EXPECT_EQ(memberTypes("z"), "5312") << "an alias that is known comes before an address";
    EXPECT_EQ(memberTypes("z1"), "");
    EXPECT_NE(checksum(), before);
    sim.deliverPending();
    EXPECT_EQ(received, (std::vector<int32_t>{VEX_EVENT_ZONE_CHANGE}));
    EXPECT_EQ(sim.live().zonesets, 0U);
}

TEST_F(SimulatedZoning, HandlesAreCheckedAndOwnershipIsKept) {
    void* zoneset = vex_ZonesetCreate("s");
    void* other = vex_ZonesetCreate("t");
    void* zone = vex_ZoneCreate("z");
    vex_memberid_u id{};
    ASSERT_EQ(vex_strToMemberIdentifier("010203", VEX_ZMT_FCID, &id), 0);
    void* member = vex_MemberCreate(VEX_ZMT_FCID, &id);
    EXPECT_EQ(vex_ZoneAddMember(zone, member), 0);
    EXPECT_EQ(vex_ZonesetAddZone(zoneset, zone), 0);
    EXPECT_EQ(sim.live().misuse, 0U);

    void* copy = vex_ZoneCreateCopy(zone, "^_-_-_-_TMPZONE_-_-_-_^");
    EXPECT_NE(vex_ZoneFindMember(copy, VEX_ZMT_FCID, &id), member) << "a copy has members of its own";
    EXPECT_NE(vex_ZoneSetName(copy, "^_-_-_-_TMPZONE_-_-_-_^"), 0) << "no name to keep";
    EXPECT_EQ(vex_ZoneSetName(copy, "z"), 0);
    EXPECT_NE(vex_ZonesetAddZone(zoneset, copy), 0) << "the name is taken, and the copy stays ours";
    EXPECT_EQ(vex_ZoneSetName(copy, "y"), 0);
    EXPECT_EQ(vex_ZonesetAddZone(zoneset, copy), 0);
    EXPECT_NE(vex_ZoneSetName(copy, "z"), 0) << "nor can it be taken inside";
    EXPECT_EQ(vex_ZoneSetName(copy, "x"), 0);
    EXPECT_EQ(vex_ZonesetFindZone(zoneset, "x"), copy);
    EXPECT_EQ(sim.live().misuse, 0U);

    size_t wrong = 0;
    const auto misuse = [&](bool refused) { return refused && sim.live().misuse == ++wrong; };
    void* stale = zone;
    EXPECT_TRUE(misuse(vex_ZonesetAddZone(other, zone) != 0)) << "an object has one owner";
    EXPECT_TRUE(misuse(vex_ZonesetRemoveZone(other, zone) != 0));
    EXPECT_TRUE(misuse(vex_ZoneDestroy(&stale) != 0)) << "what is contained goes with its container";
    EXPECT_TRUE(misuse(vex_ZoneAddMember(copy, member) != 0));
    EXPECT_TRUE(misuse(vex_ZoneAliasGetMemberCount(zone) == 0)) << "a zone is no alias";
    EXPECT_EQ(vex_ZonesetRemoveZone(zoneset, zone), 0);
    EXPECT_TRUE(misuse(vex_ZoneGetMemberCount(zone) == 0)) << "destroyed";
    stale = other;
    EXPECT_EQ(vex_ZonesetDestroy(&other), 0);
    EXPECT_EQ(other, nullptr);
    EXPECT_TRUE(misuse(vex_ZonesetDestroy(&stale) != 0));
    EXPECT_EQ(vex_ZonesetDestroy(&zoneset), 0);
    const Live live = sim.live();
    EXPECT_EQ(live.zonesets + live.zones + live.aliases + live.members, 0U);
}

TEST_F(SimulatedZoning, FilesAndStepsThatAreWrongSayWhere) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"[[zoning.zone]]\nname = '9'\n", R"(f:2: "9" is not a zoning name)"},
        {"[[zoning.zone]]\nname = 'z'\nmembers = ['nobody']\n",
         R"(f:3: "nobody" is no member: neither an address, domain and port, nor a known alias)"},
        {"[[zoning.zone]]\nname = 'z'\n[[zoning.zone]]\nname = 'z'\n", R"(f:4: "z" is there already)"},
        {"[[zoning.zoneset]]\nname = 's'\nzones = ['z']\n", R"(f:3: there is no "z")"},
        {"[zoning]\nactive = 's'\n", R"(f:2: there is no "s")"},
        {"[zoning.active]\n", R"(f:1: what is active is one zoneset)"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(errorOf([&] { sim.loadSwitchText(row.text, "f"); }), row.message);
    }
    for (const char* step :
         {"do = 'zoneset_activate'\nname = 'none'", "do = 'zone_remove'\nname = 'none'",
          "do = 'zone_add'\nname = 'z1'", "do = 'zone_add'\nname = 'z9'\nzonesets = ['none']"})
        EXPECT_THROW(sim.run(step), InputError) << step;
    EXPECT_EQ(sim.deliverPending(), 0U) << "nothing changed";
}

}  // namespace
