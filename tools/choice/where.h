#ifndef QZLOG_TOOLS_CHOICE_WHERE_H
#define QZLOG_TOOLS_CHOICE_WHERE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/choice/comparison.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/raw_line.h"
#include "tools/choice/reader_moment.h"
#include "tools/choice/stored_text.h"
#include "tools/report/finding.h"

namespace qzlog_tool {

/// An expression that chooses entries by what they hold, checked against the definitions and ready to be asked.
class Where {
 public:
  /// Nothing, with errors in `findings`, for an expression that is wrong; of an expression whose form is right up to 20
  /// errors. `known` has to outlive the result; `clock`: the reader's. Texts are compared in the code page that the
  /// library's settings have now.
  static std::optional<Where> compile(const std::string& text, const KnownDefinitions& known, const ReaderClock& clock,
                                      qzlog_compiler::Findings& findings);

  /// Whether the line, which has to be one of an entry, is wanted. Takes no memory.
  bool holds(const qz_LOG_EntryLine& line);
  /// False where the line's bytes tell that `holds` is false if it is an entry.
  bool may_hold(const RawLine& line) const;

 private:
  /// A comparison and where to go on.
  struct Step {
    std::size_t comparison;
    bool is_negated;
    std::size_t if_true;
    std::size_t if_false;
  };
  static constexpr std::size_t kTaken = static_cast<std::size_t>(-1);
  static constexpr std::size_t kRefused = static_cast<std::size_t>(-2);

  Where() = default;

  std::size_t add_steps(const Expression& expression, std::size_t node, bool is_negated, std::size_t if_true,
                        std::size_t if_false);
  template <class Test>
  bool run(Test&& test) const;

  std::vector<Comparison> comparisons_;
  std::vector<Step> steps_;
  std::size_t first_ = kRefused;
  StoredTexts texts_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_WHERE_H
