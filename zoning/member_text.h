/*
 * Zone members and the active zoneset as text. Valid C and C++.
 *
 * The two functions for members are not alike: commands to the switch carry the first one's text, people read
 * the second one's. Both read identifiers as vex_memberid_u lays them out, alias names up to 64 characters.
 */
#ifndef DC_ZONING_MEMBER_TEXT_H
#define DC_ZONING_MEMBER_TEXT_H

#include <stdint.h>

#include "common/export.h"
#include "vexlib/vexlib.h"

DC_BEGIN_C

/**
 * Writes a member object's text into `out` (VEX_ZONING_NAME_SIZE bytes): a world wide name or an FC address
 * as upper-case digits, domain and port as lower-case hexadecimal numbers of two digits or more, or the alias
 * name. Returns 1; or 0 with "Invalid" for a member of any other type, or one that cannot be read.
 */
DC_EXPORT int ZoneMemberToString(char* out, void* member);

/**
 * Writes the text of a raw identifier of type `*type` (a vex_fzs_zonemember_type_e) into `out`
 * (VEX_ZONING_NAME_SIZE bytes): a world wide name in upper case, domain and port as decimal numbers with a
 * colon, an FC address in lower case, or the alias name. For any other type `out` is left alone.
 */
DC_EXPORT void formatMemberId(int* type, unsigned char* id, char* out);

/**
 * Reads the name of the fabric's active zoneset into `name` (VEX_ZONING_NAME_SIZE bytes). Returns 0, or the
 * switch library's result with an empty name.
 */
DC_EXPORT int32_t get_Active_ZoneSet(char* name);

DC_END_C

#endif
