#include "simulator/areas/Area.h"
#include "simulator/areas/fields.h"
#include "simulator/areas/key_step.h"

namespace vexsim {
namespace {

const Fields& identity() {
    static const Fields fields{{
        {"wwn", "Oper.Switch.WWN", Field::Name},
        {"principal", "Oper.Switch.WhoIsPrincipal", Field::Name},
        {"name", "Config.Switch.SymName", Field::Text, ""},
        {"type", "Oper.Switch.Type", Field::Text, "FC Switch Module"},
        {"transparent", "Config.Switch.TransparentMode", Field::Flag, "False"},
    }};
    return fields;
}

const Fields& features() {
    static const Fields fields{{
        {"transparent", "Oper.Switch.TransparentModeFeature", Field::Flag, "False"},
        {"fcoe", "Oper.Switch.FCOEFeature", Field::Flag, "False"},
        {"ethernet_passthrough", "Oper.Switch.EthernetPassthroughFeature", Field::Flag, "False"},
        {"ipv4", "Oper.Switch.IPv4Feature", Field::Flag, "True"},
        {"ipv6", "Oper.Switch.IPv6Feature", Field::Flag, "False"},
    }};
    return fields;
}

const Fields& versions() {
    static const Fields fields{{
        {"active", "Oper.Switch.ActiveVer", Field::Text, "V1.0.0"},
        {"oem_active", "Oper.Switch.OemActiveVer", Field::Text, "1.0.0"},
    }};
    return fields;
}

const Fields& manufacturing() {
    static const Fields fields{{
        {"brand", "Config.Mfg.BrandName", Field::Text, "Example"},
        {"product_feature_type", "Config.Mfg.ProductFeatureType", Field::Text, ""},
        {"planar_part", "Config.Mfg.PlanarPartNum", Field::Text, "PL-1000"},
        {"chassis_serial", "Config.Mfg.ChassisSerialNum", Field::Text, "CS-000001"},
        {"chassis_part", "Config.Mfg.ChassisPartNum", Field::Text, "CP-1000"},
    }};
    return fields;
}

constexpr Words kSwitchStates{"Online", "Offline", "Diagnostics", "Downed", "Unknown"};

std::string faultList(const std::vector<std::string>& words) {
    std::string joined;
    for (const std::string& word : words) joined += (joined.empty() ? "" : " ") + word;
    return joined;
}

void setSwitchDefaults(Switch& target) {
    for (const Fields* fields : {&identity(), &features(), &versions(), &manufacturing()}) {
        fields->setDefaults(target);
    }
    target.set("Oper.Switch.OperState", "Online");
    target.set("Oper.Switch.FaultList", "");
}

void loadSwitch(TableReader& table, Switch& target) {
    const std::string wwn = table.wwn("wwn");
    target.set("Oper.Switch.WhoIsPrincipal", wwn);  // alone in its fabric, unless the file says otherwise
    identity().load(table, target);
    if (table.has("domain"))
        target.set("Oper.Switch.DomainID", std::to_string(table.integer("domain", 1, 239)));
    if (table.has("state")) target.set("Oper.Switch.OperState", table.word("state", kSwitchStates));
    target.set("Oper.Switch.FaultList", faultList(table.texts("faults")));
}

/** Names the whole list: what it does not name has cleared. */
Action readFaultList(TableReader& table) {
    std::optional<int64_t> slot;
    if (table.has("slot")) slot = table.integer("slot", 0, 65535);
    if (!table.has("faults")) table.fail("step \"fault_list\" needs \"faults\"");
    return [slot, faults = faultList(table.texts("faults"))](Switch& target) {
        const std::string key = slot ? "Oper.Blade." + std::to_string(*slot) + ".FaultList"
                                     : std::string("Oper.Switch.FaultList");
        if (!target.has(key)) throw StepError("the chassis has no slot " + std::to_string(*slot));
        target.set(key, faults);
        target.raise(VEX_EVENT_CHASSIS_OPERCHANGE, "Fault list");
        target.raise(VEX_EVENT_SWITCH_FAULT_CHANGE, faults);
    };
}

std::optional<Reading> readNop(Switch&, const std::string& key) {
    // Asks for nothing and always succeeds: it fills a place in a batch.
    if (key == "Oper.Switch.Nop") return Reading{};
    return std::nullopt;
}

}  // namespace

Area switchArea() {
    Area made;
    made.name = "switch";
    made.sections = {
        {"switch", false, loadSwitch, identity},
        {"features", false, loadFields<features>, features},
        {"versions", false, loadFields<versions>, versions},
        {"manufacturing", false, loadFields<manufacturing>, manufacturing},
    };
    made.steps = {
        keyStep({"switch_state",
                 {wordField("state", kSwitchStates)},
                 {{"Oper.Switch.OperState", "{state}"}},
                 VEX_EVENT_SWITCH_STATE_CHANGE,
                 "Switch state {state}"}),
        {"fault_list", readFaultList},
        keyStep({"feature",
                 {keyOfField("name", features()), {"enabled", StepField::Flag}},
                 {{"{name.key}", "{enabled}"}},
                 VEX_EVENT_FEATURE_CHANGE,
                 "{name}"}),
    };
    made.defaults = setSwitchDefaults;
    made.read = readNop;
    return made;
}

}  // namespace vexsim
