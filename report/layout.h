#pragma once

#include <string>

#include "report/fields.h"

namespace report {

/**
 * The fabric, laid out by Graphviz. `dot` is given numbers alone, and of its answer numbers alone are taken,
 * so nothing that the switch says reaches it, and nothing that it says reaches the page.
 *
 * A graph has "switches", each with its "domain", and "links", each "from" one domain "to" another.
 */

/** What `dot -Tplain` is given. */
std::string layoutInput(const Json& graph);

/**
 * Its answer: "width" and "height"; "switches", the middle of each as "x" and "y"; and "links", each with the
 * "points" of its curve ([x, y, ...]) and the place of its label, "x" and "y". In the order of the graph's,
 * y downwards, in inches. Null where the answer is anything else.
 */
Json layoutOf(const Json& graph, const std::string& answer);

/** The size of a switch in the picture, in inches. */
constexpr double kSwitchWidth = 2.3;
constexpr double kSwitchHeight = 0.95;

}  // namespace report
