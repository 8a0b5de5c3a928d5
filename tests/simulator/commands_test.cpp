#include <sstream>

#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

namespace {

/** A switch with edits that cannot be, or not yet. */
class Commands : public SimulatorTest {
  protected:
    Commands() {
        sim.loadSwitchText(R"(
sml = {"Config.Services.SSHEnable" = true, "Oper.Switch.DomainID" = 1}
[zoning]
limits = {zonesets = 2, zones = 2, members = 6, zones_per_zoneset = 1, members_per_zone = 4, aliases = 2, members_per_alias = 2}
)");
    }

    /** Sends commands, separated by blanks, until one fails; returns its status. "KEY=VALUE" sets a key, "+"
     * stands for Zoning. */
    uint32_t send(const std::string& commands) const {
        std::istringstream words(commands);
        uint32_t status = Ok;
        for (std::string word; status == Ok && words >> word;) {
            const size_t equals = word.find('=');
            if (word[0] == '+') word.replace(0, 1, "Zoning.");
            status = equals == std::string::npos ? static_cast<uint32_t>(command("Cmd." + word))
                                                 : set(word.substr(0, equals), word.substr(equals + 1));
        }
        return status;
    }
};

TEST_F(Commands, NeedWhatComesBeforeThem) {
    const std::string edit = "Switch.ReqAdmin +FabricLock.77 +EditConfig +ClearConfig ";
    const std::pair<std::string, uint32_t> cases[] = {
        {"Switch.ReqAdmin Switch.SaveConfig", NotInEdit},
        {"Switch.ReqAdmin Switch.EditConfig Cim.SaveConfig", NotInEdit},
        {"Switch.ReqAdmin Switch.EditConfig Switch.RelAdmin Switch.ReqAdmin Switch.SaveConfig", NotInEdit},
        {"Switch.ReqAdmin Config.Services.SSHEnable=False", NotInEdit},
        {"Switch.ReqAdmin Switch.EditConfig Config.Services.SHEnable=False", UnknownKey},
        {"Switch.ReqAdmin Switch.EditConfig Oper.Switch.DomainID=2", ReadOnly},
        {"Switch.RestoreConfig", NoBackup},
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
        {edit + "+Zone.a.Create +CancelConfig +SaveConfig", NotInEdit},
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
    sim.run("do = 'admin'\nshared = true");
    uint32_t other = 0;
    ASSERT_EQ(vex_IPConnect("localhost", "other", "", &other), 0);
    EXPECT_EQ(command(other, "Cmd.Switch.ReqAdmin"), 0);
    EXPECT_EQ(command(other, "Cmd.Zoning.FabricLock.77"), static_cast<int32_t>(Refused));
}

}  // namespace
