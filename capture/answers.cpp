#include <algorithm>
#include <charconv>
#include <set>
#include <sstream>

#include "capture/Answers.h"

namespace capture {

namespace {

using recording::Record;

constexpr uint32_t kEndOfList = 24;

/** Takes an answer in. */
void take(Answers& answers, const std::string& key, Answer answer) {
    const bool first = key == kFirstAccount;
    if (first) answers.accounts.clear();
    if (first || begins(key, kNextAccount)) {
        answers.accountsEnded = answer.status == kEndOfList;
        if (answer.status == 0) answers.accounts.push_back(answer.value);
    }
    answers.failedBatches.erase(key);
    answers.keys[key] = std::move(answer);
}

void takeBatch(Answers& answers, const Record& record) {
    const auto* const given = std::get_if<recording::SmlEntries>(&record.in("records"));
    const auto* const back = std::get_if<recording::SmlEntries>(&record.back("records"));
    if (given == nullptr) return;
    for (size_t i = 0; i < given->size(); ++i) {
        const std::string& key = (*given)[i].key;
        if (record.status() != 0 || back == nullptr || i >= back->size()) {
            if (answers.keys.count(key) == 0) answers.failedBatches[key] = record.status();
            continue;
        }
        const recording::SmlEntry& entry = (*back)[i];
        Answer answer;
        answer.status = entry.status;
        answer.number = record.number;
        if (entry.status == 0) {
            answer.value = entry.value.substr(0, entry.value.find('\0'));
            answer.unterminated = answer.value.size() >= VEX_SML_VALUE_SIZE;
        }
        take(answers, key, std::move(answer));
    }
}

void takeGet(Answers& answers, const Record& record) {
    const auto* const key = std::get_if<std::string>(&record.in("key"));
    const auto* const text = std::get_if<recording::HandedText>(&record.back("value"));
    if (key == nullptr) return;
    Answer answer;
    answer.status = static_cast<uint32_t>(record.status());
    answer.number = record.number;
    if (answer.status == 0 && text == nullptr) return;  // success without a text says nothing of the value
    if (answer.status == 0) answer.value = text->text.substr(0, text->text.find('\0'));
    take(answers, *key, std::move(answer));
}

void takeCommand(Answers& answers, const std::string& key, int64_t status) {
    if (key == "Cmd.Switch.ReqAdmin") answers.adminRefused = status != 0;
}

void takeCommands(Answers& answers, const Record& record) {
    if (const auto* const key = std::get_if<std::string>(&record.in("key"))) {
        takeCommand(answers, *key, record.status());
    }
    if (const auto* const back = std::get_if<recording::SmlEntries>(&record.back("records"))) {
        for (const recording::SmlEntry& entry : *back) takeCommand(answers, entry.key, entry.status);
    }
}

/** Domains that the switch last listed, and those that a walk came to. */
std::set<std::string> domainsOf(const Answers& answers) {
    std::set<std::string> domains;
    if (const std::string* const list = answers.value("Oper.Eport.LsdbRecordList.255")) {
        std::istringstream words(*list);
        for (std::string word; std::getline(words, word, ',');) domains.insert(word);
    }
    const std::string* next = answers.value("Oper.Eport.FirstLsdbRecord");
    while (next != nullptr && domains.insert(*next).second) {
        next = answers.value("Oper.Eport.NextLsdbRecord." + *next);
    }
    return domains;
}

/**
 * What a key belongs to: the key that lists it, and whether that list still has it. A list that is read anew
 * is read to its end, so what it does not have, or was not asked for again, is from before.
 */
struct Membership {
    std::string list;
    bool listed = false;
};

const std::pair<std::string, const char*> kUnits[] = {
    {"Oper.Chassis.0.PowerSupply.", "Oper.Chassis.0.PowerSupplies"},
    {"Oper.Chassis.0.Fan.", "Oper.Chassis.0.Fans"},
    {"Oper.Blade.", "Oper.Chassis.0.MaxSlots"},
    {"Oper.UserPort.0.", "Oper.Switch.MaxPorts"},
    {"Config.UserPort.0.", "Oper.Switch.MaxPorts"},
};

std::string upTo(const std::string& text, char end, size_t from) {
    return text.substr(from, text.find(end, from) - from);
}

std::optional<Membership> membershipOf(const Answers& answers, const std::set<std::string>& domains,
                                       const std::string& key) {
    const auto below = [&](const std::string& list, const std::string& index) {
        const std::optional<int64_t> count = answers.number(list);
        const std::optional<int64_t> number = wholeNumber(index);
        return Membership{list, !count || !number || *number < *count};
    };
    if (begins(key, kNextAccount)) return Membership{kFirstAccount};
    if (begins(key, "Oper.Eport.NextLsdbRecord.")) return Membership{"Oper.Eport.FirstLsdbRecord"};
    if (begins(key, "Oper.NameServerAll.")) {
        const size_t next = key.find(".NextNsEntry.");
        if (next != std::string::npos) return Membership{key.substr(0, next) + ".FirstNsEntry"};
    }
    for (const std::string prefix : {"Oper.Eport.LsdbRecord.", "Oper.TopologyAll."}) {
        if (!begins(key, prefix)) continue;
        const std::string domain = upTo(key, '.', prefix.size());
        if (domains.count(domain) == 0) return Membership{"Oper.Eport.LsdbRecordList.255"};
        const size_t item = prefix.size() + domain.size();
        if (key.compare(item, 6, ".Link.") == 0)
            return below(prefix + domain + ".NumberOfLinks", upTo(key, '.', item + 6));
        if (key.compare(item, 7, ".Entry.") == 0)
            return below(prefix + domain + ".PortEntries", upTo(key, '.', item + 7));
    }
    for (const auto& [prefix, count] : kUnits) {
        if (begins(key, prefix)) return below(count, upTo(key, '.', prefix.size()));
    }
    return std::nullopt;
}

void dropWhatIsGone(Answers& answers) {
    const std::set<std::string> domains = domainsOf(answers);
    std::vector<std::string> gone;
    for (const auto& [key, answer] : answers.keys) {
        const std::optional<Membership> membership = membershipOf(answers, domains, key);
        if (!membership || membership->listed) continue;
        const auto list = answers.keys.find(membership->list);
        if (list != answers.keys.end() && list->second.number > answer.number) gone.push_back(key);
    }
    for (const std::string& key : gone) answers.keys.erase(key);
}

}  // namespace

std::optional<int64_t> wholeNumber(const std::string& text) {
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    if (!whole || std::to_string(number) != text || number < 0) return std::nullopt;
    return number;
}

std::optional<int64_t> Answers::number(const std::string& key) const {
    const std::string* const text = value(key);
    return text == nullptr ? std::nullopt : wholeNumber(*text);
}

Answers lastAnswers(const recording::Recording& recording) {
    Answers answers;
    for (const Record& record : recording.records) {
        if (record.isCall("vex_smlGetBatch")) takeBatch(answers, record);
        if (record.isCall("vex_smlGet")) takeGet(answers, record);
        if (record.isCall("vex_smlSet") || record.isCall("vex_smlSetBatch")) takeCommands(answers, record);
    }
    dropWhatIsGone(answers);
    answers.zoning = zoningAnswers(recording);
    return answers;
}

}  // namespace capture
