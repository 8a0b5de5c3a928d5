#pragma once

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "simulator/areas/Area.h"
#include "simulator/areas/fields.h"

namespace vexsim {

/** One field of a KeyStep. */
struct StepField {
    enum Kind {
        Text,
        Value,  /**< a text, a number or a boolean, as the value of a key */
        Flag,   /**< as "True" or "False" */
        Number, /**< from low to high; {NAME-1} is one less, for labels that count from 1 */
        Word,   /**< one of words */
        KeyOf,  /**< the name of one of a section's fields; {NAME.key} is its key */
    };
    const char* name;
    Kind kind = Text;
    Words words = {};
    int64_t low = 0;
    int64_t high = 0;
    const Fields* fields = nullptr;
    const char* fallback = nullptr; /**< what a step says that is silent about it; null: it must not be */
    bool optional = false;          /**< of a step's optional fields at least one must be there */
};

StepField wordField(const char* name, Words words);
StepField numberField(const char* name, int64_t low, int64_t high);
StepField keyOfField(const char* name, const Fields& fields);
StepField optional(StepField field);
StepField orElse(StepField field, const char* fallback);

/** What the fields of one step say, by name. */
using StepValues = std::map<std::string, std::string>;

/**
 * A step that sets keys and raises an event, as one row.
 *
 * In patterns {FIELD} is what the step says, and [KEY] what the key of that name then holds.
 */
struct KeyStep {
    const char* name;
    std::vector<StepField> fields;
    /** Patterns of keys and of their values; one with a field that the step is silent about is left alone. */
    std::vector<std::pair<const char*, const char*>> keys;
    int32_t code;     /**< 0: it is a silent step */
    const char* text; /**< pattern */
    /** The fields whose numbers are the words of the event's source; null: 0. */
    std::array<const char*, 3> source = {};
    /** Throws StepError when the switch as it stands does not allow the step. */
    void (*check)(const Switch& target, const StepValues& values) = nullptr;
};

/** The step of a row. */
StepKind keyStep(KeyStep row);

}  // namespace vexsim
