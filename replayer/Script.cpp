#include "replayer/Script.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <cstring>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "recording/interface.h"

namespace vexreplay {

using recording::Address;
using recording::Record;
using recording::SmlEntries;
using recording::Value;

namespace {

std::string quoted(const std::string& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "\"";
    for (const char one : bytes) {
        const auto byte = static_cast<unsigned char>(one);
        if (byte >= 0x20 && byte < 0x7f && one != '"' && one != '\\') {
            text += one;
        } else {
            text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
        }
    }
    return text + '"';
}

/** A list as "[...]", each entry as `text` gives it. */
template <typename List, typename Text>
std::string listed(const List& list, Text text) {
    std::string all = "[";
    for (const auto& entry : list) {
        if (all.size() > 1) all += ',';
        all += text(entry);
    }
    return all + ']';
}

struct Describer {
    std::string operator()(std::monostate) const { return "null"; }
    std::string operator()(int64_t number) const { return std::to_string(number); }
    std::string operator()(Address address) const { return "#" + std::to_string(address.value); }
    std::string operator()(const std::string& text) const { return quoted(text); }
    std::string operator()(const SmlEntries& entries) const {
        return listed(entries, [](const recording::SmlEntry& entry) {
            return quoted(entry.key) + (entry.value.empty() ? "" : "=" + quoted(entry.value));
        });
    }
    std::string operator()(const recording::RegistrationEntries& entries) const {
        return listed(entries, [](const vex_eventreg_s& entry) { return std::to_string(entry.code); });
    }
    std::string operator()(const recording::Member& member) const {
        const auto* const bytes = reinterpret_cast<const char*>(member.id.bytes);
        if (member.type == VEX_ZMT_ALIAS) return quoted({bytes, strnlen(bytes, sizeof member.id.alias)});
        if (member.type == VEX_ZMT_DOMAIN_PORT) {
            return std::to_string(member.id.domain_port.domain) + ':' +
                   std::to_string(member.id.domain_port.port);
        }
        const bool all = member.type == VEX_ZMT_UNKNOWN;
        const size_t size = member.type == VEX_ZMT_FCID ? sizeof member.id.fcid : sizeof member.id.wwn;
        return quoted({bytes, all ? sizeof member.id.bytes : size});
    }
    std::string operator()(const vex_fzs_limits_s&) const { return "limits"; }
    std::string operator()(const recording::Names& names) const { return listed(names, quoted); }
    std::string operator()(const recording::HandedText& handed) const { return quoted(handed.text); }
};

/** A call as text, its arguments as `describer` gives them. */
template <typename Describe>
std::string textOf(const char* function, const std::vector<Value>& given, const Describe& describer) {
    std::string text = std::string(function) + '(';
    bool any = false;
    for (const Value& value : given) {
        if (std::holds_alternative<std::monostate>(value)) continue;
        text += (any ? ", " : "") + std::visit(describer, value);
        any = true;
    }
    return text + ')';
}

// ---- Objects ----

/** Texts as numbers: FNV-1a, and never 0. */
uint64_t numberOfText(const std::string& text) {
    uint64_t number = 0xcbf29ce484222325;
    for (const char one : text) number = (number ^ static_cast<unsigned char>(one)) * 0x100000001b3;
    return number == 0 ? 1 : number;
}

/** The number of a call in which an object is the call that it came from: so it is the same when the object
 * was read anew. It is never a call's own number. */
uint64_t originOf(const char* function, const std::vector<Value>& given,
                  const std::vector<uint64_t>& origins) {
    struct ByOrigin : Describer {
        using Describer::operator();
        std::string operator()(Address address) const {
            return address.value < all.size() ? std::to_string(all[static_cast<size_t>(address.value)]) : "";
        }
        explicit ByOrigin(const std::vector<uint64_t>& origins) : all(origins) {}
        const std::vector<uint64_t>& all;
    };
    return numberOfText('*' + textOf(function, given, ByOrigin(origins)));
}

bool hasObjects(const std::vector<Value>& given) {
    return std::any_of(given.begin(), given.end(),
                       [](const Value& value) { return std::holds_alternative<Address>(value); });
}

/** What an argument or a result does to the object at its address. */
enum class Role { None, Uses, Adopts, Destroys, Makes, Shows, Hands };

template <typename Kind>
constexpr Role roleOf(Kind) {
    using namespace recording;
    if (std::is_same_v<Kind, Object>) return Role::Uses;
    if (std::is_same_v<Kind, Adopted>) return Role::Adopts;
    if (std::is_same_v<Kind, Removed> || std::is_same_v<Kind, Destroyed> || std::is_same_v<Kind, Memory>)
        return Role::Destroys;
    if (std::is_same_v<Kind, NewObject> || std::is_same_v<Kind, Owned> || std::is_same_v<Kind, Reply>)
        return Role::Makes;
    if (std::is_same_v<Kind, Contained>) return Role::Shows;
    return std::is_same_v<Kind, NewText> ? Role::Hands : Role::None;
}

struct Roles {
    const char* name;
    std::vector<Role> arguments;
    Role result;
};

const Roles& rolesOf(std::string_view function) {
    static const std::vector<Roles> list{
#define VEX_ROLE(kind) roleOf(recording::kind{})
#define VEX_ROLE_OF(pair) VEX_ROLE(VEX_KIND(pair))
#define VEX_ROLES(result, function, ...) \
    {#function, {VEX_EACH(VEX_ROLE_OF, __VA_ARGS__)}, roleOf(recording::result{})},
        VEX_INTERFACE(VEX_ROLES)
#undef VEX_ROLES
#undef VEX_ROLE_OF
#undef VEX_ROLE
    };
    static const auto* const all = [] {
        auto* const made = new std::unordered_map<std::string_view, const Roles*>;
        for (const Roles& roles : list) made->emplace(roles.name, &roles);
        return made;
    }();
    return *all->at(function);
}

/** Forgets what every process has its own of: callbacks and their contexts. */
void forgetOwn(Record& record) {
    const Roles& roles = rolesOf(record.function->name);
    for (size_t i = 0; i < roles.arguments.size(); ++i) {
        if (roles.arguments[i] == Role::None && std::holds_alternative<Address>(record.given[i]))
            record.given[i] = {};
    }
}

/** Shows `look` every object of a call, always in the same order. */
template <typename Look>
void visitObjects(Record& record, Look look) {
    for (Value& value : record.given) {
        if (auto* const address = std::get_if<Address>(&value)) look(address->value);
    }
    for (Value& value : record.handedBack) {
        if (auto* const address = std::get_if<Address>(&value)) look(address->value);
        if (auto* const text = std::get_if<recording::HandedText>(&value)) look(text->memory.value);
    }
    if (auto* const address = std::get_if<Address>(&record.result)) look(address->value);
}

/** Gives the objects of a recording their numbers. */
class Objects {
  public:
    /** Origins are put into `origins` at their objects' numbers. */
    explicit Objects(std::vector<uint64_t>& origins) : _origins(origins) {}

    /** Puts numbers in place of the addresses; the call's number by origin. */
    uint64_t see(Record& record) {
        const Roles& roles = rolesOf(record.function->name);
        forgetOwn(record);
        uint64_t first = 0;  // the object that the call is about
        for (size_t i = 0; i < roles.arguments.size(); ++i) {
            Address* const address = std::get_if<Address>(&record.given[i]);
            if (address == nullptr) continue;
            address->value = find(address->value);
            if (i == 0) first = address->value;
            if (record.status() != 0) continue;
            if (roles.arguments[i] == Role::Adopts) _held[first].push_back(address->value);
            if (roles.arguments[i] == Role::Destroys) destroy(address->value);
        }
        _origin = originOf(record.function->name, record.given, _origins);
        for (size_t i = 0; i < roles.arguments.size(); ++i) {
            Value& back = record.handedBack[i];
            if (roles.arguments[i] == Role::Makes) {
                if (auto* const address = std::get_if<Address>(&back)) address->value = make(address->value);
            } else if (auto* const text = std::get_if<recording::HandedText>(&back)) {
                text->memory.value = make(text->memory.value);
            }
        }
        if (auto* const address = std::get_if<Address>(&record.result)) {
            const bool known = _numbers.count(address->value) != 0;
            const bool shown = roles.result == Role::Shows;
            address->value = shown ? find(address->value) : make(address->value);
            if (shown && !known && address->value != 0) _held[first].push_back(address->value);
        }
        return _origin;
    }

  private:
    uint64_t make(uint64_t address) {
        if (address == 0) return 0;
        _addresses[++_last] = address;
        _origins.resize(static_cast<size_t>(_last) + 1);
        _origins.back() = _origin;
        return _numbers[address] = _last;
    }

    /** The number of what is at the address; an object that was there before the recording gets one. */
    uint64_t find(uint64_t address) {
        if (address == 0) return 0;
        const auto found = _numbers.find(address);
        return found == _numbers.end() ? make(address) : found->second;
    }

    void destroy(uint64_t number) {
        std::vector<uint64_t> all{number};
        while (!all.empty()) {
            const uint64_t one = all.back();
            all.pop_back();
            const auto held = _held.find(one);
            if (held != _held.end()) {
                all.insert(all.end(), held->second.begin(), held->second.end());
                _held.erase(held);
            }
            const auto address = _addresses.find(one);
            if (address == _addresses.end()) continue;
            const auto there = _numbers.find(address->second);
            if (there != _numbers.end() && there->second == one) _numbers.erase(there);
            _addresses.erase(address);
        }
    }

    std::vector<uint64_t>& _origins;
    uint64_t _origin = 0;  ///< of what is made
    uint64_t _last = 0;
    std::unordered_map<uint64_t, uint64_t> _numbers;            ///< of the object at an address
    std::unordered_map<uint64_t, uint64_t> _addresses;          ///< of an object
    std::unordered_map<uint64_t, std::vector<uint64_t>> _held;  ///< what an object holds
};

}  // namespace

std::string describeCall(const char* function, const std::vector<Value>& given) {
    return textOf(function, given, Describer{});
}

uint64_t numberOfCall(const std::string& call) {
    return numberOfText(call);
}

/** What is needed only while the recording is read. */
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
        const uint64_t origin = objects.see(record);
        if (hasObjects(record.given)) step.origin = origin;
        step.call = numberOfCall(describeCall(record.function->name, record.given));
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
    Objects objects;
    std::vector<Record> waiting;  ///< a heap
    std::vector<Registration> registrations;
};

bool Script::KeyPlace::operator<(const KeyPlace& other) const {
    return std::tie(key, place, entry) < std::tie(other.key, other.place, other.entry);
}

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
    malloc_trim(0);  // what was needed only meanwhile, as the objects' addresses
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

namespace {

using Step = Script::Step;

/** Finds for each notification the call of its own thread inside which it came. */
void nest(std::vector<Step>& steps, const std::vector<uint32_t>& byBegin) {
    std::unordered_map<uint32_t, std::vector<uint32_t>> open;  // calls and notifications, by thread
    for (const uint32_t place : byBegin) {
        Step& step = steps[place];
        std::vector<uint32_t>& around = open[step.thread];
        while (!around.empty() && steps[around.back()].end < step.end) around.pop_back();
        if (step.isNotification() && !around.empty() && !steps[around.back()].isNotification())
            step.inside = around.back();
        around.push_back(place);
    }
}

/** Where each notification had the lock that callbacks wait for. */
uint64_t placeWithLock(const std::vector<Step>& steps, const std::vector<uint32_t>& byBegin, size_t at) {
    const Step& step = steps[byBegin[at]];
    if (!step.waited || step.inside != Script::kNone) return step.begin;
    constexpr size_t kFarthest = 10000;  // so that no recording takes more than linear time
    const size_t last = std::min(byBegin.size(), at + kFarthest);
    for (size_t i = at + 1; i < last && steps[byBegin[i]].begin < step.end; ++i) {
        const Step& other = steps[byBegin[i]];
        if (other.isNotification()) continue;
        // What the callback calls itself; or the lock was passed on already, and the callback returned late.
        if (other.thread == step.thread) return step.begin;
        if (other.end >= step.end) return other.begin;
    }
    return step.end;
}

}  // namespace

void Script::putInOrder(bool locked) {
    std::vector<uint32_t> order(_steps.size());
    for (uint32_t i = 0; i < order.size(); ++i) order[i] = i;
    const auto outer = [&](uint32_t one, uint32_t other) {
        return std::tie(_steps[one].begin, _steps[other].end, one) <
               std::tie(_steps[other].begin, _steps[one].end, other);
    };
    std::sort(order.begin(), order.end(), outer);
    nest(_steps, order);

    std::vector<uint64_t> places(_steps.size());
    for (size_t i = 0; i < order.size(); ++i) {
        const Step& step = _steps[order[i]];
        places[order[i]] = locked && step.isNotification() ? placeWithLock(_steps, order, i) : step.begin;
    }
    // A notification is before the call that began at the same time, but for the one that it is inside of.
    const auto rank = [&](uint32_t one) {
        return std::make_pair(places[one], !_steps[one].isNotification() || _steps[one].inside != kNone);
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](uint32_t one, uint32_t other) { return rank(one) < rank(other); });

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

Record Script::record(size_t place) const {
    const Step& step = _steps[place];
    Record record = _reader.recordAt(static_cast<size_t>(step.offset));
    if (record.function == nullptr) return record;
    forgetOwn(record);
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
