#include "host/event_fields.h"

namespace {

/** Adds `member` of the event's class under its own name. */
#define FIELD(member) fields[#member] = valueOf(event.member)

std::string valueOf(const Wwn& name) {
    return name.tostring();
}
const std::string& valueOf(const std::string& text) {
    return text;
}
const std::vector<unsigned short>& valueOf(const std::vector<unsigned short>& list) {
    return list;
}
bool valueOf(bool flag) {
    return flag;
}
uint16_t valueOf(uint16_t number) {
    return number;
}

void addFields(Json&, const DataCacheEvent&) {}
void addFields(Json& fields, const DCEventFabricChange& event) {
    FIELD(grown);
}
void addFields(Json& fields, const DCEventSwitchAdd& event) {
    FIELD(switchWwn);
}
void addFields(Json& fields, const DCEventSwitchRemove& event) {
    FIELD(switchWwn);
}
void addFields(Json& fields, const DCEventSwitchStatusChange& event) {
    FIELD(principalWwn);
    FIELD(previousStatus);
    FIELD(currentStatus);
}
void addFields(Json& fields, const DCEventBladeAdd& event) {
    FIELD(index);
}
void addFields(Json& fields, const DCEventBladeRemove& event) {
    FIELD(index);
}
void addFields(Json& fields, const DCEventPortAdd& event) {
    FIELD(portWwn);
    FIELD(fromNameServer);
}
void addFields(Json& fields, const DCEventPortRemove& event) {
    FIELD(portWwn);
    FIELD(fromNameServer);
}
void addFields(Json& fields, const DCEventPortStatusChange& event) {
    FIELD(portWwn);
    FIELD(fabricWwn);
    FIELD(previousStatus);
    FIELD(currentStatus);
}
void addFields(Json& fields, const DCEventFanAdd& event) {
    FIELD(index);
}
void addFields(Json& fields, const DCEventFanRemove& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(Json& fields, const DCEventPowerSupplyAdd& event) {
    FIELD(index);
}
void addFields(Json& fields, const DCEventPowerSupplyRemove& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(Json& fields, const DCEventPowerSupplyFail& event) {
    FIELD(index);
    FIELD(count);
}
void addFields(Json& fields, const DCEventCPUAdd& event) {
    FIELD(index);
}
void addFields(Json& fields, const DCEventCPURemove& event) {
    FIELD(index);
}
void addFields(Json& fields, const DCEventUserAcctAdd& event) {
    FIELD(userName);
}
void addFields(Json& fields, const DCEventUserAcctRemove& event) {
    FIELD(userName);
}
void addFields(Json& fields, const DCEventActiveZonesetChange& event) {
    FIELD(previousActiveZoneset);
    FIELD(activeZoneset);
}
void addFields(Json& fields, const DCEventUserPasswdChg& event) {
    FIELD(userName);
}
void addFields(Json& fields, const DCEventUserLoginFailure& event) {
    FIELD(userName);
}
void addFields(Json& fields, const DCEventEnvEvent& event) {
    FIELD(component);
    FIELD(condition);
    FIELD(description);
}

#undef FIELD

struct EventClass {
    int32_t type;
    const char* name;
    bool named;  ///< `wwn` means something
    void (*add)(Json&, const DataCacheEvent&);
};

/** The row of one class; its type code says which class an event is of. */
template <typename Event>
constexpr EventClass row(const char* name, bool named = true) {
    return {Event::TYPE, name, named, [](Json& fields, const DataCacheEvent& event) {
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

}  // namespace

Json eventFields(const DataCacheEvent& event) {
    Json fields{{"type", event.type}};
    for (const EventClass& known : kClasses) {
        if (known.type != event.type) continue;
        fields["class"] = known.name;
        if (known.named) fields["wwn"] = event.wwn.tostring();
        known.add(fields, event);
    }
    return fields;
}

std::string eventLine(const DataCacheEvent& event) {
    return eventLine(eventFields(event));
}

std::string eventLine(const Json& fields) {
    std::string line = fields.value("class", "event");
    for (const auto& [name, value] : fields.items()) {
        if (name == "class" || (name == "type" && fields.contains("class"))) continue;
        const bool isName =
            name == "wwn" || (name.size() > 3 && name.compare(name.size() - 3, 3, "Wwn") == 0);
        line += ' ' + name + '=';
        line += isName ? value.get<std::string>() : jsonLine(value);
    }
    return line;
}
