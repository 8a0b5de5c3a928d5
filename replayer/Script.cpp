#include "replayer/Script.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <type_traits>
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

constexpr size_t kLongestOrigin = 2000;

/** A call as text, where an object is the call that it came from: so it reads the same when the object was
 * read anew. It begins unlike describeCall()'s, and never equals one. */
std::string describeByOrigin(const char* function, const std::vector<Value>& given,
                             const std::vector<std::string>& origins) {
    struct ByOrigin : Describer {
        using Describer::operator();
        std::string operator()(Address address) const {
            return address.value < all.size() ? all[static_cast<size_t>(address.value)] : "";
        }
        explicit ByOrigin(const std::vector<std::string>& origins) : all(origins) {}
        const std::vector<std::string>& all;
    };
    return '*' + textOf(function, given, ByOrigin(origins));
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

const Roles& rolesOf(const char* function) {
    static const auto* const all = new std::vector<Roles>{
#define VEX_ROLE(kind) roleOf(recording::kind{})
#define VEX_ROLE_OF(pair) VEX_ROLE(VEX_KIND(pair))
#define VEX_ROLES(result, function, ...) \
    {#function, {VEX_EACH(VEX_ROLE_OF, __VA_ARGS__)}, roleOf(recording::result{})},
        VEX_INTERFACE(VEX_ROLES)
#undef VEX_ROLES
#undef VEX_ROLE_OF
#undef VEX_ROLE
    };
    return *std::find_if(all->begin(), all->end(),
                         [&](const Roles& roles) { return roles.name == std::string_view(function); });
}

/** Gives the objects of a recording their numbers. */
class Objects {
  public:
    /** Origins are put into `origins` at their objects' numbers. */
    explicit Objects(std::vector<std::string>& origins) : _origins(origins) {}

    void see(Record& record) {
        const Roles& roles = rolesOf(record.function->name);
        uint64_t first = 0;  // the object that the call is about
        for (size_t i = 0; i < roles.arguments.size(); ++i) {
            Address* const address = std::get_if<Address>(&record.given[i]);
            if (address == nullptr) continue;
            if (roles.arguments[i] == Role::None) {
                record.given[i] = {};  // a callback or its context, which every process has its own
                continue;
            }
            address->value = find(address->value);
            if (i == 0) first = address->value;
            if (record.status() != 0) continue;
            if (roles.arguments[i] == Role::Adopts) _held[first].push_back(address->value);
            if (roles.arguments[i] == Role::Destroys) destroy(address->value);
        }
        _origin = describeByOrigin(record.function->name, record.given, _origins);
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
    }

  private:
    uint64_t make(uint64_t address) {
        if (address == 0) return 0;
        _addresses[++_last] = address;
        _origins.resize(static_cast<size_t>(_last) + 1);
        _origins.back() = _origin.size() <= kLongestOrigin ? _origin : "";
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

    std::vector<std::string>& _origins;
    std::string _origin;  ///< of what is made
    uint64_t _last = 0;
    std::unordered_map<uint64_t, uint64_t> _numbers;            ///< of the object at an address
    std::unordered_map<uint64_t, uint64_t> _addresses;          ///< of an object
    std::unordered_map<uint64_t, std::vector<uint64_t>> _held;  ///< what an object holds
};

}  // namespace

std::string describeCall(const char* function, const std::vector<Value>& given) {
    return textOf(function, given, Describer{});
}

Script::Script(const std::string& path) : _recording(recording::load(path)) {
    Objects objects(_origins);
    for (Record& record : _recording.records) {
        if (record.kind == Record::Kind::End) continue;
        Step step{&record, {}};
        if (record.function != nullptr) {
            objects.see(record);
            step.call = describeCall(record.function->name, record.given);
            _places[step.call].push_back(_steps.size());
            _places[describeByOrigin(record.function->name, record.given, _origins)].push_back(_steps.size());
            if (record.isCall("vex_smlGetBatch") && record.status() == 0) {
                for (const recording::SmlEntry& entry : std::get<SmlEntries>(record.back("records")))
                    _answers[entry.key].push_back({record.time, entry.value, entry.status});
            }
            if (const auto* const text = std::get_if<recording::HandedText>(&record.back("value"))) {
                if (const auto* const key = std::get_if<std::string>(&record.in("key")))
                    _answers[*key].push_back({record.time, text->text, 0});
            }
        }
        _steps.push_back(std::move(step));
    }
    for (auto& [key, answers] : _answers) {
        std::stable_sort(answers.begin(), answers.end(),
                         [](const KeyAnswer& one, const KeyAnswer& other) { return one.time < other.time; });
    }
}

const std::vector<size_t>& Script::places(const std::string& call) const {
    static const std::vector<size_t> none;
    const auto found = _places.find(call);
    return found == _places.end() ? none : found->second;
}

const std::vector<size_t>& Script::similar(const char* function, const std::vector<Value>& given) const {
    return places(describeByOrigin(function, given, _origins));
}

const std::vector<KeyAnswer>* Script::answers(const std::string& key) const {
    const auto found = _answers.find(key);
    return found == _answers.end() ? nullptr : &found->second;
}

std::string Script::where(size_t place) const {
    return path() + ':' + std::to_string(_steps[place].record->line);
}

}  // namespace vexreplay
