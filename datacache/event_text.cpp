#include "datacache/event_text.h"

#include <cstdio>

namespace datacache {

using Visitor = std::function<void(const EventField&)>;

/** The one way to make a field, as its class's own is for the library alone. */
class EventFieldMaker {
  public:
    static void show(const Visitor& visit, const char* label, EventFieldKind kind, const void* value) {
        visit(EventField(label, kind, value));
    }
};

namespace {

/** Shows `member` of the event's class under its own name. */
#define FIELD(member) put(visit, #member, event.member)

void put(const Visitor& visit, const char* label, const Wwn& value) {
    EventFieldMaker::show(visit, label, EventFieldKind::Name, &value);
}
void put(const Visitor& visit, const char* label, const std::string& value) {
    EventFieldMaker::show(visit, label, EventFieldKind::Text, &value);
}
void put(const Visitor& visit, const char* label, const std::vector<unsigned short>& value) {
    EventFieldMaker::show(visit, label, EventFieldKind::List, &value);
}
void put(const Visitor& visit, const char* label, const bool& value) {
    EventFieldMaker::show(visit, label, EventFieldKind::Flag, &value);
}
void put(const Visitor& visit, const char* label, const uint16_t& value) {
    EventFieldMaker::show(visit, label, EventFieldKind::Number, &value);
}

void addFields(const Visitor&, const DataCacheEvent&) {}
void addFields(const Visitor& visit, const DCEventFabricChange& event) {
    FIELD(grown);
}
void addFields(const Visitor& visit, const DCEventSwitchAdd& event) {
    FIELD(switchWwn);
}
void addFields(const Visitor& visit, const DCEventSwitchRemove& event) {
    FIELD(switchWwn);
}
void addFields(const Visitor& visit, const DCEventSwitchStatusChange& event) {
    FIELD(principalWwn);
    FIELD(previousStatus);
    FIELD(currentStatus);
}
void addFields(const Visitor& visit, const DCEventBladeAdd& event) {
    FIELD(index);
}
void addFields(const Visitor& visit, const DCEventBladeRemove& event) {
    FIELD(index);
}
void addFields(const Visitor& visit, const DCEventPortAdd& event) {
    FIELD(portWwn);
    FIELD(fromNameServer);
}
void addFields(const Visitor& visit, const DCEventPortRemove& event) {
    FIELD(portWwn);
    FIELD(fromNameServer);
}
void addFields(const Visitor& visit, const DCEventPortStatusChange& event) {
    FIELD(portWwn);
    FIELD(fabricWwn);
    FIELD(previousStatus);
    FIELD(currentStatus);
}
void addFields(const Visitor& visit, const DCEventFanAdd& event) {
    FIELD(index);
}
void addFields(const Visitor& visit, const DCEventFanRemove& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(const Visitor& visit, const DCEventPowerSupplyAdd& event) {
    FIELD(index);
}
void addFields(const Visitor& visit, const DCEventPowerSupplyRemove& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(const Visitor& visit, const DCEventPowerSupplyFail& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(const Visitor& visit, const DCEventCPUAdd& event) {
    FIELD(index);
}
void addFields(const Visitor& visit, const DCEventCPURemove& event) {
    FIELD(index);
}
void addFields(const Visitor& visit, const DCEventUserAcctAdd& event) {
    FIELD(userName);
}
void addFields(const Visitor& visit, const DCEventUserAcctRemove& event) {
    FIELD(userName);
}
void addFields(const Visitor& visit, const DCEventActiveZonesetChange& event) {
    FIELD(previousActiveZoneset);
    FIELD(activeZoneset);
}
void addFields(const Visitor& visit, const DCEventUserPasswdChg& event) {
    FIELD(userName);
}
void addFields(const Visitor& visit, const DCEventUserLoginFailure& event) {
    FIELD(userName);
}
void addFields(const Visitor& visit, const DCEventEnvEvent& event) {
    FIELD(component);
    FIELD(condition);
    FIELD(description);
}

#undef FIELD

struct EventClass {
    int32_t type;
    const char* name;
    bool named;  ///< `wwn` means something
    void (*add)(const Visitor&, const DataCacheEvent&);
};

/** The row of one class; its type code says which class an event is of. */
template <typename Event>
constexpr EventClass row(const char* name, bool named = true) {
    return {Event::TYPE, name, named, [](const Visitor& visit, const DataCacheEvent& event) {
                addFields(visit, static_cast<const Event&>(event));
            }};
}

const EventClass kClasses[] = {
    row<DCEventFabricAdd>("DCEventFabricAdd"),
    row<DCEventFabricRemove>("DCEventFabricRemove"),
    row<DCEventFabricChange>("DCEventFabricChange"),
    row<DCEventSwitchAdd>("DCEventSwitchAdd"),
    row<DCEventSwitchRemove>("DCEventSwitchRemove"),
    row<DCEventSwitchStatusChange>("DCEventSwitchStatusChange"),
    row<DCEventBladeAdd>("DCEventBladeAdd"),
    row<DCEventBladeRemove>("DCEventBladeRemove"),
    row<DCEventPortAdd>("DCEventPortAdd"),
    row<DCEventPortRemove>("DCEventPortRemove"),
    row<DCEventPortStatusChange>("DCEventPortStatusChange"),
    row<DCEventFanAdd>("DCEventFanAdd"),
    row<DCEventFanRemove>("DCEventFanRemove"),
    row<DCEventPowerSupplyAdd>("DCEventPowerSupplyAdd"),
    row<DCEventPowerSupplyRemove>("DCEventPowerSupplyRemove"),
    row<DCEventPowerSupplyFail>("DCEventPowerSupplyFail"),
    row<DCEventCPUAdd>("DCEventCPUAdd"),
    row<DCEventCPURemove>("DCEventCPURemove"),
    row<DCEventUserAcctAdd>("DCEventUserAcctAdd"),
    row<DCEventUserAcctRemove>("DCEventUserAcctRemove"),
    row<DCEventActiveZonesetChange>("DCEventActiveZonesetChange"),
    row<DCEventZoningDBChange>("DCEventZoningDBChange"),
    row<DCEventUserPasswdChg>("DCEventUserPasswdChg"),
    row<DCEventUserLoginFailure>("DCEventUserLoginFailure"),
    row<DCEventEnvEvent>("DCEventEnvEvent"),
    row<DCEventCIMChange>("DCEventCIMChange", false),
    row<DCEventDataCacheUpdateComplete>("DCEventDataCacheUpdateComplete", false),
};

const EventClass* classOf(int32_t type) {
    for (const EventClass& known : kClasses) {
        if (known.type == type) return &known;
    }
    return nullptr;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (code >= 0x20 && code < 0x7F) {
            result += c;
        } else {
            char escape[sizeof "\\x00"];
            std::snprintf(escape, sizeof escape, "\\x%02x", unsigned{code});
            result += escape;
        }
    }
    return result + '"';
}

std::string listed(const std::vector<unsigned short>& values) {
    std::string items;
    for (const unsigned short item : values) items += (items.empty() ? "" : ",") + std::to_string(item);
    return '[' + items + ']';
}

}  // namespace

const char* eventName(int32_t type) {
    const EventClass* known = classOf(type);
    return known == nullptr ? "?" : known->name;
}

EventField::EventField(const char* label, EventFieldKind kind, const void* value)
    : _label(label), _kind(kind), _value(value) {}

const char* EventField::label() const {
    return _label;
}

EventFieldKind EventField::kind() const {
    return _kind;
}

template <typename Value>
const Value* EventField::as(EventFieldKind kind) const {
    return kind == _kind ? static_cast<const Value*>(_value) : nullptr;
}

const Wwn* EventField::name() const {
    return as<Wwn>(EventFieldKind::Name);
}

const bool* EventField::flag() const {
    return as<bool>(EventFieldKind::Flag);
}

const uint16_t* EventField::number() const {
    return as<uint16_t>(EventFieldKind::Number);
}

const std::string* EventField::text() const {
    return as<std::string>(EventFieldKind::Text);
}

const std::vector<unsigned short>* EventField::list() const {
    return as<std::vector<unsigned short>>(EventFieldKind::List);
}

std::string EventField::words() const {
    switch (_kind) {
        case EventFieldKind::Name:
            return name()->tostring();
        case EventFieldKind::Flag:
            return *flag() ? "true" : "false";
        case EventFieldKind::Number:
            return std::to_string(*number());
        case EventFieldKind::Text:
            return quoted(*text());
        case EventFieldKind::List:
            return listed(*list());
    }
    return {};
}

void visitFields(const DataCacheEvent& event, const Visitor& visit) {
    const EventClass* known = classOf(event.type);
    if (known == nullptr) return;
    if (known->named) put(visit, "wwn", event.wwn);
    known->add(visit, event);
}

std::string eventText(const DataCacheEvent& event) {
    std::string line = eventName(event.type);
    visitFields(event, [&line](const EventField& field) {
        line += std::string(" ") + field.label() + '=' + field.words();
    });
    return line;
}

}  // namespace datacache
