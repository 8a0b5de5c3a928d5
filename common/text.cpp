#include "common/text.h"

#include <cctype>
#include <cstddef>
#include <cstdio>

const char* booltostr(bool value) {
    return value ? "true" : "false";
}

char* VEX_WWNToStr(char* dst, const unsigned char* wwn) {
    return byteToStr(dst, wwn, 8);
}

char* byteToStr(char* dst, const unsigned char* bytes, int count) {
    for (int i = 0; i < count; ++i) {
        std::snprintf(dst + static_cast<size_t>(i) * 2, 3, "%2.2X", static_cast<unsigned>(bytes[i]));
    }
    return dst;
}

char* toUpper(char* text) {
    if (text == nullptr) return text;
    for (char* c = text; *c != '\0'; ++c) {
        *c = static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
    }
    return text;
}
