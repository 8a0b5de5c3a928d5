#include <algorithm>
#include <cstring>
#include <iterator>

#include "capture/Answers.h"
#include "capture/Mask.h"
#include "recording/mask.h"

namespace capture {

namespace {

bool endsWith(const std::string& text, const char* end) {
    const size_t size = std::strlen(end);
    return text.size() >= size && text.compare(text.size() - size, size, end) == 0;
}

template <typename Ends>
bool endsWithAny(const std::string& text, const Ends& ends) {
    return std::any_of(std::begin(ends), std::end(ends),
                       [&](const char* end) { return endsWith(text, end); });
}

/** Endings of keys whose values are names that somebody chose. */
constexpr const char* kNameKeys[] = {"SymName", "HostName", "DomainName", "SysName", "Contact", "Location"};
/** Endings of keys whose values are words of the switch's own, whatever else is called so. */
constexpr const char* kWordKeys[] = {"State",  "Status", "Type",      "HWType",      "Feature",
                                     "Enable", "List",   "Supported", "SFPData0_31", "SFPData32_63"};
/** Endings of keys whose values look like addresses and are none. */
constexpr const char* kVersionKeys[] = {"Ver", "Version"};

bool isAccountKey(const std::string& key) {
    return key.find("User") != std::string::npos || key.find("Account") != std::string::npos;
}

const char* secretKind(const std::string& key) {
    if (isAccountKey(key)) return "account";
    return key.find("Comm") != std::string::npos ? "community" : "secret";
}

/** Serial numbers that the simulated switch makes up are nobody's. */
bool isSimulated(const std::string& serial) {
    return serial.size() == 16 && serial.compare(0, 3, "SIM") == 0 &&
           serial.find_first_not_of("0123456789", 3) == std::string::npos;
}

std::string maskKey(Mask& mask, const std::string& key) {
    const size_t secret = recording::secretPart(key);
    if (secret < key.size()) return key.substr(0, secret) + mask.name(secretKind(key), key.substr(secret));
    std::string made;
    for (size_t at = 0; at <= key.size();) {
        const size_t end = std::min(key.find('.', at), key.size());
        made += (at == 0 ? "" : ".") + mask.wwn(key.substr(at, end - at));
        at = end + 1;
    }
    return made;
}

std::string maskValue(Mask& mask, const std::string& key, const std::string& value) {
    if (recording::secretPart(key) != std::string::npos) return mask.name(secretKind(key), value);
    if (endsWithAny(key, kNameKeys)) return mask.name("name", value);
    if (key == "Oper.Zoning.ActiveZoneSet") return mask.name("zoneset", value);
    if (key.find("Serial") != std::string::npos) return isSimulated(value) ? value : mask.serial(value);
    const bool unit = key.compare(0, 15, "Oper.Chassis.0.") == 0;
    const bool flag = value == "True" || value == "False";
    return mask.text(value,
                     {!endsWithAny(key, kVersionKeys), !unit && !flag && !endsWithAny(key, kWordKeys)});
}

void maskContainer(Mask& mask, const char* kind, Container& container) {
    if (container.name) container.name = mask.name(kind, *container.name);
    for (recording::Member& member : container.members) {
        if (member.type == VEX_ZMT_ALIAS) {
            const std::string name(member.id.alias, strnlen(member.id.alias, sizeof member.id.alias));
            const std::string masked = mask.name("alias", name);
            member.id = {};
            masked.copy(member.id.alias, sizeof member.id.alias - 1);
        } else if (member.type == VEX_ZMT_WWN || member.type == VEX_ZMT_NODENAME) {
            uint64_t name = 0;
            for (const uint8_t byte : member.id.wwn) name = (name << 8) | byte;
            if (name != 0) name = mask.wwn(name);
            for (size_t i = 8; i-- > 0; name >>= 8) member.id.wwn[i] = static_cast<uint8_t>(name);
        }
    }
}

void maskZoneset(Mask& mask, Zoneset& zoneset) {
    zoneset.name = mask.name("zoneset", zoneset.name);
    for (Container& alias : zoneset.aliases) maskContainer(mask, "alias", alias);
    for (Container& zone : zoneset.zones) maskContainer(mask, "zone", zone);
}

/** Every zoneset object that was read. */
std::vector<Zoneset*> zonesetsOf(ZoningAnswers& zoning) {
    std::vector<Zoneset*> all;
    if (zoning.all) all.push_back(&*zoning.all);
    for (Zoneset& zoneset : zoning.zonesets) all.push_back(&zoneset);
    if (zoning.active) all.push_back(&*zoning.active);
    return all;
}

/** Shows the mask all texts, so that it gives none of them. */
void showAll(Mask& mask, Answers& answers) {
    for (const auto& [key, answer] : answers.keys) {
        for (size_t at = 0; at <= key.size(); at = std::min(key.find('.', at), key.size()) + 1)
            mask.see(key.substr(at, key.find('.', at) - at));
        mask.see(answer.value);
    }
    for (const std::string& account : answers.accounts) mask.see(account);
    for (const Zoneset* zoneset : zonesetsOf(answers.zoning)) {
        mask.see(zoneset->name);
        for (const auto* list : {&zoneset->zones, &zoneset->aliases}) {
            for (const Container& container : *list) {
                mask.see(container.name.value_or(""));
                for (const recording::Member& member : container.members) {
                    if (member.type != VEX_ZMT_WWN && member.type != VEX_ZMT_NODENAME) continue;
                    char digits[20];
                    std::string text;
                    for (const uint8_t byte : member.id.wwn) {
                        std::snprintf(digits, sizeof digits, "%02x", unsigned{byte});
                        text += digits;
                    }
                    mask.see(text);
                }
            }
        }
    }
}

/** A map with other keys and values. */
template <typename Key, typename Value, typename Change>
void change(std::map<Key, Value>& map, Change changed) {
    std::map<Key, Value> made;
    for (const auto& [key, value] : map) made.insert(changed(key, value));
    map = std::move(made);
}

}  // namespace

void mask(Answers& answers) {
    Mask mask;
    showAll(mask, answers);
    for (std::string& account : answers.accounts) account = mask.name("account", account);
    for (Zoneset* zoneset : zonesetsOf(answers.zoning)) maskZoneset(mask, *zoneset);
    change(answers.zoning.failures, [&](std::pair<std::string, std::string> call, int64_t status) {
        call.second = mask.name("zoneset", call.second);
        return std::pair(call, status);
    });
    // A checksum of what is masked would tell a guess that is right; the simulated switch makes its own.
    if (answers.zoning.all) answers.keys.erase("Oper.Zoning.InactiveChecksum");
    if (answers.zoning.active) answers.keys.erase("Oper.Zoning.ActiveChecksum");
    // Names first, wherever their keys stand: other texts may mention them.
    for (auto& [key, answer] : answers.keys) {
        if (endsWithAny(key, kNameKeys) || recording::secretPart(key) != std::string::npos)
            maskValue(mask, key, answer.value);
    }
    change(answers.keys, [&](const std::string& key, Answer answer) {
        answer.value = maskValue(mask, key, answer.value);
        return std::pair(maskKey(mask, key), answer);
    });
    change(answers.failedBatches,
           [&](const std::string& key, int64_t result) { return std::pair(maskKey(mask, key), result); });
}

}  // namespace capture
