#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Getter = char* (*)();

/** What scripts that read the log have relied on for years, blanks included. */
const struct {
    Getter get;
    const char* key;
    const char* line;
} kProperties[] = {
    {get_Switch_Telnet_Enabled, "Config.Services.TelnetEnable", "TelnetEnable = "},
    {get_Switch_SSH_Enabled, "Config.Services.SSHEnable", "SSHEnable = "},
    {get_Switch_EmbeddedGUI_Enabled, "Config.Services.EmbeddedGUIEnable", "EmbeddedGUIEnable= "},
    {get_Switch_SNMPReadCommunity, "Config.Snmp.ReadComm", "SNMP ReadComm = "},
    {is_Switch_SSLEnabled, "Config.Services.SSLEnable", "SSLEnable = "},
    {is_Switch_SNMP_Enabled, "Config.Services.SNMPEnable", "SNMPEnable = "},
    {get_Switch_IPv6Address, "Oper.System.Eth.0.IPv6Address.0", "IPv6Address = "},
    {get_Switch_IPv6Feature, "Oper.Switch.IPv6Feature", "IPv6Feature= "},
    {get_Switch_IPv6Enable, "Config.System.IPv6Enable", "IPv6Enable= "},
    {get_Switch_IPv4Address, "Oper.System.Eth.0.IPv4Address", "IPv4Address= "},
    {get_Switch_IPv4Feature, "Oper.Switch.IPv4Feature", "IPv4Feature= "},
    {get_Switch_IPv4Enable, "Config.System.IPv4Enable", "IPv4Enable= "},
    {get_Switch_PlanarPartNum, "Config.Mfg.PlanarPartNum", "PlanarPartNum = "},
    {get_Switch_ChassisSerialNum, "Config.Mfg.ChassisSerialNum", "ChassisSerialNum = "},
    {get_Switch_ChassisPartNum, "Config.Mfg.ChassisPartNum", "ChassisPartNum = "},
    {get_Switch_ActiveVer, "Oper.Switch.ActiveVer", "ActiveVersion = "},
    {get_Switch_OemActiveVer, "Oper.Switch.OemActiveVer", "OemActiveVer = "},
    {get_Switch_Brand_Name, "Config.Mfg.BrandName", "BrandName = "},
    {get_Switch_Type, "Oper.Switch.Type", "Switch Type = "},
    {get_Switch_Domain_ID, "Oper.Switch.DomainID", "DomainID = "},
    {get_Principal_Switch_World_Wide_Name, "Oper.Switch.WhoIsPrincipal",
     "Principal_switch_world_wide_name = "},
    {get_Local_Switch_World_Wide_Name, "Oper.Switch.WWN", "local_switch_world_wide_name = "},
};

class Properties : public CacheTest {
  protected:
    Properties() {
        load("[switch]\nwwn = \"10:00:00:11:22:aa:bb:cc\"\n");
        calls();
        log();
    }
    void fault(const std::string& fields) {
        sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGet\"\n" + fields);
    }
};

TEST_F(Properties, EachReadsItsKeyAndHandsTheTextOver) {
    for (const auto& property : kProperties) {
        SCOPED_TRACE(property.key);
        const bool upper = property.get == get_Principal_Switch_World_Wide_Name ||
                           property.get == get_Local_Switch_World_Wide_Name;
        ASSERT_TRUE(sim.get(property.key)) << "a switch file that is silent has it all the same";
        sim.set(property.key, "%s%n aBc 12");
        char* const value = property.get();
        const std::string expected = upper ? "%S%N ABC 12" : "%s%n aBc 12";
        ASSERT_STREQ(value, expected.c_str());
        EXPECT_THAT(calls(), ElementsAre(std::string("vex_smlGet ") + property.key));
        EXPECT_THAT(log(), ElementsAre(std::string("2 DCACHE: vex_smlGet '") + property.key + '\'',
                                       std::string("2 DCACHE: ") + property.line + expected));
        EXPECT_EQ(sim.live().texts, 1U) << "the text is the caller's";
        EXPECT_EQ(vex_libFreeMemory(value), 0);
        EXPECT_EQ(sim.live().texts, 0U);
        calls();
    }
}

TEST_F(Properties, FailuresGiveNull) {
    for (const auto& property : kProperties) {
        SCOPED_TRACE(property.key);
        const bool local = property.get == get_Local_Switch_World_Wide_Name;
        const std::string request = std::string("2 DCACHE: vex_smlGet '") + property.key + '\'';
        const std::string start =
            "4 CRIT:NORV_Vex_Lib:get_Local_Switch_World_Wide_Name[294] "
            "vex_smlGet returned error code = ";

        fault("result = -23\n");
        EXPECT_EQ(property.get(), nullptr);
        std::vector<std::string> expected = {
            request, std::string("4 CRIT:NORV_Vex_Lib:vex_smlGetV[50] vex_smlGet '") + property.key +
                         "' failed, sw_ret = 0xffffffe9"};
        if (local) expected.push_back(start + "-23");
        EXPECT_EQ(log(), expected);

        fault("result = 103\n");
        EXPECT_EQ(property.get(), nullptr);
        expected = {request};
        if (local) expected.push_back(start + "103");
        EXPECT_EQ(log(), expected) << "not reported, but by the one that reports every failure";

        fault("null = true\n");
        EXPECT_EQ(property.get(), nullptr) << "a success without a text";
        EXPECT_THAT(log(), ElementsAre(request));
    }
    EXPECT_EQ(sim.live().texts, 0U);
}

TEST_F(Properties, LongAndEmptyTextsComeWhole) {
    sim.set("Config.Mfg.BrandName", std::string(5000, 'b'));
    char* brand = get_Switch_Brand_Name();
    EXPECT_EQ(std::string(brand), std::string(5000, 'b'));
    vex_libFreeMemory(brand);
    sim.set("Oper.Switch.WWN", "");
    char* name = get_Local_Switch_World_Wide_Name();
    EXPECT_STREQ(name, "");
    vex_libFreeMemory(name);
}

char someoneElses;

struct ProductInfo {
    char *description = &someoneElses, *name = &someoneElses, *serial = &someoneElses, *brand = &someoneElses;
    int read() { return get_Product_Info(&description, &name, &serial, &brand); }
};

TEST_F(Properties, ProductInfoGivesFourTexts) {
    sim.loadSwitchText(R"(
[switch]
wwn = "10:00:00:11:22:aa:bb:cc"
name = "left"
[snmp]
description = "a switch"
[manufacturing]
chassis_serial = "S1"
brand = "B"
)");
    ProductInfo info;
    EXPECT_EQ(info.read(), 0);
    EXPECT_THAT(calls(),
                ElementsAre("vex_smlGet Config.Snmp.SysDescr", "vex_smlGet Config.Switch.SymName",
                            "vex_smlGet Config.Mfg.ChassisSerialNum", "vex_smlGet Config.Mfg.BrandName"));
    EXPECT_THAT((std::vector<std::string>{info.description, info.name, info.serial, info.brand}),
                ElementsAre("a switch", "left", "S1", "B"));
    for (char* text : {info.description, info.name, info.serial, info.brand}) vex_libFreeMemory(text);
    EXPECT_EQ(sim.live().texts, 0U);
}

TEST_F(Properties, ProductInfoReleasesUnevenly) {
    const struct {
        const char* failing;
        int result;         ///< with releases that succeed
        size_t read, live;  ///< texts handed out, and left with the caller
    } cases[] = {
        {"Config.Snmp.SysDescr", 55, 0, 0},
        {"Config.Switch.SymName", 55, 1, 1},
        {"Config.Mfg.ChassisSerialNum", 0, 2, 1},
        {"Config.Mfg.BrandName", 0, 3, 1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.failing);
        sim.clearTranscript();
        fault(std::string("key = \"") + row.failing + "\"\nresult = 55\n");
        ProductInfo info;
        EXPECT_EQ(info.read(), row.result);
        EXPECT_EQ(sim.live().texts, row.live) << "the description stays with the caller";
        size_t frees = 0;
        for (const vexsim::Call& call : sim.transcript())
            frees += call.function == "vex_libFreeMemory" ? 1 : 0;
        EXPECT_EQ(frees, row.read - row.live);
        EXPECT_EQ(info.name, nullptr) << "what was released is not left to be released again";
        EXPECT_EQ(info.serial, nullptr);
        EXPECT_EQ(info.brand, nullptr);
        if (info.description != nullptr) vex_libFreeMemory(info.description);
    }
}

TEST_F(Properties, ProductInfoGivesTheResultOfTheLastRelease) {
    const auto failRelease = [this](int skip, int result) {
        sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_libFreeMemory\"\nskip = " + std::to_string(skip) +
                "\nresult = " + std::to_string(result) + '\n');
    };
    ProductInfo info;
    fault("key = \"*.ChassisSerialNum\"\nresult = 55\n");
    failRelease(0, 7);
    EXPECT_EQ(info.read(), 7);
    fault("key = \"*.BrandName\"\nresult = 55\n");
    failRelease(0, 8);
    EXPECT_EQ(info.read(), 0) << "of two releases the last one counts";
    fault("key = \"*.BrandName\"\nresult = 55\n");
    failRelease(1, 9);
    EXPECT_EQ(info.read(), 9);
}

TEST_F(Properties, ProductInfoReleasesNoTextThatNeverCame) {
    fault("key = \"*.SymName\"\nnull = true\n");
    fault("key = \"*.BrandName\"\nresult = 55\n");
    ProductInfo info;
    EXPECT_EQ(info.read(), 0);
    EXPECT_EQ(sim.live().texts, 1U);
}

}  // namespace
