#include <iterator>
#include <memory>

#include "capture/Answers.h"

namespace capture {

namespace {

using recording::Address;
using recording::Record;

/** A zoning object of the recorded process, and what was read of it. */
struct Object {
    const Object* root = nullptr; /**< the object that owns it, through whatever is between */
    bool edited = false;          /**< what is read from then on is not the switch's */
    std::optional<std::string> name;
    std::optional<int64_t> type;
    std::optional<recording::Member> member;

    struct List {
        std::optional<int64_t> count;
        std::map<int64_t, std::shared_ptr<Object>> items;
        bool complete() const { return count && static_cast<int64_t>(items.size()) >= *count; }
    };
    List zones, aliases, members;
};

/** What a function that reads an object tells: which of its lists it counts, or takes an item of. */
const struct {
    const char* count;
    const char* item;
    Object::List Object::*list;
} kLists[] = {
    {"vex_ZonesetGetZoneCount", "vex_ZonesetListZones", &Object::zones},
    {"vex_ZonesetGetAliasCount", "vex_ZonesetListAliases", &Object::aliases},
    {"vex_ZoneGetMemberCount", "vex_ZoneListMembers", &Object::members},
    {"vex_ZoneAliasGetMemberCount", "vex_ZoneAliasListMembers", &Object::members},
};

constexpr const char* kFinds[] = {"vex_ZonesetFindZone", "vex_ZonesetFindAlias", "vex_ZoneFindMember",
                                  "vex_ZoneAliasFindMember"};
constexpr const char* kNames[] = {"vex_ZonesetGetName", "vex_ZoneGetName", "vex_ZoneAliasGetName"};
constexpr const char* kEdits[] = {
    "vex_ZonesetAddZone",     "vex_ZonesetRemoveZone",     "vex_ZonesetAddAlias", "vex_ZonesetRemoveAlias",
    "vex_ZoneSetName",        "vex_ZoneSetType",           "vex_ZoneAddMember",   "vex_ZoneDeleteMember",
    "vex_ZoneAliasAddMember", "vex_ZoneAliasDeleteMember",
};
constexpr const char* kRemoves[] = {"vex_ZonesetRemoveZone", "vex_ZonesetRemoveAlias", "vex_ZoneDeleteMember",
                                    "vex_ZoneAliasDeleteMember"};
constexpr const char* kDestroys[] = {"vex_ZonesetDestroy", "vex_ZoneDestroy", "vex_ZoneAliasDestroy",
                                     "vex_MemberDestroy"};

template <typename Names>
bool isOneOf(const Record& record, const Names& names) {
    for (const char* name : names) {
        if (record.isCall(name)) return true;
    }
    return false;
}

/** The name in a field that may lack its terminator. */
std::string boundedName(const std::string& field) {
    return field.substr(0, field.find('\0'));
}

class Follower {
  public:
    void follow(const Record& record) {
        if (record.function == nullptr) return;
        if (record.isCall("vex_fzsGetZoningLimitations")) readLimits(record);
        if (record.isCall("vex_fzsGetZonesetList")) readNames(record);
        for (const char* function :
             {"vex_fzsGetActiveZoneset", "vex_fzsGetZoneset", "vex_fzsGetAllZonesAndAliases"}) {
            if (record.isCall(function)) readRoot(record);
        }
        const auto* const address =
            record.given.empty() ? nullptr : std::get_if<Address>(&record.given.front());
        if (address == nullptr) return;
        if (isOneOf(record, kDestroys) && record.status() == 0) return forget(*address);
        const auto found = _alive.find(address->value);
        if (found == _alive.end()) return;
        const std::shared_ptr<Object> object = found->second;
        if (isOneOf(record, kEdits)) {
            object->edited = true;
            const auto* const removed = std::get_if<Address>(&record.given.back());
            if (isOneOf(record, kRemoves) && record.status() == 0 && removed != nullptr) forget(*removed);
        } else if (!object->edited) {
            readObject(record, *object);
        }
    }

    ZoningAnswers answers() const {
        ZoningAnswers made = _answers;
        made.all = zonesetOf("vex_fzsGetAllZonesAndAliases", "");
        made.active = zonesetOf("vex_fzsGetActiveZoneset", "");
        if (!made.names) return made;
        for (const std::string& name : *made.names) {
            made.zonesets.push_back(zonesetOf("vex_fzsGetZoneset", name).value_or(Zoneset{name}));
        }
        return made;
    }

  private:
    using Call = std::pair<std::string, std::string>;

    /** Notes a call that failed, or that it no longer does; true for one that did not. */
    bool succeeded(const Call& call, int64_t status) {
        if (status == 0) {
            _answers.failures.erase(call);
        } else {
            _answers.failures[call] = status;
        }
        return status == 0;
    }

    void readLimits(const Record& record) {
        _answers.limits.reset();
        const auto* const limits = std::get_if<vex_fzs_limits_s>(&record.back("limits"));
        if (succeeded({record.function->name, ""}, record.status()) && limits != nullptr)
            _answers.limits = *limits;
    }

    void readNames(const Record& record) {
        _answers.names.reset();
        const auto* const names = std::get_if<recording::Names>(&record.back("names"));
        if (!succeeded({record.function->name, ""}, record.status()) || names == nullptr) return;
        _answers.names.emplace();
        for (const std::string& name : *names) _answers.names->push_back(boundedName(name));
    }

    void readRoot(const Record& record) {
        const auto* const name = std::get_if<std::string>(&record.in("name"));
        const bool one = record.isCall("vex_fzsGetZoneset") && name != nullptr;
        const Call call{record.function->name, one ? *name : ""};
        _roots.erase(call);
        if (!succeeded(call, record.status())) return;
        const auto* const address = std::get_if<Address>(&record.back("zoneset"));
        if (address == nullptr || address->value == 0) return;
        forget(*address);  // what was there before was destroyed unseen
        auto root = std::make_shared<Object>();
        root->root = root.get();
        if (one) root->name = *name;
        _alive[address->value] = root;
        _roots[call] = root;
    }

    void readObject(const Record& record, Object& object) {
        const auto* const name = std::get_if<std::string>(&record.back("name"));
        if (isOneOf(record, kNames) && name != nullptr) object.name = boundedName(*name);
        const auto* const type = std::get_if<int64_t>(&record.back("type"));
        if (record.isCall("vex_ZoneGetType") && type != nullptr) object.type = *type;
        const auto* const member = std::get_if<recording::Member>(&record.back("id"));
        if (record.isCall("vex_MemberGetAttr") && member != nullptr) object.member = *member;
        const auto* const result = std::get_if<Address>(&record.result);
        if (isOneOf(record, kFinds) && result != nullptr) {
            const auto* const wanted = std::get_if<std::string>(&record.in("name"));
            if (const auto found = contained(object, *result); found && wanted != nullptr)
                found->name = *wanted;
        }
        for (const auto& row : kLists) {
            Object::List& list = object.*row.list;
            if (record.isCall(row.count)) list.count = record.status();
            const auto* const index = std::get_if<int64_t>(&record.in("index"));
            if (!record.isCall(row.item) || index == nullptr || result == nullptr) continue;
            if (const auto found = contained(object, *result)) list.items[*index] = found;
        }
    }

    /** The object at an address that the library handed out of another; null for null. */
    std::shared_ptr<Object> contained(const Object& owner, Address address) {
        if (address.value == 0) return nullptr;
        std::shared_ptr<Object>& object = _alive[address.value];
        if (!object || object->root != owner.root) {
            object = std::make_shared<Object>();
            object->root = owner.root;
        }
        return object;
    }

    /** The object is destroyed, with all it holds: its addresses may be others' from now on. */
    void forget(Address address) {
        const auto found = _alive.find(address.value);
        if (found == _alive.end()) return;
        const std::shared_ptr<Object> object = found->second;
        const auto holds = [&](const std::shared_ptr<Object>& other) {
            for (const auto& [index, item] : object->members.items) {
                if (item == other) return true;
            }
            return other == object || other->root == object.get();
        };
        for (auto entry = _alive.begin(); entry != _alive.end();) {
            entry = holds(entry->second) ? _alive.erase(entry) : std::next(entry);
        }
    }

    static Container containerOf(const Object& object) {
        Container made;
        made.name = object.name;
        made.type = object.type;
        made.complete = object.members.complete();
        for (const auto& [index, item] : object.members.items) {
            if (item->member) {
                made.members.push_back(*item->member);
            } else {
                made.complete = false;
            }
        }
        return made;
    }

    std::optional<Zoneset> zonesetOf(const char* function, const std::string& name) const {
        const auto found = _roots.find({function, name});
        if (found == _roots.end()) return std::nullopt;
        const Object& root = *found->second;
        Zoneset made;
        made.name = root.name.value_or("");
        made.listed = root.zones.complete();
        made.complete = made.listed && root.aliases.complete();
        for (const auto& [from, to] :
             {std::pair(&root.zones, &made.zones), std::pair(&root.aliases, &made.aliases)}) {
            for (const auto& [index, item] : from->items) {
                to->push_back(containerOf(*item));
                made.complete = made.complete && to->back().name && to->back().complete;
            }
        }
        return made;
    }

    std::map<uint64_t, std::shared_ptr<Object>> _alive; /**< by address */
    std::map<Call, std::shared_ptr<Object>> _roots;     /**< what each call handed out last */
    ZoningAnswers _answers;
};

}  // namespace

ZoningAnswers zoningAnswers(const recording::Recording& recording) {
    Follower follower;
    for (const recording::Record& record : recording.records) follower.follow(record);
    return follower.answers();
}

}  // namespace capture
