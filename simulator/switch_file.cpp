#include "simulator/switch_file.h"

#include "simulator/areas/Area.h"
#include "simulator/areas/Fabric.h"

namespace vexsim {
namespace {

void load(TableReader& table, void (*into)(TableReader&, Switch&), Switch& target) {
    try {
        into(table, target);
    } catch (const StepError& error) {
        table.fail(error.what());
    }
    table.finish();
}

void load(TableReader& document, const Section& section, Switch& target) {
    if (section.repeated) {
        for (TableReader& table : document.tables(section.name)) load(table, section.load, target);
    } else if (std::optional<TableReader> table = document.table(section.name)) {
        load(*table, section.load, target);
    }
}

}  // namespace

Switch readSwitch(TableReader document) {
    for (const std::string& name : document.unknownFields()) {
        if (findSection(name) == nullptr) document.fail(name, "unknown section \"" + name + '"');
    }
    Switch target;
    for (const Area& area : areas()) {
        if (area.defaults != nullptr) area.defaults(target);
    }
    for (const Area& area : areas()) {
        for (const Section& section : area.sections) load(document, section, target);
    }
    target.takeOutbox();  // a switch that is being described does not report changes
    return target;
}

Switch readWholeSwitch(TableReader document) {
    Switch target = readSwitch(document);
    if (!hasLocalSwitch(target)) document.fail("the switch has no name: [switch] needs \"wwn\"");
    for (const char* section : {"switch", "fabric"}) {
        std::optional<TableReader> table = document.table(section);
        if (!table || !table->has("principal")) continue;
        if (!isInFabric(target, Wwn(table->wwn("principal"))))
            table->fail("principal", "the principal is no switch of the fabric");
    }
    return target;
}

}  // namespace vexsim
