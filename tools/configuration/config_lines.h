#ifndef QZLOG_TOOLS_CONFIGURATION_CONFIG_LINES_H
#define QZLOG_TOOLS_CONFIGURATION_CONFIG_LINES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// A word of a line, and where it stands.
struct ConfigWord {
  std::string_view text;
  qzlog_compiler::TextPlace place;
};

/// A line of a configuration file, cut at blanks, tabs and equals signs as the library cuts it.
struct ConfigLine {
  std::uint64_t number = 0;  ///< from 1, as editors count
  std::vector<ConfigWord> words;
};

/// Goes through the lines of a configuration file that the library reads.
class ConfigLines {
 public:
  enum class End {
    kWhole,     ///< every line that says something was read
    kLastLine,  ///< the last line has nothing behind it
    kLongLine,  ///< a line has too many bytes
  };

  /// `content` has to outlive this object and its lines.
  explicit ConfigLines(std::string_view content) : content_(content) {}

  /// None at the end.
  std::optional<ConfigLine> next();

  /// Behind the last line: why reading ended, and the number of the line that was not read.
  End end() const { return end_; }
  std::uint64_t end_line() const { return number_; }

 private:
  ConfigLine cut(std::string_view line) const;

  std::string_view content_;
  std::size_t begin_ = 0;
  std::uint64_t number_ = 1;
  End end_ = End::kWhole;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CONFIGURATION_CONFIG_LINES_H
