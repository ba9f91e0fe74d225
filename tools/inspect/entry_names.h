#ifndef QZLOG_TOOLS_INSPECT_ENTRY_NAMES_H
#define QZLOG_TOOLS_INSPECT_ENTRY_NAMES_H

#include <string>
#include <vector>

#include "tools/compiler/model/definition_model.h"

namespace qzlog_compiler {

/// A name for each entry, in the order of the model: its own, else its message ID where that is a name, else one made
/// from the message ID ("disk.full" gives DISK_FULL), else ENTRY_ and its ID. All are different, and the same for the
/// same model.
std::vector<std::string> make_entry_names(const DefinitionModel& model);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_INSPECT_ENTRY_NAMES_H
