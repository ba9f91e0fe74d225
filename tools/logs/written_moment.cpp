#include "tools/logs/written_moment.h"

#include "qzlog/qz_time.h"

namespace qzlog_tool {

// A text that names its zone sets the mode.
std::optional<long long> written_moment(const char* text) {
  qz_Time time;
  time.set_GMT_time_mode(false);
  if (!time.set_to_string_value(text) || !time.is_GMT_time_mode()) return std::nullopt;
  return time.unix_seconds();
}

}  // namespace qzlog_tool
