#ifndef QZLOG_TOOLS_RENDER_GAP_CHECK_H
#define QZLOG_TOOLS_RENDER_GAP_CHECK_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qzlog_tool {

/// A line in a file, counted from 1.
struct LinePlace {
  std::string_view file;
  std::uint64_t line = 0;
};

/// Looks for lines that are missing or doubled, by the running numbers that each writer gives to its lines. A line may
/// come later than those behind it: what a killed process has left is written by a later one. What stands before a
/// writer's first line is not missing: older files are deleted. Takes memory for writers and gaps, not for lines.
class GapCheck {
 public:
  /// Numbers that no line has.
  struct Gap {
    std::string writer;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::string file;        ///< of the line behind the gap
    std::uint64_t line = 0;  ///< in it
  };

  /// Takes a line in. False when the writer's line of that number was there before.
  bool add(std::string_view writer, std::uint64_t seq, const LinePlace& place);
  /// Counts a line that says no writer or no number.
  void add_unnumbered() noexcept { ++unnumbered_; }

  /// Those that are still open, in the order in which the lines behind them came.
  std::vector<Gap> gaps() const;
  /// What was seen, in one line without its line feed.
  std::string summary() const;

 private:
  /// From its key in a map of holes to `last`, and the line behind it.
  struct Hole {
    std::uint64_t last;
    std::uint64_t order;  // among all lines
    std::shared_ptr<const std::string> file;
    std::uint64_t line;
  };
  struct Writer {
    std::uint64_t last = 0;
    std::map<std::uint64_t, Hole> holes;  // the one at 0 is what stands before the first line
  };

  Writer& find(std::string_view name, bool& is_new);
  Hole hole_before(std::uint64_t seq, const LinePlace& place);
  bool fill(Writer& writer, std::uint64_t seq, const LinePlace& place);

  std::unordered_map<std::string, Writer> writers_;
  std::pair<const std::string, Writer>* latest_ = nullptr;  // most lines are of the writer of the line before
  std::shared_ptr<const std::string> file_;
  std::uint64_t lines_ = 0;
  std::uint64_t doubled_ = 0;
  std::uint64_t unnumbered_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_GAP_CHECK_H
