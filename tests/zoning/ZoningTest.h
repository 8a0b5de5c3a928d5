#pragma once

#include <sstream>
#include <string>
#include <utility>

#include "datacache/CacheReader.h"
#include "host/areas.h"
#include "tests/support/CacheTest.h"
#include "tests/support/zoning_limits.h"
#include "zoning/ZoningSession.h"

/** A text for the zoning interface, which takes names as char*. */
struct Arg {
    std::string text;
    operator char*() { return text.data(); }
};

/** Two zonesets, one of them active too, three zones and two aliases; limits may follow. */
inline const std::string kSwitch = R"(
switch = {wwn = "1000001122AABBCC", principal = "1000001122000001"}
[zoning]
active = "alpha"
alias = [{name = "a1", members = ["2000001122000001", "2000001122000002"]}, {name = "a2"}]
zone = [{name = "z1", members = ["2000001122000003", "a1"]},
        {name = "z2", type = "HardACL", members = ["1,2", "010203"]}, {name = "z3"}]
zoneset = [{name = "alpha", zones = ["z1", "z2"]}, {name = "beta", zones = ["z1"]}]
)";

class ZoningTest : public CacheTest {
  protected:
    /** Ends the cache; nothing that it held is left. */
    ~ZoningTest() override {
        delete std::exchange(DataCache::instance, nullptr);
        const vexsim::Live live = sim.live();
        EXPECT_EQ(live.zonesets + live.zones + live.aliases + live.members, 0U);
    }

    /** A new cache of a new switch, loaded; forgets events, calls and log. May be called again. */
    void start(const std::string& toml = kSwitch + limitsText()) {
        restart();
        CacheTest::start(toml);
    }
    /** Has the zoning area read again by one pass; returns its result. */
    bool refresh() {
        cache().updateZoning();
        pass();
        const AccessGuard guard;
        return peer().zoningOK;
    }
    void fault(const std::string& fields) { sim.run("do = 'fault'\n" + fields); }

    ZoningCache& zoning() { return datacache::CacheReader()->zoningCache(); }
    /** The database, as a host shows it. */
    static std::string shown() {
        std::ostringstream text;
        host::printAreas(text, host::readAreas("zoning"), false);
        return text.str();
    }
};
