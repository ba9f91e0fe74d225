#ifndef QZLOG_TESTS_TOOLS_CHECK_FIXTURE_H
#define QZLOG_TESTS_TOOLS_CHECK_FIXTURE_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/compiler/source/compiler.h"
#include "tools/report/finding.h"

namespace check_fixture {

/// A standard file with two entries, a global attribute and a selector.
inline constexpr std::string_view kSource = R"(
version: "1.0"
globals: [{name: SITE, type: MBChar32}]
entries:
  - id: 1
    name: FULL
    message: "Disk {Name} at {SITE} is full"
    attributes: [{name: Name, type: Char32}, {name: Why, type: UInt2}]
    selector: {attribute: Why, messages: [{index: 1, value: 10, id: quota, text: "The quota of {Name} is used up"}]}
  - {id: 2, name: GONE, message: "Disk {Name} is gone", attributes: [{name: Name, type: Char32}]}
)";

inline std::string compiled(std::string_view source) {
  qzlog_compiler::CompileResult result = qzlog_compiler::compile_source(source, "", {});
  if (!result.ok()) throw std::runtime_error(result.diagnostics.front().text);
  return std::move(result.bytes);
}

/// "1 refused-record" for a finding about the entry 1, the rule alone for one about the file.
inline std::vector<std::string> shown(const std::vector<qzlog_compiler::Finding>& findings) {
  std::vector<std::string> texts;
  for (const auto& finding : findings) {
    texts.push_back((finding.entry_id ? std::to_string(*finding.entry_id) + " " : "") +
                    std::string(finding.rule.name()));
  }
  return texts;
}

}  // namespace check_fixture

#endif  // QZLOG_TESTS_TOOLS_CHECK_FIXTURE_H
