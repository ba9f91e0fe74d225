#ifndef QZLOG_TOOLS_DIFF_VERSION_ADVICE_H
#define QZLOG_TOOLS_DIFF_VERSION_ADVICE_H

#include <optional>
#include <span>
#include <string>

#include "tools/diff/diff_rules.h"
#include "tools/diff/model_diff.h"

namespace qzlog_compiler {

struct VersionAdvice {
  VersionStep needed = VersionStep::kNone;  ///< the largest step that one of the changes asks for
  std::string advised;                      ///< the least version that takes it; empty when the old one is unreadable
  std::optional<DiffRule> finding;          ///< none: the version has not moved, and need not

  bool sufficient() const;
};

/// Judges the move of a version tag. Meant breaks count like others: accepting a break does not undo it.
VersionAdvice judge_version(const std::string& old_tag, const std::string& new_tag,
                            std::span<const DiffChange> changes);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_VERSION_ADVICE_H
