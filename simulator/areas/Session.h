#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "simulator/areas/Area.h"

namespace vexsim {

/** Which configuration an edit session is for. */
enum class EditKind { None, Switch, Cim };

/** Admin rights and the edit session, of which the switch has one each. */
struct Session {
    std::optional<uint32_t> admin; /**< the connection that holds admin rights */
    bool heldElsewhere = false;    /**< somebody outside this process holds them */
    bool sharedAdmin = false;      /**< somebody else's request succeeds while they are held */
    EditKind edit = EditKind::None;
    std::map<std::string, std::string> pending; /**< settings of the edit session, not saved yet */
    std::map<std::string, std::string> backup;
    bool hasBackup = false;

    bool isAdmin(uint32_t handle) const { return admin == handle; }
};

/** Sets a Config key: pending in an edit session, refused outside one. */
uint32_t setConfig(Switch& target, const Command& command);

/** Splits "KEY.VALUE" where KEY is one that the switch knows; gives any other command back as it is. */
Command splitOperand(Switch& target, const Command& command);

}  // namespace vexsim
