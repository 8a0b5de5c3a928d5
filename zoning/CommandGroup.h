#pragma once

#include <string>

#include "switchlib/NORV_Vex_Lib.h"

/** A group of commands to the switch, freed with the object. Without memory it sends nothing. */
class CommandGroup {
  public:
    explicit CommandGroup(int capacity) : _group(vex_smlAllocMsgGroup(capacity)) {}
    ~CommandGroup() {
        if (_group != nullptr) vex_smlFreeMsgGroup(_group);
    }
    CommandGroup(const CommandGroup&) = delete;
    CommandGroup& operator=(const CommandGroup&) = delete;

    /** False once memory was short; the group is then gone. */
    bool ok() const { return _group != nullptr; }
    /** Appends a command, cut at 255 characters. */
    void add(const std::string& command) {
        if (_group == nullptr) return;
        if (vex_smlAddMsgGroupV(_group, "%s", command.c_str()) != 0) _group = nullptr;  // freed by the call
    }
    /** Sends the group: true when the switch carried out every command. */
    bool send() { return _group != nullptr && vex_smlSetMsgGroup(_group) == 0; }

  private:
    vex_smlmsggroup_s* _group;
};
