#include "sinks/syslog_fit.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/seeded_random.h"

namespace {

using namespace qzlog;

std::size_t bytes_of(const SyslogSizes& sizes, const SyslogFit& fit) {
  return sizes.fixed + (fit.has_entry ? sizes.entry : 0) + fit.parameters + (fit.omitted != 0 ? kMostOmittedBytes : 0) +
         fit.text;
}

/// Tries what may be left out in the order in which it is.
SyslogFit by_trying(const SyslogSizes& sizes, std::size_t limit) {
  const std::vector<std::size_t>& ends = sizes.parameter_ends;
  for (std::size_t omitted = 0; omitted <= ends.size(); ++omitted) {
    const std::size_t kept = ends.size() - omitted;
    const SyslogFit fit = {true, kept == 0 ? 0 : ends[kept - 1], omitted, sizes.text};
    const bool may_be_whole = kept != 0 || omitted == 0;
    if (may_be_whole && bytes_of(sizes, fit) <= limit) return fit;
  }
  for (const bool has_entry : {true, false}) {
    for (std::size_t text = sizes.text;; --text) {
      const SyslogFit fit = {has_entry, 0, ends.size() + (has_entry ? 0 : 1), text};
      const std::size_t bytes = bytes_of(sizes, fit) + (fit.omitted == 0 ? kMostOmittedBytes : 0);
      if (bytes <= limit) return fit;
      if (text == 0) break;
    }
  }
  return {false, 0, ends.size() + 1, 0};
}

TEST(SyslogFit, RandomSizes_AreAsByTrying) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 20000; ++round) {
    std::vector<std::size_t> ends;
    for (std::size_t count = random.below(5); ends.size() < count;) {
      ends.push_back((ends.empty() ? 0 : ends.back()) + 1 + random.below(30));
    }
    const SyslogSizes sizes = {20 + random.below(20), random.below(60), ends, random.below(50)};
    const std::size_t limit = 60 + random.below(200);
    const SyslogFit fit = fit_syslog(sizes, limit);
    const SyslogFit expected = by_trying(sizes, limit);
    const auto shown = [](const SyslogFit& each) {
      return std::to_string(each.has_entry) + ' ' + std::to_string(each.parameters) + ' ' +
             std::to_string(each.omitted) + ' ' + std::to_string(each.text);
    };
    ASSERT_EQ(shown(fit), shown(expected)) << "limit " << limit;
  }
}

}  // namespace
