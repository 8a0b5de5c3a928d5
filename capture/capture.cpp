#include "capture/capture.h"

#include <algorithm>
#include <set>

#include "capture/sections.h"
#include "simulator/Simulator.h"
#include "simulator/areas/Area.h"
#include "simulator/areas/fields.h"
#include "simulator/switch_file.h"

namespace capture {

namespace {

using vexsim::Switch;

/** The line that a message "NAME:LINE: ..." names. */
size_t lineOf(const std::string& message) {
    return std::stoul(message.substr(message.find(':') + 1));
}

/** Whether what stood in this place is a key's, so that [sml] will say it. */
bool hasKeys(const std::string& place) {
    for (const std::string other : {"[zoning", "[[zoning", "[sml]", "[[fault]]"}) {
        if (begins(place, other)) return false;
    }
    return true;
}

/** The switch that the document describes; what cannot be loaded is taken out of it. */
Switch load(Document& document, std::vector<std::string>& remarks) {
    for (;;) {
        try {
            return readWholeSwitch(vexsim::TableReader::parse(document.text(), "capture"));
        } catch (const vexsim::InputError& error) {
            const std::string dropped = document.drop(lineOf(error.what()));
            if (dropped.empty()) throw;
            if (!hasKeys(dropped)) remarks.push_back("no switch file can say: " + dropped);
        }
    }
}

/** Whether the loaded switch's walk through the accounts is the captured one. A name that is listed twice has
 * one key for two answers, so such a walk is compared as a whole. */
bool sameAccounts(const Answers& answers, Switch& loaded) {
    if (!answers.accountsEnded) return false;
    std::string key = kFirstAccount;
    for (const std::string& name : answers.accounts) {
        const vexsim::Reading reading = loaded.read(key);
        if (reading.status != vexsim::Ok || reading.value != name) return false;
        key = kNextAccount + name;
    }
    return loaded.read(key).status == vexsim::EndOfList;
}

/** What the sections leave unsaid: keys by value, and keys that fail. */
class Remainder {
  public:
    Remainder(const Answers& answers, std::vector<std::string>& remarks)
        : _answers(answers), _remarks(remarks) {}

    /** Compares every captured key; false when the loaded switch says the same without anything new. */
    bool collect(Switch& loaded) {
        const bool accounts = sameAccounts(_answers, loaded);
        bool more = false;
        for (const auto& [key, answer] : _answers.keys) {
            const bool account = key == kFirstAccount || begins(key, kNextAccount);
            if (_faults.count(key) != 0 || (accounts && account)) continue;
            more = compare(key, answer, loaded.read(key)) || more;
        }
        return more;
    }

    void addTo(Document& document) const {
        if (!_values.empty()) {
            Table& table = document.add("[sml]");
            for (const auto& [key, value] : _values) table.add(quoted(key), quoted(value));
        }
        for (const auto& [key, fault] : _faults) addFault(document, "*", key).add(fault.first, fault.second);
        for (const auto& [key, result] : _answers.failedBatches) {
            if (isUtf8(key)) addFault(document, "vex_smlGetBatch", key).add("result", result);
        }
    }

    size_t values() const { return _values.size(); }

  private:
    bool compare(const std::string& key, const Answer& answer, const vexsim::Reading& reading) {
        const bool failed = answer.status != 0;
        const bool said = failed ? reading.status == answer.status
                                 : reading.status == vexsim::Ok && reading.value == answer.value;
        if (said && !answer.unterminated) return false;
        if (!isUtf8(key)) {
            if (_unsayable.insert(key).second)
                _remarks.push_back("the key " + key + " is no UTF-8, so it is missing");
            return false;
        }
        if (failed) return _faults.emplace(key, std::pair("status", std::to_string(answer.status))).second;
        if (!isUtf8(answer.value) && _unsayable.insert(key).second)
            _remarks.push_back("the value of " + key +
                               " is no UTF-8: a question mark stands for each such byte");
        bool more = false;
        if (!said) more = _values.emplace(key, answer.value).second;
        if (answer.unterminated)
            more = _faults.emplace(key, std::pair("unterminated", "true")).second || more;
        return more;
    }

    const Answers& _answers;
    std::vector<std::string>& _remarks;
    std::map<std::string, std::string> _values;
    std::map<std::string, std::pair<const char*, std::string>> _faults;
    std::set<std::string> _unsayable;
};

/** The fields whose keys nobody read and that the simulated switch has a default for. */
std::string unreadFields(const Answers& answers) {
    std::string names;
    for (const vexsim::Area& area : vexsim::areas()) {
        for (const vexsim::Section& section : area.sections) {
            if (section.fields == nullptr) continue;
            std::string unread;
            for (const vexsim::Field& field : section.fields().list) {
                if (field.fallback != nullptr && answers.keys.count(field.key) == 0)
                    unread += std::string(unread.empty() ? " " : ", ") + field.name;
            }
            if (!unread.empty())
                names += std::string(names.empty() ? " [" : "; [") + section.name + ']' + unread;
        }
    }
    return names;
}

size_t count(const Document& document, const std::string& heading) {
    return static_cast<size_t>(std::count_if(document.tables.begin(), document.tables.end(),
                                             [&](const Table& table) { return table.heading == heading; }));
}

}  // namespace

std::string patternOf(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
        if (c == '*' || c == '?' || c == '[' || c == '\\') pattern += '\\';
        pattern += c;
    }
    return pattern;
}

Table& addFault(Document& document, const std::string& function, const std::string& key) {
    Table& table = document.add("[[fault]]");
    table.add("function", quoted(function));
    if (!key.empty()) table.add("key", quoted(patternOf(key)));
    table.add("times", 0);
    return table;
}

SwitchFile switchFile(const recording::Recording& recording, bool masked) {
    SwitchFile made;
    Answers answers = lastAnswers(recording);
    if (masked) mask(answers);
    if (answers.value("Oper.Switch.WWN") == nullptr)
        made.remarks.emplace_back("the switch's name was not read, so one is made up");
    const std::string defaults = unreadFields(answers);
    if (!defaults.empty()) made.remarks.push_back("never read, so a default stands:" + defaults);

    Document sections;
    describeHardware(answers, sections);
    describePorts(answers, sections);
    describeFabric(answers, sections);
    made.zones = describeZoning(answers, sections, made.remarks);
    {
        Switch loaded = load(sections, made.remarks);
        describeLinks(answers, loaded, sections);
    }
    // What is added can change what is computed from it, so once more until nothing is left to add.
    Remainder remainder(answers, made.remarks);
    Document document = sections;
    for (bool more = true; more;) {
        Switch loaded = load(document, made.remarks);
        more = remainder.collect(loaded);
        if (!more) break;
        document = sections;
        remainder.addTo(document);
    }
    document.remarks = made.remarks;
    made.text = document.text();
    made.ports = static_cast<size_t>(answers.number("Oper.Switch.MaxPorts").value_or(0));
    made.switches = 1 + count(document, "[[fabric.switch]]");
    made.keys = remainder.values();
    made.faults = count(document, "[[fault]]");
    return made;
}

}  // namespace capture
