#include <utility>

#include "common/cim_log.h"
#include "switchlib/uptime_seconds.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

int ZoningCache::ZoningLock(char* lockId) {
    const AccessGuard guard;
    ZoningFailure failure;
    {
        CommandGroup group(2);
        if (!group.ok()) return 0;
        ++_lockChanges;
        _lockTime = static_cast<int32_t>(uptimeSeconds());
        group.add("Cmd.Switch.ReqAdmin");
        group.add("Cmd.Zoning.FabricLock.77");
        if (group.send()) {
            _lockHeld = true;
            _lockId = given(lockId);
            return 1;
        }
        failure = group.failure();
    }
    _lockId.clear();
    _lockHeld = false;
    ZoningUnlock();  // gives admin rights back, which the first command may have obtained
    _failure = std::move(failure);
    return 0;
}

int ZoningCache::ZoningUnlock() {
    const AccessGuard guard;
    CommandGroup group(2);
    if (!group.ok()) return 0;
    ++_lockChanges;
    group.add("Cmd.Zoning.FabricUnlock.77");
    group.add("Cmd.Switch.RelAdmin");
    const bool released = group.send();
    if (!released) _failure = group.failure();
    _lockId.clear();
    _lockHeld = false;
    return released ? 1 : 0;
}

bool ZoningCache::LockIdOK(char* lockId, bool& expired) {
    const AccessGuard guard;
    expired = false;
    if (!_lockHeld || _lockId != given(lockId)) return false;
    const long elapsed = uptimeSeconds() - _lockTime;
    if (elapsed <= kZoningLockSeconds) return true;
    // Required: the lock still counts as held; its holder decides what becomes of it.
    cim_log(CIM_LOG_TRACE, "DCACHE: fabric lock interval expired at %lds\n", elapsed);
    expired = true;
    return false;
}
