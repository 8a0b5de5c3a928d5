#pragma once

#include <set>
#include <string>

#include "report/secrets.h"

namespace report {

/** What a call was about: "Oper.Chassis.0.Fans and 3 more keys", a name; empty for nothing. */
std::string subjectOf(const recording::Record& call, const Secrets& secrets);

/** Whether the call as a whole failed. */
bool hasFailed(const recording::Record& call);

/** The keys whose values were asked for. */
std::set<std::string> keysAsked(const recording::Recording& recording);

/** Nanoseconds as milliseconds, in JSON. */
Json millisecondsOf(uint64_t nanoseconds);

/**
 * Calls by what they cost: "count", "failed", "milliseconds" in all; "functions", each with "function",
 * "count", "failed", "milliseconds", "longest" and "of" (what that one was about); and "slowest", the keys
 * and names that took longest in all.
 */
Json callStatistics(const recording::Recording& recording, const Secrets& secrets);

}  // namespace report
