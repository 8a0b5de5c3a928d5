#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "simulator/Faults.h"
#include "simulator/Notifier.h"
#include "simulator/status.h"
#include "vexlib/vexlib.h"

namespace vexsim {

/** What a read of one key gives. */
struct Reading {
    uint32_t status = Ok;
    std::string value;
};

/** A step that cannot be carried out as the switch stands; whoever runs the step adds file and line. */
struct StepError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/**
 * The switch itself: its keys with their values, the faults in force, and whatever its areas keep beside
 * keys.
 *
 * It knows no locks and no files: the simulator guards it, areas fill and change it. What a change gives off
 * (notifications, notes) collects in the outbox, which the simulator empties once it has let go of the lock.
 */
class Switch {
  public:
    /** The value of one key: the store's, or else what an area computes. */
    Reading read(const std::string& key);
    /** True for a key of the store. */
    bool has(const std::string& key) const { return _store.count(key) != 0; }
    /** The store's value, or the fallback. */
    std::string value(const std::string& key, const std::string& fallback = {}) const;
    /** The store's value as a decimal number, 0 for anything else. */
    int64_t number(const std::string& key) const;
    void set(const std::string& key, std::string value) { _store[key] = std::move(value); }
    void erase(const std::string& key) { _store.erase(key); }
    /** Every key of the store, in no order. */
    const std::unordered_map<std::string, std::string>& store() const { return _store; }

    /** What an area keeps beside keys: one object of each type, made when it is first asked for. */
    template <class Part>
    Part& part() {
        std::shared_ptr<void>& slot = _parts[std::type_index(typeid(Part))];
        if (!slot) slot = std::make_shared<Part>();
        return *static_cast<Part*>(slot.get());
    }

    Faults faults;
    std::optional<vex_fzs_limits_s> zoningLimits;
    long clockOffset = 0; /**< seconds that uptime() is ahead */

    struct Outbox {
        std::vector<Event> events;
        std::vector<std::string> notes;
        std::vector<std::string> releases; /**< functions whose hanging calls go on; "*" for all */
    };
    void raise(int32_t code, std::string text, vex_eventsource_s source = {}) {
        raise(Event{code, source, std::move(text), false, false});
    }
    void raise(Event event) { _outbox.events.push_back(std::move(event)); }
    void note(std::string text) { _outbox.notes.push_back(std::move(text)); }
    /** Lets the hanging calls of a function go on; "*": those of all. */
    void release(std::string function) { _outbox.releases.push_back(std::move(function)); }
    Outbox takeOutbox() { return std::exchange(_outbox, {}); }

  private:
    std::unordered_map<std::string, std::string> _store;
    std::map<std::type_index, std::shared_ptr<void>> _parts;
    Outbox _outbox;
};

}  // namespace vexsim
