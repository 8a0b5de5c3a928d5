#pragma once

#include "tests/support/CacheTest.h"

/** A switch with four ports, numbered 0 to 3, beside one other switch, of domain 2. */
class FabricTest : public CacheTest {
  protected:
    /** Starts with a remote switch of this name, and with these fields more in its section. */
    void startFabric(const std::string& local, const std::string& remote, const std::string& fields) {
        start("[switch]\nwwn = '" + local + "'\n[ports]\ncount = 4\n[[fabric.switch]]\ndomain = 2\nwwn = '" +
              remote + "'\n" + fields);
    }
    /** A load of the fabric, as the pass makes it; false when it failed. */
    bool reload() {
        const AccessGuard guard;
        return peer().getFabricInfo();
    }
    FabricCache& fabric() { return *cache().getFabric(1); }
};
