#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ConfigSession : public CacheTest {
  protected:
    ConfigSession() {
        adminModeHeld = 0;
        load("[switch]\nwwn = \"10:00:00:11:22:aa:bb:cc\"\n[services]\nssh = false\n");
        calls();
        log();
    }
    ~ConfigSession() override { adminModeHeld = 0; }

    /** The next call with this key fails with 31. */
    void refuse(const std::string& key) {
        sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlSet\"\nkey = \"" + key + "\"\nresult = 31\n");
    }
    /** The log of a command that fails. */
    static std::vector<std::string> failed(const std::string& key, const std::string& line) {
        return {"2 DCACHE: vex_smlSet '" + key + '\'',
                "4 CRIT:NORV_Vex_Lib:vex_smlSetV[78] vex_smlSet '" + key + "' failed, sw_ret = 31",
                "2 DCACHE: vex_smlSet failed " + line};
    }
    std::string ssh() { return *sim.get("Config.Services.SSHEnable"); }
    void setSsh() {
        void* reply = nullptr;
        EXPECT_EQ(vex_smlSetV(hSwitch, &reply, "Config.Services.SSHEnable.%s", "True"), 0);
    }
};

TEST_F(ConfigSession, FailuresKeepTheRights) {
    const struct {
        const char* key;
        int (*run)();
        const char* line;
    } cases[] = {
        {"Cmd.Cim.EditConfig", getConfigEditMode, "for Config Edit"},
        {"Cmd.Cim.SaveConfig", saveConfigEdit, "for Config Save"},
        {"Cmd.Cim.CancelConfig", cancelConfigEdit, "for Config Cancel"},
        {"Cmd.Switch.CancelAdmin", releaseAdminMode, "to release Admin mode"},
    };
    sim.run("[[step]]\ndo = \"admin\"\nshared = true\n");
    ASSERT_EQ(reqAdminMode(), 0);
    for (const auto& row : cases) {
        SCOPED_TRACE(row.key);
        calls();
        log();
        refuse(row.key);
        EXPECT_EQ(row.run(), -1);
        EXPECT_EQ(calls().back(), std::string("vex_smlSet ") + row.key) << "nothing follows a failure";
        std::vector<std::string> lines = log();
        lines.erase(lines.begin(), lines.end() - 3);
        EXPECT_EQ(lines, failed(row.key, row.line));
        EXPECT_EQ(adminModeHeld, 1U);
    }
    EXPECT_EQ(releaseAdminMode(), 0);
    EXPECT_EQ(adminModeHeld, 0U);
}

TEST_F(ConfigSession, SaveGivesTheResultOfTheRelease) {
    ASSERT_EQ(getConfigEditMode(), 0);
    setSsh();
    refuse("Cmd.Switch.CancelAdmin");
    EXPECT_EQ(saveConfigEdit(), -1);
    EXPECT_EQ(ssh(), "True") << "saved all the same";
    EXPECT_EQ(adminModeHeld, 1U);
}

TEST_F(ConfigSession, SaveWithoutRightsHeldHereReleasesNothing) {
    ASSERT_EQ(getConfigEditMode(), 0);
    adminModeHeld = 0;
    calls();
    EXPECT_EQ(saveConfigEdit(), 0);
    EXPECT_THAT(calls(), ElementsAre("vex_smlSet Cmd.Cim.SaveConfig"));
}

}  // namespace
