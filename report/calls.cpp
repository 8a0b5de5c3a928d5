#include "report/calls.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace report {

namespace {

using recording::Record;

constexpr size_t kMostSubjects = 25;

struct Cost {
    uint64_t count = 0;
    uint64_t failed = 0;
    uint64_t total = 0;
    uint64_t longest = 0;
    const Record* slowest = nullptr;

    void add(const Record& call) {
        ++count;
        failed += hasFailed(call) ? 1 : 0;
        total += call.took;
        if (slowest != nullptr && call.took <= longest) return;
        longest = call.took;
        slowest = &call;
    }
};

/** The dearest first. */
template <typename Key>
std::vector<std::pair<Key, Cost>> ordered(const std::map<Key, Cost>& costs) {
    std::vector<std::pair<Key, Cost>> list(costs.begin(), costs.end());
    std::stable_sort(list.begin(), list.end(), [](const auto& one, const auto& other) {
        return one.second.total > other.second.total;
    });
    return list;
}

Json costOf(const Cost& cost) {
    return {{"count", cost.count},
            {"failed", cost.failed},
            {"milliseconds", millisecondsOf(cost.total)},
            {"longest", millisecondsOf(cost.longest)}};
}

}  // namespace

std::set<std::string> keysAsked(const recording::Recording& recording) {
    std::set<std::string> keys;
    for (const Record& record : recording.records) {
        if (record.isCall("vex_smlGet")) {
            if (const auto* const key = std::get_if<std::string>(&record.in("key"))) keys.insert(*key);
        } else if (record.isCall("vex_smlGetBatch")) {
            const auto* const entries = std::get_if<recording::SmlEntries>(&record.in("records"));
            if (entries == nullptr) continue;
            for (const recording::SmlEntry& entry : *entries) keys.insert(entry.key);
        }
    }
    return keys;
}

Json millisecondsOf(uint64_t nanoseconds) {
    return std::round(static_cast<double>(nanoseconds) / 1e3) / 1e3;
}

bool hasFailed(const Record& call) {
    const bool amount = call.function != nullptr &&
                        std::string_view(call.function->name).find("Count") != std::string_view::npos;
    return !amount && call.status() != 0;
}

std::string subjectOf(const Record& call, const Secrets& secrets) {
    for (const recording::Value& value : call.given) {
        if (const auto* const entries = std::get_if<recording::SmlEntries>(&value)) {
            if (entries->empty()) return "";
            const size_t more = entries->size() - 1;
            return secrets.key(entries->front().key) +
                   (more == 0 ? ""
                              : " and " + std::to_string(more) + (more == 1 ? " more key" : " more keys"));
        }
        if (const auto* const text = std::get_if<std::string>(&value)) return secrets.key(*text);
    }
    return "";
}

Json callStatistics(const recording::Recording& recording, const Secrets& secrets) {
    std::map<std::string, Cost> functions;
    std::map<std::pair<std::string, std::string>, Cost> subjects;
    Cost all;
    for (const Record& record : recording.records) {
        if (record.kind != Record::Kind::Call) continue;
        all.add(record);
        functions[record.function->name].add(record);
        const std::string subject = subjectOf(record, secrets);
        if (!subject.empty()) subjects[{subject, record.function->name}].add(record);
    }
    Json byFunction = Json::array();
    for (const auto& [function, cost] : ordered(functions)) {
        Json row{{"function", function}};
        row.update(costOf(cost));
        row["of"] = subjectOf(*cost.slowest, secrets);
        byFunction.push_back(row);
    }
    Json slowest = Json::array();
    for (const auto& [subject, cost] : ordered(subjects)) {
        if (slowest.size() == kMostSubjects) break;
        Json row{{"key", subject.first}, {"function", subject.second}};
        row.update(costOf(cost));
        slowest.push_back(row);
    }
    Json statistics = costOf(all);
    statistics["functions"] = byFunction;
    statistics["slowest"] = slowest;
    return statistics;
}

}  // namespace report
