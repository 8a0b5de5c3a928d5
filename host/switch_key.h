#pragma once

#include <optional>
#include <string>

/** Reads one key from the switch, past the cache; nothing when the switch does not give it. */
std::optional<std::string> readKey(const std::string& key);
