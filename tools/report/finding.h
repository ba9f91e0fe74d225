#ifndef QZLOG_TOOLS_REPORT_FINDING_H
#define QZLOG_TOOLS_REPORT_FINDING_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/report/rule_table.h"

namespace qzlog_compiler {

/// A place in a source, both counted from 1, columns in characters. Line 0 means: no place in the source.
struct SourcePosition {
  std::uint32_t line = 0;
  std::uint32_t column = 0;

  bool known() const { return line != 0; }
  friend auto operator<=>(const SourcePosition&, const SourcePosition&) = default;  // NOLINT(modernize-use-nullptr)
};

/// A place in a text of any length, counted likewise. Column 0 means: the whole line.
struct TextPlace {
  std::uint64_t line = 0;
  std::uint32_t column = 0;

  TextPlace() = default;
  TextPlace(std::uint64_t of_line,
            std::uint32_t of_column = 0)  // implicit: a line is a place
      : line(of_line), column(of_column) {}
  TextPlace(SourcePosition position)  // implicit: so is a position
      : line(position.line), column(position.column) {}

  bool known() const { return line != 0; }
  friend auto operator<=>(const TextPlace&, const TextPlace&) = default;  // NOLINT(modernize-use-nullptr)
};

enum class Severity { kError, kWarning };

/// "error" or "warning".
std::string_view severity_name(Severity severity);

/// Another place that a finding is about, such as the first of two things that conflict.
struct FindingNote {
  std::string file;
  TextPlace place;
  std::string text;
};

/// Something to say about a file. Texts may hold anything that a file holds: whoever shows them escapes it.
struct Finding {
  std::string file;  ///< as it is shown
  TextPlace place;
  Severity severity = Severity::kError;
  AnyRule rule;
  std::string text;
  std::vector<FindingNote> notes = {};
  std::string hint = {};                       ///< what to do about it; may be empty
  std::optional<std::uint64_t> offset = {};    ///< the place in a file that is no text
  std::optional<std::uint32_t> entry_id = {};  ///< of the entry that it is about
  std::string entry_name = {};                 ///< the same entry's; empty where it is not known
  std::string subject = {};                    ///< within the entry or the file: "selector message 3"; may be empty

  /// Adds a place in the same file. Does nothing for an unknown one.
  Finding& with_note(TextPlace where, std::string what);
  Finding& with_hint(std::string advice);
};

/// Findings in the order in which they were made.
class Findings {
 public:
  /// `file`: what those are about that name none.
  explicit Findings(std::string file = "") : file_(std::move(file)) {}

  /// What these return is valid until the next finding is added.
  Finding& error(TextPlace place, AnyRule rule, std::string text);
  Finding& warning(TextPlace place, AnyRule rule, std::string text);
  Finding& error(std::string file, TextPlace place, AnyRule rule, std::string text);
  Finding& warning(std::string file, TextPlace place, AnyRule rule, std::string text);
  Finding& add(TextPlace place, Severity severity, AnyRule rule, std::string text);
  Finding& add(Finding finding);

  bool has_errors() const { return error_count_ != 0; }
  std::size_t error_count() const { return error_count_; }
  const std::vector<Finding>& all() const { return found_; }

  /// Drops the warnings for which `unwanted` is true.
  void remove_warnings(const std::function<bool(const Finding&)>& unwanted);

  /// Takes the findings out, those of each file sorted by place; files stay in the order of their first finding, and
  /// findings of one place in the order in which they were made.
  std::vector<Finding> take_sorted();

 private:
  std::string file_;
  std::vector<Finding> found_;
  std::size_t error_count_ = 0;
};

bool is_error(const Finding& finding);
bool has_errors(std::span<const Finding> findings);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_FINDING_H
