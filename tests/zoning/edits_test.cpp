#include <functional>

#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningLimit;
using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr vex_fzs_zonemember_type_e kWwn = VEX_ZMT_WWN;
const char* const kNewName = "2000001122000099";

class ZoningEdit : public ZoningTest {
  protected:
    using Edit = std::function<ZoningOutcome(ZoningSession&)>;

    /** The entries of the cache that differ, in short. */
    static std::string changed(const Zonesets& before, const Zonesets& after) {
        std::string text;
        const auto add = [&](const std::string& key) {
            text += ' ' + (key == kUber ? "uber" : key == kActive ? "active" : key);
        };
        for (const auto& [key, contents] : before) {
            const auto now = after.find(key);
            if (now == after.end() || now->second != contents) add(key);
        }
        for (const auto& [key, contents] : after) {
            if (before.count(key) == 0) add(key);
        }
        return text;
    }

    /**
     * Lets each library call of an edit fail in turn, on a fresh switch each time: "CALL RESULT CHANGED...".
     * A call that counts then counts too much. The calls of a last recount change nothing, and are left out.
     * Checks that the outcome names the call.
     */
    std::vector<std::string> failures(const Edit& edit) {
        start();
        std::vector<std::string> functions;
        {
            ZoningSession session(zoning(), "client");
            calls();
            EXPECT_TRUE(edit(session).done());
            for (const std::string& call : calls()) functions.push_back(call.substr(0, call.find(' ')));
        }
        expectNoLeak();
        std::vector<std::string> lines;
        std::map<std::string, int> seen;
        size_t recount = 0;
        for (const std::string& function : functions) {
            if (function == "vex_ZonesetDestroy") continue;  // what the library keeps, nobody can free
            SCOPED_TRACE(function);
            start();
            ZoningSession session(zoning(), "client");
            const Zonesets before = cached();
            const bool counts = function.find("Count") != std::string::npos;
            const bool handle = function.find("Create") != std::string::npos ||
                                function.find("Find") != std::string::npos ||
                                function.find("List") != std::string::npos;
            sim.run("do = 'fault'\nfunction = '" + function +
                    "'\nskip = " + std::to_string(seen[function]++) +
                    (counts   ? "\nresult = 50"
                     : handle ? "\nnull = true"
                              : "\nresult = 7"));
            const ZoningOutcome outcome = edit(session);
            const uint32_t result = outcome.code;
            sim.run("do = 'clear_faults'");
            expectNoLeak();
            if (result == ZONING_INVALID || result == ZONING_FAILED) {
                // Too many are a full container, or one more than the library can list.
                const bool told = counts ? outcome.failure.limit != ZoningLimit::None ||
                                               outcome.failure.call.find("List") != std::string::npos
                                         : outcome.failure.call == function;
                EXPECT_TRUE(told) << outcome.text();
                EXPECT_EQ(outcome.failure.result,
                          counts || handle || function == "vex_ZonesetGetName" ? 0 : 7);
            }
            lines.push_back(function.substr(4) + ' ' + std::to_string(result) + changed(before, cached()));
            const bool ofRecount = counts || function.find("List") != std::string::npos ||
                                   function == "vex_ZonesetFindAlias" || function == "vex_MemberGetAttr";
            if (!ofRecount || result != ZONING_DONE) recount = lines.size();
            zoning().clearZoningCache();
            const vexsim::Live live = sim.live();
            EXPECT_EQ(live.zonesets + live.zones + live.aliases + live.members, 0U);
        }
        lines.resize(recount);
        return lines;
    }
};

TEST_F(ZoningEdit, CreationFailsAtEachStep) {
    EXPECT_THAT(failures([](ZoningSession& z) { return z.createZone("z9", VEX_ZT_SOFT); }),
                ElementsAre("ZonesetFindZone 0 uber", "ZoneCreate 1", "ZoneSetType 4", "ZonesetAddZone 4"));
    EXPECT_THAT(failures([](ZoningSession& z) { return z.createZoneAlias("a9"); }),
                ElementsAre("ZonesetFindAlias 0 uber", "ZoneAliasCreate 4", "ZonesetAddAlias 4"));
    EXPECT_THAT(failures([](ZoningSession& z) { return z.createZoneset("s9"); }),
                ElementsAre("ZonesetTestName 1", "ZonesetCreate 4", "ZonesetGetName 4"));
}

TEST_F(ZoningEdit, RemovalFailsAtEachStep) {
    EXPECT_THAT(failures([](ZoningSession& z) { return z.removeZone("z1"); }),
                ElementsAre("ZonesetFindZone 2", "ZonesetRemoveZone 4",                 // uber
                            "ZonesetFindZone 0 uber beta", "ZonesetRemoveZone 4 uber",  // alpha
                            "ZonesetFindZone 0 uber alpha", "ZonesetRemoveZone 4 uber alpha"));
    EXPECT_THAT(failures([](ZoningSession& z) { return z.removeZoneAlias("a1"); }),
                ElementsAre("ZonesetFindAlias 2", "ZonesetRemoveAlias 4",  // uber
                            "ZonesetFindAlias 0 uber alpha beta",          // uber once more, as an entry
                            "ZonesetFindAlias 0 uber beta", "ZonesetRemoveAlias 4 uber",
                            "ZonesetFindAlias 0 uber alpha", "ZonesetRemoveAlias 4 uber alpha"));
    EXPECT_THAT(failures([](ZoningSession& z) { return z.removeZoneset("beta"); }),
                ElementsAre("ZonesetGetName 4"));
}

TEST_F(ZoningEdit, AddingMembersFailsAtEachStep) {
    EXPECT_THAT(failures([](ZoningSession& z) { return z.addMemberToZone("z1", kWwn, kNewName); }),
                ElementsAre("ZonesetFindZone 2", "ZoneGetMemberCount 4", "strToMemberIdentifier 1",
                            "ZoneFindMember 0 uber alpha beta", "MemberCreate 4", "ZoneAddMember 4",  //
                            "ZonesetFindZone 0 uber beta", "MemberCreate 4 uber", "ZoneAddMember 4 uber",
                            "ZonesetFindZone 0 uber alpha", "MemberCreate 4 uber alpha",
                            "ZoneAddMember 4 uber alpha"));
    EXPECT_THAT(failures([](ZoningSession& z) { return z.addMemberToZoneAlias("a1", kWwn, kNewName); }),
                ElementsAre("ZonesetFindAlias 2", "ZoneAliasGetMemberCount 4", "strToMemberIdentifier 1",
                            "ZoneAliasFindMember 0 uber alpha beta", "MemberCreate 4", "ZoneAliasAddMember 4",
                            "ZonesetFindAlias 0 uber beta", "MemberCreate 4 uber",
                            "ZoneAliasAddMember 4 uber", "ZonesetFindAlias 0 uber alpha",
                            "MemberCreate 4 uber alpha", "ZoneAliasAddMember 4 uber alpha"));
}

TEST_F(ZoningEdit, RemovingMembersFailsAtEachStep) {
    const char* const inZone = "2000001122000003";
    const char* const inAlias = "2000001122000001";
    EXPECT_THAT(failures([&](ZoningSession& z) { return z.removeMemberFromZone("z1", kWwn, inZone); }),
                ElementsAre("ZonesetFindZone 2", "strToMemberIdentifier 1", "ZoneFindMember 2",
                            "ZoneDeleteMember 4", "ZonesetFindZone 0 uber beta", "ZoneFindMember 2 uber",
                            "ZoneDeleteMember 4 uber", "ZonesetFindZone 0 uber alpha",
                            "ZoneFindMember 2 uber alpha", "ZoneDeleteMember 4 uber alpha"));
    EXPECT_THAT(failures([&](ZoningSession& z) { return z.removeMemberFromZoneAlias("a1", kWwn, inAlias); }),
                ElementsAre("ZonesetFindAlias 2", "strToMemberIdentifier 1", "ZoneAliasFindMember 2",
                            "ZoneAliasDeleteMember 4", "ZonesetFindAlias 0 uber",
                            "ZoneAliasFindMember 2 uber", "ZoneAliasDeleteMember 4 uber"));
    const std::vector<std::string> everywhere =
        failures([&](ZoningSession& z) { return z.removeMember(kWwn, inAlias); });
    EXPECT_THAT(
        everywhere,
        ElementsAre("strToMemberIdentifier 1",
                    // uber: three zones without the member, two aliases
                    "ZonesetGetZoneCount 4", "ZonesetListZones 4", "ZoneFindMember 0 uber alpha beta",
                    "ZonesetListZones 4", "ZoneFindMember 0 uber alpha beta", "ZonesetListZones 4",
                    "ZoneFindMember 0 uber alpha beta", "ZonesetGetAliasCount 4 uber", "ZonesetListAliases 4",
                    "ZoneAliasFindMember 0 alpha beta", "ZoneAliasDeleteMember 0 alpha beta",
                    "ZonesetListAliases 4 uber", "ZoneAliasFindMember 0 uber alpha beta",
                    // alpha
                    "ZonesetGetZoneCount 4 uber", "ZonesetListZones 4 uber",
                    "ZoneFindMember 0 uber alpha beta", "ZonesetListZones 4 uber",
                    "ZoneFindMember 0 uber alpha beta", "ZonesetGetAliasCount 4 uber alpha",
                    "ZonesetListAliases 4 uber", "ZoneAliasFindMember 0 uber beta",
                    "ZoneAliasDeleteMember 0 uber beta",
                    // beta
                    "ZonesetGetZoneCount 4 uber alpha", "ZonesetListZones 4 uber alpha",
                    "ZoneFindMember 0 uber alpha beta", "ZonesetGetAliasCount 4 uber alpha beta",
                    "ZonesetListAliases 4 uber alpha", "ZoneAliasFindMember 0 uber alpha",
                    "ZoneAliasDeleteMember 0 uber alpha"));
}

TEST_F(ZoningEdit, OfAZonesetsZonesFailsAtEachStep) {
    EXPECT_THAT(failures([](ZoningSession& z) { return z.addZoneToZoneset("beta", "z3"); }),
                ElementsAre("ZonesetGetZoneCount 4", "ZonesetFindZone 0 beta", "ZonesetFindZone 2",
                            "ZoneCreateCopy 4", "ZoneSetName 4", "ZonesetAddZone 4"));
    EXPECT_THAT(failures([](ZoningSession& z) { return z.removeZoneFromZoneset("beta", "z1"); }),
                ElementsAre("ZonesetFindZone 2", "ZonesetRemoveZone 4"));
}

TEST_F(ZoningEdit, DeletionsThatFailAreLogged) {
    start();
    sim.run("do = 'fault'\nfunction = 'vex_ZoneDeleteMember'\nresult = -3");
    sim.run("do = 'fault'\nfunction = 'vex_ZoneAliasDeleteMember'\nresult = 8");
    EXPECT_EQ(zoning().removeMember(kWwn, Arg{"2000001122000003"}), ZONING_DONE);
    EXPECT_EQ(zoning().removeMember(kWwn, Arg{"2000001122000001"}), ZONING_DONE);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: Deletion failed, result = -3",
                                   "2 DCACHE: Alias Deletion failed, result = 8"));
}

TEST_F(ZoningEdit, CountsAnewWhereItsKindDoes) {
    const std::string member = "2000001122000003";
    const struct {
        const char* name;
        Edit edit;
        size_t recounts;
    } cases[] = {
        {"createZone", [](ZoningSession& z) { return z.createZone("z9", VEX_ZT_SOFT); }, 1},
        {"createZoneAlias", [](ZoningSession& z) { return z.createZoneAlias("a9"); }, 1},
        {"createZoneset", [](ZoningSession& z) { return z.createZoneset("s9"); }, 1},
        {"removeZone", [](ZoningSession& z) { return z.removeZone("z1"); }, 1},
        {"removeZoneAlias", [](ZoningSession& z) { return z.removeZoneAlias("a1"); }, 1},
        {"removeZoneset", [](ZoningSession& z) { return z.removeZoneset("beta"); }, 1},
        {"addMemberToZone", [](ZoningSession& z) { return z.addMemberToZone("z1", kWwn, kNewName); }, 1},
        {"removeMemberFromZone", [&](ZoningSession& z) { return z.removeMemberFromZone("z1", kWwn, member); },
         1},
        {"addMemberToZoneAlias",
         [](ZoningSession& z) { return z.addMemberToZoneAlias("a1", kWwn, kNewName); }, 0},
        {"removeMemberFromZoneAlias",
         [](ZoningSession& z) { return z.removeMemberFromZoneAlias("a1", kWwn, "2000001122000001"); }, 0},
        {"removeMember", [&](ZoningSession& z) { return z.removeMember(kWwn, member); }, 0},
        {"addZoneToZoneset", [](ZoningSession& z) { return z.addZoneToZoneset("beta", "z3"); }, 0},
        {"removeZoneFromZoneset", [](ZoningSession& z) { return z.removeZoneFromZoneset("beta", "z1"); }, 0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        start();
        ZoningSession session(zoning(), "client");
        EXPECT_TRUE(test.edit(session).done());
        EXPECT_EQ(logWith("zsl = ").size(), test.recounts);
    }
}

TEST_F(ZoningEdit, TellsWhatIsThereFromWhatIsNot) {
    start();
    ZoningCache& z = zoning();
    const Arg none{"nothing"};
    const std::vector<uint32_t> exists = {
        z.createZone(Arg{"z1"}, VEX_ZT_SOFT),
        z.createZoneAlias(Arg{"a1"}),
        z.createZoneset(Arg{"beta"}),
        z.createZoneset(Arg{kUber}),
        z.addZoneToZoneset(Arg{"beta"}, Arg{"z1"}),
        z.addMemberToZone(Arg{"z1"}, VEX_ZMT_ALIAS, Arg{"a1"}),
        z.addMemberToZoneAlias(Arg{"a1"}, kWwn, Arg{"20:00:00:11:22:00:00:01"}),
    };
    EXPECT_THAT(exists, ::testing::Each(ZONING_EXISTS));
    const std::vector<uint32_t> missing = {
        z.removeZone(Arg(none)),
        z.removeZoneAlias(Arg(none)),
        z.removeZoneset(Arg(none)),
        z.addZoneToZoneset(Arg{"beta"}, Arg(none)),
        z.addZoneToZoneset(Arg(none), Arg{"z1"}),
        z.removeZoneFromZoneset(Arg{"beta"}, Arg{"z2"}),
        z.removeZoneFromZoneset(Arg(none), Arg{"z1"}),
        z.addMemberToZone(Arg(none), kWwn, Arg{kNewName}),
        z.addMemberToZoneAlias(Arg(none), kWwn, Arg{kNewName}),
        z.removeMemberFromZone(Arg{"z1"}, kWwn, Arg{kNewName}),
        z.removeMemberFromZoneAlias(Arg{"a1"}, kWwn, Arg{kNewName}),
    };
    EXPECT_THAT(missing, ::testing::Each(ZONING_NOT_FOUND));
    EXPECT_EQ(z.addMemberToZoneAlias(Arg{"a1"}, VEX_ZMT_ALIAS, Arg{"a2"}), ZONING_FAILED)
        << "refused by the library";
    z.clearZoningCache();
    EXPECT_EQ(z.removeMember(kWwn, Arg{kNewName}), ZONING_DONE);
    EXPECT_EQ(z.removeMember(kWwn, Arg{"?"}), ZONING_INVALID) << "the text is read first";
    expectNoLeak();
}

TEST_F(ZoningEdit, StopsAtTheLimits) {
    const struct {
        Edit edit;
        const char* outcome;
    } cases[] = {
        {[](ZoningSession& z) { return z.createZone("z9", VEX_ZT_SOFT); },
         "create zone z9: the fabric's limit of 3 zones is reached"},
        {[](ZoningSession& z) { return z.createZoneAlias("a9"); },
         "create alias a9: the fabric's limit of 2 aliases is reached"},
        {[](ZoningSession& z) { return z.createZoneset("s9"); },
         "create zoneset s9: the fabric's limit of 2 zonesets is reached"},
        {[](ZoningSession& z) { return z.addZoneToZoneset("beta", "z3"); },
         "add zone z3 to zoneset beta: the fabric's limit of 1 zones in a zoneset is reached"},
        {[](ZoningSession& z) { return z.addMemberToZone("z1", kWwn, kNewName); },
         "add 2000001122000099 to zone z1: the fabric's limit of 2 members in a zone is reached"},
        {[](ZoningSession& z) { return z.addMemberToZoneAlias("a1", kWwn, kNewName); },
         "add 2000001122000099 to alias a1: the fabric's limit of 2 members in an alias is reached"},
    };
    start(std::string(kSwitch) + limitsText({2, 3, 1, 1, 2, 2, 2}));
    const Zonesets before = cached();
    {
        ZoningSession session(zoning(), "client");
        for (const auto& test : cases) EXPECT_EQ(test.edit(session).text(), test.outcome);
        EXPECT_EQ(cached(), before);
        EXPECT_TRUE(session.addMemberToZone("z3", kWwn, kNewName).done())
            << "the limit of all members stops no edit";
    }
    start(kSwitch);
    ZoningSession session(zoning(), "client");
    EXPECT_EQ(session.addMemberToZone("z3", kWwn, kNewName).status, ZoningStatus::LimitsUnknown);
    EXPECT_EQ(session.addZoneToZoneset("beta", "z3").text(),
              "add zone z3 to zoneset beta: the fabric's limits were never read; read them with "
              "initZoningLimits()");
    EXPECT_FALSE(zoning().initZoningLimits());
    sim.loadSwitchText(std::string(kSwitch) + kLimits);
    EXPECT_TRUE(zoning().initZoningLimits());
    EXPECT_TRUE(session.addZoneToZoneset("beta", "z3").done());
}

}  // namespace
