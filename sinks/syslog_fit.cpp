#include "sinks/syslog_fit.h"

#include <algorithm>

namespace qzlog {

namespace {

/// What is left of a limit, 0 when less than nothing is.
std::size_t left_of(std::size_t limit, std::size_t used) { return limit > used ? limit - used : 0; }

}  // namespace

SyslogFit fit_syslog(const SyslogSizes& sizes, std::size_t limit) {
  const std::vector<std::size_t>& ends = sizes.parameter_ends;
  const std::size_t parameters = ends.empty() ? 0 : ends.back();
  if (sizes.fixed + sizes.entry + parameters + sizes.text <= limit) return {true, parameters, 0, sizes.text};

  const std::size_t without_parameters = sizes.fixed + kMostOmittedBytes + sizes.entry;
  const std::size_t room = left_of(limit, without_parameters + sizes.text);
  const auto kept = static_cast<std::size_t>(std::upper_bound(ends.begin(), ends.end(), room) - ends.begin());
  if (kept != 0) return {true, ends[kept - 1], ends.size() - kept, sizes.text};
  if (without_parameters <= limit) {
    return {true, 0, ends.size(), std::min(sizes.text, limit - without_parameters)};
  }
  return {false, 0, ends.size() + 1, std::min(sizes.text, left_of(limit, sizes.fixed + kMostOmittedBytes))};
}

}  // namespace qzlog
