#ifndef QZLOG_TOOLS_CHOICE_CHOICE_OPTIONS_H
#define QZLOG_TOOLS_CHOICE_CHOICE_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/choice/number_ranges.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// What is asked of entries that were lost or held back beside the choice.
struct LossBounds {
  std::uint32_t mask = 0xFFFFFFFF;  ///< the event's has to share a bit
  NumberRange levels = {0, 9};
};

/// Which entries are wanted, as the command line says. Texts were checked as far as they can be without the
/// definitions; empty ones were not given.
struct ChoiceOptions {
  std::string since = {};
  std::string until = {};
  std::vector<std::string> ids = {};
  std::vector<std::string> names = {};
  std::string level = {};
  std::string mask = {};
  std::vector<std::string> writers = {};
  std::string where = {};
  std::size_t head = 0;  ///< 0: all
  std::size_t tail = 0;  ///< 0: all
  bool unique = false;
  /// Of a filter that is not asked about them.
  std::optional<LossBounds> losses = {};

  /// One of them was given.
  bool is_given() const {
    return !since.empty() || !until.empty() || !ids.empty() || !names.empty() || !level.empty() || !mask.empty() ||
           !writers.empty() || !where.empty() || head != 0 || tail != 0 || unique || losses;
  }
};

enum class MaskOption { kAdd, kLeaveOut };

/// Adds --since, --until, --id, --name, --level, --mask, --writer, --where, --head, --tail and --unique; --mask not
/// where the command has one of its own. `options` has to outlive the parsing.
void add_choice_options(CLI::App& command, ChoiceOptions& options, MaskOption mask = MaskOption::kAdd);

/// What help pages say of them, behind their options.
inline constexpr const char* kChoiceFooter =
    R"(Times are written as 2026-11-21T08:15:30Z, 2026-11-21, '2026-11-21 08:15',
today, yesterday, now, -2h (units s, m, h, d, w) or @1795248930; without a zone
they are the reader's. --since and --until include the second that they name; a
date is its beginning. They leave out entries without a time, and count them.

--where takes comparisons with and, or, not and parentheses:
  Free < 10 and (Name ~ "vol*" or Reason = 10) and exists(Pool)
Comparisons are = != < <= > >=, ~ and !~ for texts with the wildcards * and ?,
in (1, 2), not in (1, 2), exists(Pool) and missing(Pool). Values are numbers,
"texts", true, false, and times, in quotes or as 2026-11-21; dates and times of
day (08:15) in attributes are in GMT, as messages show them. @id, @level, @mask,
@name, @seq, @time and @writer ask for the line's own. Names with other
characters stand in backquotes. What the definitions cannot make true is an
error. An attribute that an entry does not have makes each comparison false, !=
too, so that one may have to ask for
  missing(Pool) or Pool != "a"
)";

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_CHOICE_OPTIONS_H
