#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

#include "recording/Reader.h"
#include "report/fields.h"

namespace report {

/**
 * The secrets that a report must not show: names of accounts, communities, passwords. First it learns them;
 * then it masks them, the same text by the same mask, wherever they stand. With nothing to be masked it gives
 * everything back as it is.
 */
class Secrets {
  public:
    explicit Secrets(bool masked) : _masked(masked) {}

    void learn(const std::string& secret);
    /** The ends and values of keys, and the texts of events, that are secret. */
    void learn(const recording::Recording& recording);

    /** What is shown of a secret. */
    std::string secret(const std::string& text) const;
    /** A key, whose end may be secret. */
    std::string key(const std::string& key) const;
    /** A text in which learned secrets may stand, as words. */
    std::string text(std::string_view text) const;
    std::string event(int32_t code, const std::string& text) const;
    /** All texts in a value. */
    void mask(Json& value) const;

  private:
    void learnKey(const std::string& key, const std::string& value);

    const bool _masked;
    std::unordered_set<std::string> _known;
    std::set<size_t, std::greater<>> _lengths;  ///< of those that are known
};

}  // namespace report
