#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vexsim {

/** What a fault does to the call, or to the keys of it, that it hits: one effect, and any of those that go
 * with it. */
struct Effect {
    std::optional<int32_t> result;    /**< the whole call fails with this result and does nothing */
    std::optional<uint32_t> status;   /**< the key's status; no value is read or written */
    std::optional<std::string> value; /**< the value read, in place of the switch's */
    std::optional<size_t> truncate;   /**< the value read is cut to this many characters */
    bool unterminated = false;        /**< the value read fills its whole field, without a terminator */
    bool null = false;                /**< a call that returns a handle or a text returns null */
    std::optional<uint32_t> handle;   /**< the connection handle, 0 included */
    bool inPart = false;              /**< a save of zoning leaves out the commands that were refused */
    bool lost = false;                /**< a notification does not arrive */

    // These go with any other.
    bool carriedOut = false;   /**< with a result or a status: it is a lie, and all was done */
    int64_t delayMs = 0;       /**< the call takes, or the notification comes, that much longer */
    int64_t uptimeSeconds = 0; /**< so much uptime passes in the call, without anybody waiting */
    bool hang = false;         /**< the call does not begin before it is let go */
};

/** In place of a function's name: the rule is about notifications, whose keys are their code and its name. */
constexpr const char* kNotification = "notification";

/** One rule: which calls, which of their keys, when, and what happens to them. */
struct FaultRule {
    std::string function;           /**< "vex_smlGetBatch", "*" for every call, or kNotification */
    std::optional<std::string> key; /**< a shell pattern; without it every key of the call is hit */
    uint32_t skip = 0;              /**< matching calls to let pass first */
    uint32_t times = 1;             /**< calls to hit then; 0 for all */
    Effect effect;
};

/** True for the name of a function that vexlib.h declares; a rule about any other could never hit. */
bool isFunction(std::string_view name);

/** The rules that hit one call, in the order in which they were made. */
class Hits {
  public:
    bool none() const { return _rules.empty(); }
    /** The effects on the call as a whole, of all rules together; the first rule to say something wins. */
    Effect onCall() const;
    /** The effects on one key of it: status with what it hides, value, truncate, unterminated, inPart. */
    Effect onKey(const std::string& key) const;

  private:
    friend class Faults;
    std::vector<FaultRule> _rules;
};

/** The rules in force. */
class Faults {
  public:
    void add(FaultRule rule) { _rules.push_back({std::move(rule), 0}); }
    /** Ends those that name this function; "*" ends all. */
    void clear(const std::string& function);
    /** Finds the rules that hit this call and counts it for them. */
    Hits hit(std::string_view function, const std::vector<std::string>& keys);

  private:
    struct Counted {
        FaultRule rule;
        uint64_t seen = 0; /**< matching calls so far */
    };
    std::vector<Counted> _rules;
};

}  // namespace vexsim
