#ifndef QZLOG_TOOLS_CHOICE_CHOICE_REMARKS_H
#define QZLOG_TOOLS_CHOICE_CHOICE_REMARKS_H

#include <string>
#include <vector>

#include "tools/choice/entry_choice.h"
#include "tools/choice/line_tail.h"

namespace qzlog_tool {

/// What a choice left out, or did not hold, though it may be wanted; a line for each. Null where there is none.
std::vector<std::string> choice_remarks(const EntryChoice* choice, const LineTail* tail);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_CHOICE_REMARKS_H
