#include "datacache/account_changes.h"

#include <string_view>
#include <unordered_map>

AccountChanges compareAccounts(const std::vector<std::string>& before, const std::vector<std::string>& now) {
    struct Occurrences {
        size_t unmatched = 0;
        size_t matched = 0;
    };
    // By count and not by search: the switch decides how long the lists are.
    std::unordered_map<std::string_view, Occurrences> old;
    for (const std::string& name : before) ++old[name].unmatched;

    AccountChanges changes;
    for (const std::string& name : now) {
        const auto found = old.find(name);
        if (found == old.end() || found->second.unmatched == 0) {
            changes.added.push_back(name);
        } else {
            --found->second.unmatched;
            ++found->second.matched;
        }
    }
    for (const std::string& name : before) {
        Occurrences& occurrences = old[name];
        if (occurrences.matched == 0) {
            changes.removed.push_back(name);
        } else {
            --occurrences.matched;
        }
    }
    return changes;
}
