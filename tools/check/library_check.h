#ifndef QZLOG_TOOLS_CHECK_LIBRARY_CHECK_H
#define QZLOG_TOOLS_CHECK_LIBRARY_CHECK_H

#include <string>

#include "tools/check/check_report.h"

namespace qzlog_tool {

/// Loads a compiled definition file into the library, looks up every ID of its map, and reports what the library
/// refuses, in its own words. False when the library does not take the file at all.
bool check_standard_with_library(const std::string& bytes, CheckReport& report);

/// The same for an auxiliary file over a standard file that the library takes. Every entry is tried, though the library
/// gives up at the first one that it refuses.
void check_auxiliary_with_library(const std::string& bytes, const std::string& standard, CheckReport& report);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHECK_LIBRARY_CHECK_H
