#pragma once

#include "tests/support/CacheTest.h"

/** A switch with four ports, numbered 0 to 3, in a fabric. */
class FabricTest : public CacheTest {
  protected:
    static constexpr const char* kLocal = "1000001122000001";

    /** Loads a switch file, with the ports, and lets the cache load. */
    void loadFabric(const std::string& switchToml) {
        load(switchToml + "\n[ports]\ncount = 4\n");
        settle();
    }

    /** The same for a file that says what ports there are. */
    void loadGenerated(const std::string& switchToml) {
        load(switchToml);
        settle();
    }

    /** The events about fabrics and their switches since the last call. */
    std::vector<std::string> fabricEvents() {
        std::vector<std::string> lines;
        for (const std::string& line : events()) {
            for (const char* kind : {"DCEventFabric", "DCEventSwitchAdd", "DCEventSwitchRemove"}) {
                if (line.rfind(kind, 0) == 0) lines.push_back(line);
            }
        }
        return lines;
    }

    /** Runs a step, given as its fields (more steps may follow as tables), then settles. */
    void act(const std::string& fields) { step("[[step]]\n" + fields); }

    /** A load of the fabric, as the pass makes it; false when it failed. */
    bool reload() {
        const AccessGuard guard;
        return peer().getFabricInfo();
    }

    FabricCache& fabric() { return *cache().getFabric(1); }
    SwitchCache* member(const std::string& name) { return fabric().getSwitchByWwn(name); }

    /** The switches of the cache as "DOMAIN NAME ports=N", in list order, less the local one. */
    std::vector<std::string> members() {
        std::vector<std::string> lines;
        for (const SwitchCache* s = fabric().getFirstSwitch(); s != nullptr; s = fabric().getNextSwitch(s)) {
            if (s->isLocal()) continue;
            lines.push_back(std::to_string(s->getDomainID()) + ' ' + s->getWwn() +
                            " ports=" + std::to_string(s->_port_count));
        }
        return lines;
    }

    /** Log messages about the fabric's switches since the last call, from the list of domains on. */
    std::vector<std::string> memberLog() {
        std::vector<std::string> lines;
        bool on = false;
        for (const std::string& line : log()) {
            if (line == "2 DCACHE: _load_switch_domain_list()") on = true;
            if (line == "2 DCACHE: _load_mserver_ports()") on = false;
            if (on) lines.push_back(line);
        }
        return lines;
    }
};
