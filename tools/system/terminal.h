#ifndef QZLOG_TOOLS_SYSTEM_TERMINAL_H
#define QZLOG_TOOLS_SYSTEM_TERMINAL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// Whether stderr shows colour: it is a terminal that can, and NO_COLOR is unset or empty.
bool stderr_has_colour();

/// Whether stderr is a terminal on which a line can be taken away again.
bool stderr_is_terminal();

/// What is set off from the text around it.
enum class TextStyle { kError, kWarning, kNote, kMark };

/// `word` in the style's bold colour.
std::string coloured(std::string_view word, TextStyle style);

/// "error:", in bold red where stderr shows colour. Takes no memory.
std::string_view error_label() noexcept;

/// Whether standard output shows colour, under the same conditions.
bool stdout_has_colour();

/// How wide lines on standard output may be: COLUMNS where it is a number from 1 to 10000, else the terminal's width,
/// else 80.
std::size_t output_columns();

/// A line on stderr that says how far a long job is. It appears after a second, on a terminal only, and not when
/// standard output goes to a terminal too, where it would stand among the results.
class ProgressLine {
 public:
  /// `unit` is what is counted: "lines".
  explicit ProgressLine(std::string_view unit);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() { clear(); }

  /// Cheap enough for every item: looks at the clock only now and then.
  void update(std::uint64_t count) {
    if (enabled_ && count >= next_look_) look(count);
  }
  /// Takes the line away; before anything else is written to stderr.
  void clear() noexcept;

 private:
  void look(std::uint64_t count);

  std::string_view unit_;
  bool enabled_;
  bool shown_ = false;
  std::uint64_t next_look_ = 0;
  std::chrono::steady_clock::time_point next_show_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_TERMINAL_H
