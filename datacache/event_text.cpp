#include "datacache/event_text.h"

#include <cstdio>

namespace datacache {

namespace {

/** Hands over `member` of the event's class under its own name. */
#define FIELD(member) put(fields, #member, event.member)

void put(EventFields& fields, const char* field, const Wwn& value) {
    fields.name(field, value);
}
void put(EventFields& fields, const char* field, const std::string& value) {
    fields.text(field, value);
}
void put(EventFields& fields, const char* field, const std::vector<unsigned short>& value) {
    fields.list(field, value);
}
void put(EventFields& fields, const char* field, bool value) {
    fields.flag(field, value);
}
void put(EventFields& fields, const char* field, uint16_t value) {
    fields.number(field, value);
}

void addFields(EventFields&, const DataCacheEvent&) {}
void addFields(EventFields& fields, const DCEventFabricChange& event) {
    FIELD(grown);
}
void addFields(EventFields& fields, const DCEventSwitchAdd& event) {
    FIELD(switchWwn);
}
void addFields(EventFields& fields, const DCEventSwitchRemove& event) {
    FIELD(switchWwn);
}
void addFields(EventFields& fields, const DCEventSwitchStatusChange& event) {
    FIELD(principalWwn);
    FIELD(previousStatus);
    FIELD(currentStatus);
}
void addFields(EventFields& fields, const DCEventBladeAdd& event) {
    FIELD(index);
}
void addFields(EventFields& fields, const DCEventBladeRemove& event) {
    FIELD(index);
}
void addFields(EventFields& fields, const DCEventPortAdd& event) {
    FIELD(portWwn);
    FIELD(fromNameServer);
}
void addFields(EventFields& fields, const DCEventPortRemove& event) {
    FIELD(portWwn);
    FIELD(fromNameServer);
}
void addFields(EventFields& fields, const DCEventPortStatusChange& event) {
    FIELD(portWwn);
    FIELD(fabricWwn);
    FIELD(previousStatus);
    FIELD(currentStatus);
}
void addFields(EventFields& fields, const DCEventFanAdd& event) {
    FIELD(index);
}
void addFields(EventFields& fields, const DCEventFanRemove& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(EventFields& fields, const DCEventPowerSupplyAdd& event) {
    FIELD(index);
}
void addFields(EventFields& fields, const DCEventPowerSupplyRemove& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(EventFields& fields, const DCEventPowerSupplyFail& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(EventFields& fields, const DCEventCPUAdd& event) {
    FIELD(index);
}
void addFields(EventFields& fields, const DCEventCPURemove& event) {
    FIELD(index);
}
void addFields(EventFields& fields, const DCEventUserAcctAdd& event) {
    FIELD(userName);
}
void addFields(EventFields& fields, const DCEventUserAcctRemove& event) {
    FIELD(userName);
}
void addFields(EventFields& fields, const DCEventActiveZonesetChange& event) {
    FIELD(previousActiveZoneset);
    FIELD(activeZoneset);
}
void addFields(EventFields& fields, const DCEventUserPasswdChg& event) {
    FIELD(userName);
}
void addFields(EventFields& fields, const DCEventUserLoginFailure& event) {
    FIELD(userName);
}
void addFields(EventFields& fields, const DCEventEnvEvent& event) {
    FIELD(component);
    FIELD(condition);
    FIELD(description);
}

#undef FIELD

struct EventClass {
    int32_t type;
    const char* name;
    bool named;  ///< `wwn` means something
    void (*add)(EventFields&, const DataCacheEvent&);
};

/** The row of one class; its type code says which class an event is of. */
template <typename Event>
constexpr EventClass row(const char* name, bool named = true) {
    return {Event::TYPE, name, named, [](EventFields& fields, const DataCacheEvent& event) {
                addFields(fields, static_cast<const Event&>(event));
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

class TextFields : public EventFields {
  public:
    explicit TextFields(std::string& line) : _line(line) {}
    void name(const char* field, const Wwn& value) override { add(field, value.tostring()); }
    void flag(const char* field, bool value) override { add(field, value ? "true" : "false"); }
    void number(const char* field, uint16_t value) override { add(field, std::to_string(value)); }
    void text(const char* field, const std::string& value) override { add(field, quoted(value)); }
    void list(const char* field, const std::vector<unsigned short>& value) override {
        std::string items;
        for (const unsigned short item : value) items += (items.empty() ? "" : ",") + std::to_string(item);
        add(field, '[' + items + ']');
    }

  private:
    void add(const char* field, const std::string& value) { _line += std::string(" ") + field + '=' + value; }

    std::string& _line;
};

}  // namespace

const char* eventName(int32_t type) {
    const EventClass* known = classOf(type);
    return known == nullptr ? "?" : known->name;
}

void visitFields(const DataCacheEvent& event, EventFields& fields) {
    const EventClass* known = classOf(event.type);
    if (known == nullptr) return;
    if (known->named) fields.name("wwn", event.wwn);
    known->add(fields, event);
}

std::string eventText(const DataCacheEvent& event) {
    std::string line = eventName(event.type);
    TextFields fields(line);
    visitFields(event, fields);
    return line;
}

}  // namespace datacache
