#pragma once

#include <cstdint>

namespace datacache {

/** What holds the access lock, so that readers and passes wait for it. */
enum class LockHolder : uint8_t {
    Nobody,
    Reader,    ///< a host that reads, or a short call of the cache
    Pass,      ///< an evaluation pass
    Accounts,  ///< a read of the accounts
    Session,   ///< a step of a zoning session
};

}  // namespace datacache
