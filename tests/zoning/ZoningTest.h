#pragma once

#include <map>
#include <string>
#include <vector>

#include "datacache/CacheReader.h"
#include "tests/support/CacheTest.h"
#include "zoning/ZoningSession.h"

/** A text for the zoning interface, which takes names as char*. */
struct Arg {
    std::string text;
    operator char*() { return text.data(); }
};

/** What a zoneset holds, one line each: "zone NAME TYPE MEMBER,MEMBER", "alias NAME MEMBER". */
using Contents = std::vector<std::string>;
/** Zonesets by the key of the cache's map, or by name. */
using Zonesets = std::map<std::string, Contents>;

inline const std::string kActive = "[ActiveZoneSetKey]";
inline const std::string kUber = "[UberZoneSetKey]";

/** The limits of a switch file, and such as no test reaches. */
std::string limitsText(const vex_fzs_limits_s& limits);
inline const std::string kLimits = limitsText({20, 20, 400, 20, 20, 20, 20});

class ZoningTest : public CacheTest {
  protected:
    /** Two zonesets, one of them active too, three zones and two aliases. */
    static const char* const kSwitch;

    /** A new cache of a new switch, loaded; forgets events, calls and log. May be called again. */
    void start(const std::string& toml);
    void start() { start(std::string(kSwitch) + kLimits); }
    /** Has the zoning area read again by one pass; returns its result. */
    bool refresh();

    ZoningCache& zoning() { return datacache::CacheReader().zoning(); }
    Zonesets cached();
    /** What the switch itself holds, the configured zonesets by name and the database under kUber. */
    Zonesets onSwitch();
    /** Objects that the cache should hold, by what can be reached from it. */
    vexsim::Live reachable();
    /** Expects that these are all objects alive. */
    void expectNoLeak();
    std::vector<std::string> logWith(const std::string& part);
};
