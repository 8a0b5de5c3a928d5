#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/account_changes.h"
#include "datacache/notify.h"
#include "datacache/update_failed.h"
#include "switchlib/SmlBatch.h"

namespace {

/** Names that are read at most: a switch whose list never ends must not hold the cache for ever. */
constexpr size_t kMaxAccounts = 65536;

constexpr uint32_t kEndOfList = 24;

/** Walks the names; 0, or the number of the place where the walk failed. */
int readNames(uint32_t handle, std::vector<std::string>& names) {
    constexpr int kCallFailed = 1880;
    constexpr int kNoEnd = 1897;
    SmlBatch batch(1);
    batch.add("Oper.Switch.FirstPotentialUser");
    for (;;) {
        if (!batch.get(handle, kEndOfList)) return kCallFailed;
        if (batch.status(0) != 0) return batch.status(0) == kEndOfList ? 0 : kNoEnd;
        if (names.size() == kMaxAccounts) {
            batch.note(datacache::ReadFault::NoEnd, 0);
            cim_log(CIM_LOG_TRACE, "DCACHE: _getAcctInfo() the list of accounts has no end\n");
            return kNoEnd;
        }
        names.emplace_back(batch.text(0));
        batch.clear();
        batch.add("Oper.Switch.NextPotentialUser.%s", names.back().c_str());
    }
}

}  // namespace

bool DataCache::_getAcctInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getAcctInfo()\n");
    // Into a list of its own, so that a read that fails half-way, for want of memory too, changes nothing.
    std::vector<std::string> names;
    datacache::AreaRead read(datacache::CacheArea::Accounts, false);
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
