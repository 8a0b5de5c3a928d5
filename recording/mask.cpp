#include "recording/mask.h"

#include <sys/auxv.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "vexlib/vexlib.h"

namespace recording {

namespace {

/** Endings of the words of a key ("Oper.Switch.FirstPotentialUser") that announce a secret. */
constexpr std::string_view kSecretWords[] = {"User",   "Users",  "Account", "Accounts", "Password",
                                             "Passwd", "Secret", "Comm",    "Community"};

bool isSecretWord(std::string_view word) {
    for (const std::string_view end : kSecretWords) {
        if (word.size() >= end.size() && word.substr(word.size() - end.size()) == end) return true;
    }
    return false;
}

/** Differs from process to process, so that masks cannot be looked up in a list of usual names. */
uint64_t salt() {
    uint64_t random = 0;
    const unsigned long address = getauxval(AT_RANDOM);
    const void* bytes = nullptr;
    static_assert(sizeof bytes == sizeof address);
    std::memcpy(&bytes, &address, sizeof bytes);
    if (bytes != nullptr) std::memcpy(&random, bytes, sizeof random);
    return random;
}

}  // namespace

size_t secretPart(std::string_view key) {
    for (size_t begin = 0; begin < key.size();) {
        const size_t end = std::min(key.find('.', begin), key.size());
        if (isSecretWord(key.substr(begin, end - begin))) return std::min(end + 1, key.size());
        begin = end + 1;
    }
    return std::string_view::npos;
}

bool isSecretEvent(int code) {
    switch (code) {
        case VEX_EVENT_USER_ACL_CHANGE:
        case VEX_EVENT_CLI_COMMAND_DONE:
        case VEX_EVENT_USERLOG_UPDATE:
        case VEX_EVENT_USER_PASSWORD_CHANGED:
        case VEX_EVENT_USER_LOGIN_FAILURE:
            return true;
        default:
            return false;
    }
}

Mask::Mask(std::string_view secret) {
    static const uint64_t begin = salt();
    uint64_t hash = 0xcbf29ce484222325 ^ begin;  // FNV-1a
    for (const char byte : secret) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    _size = static_cast<size_t>(
        std::snprintf(_text, sizeof _text, "masked-%08x", static_cast<unsigned>(hash >> 32)));
}

}  // namespace recording
