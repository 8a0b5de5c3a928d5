#pragma once

#include <cstdint>
#include <string>

#include "common/bounded_text.h"
#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "zoning/ZoningReport.h"

namespace datacache {

/** A group of commands to the switch, freed with the object. Without memory it sends nothing. */
class CommandGroup {
  public:
    /** The status of a command that the switch library did not answer. It is a number that no switch is known
     * to answer with, so neither 0 nor 0xFFFFFFFF. */
    static constexpr uint32_t kUnanswered = 0xA5C35A3C;

    /** Commands are sent with the status `before`, which the switch library overwrites. With kUnanswered, a
     * command that was not answered can be told from one that was carried out. */
    explicit CommandGroup(int capacity, uint32_t before = 0)
        : _group(vex_smlAllocMsgGroup(capacity)), _before(before) {}
    ~CommandGroup() {
        if (_group != nullptr) vex_smlFreeMsgGroup(_group);
    }
    CommandGroup(const CommandGroup&) = delete;
    CommandGroup& operator=(const CommandGroup&) = delete;

    /** False once memory was short; the group is then gone. */
    bool ok() const { return _group != nullptr; }
    int size() const { return _group == nullptr ? 0 : _group->count; }
    /** Empties the group; what it had room for it still has. */
    void clear() {
        if (_group != nullptr) vex_smlResetMsgGroup(_group);
    }
    /** Appends a command, cut at 255 characters. Within the group's room it takes no memory. */
    void add(const char* command) {
        if (_group == nullptr) return;
        if (vex_smlAddMsgGroupV(_group, "%s", command) != 0) _group = nullptr;  // freed by the call
    }
    void add(const std::string& command) { add(command.c_str()); }
    /** Sends the group: true when the switch carried out every command. */
    bool send() {
        if (_group == nullptr) return false;
        for (int i = 0; i < _group->count; ++i) _group->records[i].status = _before;
        const CallWatch watch("vex_smlSetBatch", _group->count == 0 ? nullptr : _group->records[0].key,
                              static_cast<uint32_t>(_group->count));
        _result = vex_smlSetBatch(hSwitch, _group->records, _group->count);
        bool good = _result == 0;
        for (int i = 0; i < _group->count; ++i) {
            uint32_t& answer = _group->records[i].status;
            // A library that carried out the group and complains of nothing has answered well.
            if (_result == 0 && answer == _before) answer = 0;
            good = good && answer == 0;
        }
        return good;
    }
    /** After a send, the answer to a command; kUnanswered where the call failed before that. */
    uint32_t answer(int index) const { return _group->records[index].status; }
    /** Whether the switch carried out the first `count` commands. */
    bool allCarriedOut(int count) const {
        for (int i = 0; i < count; ++i) {
            if (answer(i) != 0) return false;
        }
        return true;
    }
    /** Whether the call itself succeeded, whatever became of its commands. */
    bool called() const { return _result == 0; }
    /** Whether one of the first `count` commands was refused. */
    bool anyRefused(int count) const {
        for (int i = 0; i < count; ++i) {
            if (answer(i) != 0 && answer(i) != kUnanswered) return true;
        }
        return false;
    }
    /** After a send whose last two commands give back the lock and the admin rights: notes the first of them
     * that failed, of those that there were to give back. Returns whether all were given back. */
    bool givenBack(bool lock, bool rights, ZoningFailure& failure) const noexcept {
        for (int i = size() - 2; i < size(); ++i) {
            if (answer(i) == 0 || !(i == size() - 2 ? lock : rights)) continue;
            if (answer(i) == kUnanswered) {
                noteHeld(failure, "vex_smlSetBatch", _result);
            } else {
                noteHeld(failure, boundedText(_group->records[i].key), answer(i));
            }
            return false;
        }
        return true;
    }
    /** After a send that failed: the first command that was refused, or the call when it failed as a whole;
     * empty where memory was short and nothing was sent. */
    ZoningFailure failure() const noexcept {
        if (_group == nullptr) return {};
        for (int i = 0; i < _group->count; ++i) {
            if (answer(i) != 0 && answer(i) != kUnanswered)
                return failureOf(boundedText(_group->records[i].key), answer(i));
        }
        return failureOf("vex_smlSetBatch", _result);
    }

  private:
    vex_smlmsggroup_s* _group;
    const uint32_t _before;
    int32_t _result = 0;
};

}  // namespace datacache
