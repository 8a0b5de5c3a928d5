#include "simulator/switch_file.h"

#include "simulator/areas/Area.h"

namespace vexsim {
namespace {

void load(TableReader& document, const Section& section, Switch& target) {
    if (section.repeated) {
        for (TableReader& table : document.tables(section.name)) {
            section.load(table, target);
            table.finish();
        }
    } else if (std::optional<TableReader> table = document.table(section.name)) {
        section.load(*table, target);
        table->finish();
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

}  // namespace vexsim
