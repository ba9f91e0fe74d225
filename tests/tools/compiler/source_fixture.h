#ifndef QZLOG_TESTS_TOOLS_COMPILER_SOURCE_FIXTURE_H
#define QZLOG_TESTS_TOOLS_COMPILER_SOURCE_FIXTURE_H

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/tools/printed_findings.h"
#include "tools/compiler/source/yaml_tree.h"

namespace qzlog_compiler {

/// A parsed YAML text with the diagnostics of whatever is done with it.
class ParsedSource {
 public:
  explicit ParsedSource(std::string text) : text_(std::move(text)), tree_(parse_yaml(text_, diagnostics_)) {}

  const std::string& text() const { return text_; }
  bool parsed() const { return tree_.has_value(); }
  const YamlTree& tree() const { return *tree_; }
  YamlNode root() const { return tree_->root(); }
  Findings& diagnostics() { return diagnostics_; }
  std::string printed_diagnostics() { return printed(diagnostics_.take_sorted()); }

 private:
  std::string text_;
  Findings diagnostics_{"f"};
  std::optional<YamlTree> tree_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TESTS_TOOLS_COMPILER_SOURCE_FIXTURE_H
