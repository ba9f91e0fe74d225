#ifndef QZLOG_TOOLS_COMPILER_SOURCE_ACCEPTED_WARNINGS_H
#define QZLOG_TOOLS_COMPILER_SOURCE_ACCEPTED_WARNINGS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// Where a list of accepted warnings stands, and so how far it reaches. From the inside to the outside.
enum class AcceptScope : std::uint8_t { kSelectorMessage, kEntry, kFile };

/// The warnings that a source accepts, each with a reason, for the whole file or a part of it.
class AcceptedWarnings {
 public:
  /// Reads a list of `{rule: name, reason: text}` that stands in `holder`; mistakes are reported. Within one scope,
  /// lists have to come in the order of the source.
  void load(const YamlNode& list, AcceptScope scope, const YamlNode& holder, Findings& diagnostics);

  /// Takes the accepted warnings out; each is accepted by the innermost list that names its rule.
  void remove_accepted(Findings& diagnostics);

  /// Reports what accepted nothing, after everything was offered for removal. A run for one path cannot tell of the
  /// warnings that are about a path.
  void report_unused(RenderingPaths path, Findings& diagnostics) const;

 private:
  struct Accepted {
    AnyRule rule;
    SourcePosition begin;  // of what it reaches, the end excluded
    SourcePosition end;
    SourcePosition position;
    bool used = false;
  };

  void load_item(const YamlNode& item, AcceptScope scope, const YamlNode& holder, Findings& diagnostics);
  Accepted* find(const Finding& warning);
  Accepted* find(const Finding& warning, AnyRule rule);

  std::vector<Accepted> accepted_;
  /// Indexes of `accepted_`, in the order of the source.
  std::map<std::pair<AcceptScope, AnyRule>, std::vector<std::size_t>> by_scope_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_ACCEPTED_WARNINGS_H
