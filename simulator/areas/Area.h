#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/Switch.h"
#include "simulator/toml_reader.h"

namespace vexsim {

struct Fields;

/** One command of a vex_smlSet or vex_smlSetBatch call. */
struct Command {
    std::string key;                       /**< "Cmd.Switch.ReqAdmin"; operands are inside it */
    std::string value;                     /**< empty where the call has none */
    const std::vector<std::string>& batch; /**< the keys of the whole call, in order */
    size_t index;                          /**< of this key among them */
    uint32_t handle;                       /**< the connection that sends it */
};

/** What a scenario step does when its time has come. May throw StepError. */
using Action = std::function<void(Switch&)>;

/** A section of the switch file: [name], or [[name]] once for every element. */
struct Section {
    const char* name;
    bool repeated;
    void (*load)(TableReader& table, Switch& target);
    /** Those of its fields that stand for a key each; null where it has none. */
    const Fields& (*fields)() = nullptr;
};

/** A scenario step. Reading it checks all that can be checked before the scenario starts. */
struct StepKind {
    const char* name;
    std::function<Action(TableReader& table)> read;
};

/**
 * One part of what a switch is: the sections that describe it, the steps that change it, the commands that it
 * obeys, and the keys that it computes rather than stores.
 *
 * To add one, write areas/NAME.cpp with a function that returns its Area, declare that below, and add it to
 * the table in areas.cpp.
 */
struct Area {
    const char* name;
    std::vector<Section> sections = {};
    std::vector<StepKind> steps = {};
    /** What a switch file that is silent about this area means; called before any section is loaded. */
    void (*defaults)(Switch& target) = nullptr;
    /** Commands whose keys begin so are this area's; the longest prefix wins. */
    std::vector<const char*> commandPrefixes = {};
    /** Carries a command out and returns its status. */
    uint32_t (*command)(Switch& target, const Command& command) = nullptr;
    /** Computes a key that the store does not hold; nullopt for a key of somebody else. */
    std::optional<Reading> (*read)(Switch& target, const std::string& key) = nullptr;
};

Area switchArea();
Area chassisArea();
Area bladesArea();
Area accountsArea();
Area propertiesArea();
Area lsdbLinksArea();
Area localPortsArea();
Area sessionArea();
Area alarmsArea();
Area fabricArea();
Area nameServerArea();
Area zoningArea();
Area faultsArea();
Area genericArea();

/** All areas, in the order in which their sections are loaded. */
const std::vector<Area>& areas();

const Section* findSection(const std::string& name);
const StepKind* findStep(const std::string& name);
/** The area that a command belongs to; null for a command that the switch does not know. */
const Area* findCommandArea(const std::string& key);

}  // namespace vexsim
