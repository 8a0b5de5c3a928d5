#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/Tool.h"

inline const char* const switchText = R"(
[switch]
wwn = "10:00:00:11:22:33:44:55"
[chassis]
power_supplies = ["Good", "Bad"]
fans = 1
[accounts]
users = ["admin"]
)";

inline const char* const scenarioText = R"(
[[step]]
do = "power_supply"
index = 1
state = "NotInstalled"
[[step]]
do = "account_add"
name = "guest"
[[step]]
do = "switch_state"
after = "50ms"
state = "Offline"
)";

/** A switch with something to show in every area. */
inline const char* const fullText = R"(
[switch]
wwn = "10:00:00:11:22:33:44:55"
domain = 3
[fabric]
principal = "10:00:00:11:22:33:50:01"
[[fabric.switch]]
domain = 10
wwn = "10:00:00:11:22:33:50:01"
ports = 2
[ports]
count = 2
[[ports.port]]
numbers = [1]
state = "Offline"
[chassis]
slots = 2
[[blade]]
slot = 1
type = "IO"
temp_sensors = 3
[accounts]
users = ["admin", "evil\u001b[31m\u009b\"quoted\""]
[services]
telnet = true
[[lsdb]]
domain = 3
links = [{ local_port = "1", neighbor = "10" }]
[zoning.limits]
zonesets = 4
zones = 9
members = 99
zones_per_zoneset = 9
members_per_zone = 9
aliases = 9
members_per_alias = 9
[zoning]
active = "prod"
[[zoning.alias]]
name = "db"
members = ["10000011223344AA"]
[[zoning.zone]]
name = "z1"
members = ["0309", "db"]
[[zoning.zoneset]]
name = "prod"
zones = ["z1"]
)";

/** A fault that lasts, as a section of a switch file. */
inline std::string faultOn(const std::string& function, const std::string& key, const std::string& effect) {
    return "[[fault]]\nfunction = \"" + function + "\"\nkey = \"" + key + "\"\ntimes = 0\n" + effect + '\n';
}

class HostTest : public ::testing::Test {
  protected:
    const std::string switchFile = writeFile("switch.toml", switchText);
    const std::string fullFile = writeFile("full.toml", fullText);
    const std::string scenario = writeFile("scenario.toml", scenarioText);
};

/** All lines as one text. */
inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
}
