#include "datacache/DataCache.h"
#include "datacache/account_changes.h"
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
    SmlBatch batch;
    batch.add("Oper.Switch.FirstPotentialUser");
    for (;;) {
        if (!batch.get(handle)) return kCallFailed;
        if (batch.status(0) != 0) return batch.status(0) == kEndOfList ? 0 : kNoEnd;
        if (names.size() == kMaxAccounts) return kNoEnd;  // counts as an end that is none
        names.push_back(batch.text(0));
        batch.clear();
        batch.add("Oper.Switch.NextPotentialUser.%s", names.back().c_str());
    }
}

}  // namespace

bool DataCache::_getAcctInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getAcctInfo()\n");
    _prevAccounts = _accounts;
    _accounts.clear();
    const int failedAt = readNames(_handle, _accounts);
    if (failedAt != 0) {
        _accounts = _prevAccounts;
        logUpdateFailed("_getAcctInfo", failedAt);
        return false;
    }
    // After an empty list nothing counts as added: meant so, as the first read would report every account.
    if (_prevAccounts.empty()) return true;

    const AccountChanges changes = compareAccounts(_prevAccounts, _accounts);
    _prevAccounts = changes.removed;
    for (const std::string& name : changes.added) {
        DCEventUserAcctAdd event(_switchState.switchWwn, name);
        _notifyHost(event);
    }
    for (const std::string& name : changes.removed) {
        DCEventUserAcctRemove event(_switchState.switchWwn, name);
        _notifyHost(event);
    }
    return true;
}
