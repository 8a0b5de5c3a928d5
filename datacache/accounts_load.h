#pragma once

#include <string>
#include <vector>

namespace datacache {

/** What became of a list of account names. */
struct AccountChanges {
    std::vector<std::string> added;    ///< in the order of the new list
    std::vector<std::string> removed;  ///< in the order of the old list
};

/**
 * Compares two lists of names, byte by byte. A name that a list holds several times counts as often: each
 * occurrence in the new list takes up one in the old list, the first that is left.
 */
AccountChanges compareAccounts(const std::vector<std::string>& before, const std::vector<std::string>& now);

}  // namespace datacache
