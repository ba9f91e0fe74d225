#ifndef QZLOG_TESTS_TOOLS_COMPILER_SOURCE_FIXTURE_H
#define QZLOG_TESTS_TOOLS_COMPILER_SOURCE_FIXTURE_H

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tools/compiler/source/yaml_tree.h"
#include "tools/report/diagnostics.h"

namespace qzlog_compiler {

/// All diagnostics as the user sees them, one a line.
inline std::string printed(const std::vector<Diagnostic>& diagnostics) {
  std::ostringstream out;
  for (const Diagnostic& diagnostic : diagnostics) out << diagnostic << '\n';
  return out.str();
}

/// A parsed YAML text with the diagnostics of whatever is done with it.
class ParsedSource {
 public:
  explicit ParsedSource(std::string text) : text_(std::move(text)), tree_(parse_yaml(text_, diagnostics_)) {}

  const std::string& text() const { return text_; }
  bool parsed() const { return tree_.has_value(); }
  const YamlTree& tree() const { return *tree_; }
  YamlNode root() const { return tree_->root(); }
  Diagnostics& diagnostics() { return diagnostics_; }
  std::string printed_diagnostics() { return printed(diagnostics_.take_sorted()); }

 private:
  std::string text_;
  Diagnostics diagnostics_{"f"};
  std::optional<YamlTree> tree_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TESTS_TOOLS_COMPILER_SOURCE_FIXTURE_H
