#ifndef QZLOG_TOOLS_DEFINITIONS_SOURCE_NAMES_H
#define QZLOG_TOOLS_DEFINITIONS_SOURCE_NAMES_H

#include <string>

#include "qzlog/entry_lines.h"
#include "tools/definitions/loaded_definitions.h"

namespace qzlog_tool {

/// The names that a definition source gives to events. One thread at a time.
class SourceNames : public qz_LOG_EventNames {
 public:
  /// `names` has to outlive this object.
  explicit SourceNames(const EntryNames& names) : names_(names) {}

  bool FindEventId(const char* name, unsigned int& entry_id) const override {
    name_ = name;
    const auto found = names_.find(name_);
    if (found == names_.end()) return false;
    entry_id = found->second;
    return true;
  }

 private:
  const EntryNames& names_;
  mutable std::string name_;  // kept, so that not every line takes memory anew
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DEFINITIONS_SOURCE_NAMES_H
