#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "datacache/CacheReader.h"
#include "tests/support/CacheTest.h"
#include "zoning/ZoningSession.h"

/** A cache that operations are carried out on, while their calls fail. */
class FaultedCache : public CacheTest {
  public:
    using CacheTest::cache, CacheTest::pass, CacheTest::peer, CacheTest::sim;

    uint32_t other = 0;        ///< a second connection, which is not hSwitch
    bool useOther = false;     ///< the operation is asked to use it
    std::vector<void*> owned;  ///< texts that the operation handed over
    std::unique_ptr<datacache::ZoningSession> session;
    ZoningCache& zoning() { return datacache::CacheReader()->zoningCache(); }
    void step(const std::string& fields) { sim.run("[[step]]\n" + fields); }
};

enum class Kind {
    Loader,  ///< reads areas of the cache
    Zoning,  ///< edits what the cache holds, or reads it
    Plain,   ///< a function for C, which asks for no memory but that of a group
};

struct Operation {
    std::string name;
    Kind kind;
    std::function<std::vector<std::string>(FaultedCache&)> run;
    const char* change = "";                        ///< steps at the switch before it
    std::function<void(FaultedCache&)> begin = {};  ///< what comes before it and does not fail
    bool alike = false;  ///< its calls are many of one kind, whose failures are told once
    bool twice = false;  ///< a second call may fail in the same run
};

constexpr const char* kFirstLoad = "first load";
constexpr const char* kAccounts = "accounts";
constexpr const char* kWalkers = "walkers";

/** What the fault matrix goes through: every loader, edit and plain function. */
const std::vector<Operation>& operations();
