#ifndef QZLOG_TOOLS_REPORT_PASSED_OVER_H
#define QZLOG_TOOLS_REPORT_PASSED_OVER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// Counts what a command left out of what it read, because it is damaged, wrong or gone, and says so in one line, with
/// the commonest reasons:
///
///     3 lines passed over (2 out-of-range, 1 torn-line); the first at entries.jsonl:2
class PassedOver {
 public:
  /// One of what `unit` names ("line", "PO file"), for the reason `why`: the name of a rule, or words. `file` as it is
  /// shown.
  void add(std::string_view unit, std::string_view why, std::string_view file, qzlog_compiler::TextPlace place = {});
  /// One that begins at an offset of a file that is no text. A place is counted once.
  void add_at(std::string_view unit, std::string_view why, std::string_view file, std::uint64_t offset);
  /// Several, of which the first is in `file`.
  void add_several(std::string_view unit, std::string_view why, std::string_view file, std::uint64_t count,
                   qzlog_compiler::TextPlace place = {});

  bool is_empty() const noexcept { return units_.empty(); }
  /// Empty where there is nothing to say.
  std::string text() const;
  void clear();

 private:
  using Counts = std::vector<std::pair<std::string, std::uint64_t>>;  // in the order in which they came first

  void append_reasons(std::string& text) const;
  void count(std::string_view unit, std::string_view why, std::string_view first, std::uint64_t count);

  Counts units_;
  Counts reasons_;
  std::string first_;
  std::string latest_offset_;
};

/// Of the process, whose first thread alone reports.
PassedOver& passed_over();

/// Says it on stderr, in a line, unless quiet is wanted; nothing where nothing was passed over.
void tell_passed_over();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_PASSED_OVER_H
