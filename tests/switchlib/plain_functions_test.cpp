#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;

class PlainFunctions : public CacheTest {
  protected:
    PlainFunctions() { start("switch = {wwn = '1000001122AABBCC'}"); }
};

TEST_F(PlainFunctions, LinkCountsAreReadAsNumbers) {
    const std::pair<const char*, int> cases[] = {
        {"3", 3}, {" 12 links", 12}, {"", 0}, {"none", 0}, {"-2", -2}};
    for (const auto& [value, count] : cases) {
        sim.set("Oper.Eport.LsdbRecord.1.NumberOfLinks", value);
        EXPECT_EQ(get_lsdb_record_link_count("1"), count) << value;
    }
}

TEST_F(PlainFunctions, LongKeysAreCut) {
    const std::string longText(400, 'r');
    char value[VEX_SML_VALUE_SIZE];
    get_next_lsdb_record(longText.c_str(), value);
    get_next_attached_port("P", longText.c_str(), value);
    const auto call = [](const std::string& key) { return "vex_smlGetBatch " + key.substr(0, 255); };
    EXPECT_THAT(calls(), ElementsAre(call("Oper.Eport.NextLsdbRecord." + longText),
                                     call("Oper.NameServerAll.P.NextNsEntry." + longText)));
}

TEST_F(PlainFunctions, ProductInfoReleasesNoTextThatNeverCame) {
    sim.run(
        "step = [{do = 'fault', function = 'vex_smlGet', key = '*.SymName', null = true}, "
        "{do = 'fault', function = 'vex_smlGet', key = '*.BrandName', result = 55}]");
    char someoneElses;
    char *description = &someoneElses, *name = &someoneElses, *serial = &someoneElses, *brand = &someoneElses;
    EXPECT_EQ(get_Product_Info(&description, &name, &serial, &brand), 0);
    EXPECT_EQ(sim.live().texts, 1U) << "the description";
    vex_libFreeMemory(description);
    EXPECT_EQ(name, nullptr) << "what was released is not left to be released again";
    EXPECT_EQ(serial, nullptr);
    EXPECT_EQ(brand, nullptr);
}

TEST_F(PlainFunctions, SaveWithoutRightsHeldHereReleasesNothing) {
    ASSERT_EQ(getConfigEditMode(), 0);
    adminModeHeld = 0;
    calls();
    EXPECT_EQ(saveConfigEdit(), 0);
    EXPECT_THAT(calls(), ElementsAre("vex_smlSet Cmd.Cim.SaveConfig"));
}

}  // namespace
