/*
 * How a recording is read and indexed.
 */
#include "replayer/Script.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <tuple>
#include <utility>

#include "replayer/ObjectNumbers.h"
#include "replayer/call_text.h"
#include "replayer/step_order.h"

namespace vexreplay {

using recording::Address;
using recording::Record;
using recording::SmlEntries;

/** The state that is needed only while the recording is read. */
struct Script::Making {
    explicit Making(Script& script) : all(script), objects(script._origins) {}

    /** Records stand out of order by a few; they are taken in order of their numbers. */
    void take(Record&& record) {
        constexpr size_t kFewOutOfOrder = 64;
        waiting.push_back(std::move(record));
        std::push_heap(waiting.begin(), waiting.end(), later);
        if (waiting.size() > kFewOutOfOrder) takeNext();
    }
    void takeRest() {
        while (!waiting.empty()) takeNext();
    }

  private:
    struct Registration {
        uint64_t context;
        std::vector<int32_t> codes;
        uint32_t step;
    };

    static bool later(const Record& one, const Record& other) {
        return std::tie(one.number, one.line) > std::tie(other.number, other.line);
    }

    void takeNext() {
        std::pop_heap(waiting.begin(), waiting.end(), later);
        Record record = std::move(waiting.back());
        waiting.pop_back();
        if (record.kind == Record::Kind::End) return;
        Step step{};
        step.begin = record.time;
        step.end = record.time + std::min(record.took, UINT64_MAX - record.time);
        step.offset = record.offset;
        step.line = static_cast<uint32_t>(record.line);
        step.thread = static_cast<uint32_t>(record.thread);
        step.inside = kNone;
        step.objects = kNone;
        if (record.function == nullptr) {
            step.waited = record.waited != 0;
            step.objects = registrationOf(record);
        } else {
            addCall(step, record);
        }
        all._steps.push_back(step);
    }

    void addCall(Step& step, Record& record) {
        noteRegistration(record);
        const uint64_t origin = objects.replaceAddresses(record);
        if (hasObjects(record.given)) step.origin = origin;
        step.call = numberOfText(describeCall(record.function->name, record.given));
        step.failed = record.status() != 0;
        step.connects = record.isCall("vex_IPConnect");
        step.objects = static_cast<uint32_t>(all._objects.size());
        visitObjects(record, [&](uint64_t number) { all._objects.push_back(static_cast<uint32_t>(number)); });
        all.addKeys(record);
    }

    void noteRegistration(const Record& record) {
        if (!record.isCall("vex_enRegisterForEventList")) return;
        Registration made{std::get<Address>(record.in("context")).value, {}, stepNow()};
        for (const vex_eventreg_s& entry : std::get<recording::RegistrationEntries>(record.in("list")))
            made.codes.push_back(entry.code);
        std::sort(made.codes.begin(), made.codes.end());
        registrations.push_back(std::move(made));
        constexpr size_t kMostRegistrations = 64;  // of which the newest count
        if (registrations.size() > kMostRegistrations) registrations.erase(registrations.begin());
    }

    /** The newest with this context that has the event's code, or else with this context. */
    uint32_t registrationOf(const Record& notification) const {
        uint32_t found = kNone;
        for (auto one = registrations.rbegin(); one != registrations.rend(); ++one) {
            if (one->context != notification.context.value) continue;
            const bool has = notification.event && std::binary_search(one->codes.begin(), one->codes.end(),
                                                                      notification.event->code);
            if (has) return one->step;
            if (found == kNone) found = one->step;
        }
        return found;
    }

    uint32_t stepNow() const { return static_cast<uint32_t>(all._steps.size()); }

    Script& all;
    ObjectNumbers objects;
    std::vector<Record> waiting;  ///< a heap
    std::vector<Registration> registrations;
};

Script::Script(const std::string& path, bool locked) : _reader(path) {
    _steps.reserve(_reader.lines());
    {
        Making making(*this);
        Record record;
        while (_reader.next(record)) making.take(std::move(record));
        making.takeRest();
    }
    putInOrder(locked);
    _objects.shrink_to_fit();
    _origins.shrink_to_fit();
    _keys.shrink_to_fit();
#ifdef __GLIBC__
    malloc_trim(0);  // returns the memory of Making to the system
#endif
}

void Script::addKeys(const Record& record) {
    const auto place = static_cast<uint32_t>(_steps.size());
    if (record.isCall("vex_smlGetBatch") && record.status() == 0) {
        uint32_t entry = 0;
        for (const recording::SmlEntry& one : std::get<SmlEntries>(record.back("records")))
            _keys.push_back({numberOfText(one.key), place, entry++});
    } else if (record.isCall("vex_smlGet") && record.status() == 0) {
        const auto* const key = std::get_if<std::string>(&record.in("key"));
        if (key != nullptr && std::holds_alternative<recording::HandedText>(record.back("value")))
            _keys.push_back({numberOfText(*key), place, kNone});
    }
}

/** Puts the steps in the order in which they are replayed, and indexes them. */
void Script::putInOrder(bool locked) {
    const std::vector<uint32_t> order = orderOfSteps(_steps, locked);
    std::vector<uint32_t> now(_steps.size());  // where each step has gone
    for (uint32_t i = 0; i < order.size(); ++i) now[order[i]] = i;
    std::vector<Step> steps;
    steps.reserve(_steps.size());
    for (const uint32_t place : order) steps.push_back(_steps[place]);
    _steps = std::move(steps);
    size_t calls = 0, withObjects = 0;
    for (Step& step : _steps) {
        if (step.inside != kNone) step.inside = now[step.inside];
        if (step.isNotification() && step.objects != kNone) step.objects = now[step.objects];
        if (!step.isNotification()) ++calls;
        if (step.origin != 0) ++withObjects;
    }
    for (KeyPlace& key : _keys) key.place = now[key.place];
    std::sort(_keys.begin(), _keys.end());
    _byCall.reserve(calls);
    _byOrigin.reserve(withObjects);
    for (uint32_t i = 0; i < _steps.size(); ++i) {
        if (_steps[i].call != 0) _byCall.emplace_back(_steps[i].call, i);
        if (_steps[i].origin != 0) _byOrigin.emplace_back(_steps[i].origin, i);
    }
    std::sort(_byCall.begin(), _byCall.end());
    std::sort(_byOrigin.begin(), _byOrigin.end());
}

}  // namespace vexreplay
