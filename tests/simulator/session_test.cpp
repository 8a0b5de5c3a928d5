#include <sstream>

#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

class SessionTest : public SimulatorTest {
  protected:
    SessionTest() {
        sim.loadSwitchText(
            "[sml]\n'Config.Services.SSHEnable' = true\n'Config.System.Address' = '10.0.0.1'\n"
            "'Config.UserPort.0.5.Type' = 'GL'\n'Oper.Switch.DomainID' = 1\n");
    }

    /** Sends commands, separated by blanks, until one fails; returns its status. "KEY=VALUE" sets a key. */
    uint32_t send(const std::string& commands) {
        std::istringstream words(commands);
        uint32_t status = Ok;
        for (std::string word; status == Ok && words >> word;) {
            const size_t equals = word.find('=');
            status = equals == std::string::npos ? static_cast<uint32_t>(command("Cmd." + word))
                                                 : set(word.substr(0, equals), word.substr(equals + 1));
        }
        return status;
    }
};

TEST_F(SessionTest, EachCommandNeedsWhatComesBeforeIt) {
    const struct {
        const char* commands;
        uint32_t status;
    } cases[] = {
        {"Switch.EditConfig", NoAdmin},
        {"Switch.RelAdmin", NoAdmin},
        {"Cim.EditConfig", NoAdmin},
        {"Switch.SaveConfig", NoAdmin},
        {"Switch.ReqAdmin Switch.EditConfig Switch.ReqAdmin Switch.SaveConfig", Ok},
        {"Switch.ReqAdmin Switch.RelAdmin Switch.ReqAdmin Switch.CancelAdmin", Ok},
        {"Switch.ReqAdmin Switch.SaveConfig", NotInEdit},
        {"Switch.ReqAdmin Switch.CancelConfig", NotInEdit},
        {"Switch.ReqAdmin Switch.EditConfig Switch.EditConfig", Busy},
        {"Switch.ReqAdmin Switch.EditConfig Cim.EditConfig", Busy},
        {"Switch.ReqAdmin Switch.EditConfig Cim.SaveConfig", NotInEdit},
        {"Switch.ReqAdmin Cim.EditConfig Switch.ActConfig", Busy},
        {"Switch.ReqAdmin Cim.EditConfig Cim.CancelConfig Switch.EditConfig Switch.SaveConfig "
         "Switch.ActConfig",
         Ok},
        {"Switch.ReqAdmin Switch.EditConfig Switch.RelAdmin Switch.ReqAdmin Switch.SaveConfig", NotInEdit},
        {"Config.Services.SSHEnable=False", NotInEdit},
        {"Switch.ReqAdmin Config.Services.SSHEnable=False", NotInEdit},
        {"Switch.ReqAdmin Switch.EditConfig Config.Services.SHEnable=False", UnknownKey},
        {"Switch.ReqAdmin Switch.EditConfig Oper.Switch.DomainID=2", ReadOnly},
        {"Switch.RestoreConfig", NoBackup},
        {"Switch.Reset", UnknownKey},
        {"Nothing", UnknownKey},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(send(row.commands), row.status) << row.commands;
        send("Switch.RelAdmin");
    }
}

TEST_F(SessionTest, ASaveReportsWhatChanged) {
    static std::vector<std::string> seen;
    seen.clear();
    vex_eventreg_s list[] = {{VEX_EVENT_SERVICES_CFG_CHANGE, 0},
                             {VEX_EVENT_PORT_CFG_CHANGE, 0},
                             {VEX_EVENT_CIM_CFG_CHANGE, 0},
                             {VEX_EVENT_NETWORK_CFG_CHANGE, 0}};
    const auto callback = [](void*, vex_event_s* event, void*) {
        seen.push_back(std::to_string(event->code) + ":" + std::to_string(event->source.word[2]));
    };
    ASSERT_EQ(vex_enRegisterForEventList(handle, callback, nullptr, list, 4), 0);
    ASSERT_EQ(
        send("Switch.ReqAdmin Cim.EditConfig Config.Services.SSHEnable=False Config.UserPort.0.5.Type=F "
             "Config.System.Address=10.0.0.1 Cim.SaveConfig"),
        Ok);
    sim.deliverPending();
    EXPECT_THAT(seen, testing::UnorderedElementsAre("57:0", "15:5", "78:0"));
}
