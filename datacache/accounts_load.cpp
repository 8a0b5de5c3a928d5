#include "datacache/accounts_load.h"

#include <string_view>
#include <unordered_map>

#include "common/LockUse.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/SnapshotPublisher.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

namespace {

/** Names that are read at most: a switch whose list never ends must not hold the cache for ever. */
constexpr size_t kMaxAccounts = 65536;

constexpr uint32_t kEndOfList = 24;

/** Walks the names; 0, or the number of the place where the walk failed. */
int readNames(uint32_t handle, std::vector<std::string>& names) {
    constexpr int kCallFailed = 1880;
    constexpr int kNoEnd = 1897;
    SmlBatch batch;
    batch.add("Oper.Switch.FirstPotentialUser");
    for (;;) {
        if (!batch.get(handle, kEndOfList)) return kCallFailed;
        if (batch.status(0) != 0) return batch.status(0) == kEndOfList ? 0 : kNoEnd;
        if (names.size() == kMaxAccounts) {
            batch.note(ReadFault::NoEnd, 0);
            cim_log(CIM_LOG_TRACE, "DCACHE: _getAcctInfo() the list of accounts has no end\n");
            return kNoEnd;
        }
        names.emplace_back(batch.text(0));
        batch.clear();
        batch.add("Oper.Switch.NextPotentialUser.%s", names.back().c_str());
    }
}

}  // namespace

AccountChanges datacache::compareAccounts(const std::vector<std::string>& before,
                                          const std::vector<std::string>& now) {
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

bool DataCache::_getAcctInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getAcctInfo()\n");
    const SnapshotRead snapshot(*this, CacheArea::Accounts);
    // Into a list of its own, so that a read that fails half-way, for want of memory too, changes nothing.
    std::vector<std::string> names;
    const LockUse use(LockHolder::Accounts);
    AreaRead read(CacheArea::Accounts, false);
    const int failedAt = readNames(_handle, names);
    if (failedAt != 0) {
        logUpdateFailed("_getAcctInfo", failedAt);
        return read.done(false);
    }
    // Required: after an empty list nothing counts as added, or the first read would report every account.
    const AccountChanges changes = _accounts.empty() ? AccountChanges{} : compareAccounts(_accounts, names);
    _prevAccounts = changes.removed;
    _accounts.swap(names);
    read.done(true);
    _compareArea(CacheArea::Accounts, {});
    for (const std::string& name : changes.added) {
        notify(_callback, DCEventUserAcctAdd(_switchState.switchWwn, name));
    }
    for (const std::string& name : changes.removed) {
        notify(_callback, DCEventUserAcctRemove(_switchState.switchWwn, name));
    }
    return true;
}

bool DataCache::readAccounts() {
    const AccessGuard guard;
    return _getAcctInfo();
}
