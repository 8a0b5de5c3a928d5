#include "replayer/call_text.h"

#include <cstring>
#include <utility>
#include <variant>

namespace vexreplay {

using recording::Address;
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

/** A call as text, each object as the origin of the object. */
struct DescriberByOrigin : Describer {
    using Describer::operator();
    std::string operator()(Address address) const {
        return address.value < origins.size() ? std::to_string(origins[static_cast<size_t>(address.value)])
                                              : "";
    }
    explicit DescriberByOrigin(const std::vector<uint64_t>& all) : origins(all) {}
    const std::vector<uint64_t>& origins;
};

}  // namespace

std::string describeCall(const char* function, const std::vector<Value>& given) {
    return textOf(function, given, Describer{});
}

uint64_t numberOfText(const std::string& text) {
    uint64_t number = 0xcbf29ce484222325;  // FNV-1a
    for (const char one : text) number = (number ^ static_cast<unsigned char>(one)) * 0x100000001b3;
    return number == 0 ? 1 : number;
}

uint64_t originOf(const char* function, const std::vector<Value>& given,
                  const std::vector<uint64_t>& origins) {
    return numberOfText('*' + textOf(function, given, DescriberByOrigin(origins)));
}

}  // namespace vexreplay
