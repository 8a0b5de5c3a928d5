#include "report/timeline.h"

#include <algorithm>

#include "report/calls.h"

namespace report {

namespace {

using recording::Record;

constexpr uint64_t kIdle = 20'000'000;  ///< ns: no pass is so long without a call

/** The number of the evaluation thread; 0 where it made no call. */
uint64_t evaluationThread(const recording::Recording& recording) {
    uint64_t first = 0;
    bool registered = false;
    for (const Record& record : recording.records) {
        registered = registered || record.isCall("vex_enRegisterForEventList");
        if (!record.isCall("vex_smlGetBatch")) continue;
        if (registered) return record.thread;
        if (first == 0) first = record.thread;
    }
    return first;
}

Json passFields(const Pass& pass, const Secrets& secrets) {
    Json fields{{"kind", "pass"},
                {"complete", pass.complete},
                {"milliseconds", millisecondsOf(pass.end - pass.begin)},
                {"calls", pass.calls.size()},
                {"failed", 0}};
    const Record* slowest = nullptr;
    uint64_t failed = 0;
    for (const Record* call : pass.calls) {
        if (slowest == nullptr || call->took > slowest->took) slowest = call;
        if (hasFailed(*call)) ++failed;
    }
    fields["failed"] = failed;
    if (slowest != nullptr) {
        fields["slowest"] = {{"function", slowest->function->name},
                             {"key", subjectOf(*slowest, secrets)},
                             {"milliseconds", millisecondsOf(slowest->took)}};
    }
    return fields;
}

}  // namespace

std::vector<Pass> passesOf(const recording::Recording& recording, const std::vector<uint64_t>& completions) {
    const uint64_t thread = evaluationThread(recording);
    std::vector<Pass> passes;
    auto completion = completions.begin();
    bool open = false;
    // Ends the open pass by the completions before `time`, each of which ends one, without a call or with
    // some.
    const auto complete = [&](uint64_t time) {
        for (; completion != completions.end() && *completion <= time; ++completion) {
            if (!open) passes.push_back({*completion, *completion, false, {}});
            passes.back().end = std::max(passes.back().end, *completion);
            passes.back().complete = true;
            open = false;
        }
    };
    for (const Record& record : recording.records) {
        if (record.kind != Record::Kind::Call || record.thread != thread) continue;
        if (record.isCall("vex_IPConnect") || record.isCall("vex_enRegisterForEventList")) continue;
        complete(record.time);
        if (open && record.time - std::min(record.time, passes.back().end) > kIdle) open = false;
        if (!open) passes.push_back({record.time, record.time, false, {}});
        open = true;
        passes.back().end = record.time + record.took;
        passes.back().calls.push_back(&record);
    }
    complete(UINT64_MAX);
    return passes;
}

std::vector<Happening> happeningsOf(const recording::Recording& recording, WallTime begin,
                                    const std::vector<Pass>& passes, EventNames names,
                                    const Secrets& secrets) {
    std::vector<Happening> happenings;
    const auto add = [&](uint64_t time, Json fields) {
        happenings.push_back({timeAfter(begin, time), std::move(fields)});
    };
    for (const Record& record : recording.records) {
        if (!record.event) continue;
        add(record.time, {{"kind", "switch event"},
                          {"code", record.event->code},
                          {"name", names(record.event->code)},
                          {"text", secrets.event(record.event->code, record.event->text)}});
    }
    for (const Pass& pass : passes) {
        if (!pass.calls.empty()) add(pass.begin, passFields(pass, secrets));
    }
    return happenings;
}

Json timelineOf(std::vector<Happening> happenings, size_t most) {
    std::stable_sort(happenings.begin(), happenings.end(),
                     [](const Happening& one, const Happening& other) { return one.time < other.time; });
    const size_t leftOut = happenings.size() - std::min(most, happenings.size());
    Json entries = Json::array();
    for (size_t i = leftOut; i < happenings.size(); ++i) {
        Json entry{{"time", localTime(happenings[i].time)}};
        entry.update(happenings[i].fields);
        entries.push_back(std::move(entry));
    }
    return {{"leftOut", leftOut}, {"entries", entries}};
}

}  // namespace report
