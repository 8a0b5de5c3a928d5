#include "simulator/zoning/names.h"

#include <algorithm>

#include "vexlib/vexlib.h"

namespace vexsim {
namespace {

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isNameCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '$' || c == '-' || c == '^' || c == '_';
}

}  // namespace

bool isZoningName(std::string_view name) {
    return !name.empty() && name.size() < VEX_ZONING_NAME_SIZE && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), isNameCharacter);
}

bool isTemporaryName(std::string_view name) {
    return name == "^_-_-_-_TMPZONE_-_-_-_^";
}

}  // namespace vexsim
