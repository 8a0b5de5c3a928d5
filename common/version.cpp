#include "common/version.h"

int datacacheVersion(void) {
    return DATACACHE_VERSION;
}
