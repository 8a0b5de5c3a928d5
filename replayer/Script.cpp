#include "replayer/Script.h"

#include <algorithm>
#include <tuple>

#include "replayer/ObjectNumbers.h"
#include "replayer/call_text.h"

namespace vexreplay {

using recording::Record;
using recording::SmlEntries;
using recording::Value;

bool Script::KeyPlace::operator<(const KeyPlace& other) const {
    return std::tie(key, place, entry) < std::tie(other.key, other.place, other.entry);
}

Record Script::record(size_t place) const {
    const Step& step = _steps[place];
    Record record = _reader.recordAt(static_cast<size_t>(step.offset));
    if (record.function == nullptr) return record;
    dropCallbacks(record);
    const uint32_t* object = _objects.data() + step.objects;
    visitObjects(record, [&](uint64_t& number) { number = *object++; });
    return record;
}

std::string Script::describe(size_t place) const {
    const Record known = record(place);
    return known.function == nullptr ? "" : describeCall(known.function->name, known.given);
}

std::string Script::where(size_t place) const {
    return path() + ':' + std::to_string(_steps[place].line);
}

const Script::Place* Script::Places::from(size_t place) const {
    return std::lower_bound(first, last, place,
                            [](const Place& one, size_t other) { return one.second < other; });
}

namespace {

Script::Places equalTo(const std::vector<Script::Place>& all, uint64_t number) {
    const Script::Place* const begin = all.data();
    const Script::Place* const end = begin + all.size();
    return {std::lower_bound(begin, end, Script::Place{number, 0}),
            std::upper_bound(begin, end, Script::Place{number, UINT32_MAX})};
}

}  // namespace

Script::Places Script::places(uint64_t call) const {
    return equalTo(_byCall, call);
}

Script::Places Script::similar(const char* function, const std::vector<Value>& given) const {
    if (!hasObjects(given)) return {nullptr, nullptr};
    return equalTo(_byOrigin, originOf(function, given, _origins));
}

std::optional<KeyAnswer> Script::answer(const std::string& key, size_t place) const {
    const uint64_t number = numberOfText(key);
    const auto begin = std::lower_bound(_keys.begin(), _keys.end(), KeyPlace{number, 0, 0});
    auto best = std::lower_bound(begin, _keys.end(), KeyPlace{number, static_cast<uint32_t>(place), 0});
    if (best != begin) --best;
    if (best == _keys.end() || best->key != number) return std::nullopt;
    const Record said = record(best->place);
    if (best->entry == kNone) return KeyAnswer{std::get<recording::HandedText>(said.back("value")).text, 0};
    const recording::SmlEntry& entry = std::get<SmlEntries>(said.back("records"))[best->entry];
    return KeyAnswer{entry.value, entry.status};
}

}  // namespace vexreplay
