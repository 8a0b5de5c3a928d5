// The C library declares its assertion's failure only where assertions are on, and this one always is.
#undef NDEBUG
#include <cassert>

#include "common/list_t.h"

using namespace datacache;

void datacache::elementStillLinked() {
    // Fixed texts, whatever compiler and item type: support tools know the report by them.
    __assert_fail("!_prev || !_next", "list_t", 188, "Element<Item>::~Element() [with Item = SwitchCache]");
}
