#include "datacache/fabric_compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace datacache;

namespace {

using Lines = std::vector<std::string>;

/** Names of a fabric: 'a' is the switch 1000001122000061. */
Wwn nameOf(char letter) {
    char text[17];
    std::snprintf(text, sizeof text, "10000011220000%02x", static_cast<unsigned>(letter));
    return Wwn(std::string(text));
}

std::string letterOf(const Wwn& name) {
    for (char letter = 'A'; letter <= 'z'; ++letter) {
        if (nameOf(letter) == name) return {letter};
    }
    return "-";
}

std::vector<Wwn> namesOf(const std::string& letters) {
    std::vector<Wwn> names;
    for (const char letter : letters) names.push_back(nameOf(letter));
    return names;
}

std::string describe(const FabricStep& step) {
    const std::string fabric = letterOf(step.fabric);
    const std::string member = letterOf(step.member);
    switch (step.kind) {
        case FabricStep::FabricAdd:
            return "+fabric " + fabric;
        case FabricStep::FabricRemove:
            return "-fabric " + fabric;
        case FabricStep::FabricGrown:
            return "grown " + fabric;
        case FabricStep::FabricShrunk:
            return "shrunk " + fabric;
        case FabricStep::SwitchAdd:
            return fabric + " +" + member;
        case FabricStep::SwitchRemove:
            return fabric + " -" + member;
        case FabricStep::LogText:
            return std::string("# ") + step.text;
        case FabricStep::LogChecking:
            return "? " + member;
        case FabricStep::LogEvaluating:
            return member + "=" + letterOf(step.original) + "?";
    }
    return "?";
}

struct Case {
    const char* what;
    const char* before;  ///< the fabric's letter, then its switches'
    const char* now;
    Lines steps;
};

const char* const kSame = "# DCACHE: _fabric._fabric_name == _origFabricName\n";
const char* const kCheck = "# DCACHE: Checking for new switches in the fabric\n";
const char* const kOther = "# DCACHE: _fabric._fabric_name != _origFabricName\n";

const Case kCases[] = {
    {"unchanged", "Pab", "Pab", {kSame, kCheck, "? a", "? b", "a=a?", "a=b?", "b=b?"}},
    {"emptied", "Pa", "P", {kSame, kCheck, "P -a", "shrunk P"}},
    {"filled", "P", "Pab", {kSame, kCheck, "? a", "P +a", "? b", "P +b", "grown P"}},
    {"gain and loss: the loss is told first",
     "Pabc",
     "Pbdc",
     {kSame, kCheck, "? b", "? d", "P +d", "? c",  //
      "b=a?", "d=a?", "c=a?", "P -a", "b=b?", "b=c?", "d=c?", "c=c?", "shrunk P", "grown P"}},
    {"segmented: only known switches are told of",
     "Pabc",
     "Qcda",
     {kOther, "# DCACHE: Segmentation in original fabric\n", "shrunk P", "# DCACHE: Creation of new fabric\n",
      "+fabric Q", "Q +c", "Q +a"}},
    {"renamed: the switches in the order of before",
     "Pabc",
     "Qcba",
     {kOther, "# DCACHE: Delete original fabric\n", "-fabric P", "# DCACHE: Create new fabric\n", "+fabric Q",
      "Q +a", "Q +b", "Q +c"}},
    {"renamed while empty",
     "P",
     "Q",
     {kOther, "# DCACHE: Delete original fabric\n", "-fabric P", "# DCACHE: Create new fabric\n",
      "+fabric Q"}},
    {"merged: the newcomers are not told of",
     "Pab",
     "Qcbda",
     {kOther, "# DCACHE: Merge fabric\n", "grown Q", "# DCACHE: Delete old fabric\n", "-fabric P", "Q +b",
      "Q +a"}},
    {"merged from nothing",
     "P",
     "Qa",
     {kOther, "# DCACHE: Merge fabric\n", "grown Q", "# DCACHE: Delete old fabric\n", "-fabric P"}},
};

TEST(FabricCompare, TellsEachChangeInOrder) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.what);
        const Wwn nameBefore = nameOf(c.before[0]);
        const Wwn nameNow = nameOf(c.now[0]);
        const std::vector<Wwn> before = namesOf(c.before + 1);
        const std::vector<Wwn> now = namesOf(c.now + 1);
        Lines steps;
        compareFabrics({nameBefore, before}, {nameNow, now},
                       [&](const FabricStep& step) { steps.push_back(describe(step)); });
        EXPECT_EQ(steps, c.steps);
    }
}

}  // namespace
