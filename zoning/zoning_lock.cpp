#include <new>

#include "common/cim_log.h"
#include "switchlib/uptime_seconds.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

int ZoningCache::ZoningLock(char* lockId) {
    const AccessGuard guard;
    CommandGroup group(2);
    return group.ok() && _takeLock(group, given(lockId), nullptr).done() ? 1 : 0;
}

ZoningReport ZoningCache::_takeLock(CommandGroup& group, const char* lockId, const void* session) {
    std::string holder;  // made before the switch is asked, so that no memory is needed when it has agreed
    try {
        holder = lockId;
    } catch (const std::bad_alloc&) {
        return {ZoningStatus::OutOfMemory};
    }
    _session = nullptr;
    _lockTime = static_cast<int32_t>(uptimeSeconds());
    group.clear();
    group.add("Cmd.Switch.ReqAdmin");
    group.add("Cmd.Zoning.FabricLock.77");
    if (group.send()) {
        _lockHeld = true;
        _lockId.swap(holder);
        _session = session;
        return {};
    }
    ZoningReport refused{ZoningStatus::Refused, 0, group.failure()};
    const bool rights = group.answer(0) == 0, lock = group.answer(1) == 0;
    _giveLockBack(group);  // the admin rights, which the first command may have obtained
    group.givenBack(lock, rights, refused.failure);
    return refused;
}

int ZoningCache::ZoningUnlock() {
    const AccessGuard guard;
    CommandGroup group(2);
    return group.ok() && _giveLockBack(group) ? 1 : 0;
}

bool ZoningCache::_giveLockBack(CommandGroup& group, bool hasRights, bool hasLock) {
    group.clear();
    if (!hasRights) group.add("Cmd.Switch.ReqAdmin");
    if (!hasLock) group.add("Cmd.Zoning.FabricLock.77");
    group.add("Cmd.Zoning.FabricUnlock.77");
    group.add("Cmd.Switch.RelAdmin");
    const bool given = group.send();
    _forgetLock();
    return given;
}

void ZoningCache::_forgetLock() {
    _session = nullptr;
    _lockId.clear();
    _lockHeld = false;
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
