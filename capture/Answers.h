#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "recording/Reader.h"

namespace capture {

/** What the switch last said to the read of a key. */
struct Answer {
    uint32_t status = 0;
    std::string value;         /**< up to its terminator */
    bool unterminated = false; /**< the value filled its field */
    uint64_t number = 0;       /**< of the record */
};

// ---- Zoning ----

/** A zone or an alias, as far as it was read. */
struct Container {
    std::optional<std::string> name;
    std::optional<int64_t> type; /**< a zone's only */
    std::vector<recording::Member> members;
    bool complete = false; /**< all members were read */
};

/** A zoneset object, as far as it was read. */
struct Zoneset {
    std::string name;
    std::vector<Container> zones = {};
    std::vector<Container> aliases = {};
    bool listed = false;   /**< all its zones are here */
    bool complete = false; /**< all there is in it was read */
};

struct ZoningAnswers {
    std::optional<Zoneset> all; /**< every configured zone and alias */
    std::optional<std::vector<std::string>> names;
    std::vector<Zoneset> zonesets;
    std::optional<Zoneset> active;
    std::optional<vex_fzs_limits_s> limits;
    /** What failed when it was last called, with its status: function, and the name that it was given. */
    std::map<std::pair<std::string, std::string>, int64_t> failures;
};

/** Follows the zoning objects of a recording from call to call. */
ZoningAnswers zoningAnswers(const recording::Recording& recording);

// ---- All ----

/** The last answers of a switch. */
struct Answers {
    std::map<std::string, Answer> keys;
    /** Keys that no call answered: every batch with them failed, with this result. */
    std::map<std::string, int64_t> failedBatches;
    std::vector<std::string> accounts; /**< the last walk, in its order */
    bool accountsEnded = false;        /**< it came to the list's end */
    bool adminRefused = false;         /**< the last request for admin rights was */
    ZoningAnswers zoning;

    /** The value of a key that was answered with one; null for any other. */
    const std::string* value(const std::string& key) const {
        const auto found = keys.find(key);
        return found == keys.end() || found->second.status != 0 ? nullptr : &found->second.value;
    }
    /** The same as a number, written as the switch writes them. */
    std::optional<int64_t> number(const std::string& key) const;
};

/** Without what a later answer says is gone: a switch that has left, an account, a link. */
Answers lastAnswers(const recording::Recording& recording);

/** Replaces names, addresses, communities and serial numbers, the same text by the same mask. */
void mask(Answers& answers);

/** The walk through the accounts: its first key, and the beginning of the others. */
inline const std::string kFirstAccount = "Oper.Switch.FirstPotentialUser";
inline const std::string kNextAccount = "Oper.Switch.NextPotentialUser.";

inline bool begins(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

/** "17", without sign, blanks and leading zeros. */
std::optional<int64_t> wholeNumber(const std::string& text);

}  // namespace capture
