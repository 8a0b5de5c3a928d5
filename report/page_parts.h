#pragma once

#include <string>
#include <vector>

#include "report/fields.h"
#include "report/markup.h"

namespace report {

// ---- What sections are made of ----

/** Colour, shape and rank of a state; words stand beside it. */
enum class Tone { Good, Off, Warning, Bad };

/** A state in its colour, with its shape. */
Markup badge(Tone tone, std::string_view text);

/** A value for a person: "yes" and "no", "-" for nothing, "2 OK" for a number with its word, lists with
 * commas. */
std::string valueText(const Json& value);

/** An object as names and values; what is a list of rows or an object itself, below them. */
Markup fieldList(const Json& object, const std::vector<std::string>& without = {});

/** Rows under their headings. */
Markup table(const Json& rows);
/** The same of rows that are made already. */
Markup table(const std::vector<std::string>& headings, const Markup& rows);

Markup cell(const Json& value);
/** A point of time, to the second. */
std::string momentText(const Json& time);
Markup momentCell(const Json& time);
Markup row(const Markup& cells);
/** One that a search can hide. */
Markup searchedRow(const Markup& cells);

/** A part of the page that can be folded, with a word or two beside its title. */
struct Section {
    const char* id;
    const char* title;
    std::string hint;
    bool searched = false;  ///< has rows that can be searched
    bool upToDate = true;
};
Markup section(const Section& head, const Markup& content);

/** A smaller part, folded or not. */
Markup part(std::string_view title, const Markup& content, bool open = true);

Markup paragraph(std::string_view text);

/** "1 zone", "2 zones", "2 aliases". */
std::string counted(size_t count, std::string what);

/** Milliseconds as "12.3 ms" or "38 µs". */
std::string duration(const Json& milliseconds);

/** An area by its name; an empty one where the report has none. */
const Json& areaOf(const Json& facts, const char* name);

// ---- Sections ----

Markup portsSection(const Json& facts);
Markup zoningSection(const Json& facts);
Markup fabricSection(const Json& facts);
Markup timelineSection(const Json& facts);
Markup callsSection(const Json& facts);
Markup logSection(const Json& facts);

// ---- Files that are built in ----

extern const char* const kPageStyle;
extern const char* const kPageScript;

}  // namespace report
