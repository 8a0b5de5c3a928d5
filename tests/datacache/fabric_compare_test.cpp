#include "datacache/fabric_compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace datacache;

namespace {

/** Names of a fabric: 'a' is the switch 1000001122000061. */
std::vector<Wwn> namesOf(const std::string& letters) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::vector<Wwn> names;
    for (const char letter : letters)
        names.emplace_back(std::string("10000011220000") + kDigits[letter >> 4] + kDigits[letter & 15]);
    return names;
}

/** "+ P b": switch b joined fabric P. */
std::string describe(const FabricStep& step) {
    if (step.kind == FabricStep::LogText) return step.text;
    static constexpr const char* kKinds[] = {"+fabric", "-fabric", "grown", "shrunk", "+",
                                             "-",       "",        "?",     "??"};
    std::string line = kKinds[step.kind];
    for (const Wwn& name : {step.fabric, step.member, step.original}) {
        for (char letter = 'A'; letter <= 'z'; ++letter) {
            if (name == namesOf({letter})[0]) line += std::string(" ") + letter;
        }
    }
    return line;
}

const char* const kSame = "DCACHE: _fabric._fabric_name == _origFabricName\n";
const char* const kCheck = "DCACHE: Checking for new switches in the fabric\n";
const char* const kOther = "DCACHE: _fabric._fabric_name != _origFabricName\n";
const char* const kSegmented = "DCACHE: Segmentation in original fabric\n";
const char* const kNew = "DCACHE: Creation of new fabric\n";
const char* const kDelete = "DCACHE: Delete original fabric\n";
const char* const kCreate = "DCACHE: Create new fabric\n";
const char* const kMerge = "DCACHE: Merge fabric\n";
const char* const kDeleteOld = "DCACHE: Delete old fabric\n";

TEST(FabricCompare, TellsEachChangeInOrder) {
    const struct {
        const char *before, *now;  ///< the fabric's letter, then its switches'
        std::vector<std::string> steps;
    } cases[] = {
        // Gain and loss: the loss is told first.
        {"Pabc",
         "Pbdc",
         {kSame, kCheck, "? P b", "? P d", "+ P d", "? P c",  //
          "?? P b a", "?? P d a", "?? P c a", "- P a", "?? P b b", "?? P b c", "?? P d c", "?? P c c",
          "shrunk P", "grown P"}},
        // Segmented: only known switches are told of.
        {"Pabc", "Qcda", {kOther, kSegmented, "shrunk P", kNew, "+fabric Q", "+ Q c", "+ Q a"}},
        // Renamed: the switches in the order of before.
        {"Pabc", "Qcba", {kOther, kDelete, "-fabric P", kCreate, "+fabric Q", "+ Q a", "+ Q b", "+ Q c"}},
        {"P", "Q", {kOther, kDelete, "-fabric P", kCreate, "+fabric Q"}},
        // Merged: the newcomers are not told of.
        {"Pab", "Qcbda", {kOther, kMerge, "grown Q", kDeleteOld, "-fabric P", "+ Q b", "+ Q a"}},
    };
    for (const auto& c : cases) {
        const std::vector<Wwn> fabrics = namesOf({c.before[0], c.now[0]});
        const std::vector<Wwn> before = namesOf(c.before + 1);
        const std::vector<Wwn> now = namesOf(c.now + 1);
        std::vector<std::string> steps;
        compareFabrics({fabrics[0], before}, {fabrics[1], now},
                       [&](const FabricStep& step) { steps.push_back(describe(step)); });
        EXPECT_EQ(steps, c.steps) << c.before << ' ' << c.now;
    }
}

}  // namespace
