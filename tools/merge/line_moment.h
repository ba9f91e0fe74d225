#ifndef QZLOG_TOOLS_MERGE_LINE_MOMENT_H
#define QZLOG_TOOLS_MERGE_LINE_MOMENT_H

#include <optional>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// When what lines tell of was: the time of an entry; of what was lost or held back, when that was written.
class LineMoments {
 public:
  /// In seconds since 1970; nothing for a line that does not say it, or is no line of a log.
  std::optional<long long> of(std::string_view line);

 private:
  std::optional<long long> of_plain(std::string_view time);

  std::string minute_;  // of the line before, up to the second
  long long begin_of_minute_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MERGE_LINE_MOMENT_H
