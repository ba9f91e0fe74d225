#ifndef QZLOG_TOOLS_REPORT_LIBRARY_TEXT_H
#define QZLOG_TOOLS_REPORT_LIBRARY_TEXT_H

#include "lines/library_text.h"

namespace qzlog_tool {

// The reader of entries says the same of a failure.
using qzlog::library_text;

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_LIBRARY_TEXT_H
