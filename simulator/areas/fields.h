#pragma once

#include <string>
#include <vector>

#include "simulator/Switch.h"
#include "simulator/toml_reader.h"

namespace vexsim {

/** A field of a section that stands for one key. */
struct Field {
    const char* name;
    const char* key;
    enum Kind {
        Text,
        Flag, /**< true or false, as "True" or "False" */
        Name, /**< world wide name */
        IPv4,
        IPv6,
    } kind;
    const char* fallback = nullptr; /**< what a switch file that is silent means; null: no such key */
};

/** A section's fields. */
struct Fields {
    std::vector<Field> list;

    void setDefaults(Switch& target) const {
        for (const Field& field : list) {
            if (field.fallback != nullptr) target.set(field.key, field.fallback);
        }
    }

    void load(TableReader& table, Switch& target) const {
        for (const Field& field : list) {
            if (!table.has(field.name)) continue;
            if (field.kind == Field::Text) {
                target.set(field.key, table.text(field.name));
            } else if (field.kind == Field::Flag) {
                target.set(field.key, table.flag(field.name) ? "True" : "False");
            } else if (field.kind == Field::Name) {
                target.set(field.key, table.wwn(field.name));
            } else {
                target.set(field.key, table.address(field.name, field.kind == Field::IPv4 ? 4 : 6));
            }
        }
    }

    /** The key of a field; null for a name that is none. */
    const char* keyOf(const std::string& name) const {
        for (const Field& field : list) {
            if (name == field.name) return field.key;
        }
        return nullptr;
    }
};

/** Loads a section that has no other fields. */
template <const Fields& (*fields)()>
void loadFields(TableReader& table, Switch& target) {
    fields().load(table, target);
}

}  // namespace vexsim
