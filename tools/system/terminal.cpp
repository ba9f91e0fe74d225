#include "tools/system/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "tools/compiler/text/number_text.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/quiet.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kBoldRed = "\033[1;31m";
constexpr std::string_view kBoldMagenta = "\033[1;35m";
constexpr std::string_view kBoldCyan = "\033[1;36m";
constexpr std::string_view kBoldGreen = "\033[1;32m";
constexpr std::string_view kPlain = "\033[0m";
constexpr std::string_view kColouredErrorLabel = "\033[1;31merror:\033[0m";
constexpr std::string_view kEraseLine = "\r\033[K";
constexpr std::uint64_t kItemsPerLook = 1024;
constexpr std::chrono::milliseconds kFirstShow{1000};
constexpr std::chrono::milliseconds kNextShow{250};
constexpr std::size_t kDefaultColumns = 80;
constexpr std::int64_t kMaximumColumns = 10000;

bool terminal_can(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  return ::isatty(descriptor) == 1 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

bool colour_is_wanted() {
  const char* const no_colour = std::getenv("NO_COLOR");
  return no_colour == nullptr || *no_colour == '\0';
}

std::string_view escape_sequence(TextStyle style) {
  switch (style) {
    case TextStyle::kError:
      return kBoldRed;
    case TextStyle::kWarning:
      return kBoldMagenta;
    case TextStyle::kNote:
      return kBoldCyan;
    default:
      return kBoldGreen;
  }
}

}  // namespace

bool stderr_has_colour() { return colour_is_wanted() && terminal_can(STDERR_FILENO); }

bool stderr_is_terminal() { return terminal_can(STDERR_FILENO); }

bool stdout_has_colour() { return colour_is_wanted() && terminal_can(STDOUT_FILENO); }

std::string coloured(std::string_view word, TextStyle style) {
  return std::string(escape_sequence(style)).append(word).append(kPlain);
}

std::string_view error_label() noexcept {
  static const bool colour = stderr_has_colour();
  return colour ? kColouredErrorLabel : "error:";
}

std::size_t output_columns() {
  const char* const given = std::getenv("COLUMNS");
  if (const auto columns = qzlog_compiler::parse_number(given != nullptr ? given : "", 1, kMaximumColumns)) {
    return static_cast<std::size_t>(*columns);
  }
  winsize size = {};
  const bool known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kDefaultColumns;
}

ProgressLine::ProgressLine(std::string_view unit)
    : unit_(unit),
      enabled_(!is_quiet() && terminal_can(STDERR_FILENO) && ::isatty(STDOUT_FILENO) == 0),
      next_show_(std::chrono::steady_clock::now() + kFirstShow) {}

void ProgressLine::look(std::uint64_t count) {
  next_look_ = count + kItemsPerLook;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_show_) return;
  next_show_ = now + kNextShow;
  shown_ = true;
  const std::string line = std::string(kEraseLine) + std::to_string(count) + " " + std::string(unit_);
  write_all(STDERR_FILENO, line.data(), line.size());
}

void ProgressLine::clear() noexcept {
  if (shown_) write_all(STDERR_FILENO, kEraseLine.data(), kEraseLine.size());
  shown_ = false;
}

}  // namespace qzlog_tool
