#pragma once

#include <string>
#include <vector>

#include "capture/Answers.h"
#include "capture/Document.h"
#include "simulator/Switch.h"

namespace capture {

/*
 * Each describes one part of the switch by the sections that there are for it. A value that a section has no
 * word for may be written all the same: what cannot be loaded is taken out again, and [sml] says it.
 */
void describeHardware(const Answers& answers, Document& document);
void describePorts(const Answers& answers, Document& document);
void describeFabric(const Answers& answers, Document& document);

/** The links of domains that the switch of the document has other ones for. */
void describeLinks(const Answers& answers, vexsim::Switch& loaded, Document& document);

/** Zoning has no keys, so what cannot be said is a remark. Returns the number of zones. */
size_t describeZoning(const Answers& answers, Document& document, std::vector<std::string>& remarks);

/** A shell pattern that matches this text alone. */
std::string patternOf(const std::string& text);

/** Adds a fault that lasts. */
Table& addFault(Document& document, const std::string& function, const std::string& key);

}  // namespace capture
