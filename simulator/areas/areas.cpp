#include <cstring>

#include "simulator/areas/Area.h"

namespace vexsim {

const std::vector<Area>& areas() {
    // Never destroyed: threads of the library ask the switch until the process is gone.
    static const auto& table = *new std::vector<Area>{
        switchArea(),     chassisArea(),
        bladesArea(),  // after the chassis, which says how many slots there are
        localPortsArea(),
        lsdbLinksArea(),  // before the fabric, which answers every other key of a record
        fabricArea(),     nameServerArea(), accountsArea(), propertiesArea(),
        sessionArea(),    alarmsArea(),     zoningArea(),   faultsArea(),
        genericArea(),  // last: its raw keys override what the others made
    };
    return table;
}

const Section* findSection(const std::string& name) {
    for (const Area& area : areas()) {
        for (const Section& section : area.sections) {
            if (name == section.name) return &section;
        }
    }
    return nullptr;
}

const StepKind* findStep(const std::string& name) {
    for (const Area& area : areas()) {
        for (const StepKind& step : area.steps) {
            if (name == step.name) return &step;
        }
    }
    return nullptr;
}

const Area* findCommandArea(const std::string& key) {
    const Area* found = nullptr;
    size_t longest = 0;
    for (const Area& area : areas()) {
        for (const char* prefix : area.commandPrefixes) {
            const size_t length = std::strlen(prefix);
            if (length > longest && key.compare(0, length, prefix) == 0) {
                found = &area;
                longest = length;
            }
        }
    }
    return found;
}

}  // namespace vexsim
