#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "datacache/DataCache.h"
#include "datacache/wake_ups.h"
#include "simulator/Simulator.h"
#include "tests/support/CachePeer.h"
#include "tests/support/LogCapture.h"

/**
 * The real library over the simulated switch, without threads: "given this switch, when this happens, then
 * these events, these calls, these answers".
 *
 *     load(kSwitch);                                   // given: init() and registration, no pass yet
 *     settle();                                        // first load
 *     sim.run("do = \"power_supply\" ...");            // when
 *     settle();                                        // notifications delivered, passes run until all is
 * quiet EXPECT_THAT(events(), ElementsAre(...));         // then
 */
class CacheTest : public ::testing::Test {
  protected:
    CacheTest();
    ~CacheTest() override;

    /** Back to no switch and no cache, as before and after each test; nothing may have been misused. */
    void restart();
    /** Loads a switch file's text, then does what a host does at start-up, less the evaluation thread. */
    void load(const std::string& switchToml);
    /** load(), then the first passes; forgets their events, calls and log lines. */
    void start(const std::string& switchToml);
    /** One evaluation pass; returns whether the cache is ready. */
    bool pass();
    /** Delivers notifications and runs the passes that they ask for until nothing is left; returns their
     * number. */
    int settle();
    /** Runs scenario steps, then settles. */
    void step(const std::string& steps);
    /** Host events since the last call, one line each as eventText() prints them, less update-complete
     * events. */
    std::vector<std::string> events();
    /** The same with the update-complete events. */
    std::vector<std::string> allEvents();
    /** Calls to vexlib since the last call of this, as "function detail". */
    std::vector<std::string> calls();
    /** cacheState() of a cache that starts now, beside the one that there is. The health begins anew. */
    std::vector<std::string> freshState();
    /** Log messages since the last call, "LEVEL MESSAGE". */
    std::vector<std::string> log() { return _log.take(); }

    /** Whether another thread could take the access lock. */
    static bool lockIsFree();
    /** Whether another connection gets admin rights and the fabric's lock. */
    static bool fabricLockIsFree();

    /** What the getters say of a port's transceiver: format, diagnostics, OUI, serial number. */
    std::string media(const std::string& index) {
        return std::to_string(cache().getTransceiverFormat(index)) +
               (cache().getTransceiverDDMSupported(index) ? " yes " : " no ") +
               cache().getTransceiverVendorOUI(index) + ' ' + cache().getTransceiverVendorSN(index);
    }

    DataCache& cache() { return *DataCache::instance; }
    CachePeer peer() { return CachePeer(cache()); }

    /** How often the test itself has the cache misuse the switch library, until restart(). */
    size_t misuse = 0;

    vexsim::Simulator& sim = vexsim::Simulator::instance();

  private:
    LogCapture _log;
};
