#include "replayer/ObjectNumbers.h"

#include <algorithm>
#include <string_view>
#include <type_traits>

#include "recording/interface.h"
#include "replayer/call_text.h"

namespace vexreplay {

using recording::Address;
using recording::Record;
using recording::Value;

namespace {

/** What an argument or a result does to the object at its address. */
enum class Role { None, Uses, Adopts, Destroys, Makes, Shows };

template <typename Kind>
constexpr Role roleOf(Kind) {
    using namespace recording;
    if (std::is_same_v<Kind, Object>) return Role::Uses;
    if (std::is_same_v<Kind, Adopted>) return Role::Adopts;
    if (std::is_same_v<Kind, Removed> || std::is_same_v<Kind, Destroyed> || std::is_same_v<Kind, Memory>)
        return Role::Destroys;
    if (std::is_same_v<Kind, NewObject> || std::is_same_v<Kind, Owned> || std::is_same_v<Kind, Reply>)
        return Role::Makes;
    return std::is_same_v<Kind, Contained> ? Role::Shows : Role::None;
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

}  // namespace

bool hasObjects(const std::vector<Value>& given) {
    return std::any_of(given.begin(), given.end(),
                       [](const Value& value) { return std::holds_alternative<Address>(value); });
}

void dropCallbacks(Record& record) {
    const Roles& roles = rolesOf(record.function->name);
    for (size_t i = 0; i < roles.arguments.size(); ++i) {
        if (roles.arguments[i] == Role::None && std::holds_alternative<Address>(record.given[i]))
            record.given[i] = {};
    }
}

uint64_t ObjectNumbers::replaceAddresses(Record& record) {
    const Roles& roles = rolesOf(record.function->name);
    dropCallbacks(record);
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
        if (auto* const address = std::get_if<Address>(&back)) {
            // An object that could not be destroyed is handed back as it was given.
            const bool makes = roles.arguments[i] == Role::Makes;
            address->value = makes ? make(address->value) : find(address->value);
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

uint64_t ObjectNumbers::make(uint64_t address) {
    if (address == 0) return 0;
    _addresses[++_last] = address;
    _origins.resize(static_cast<size_t>(_last) + 1);
    _origins.back() = _origin;
    return _numbers[address] = _last;
}

/** The number of the object at an address; an object that is older than the recording gets a new one. */
uint64_t ObjectNumbers::find(uint64_t address) {
    if (address == 0) return 0;
    const auto found = _numbers.find(address);
    return found == _numbers.end() ? make(address) : found->second;
}

void ObjectNumbers::destroy(uint64_t number) {
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

}  // namespace vexreplay
