#pragma once

#include <string>

#include "common/bounded_text.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "zoning/ZoningReport.h"

namespace datacache {

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
    bool send() {
        _result = _group == nullptr ? 0 : vex_smlSetMsgGroup(_group);
        return _group != nullptr && _result == 0;
    }
    /** After a send that failed: the first command that was refused, or the call when it failed as a whole;
     * empty where memory was short and nothing was sent. */
    ZoningFailure failure() const noexcept {
        if (_group == nullptr) return {};
        for (int i = 0; i < _group->count; ++i) {
            char* value = nullptr;
            const uint32_t status = vex_smlGetResult(_group, i, &value);
            if (status != 0) return failureOf(boundedText(_group->records[i].key), status);
        }
        return failureOf("vex_smlSetBatch", _result);
    }

  private:
    vex_smlmsggroup_s* _group;
    int32_t _result = 0;
};

}  // namespace datacache
