#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

char someoneElses;

struct ProductInfo {
    char *description = &someoneElses, *name = &someoneElses, *serial = &someoneElses, *brand = &someoneElses;
    int read() { return get_Product_Info(&description, &name, &serial, &brand); }
};

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
