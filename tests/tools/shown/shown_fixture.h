#ifndef QZLOG_TESTS_TOOLS_SHOWN_SHOWN_FIXTURE_H
#define QZLOG_TESTS_TOOLS_SHOWN_SHOWN_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "qzlog/logcfg.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"
#include "tools/definitions/definitions.h"
#include "tools/logs/line_kind.h"
#include "tools/shown/presentation.h"
#include "tools/shown/shown_events.h"
#include "tools/shown/shown_options.h"

namespace qzlog_test {

/// Definitions with an attribute of each kind, one of which is called as a field is.
extern const std::string_view kShownSource;

/// Shows lines as `qzlog render` does, in this process.
class ShownFixture : public ::testing::Test {
 protected:
  ShownFixture();
  ~ShownFixture() override;

  /// What stands in `lines`, heading included. The time zone of the process is Asia/Kathmandu.
  std::string show(std::string_view lines, const qzlog_tool::ShownOptions& options,
                   const qzlog_tool::ShownPlace& place = {}) const;

  qzlog_tool::ShownEvents events_;

 private:
  qz_test::SetEnv zone_{"TZ", "Asia/Kathmandu"};
  qz_test::TempDir folder_;
};

/// Reads lines one by one with their messages and calls `use` for each.
template <class Use>
void for_each_line(std::string_view lines, Use&& use) {
  struct Refused : qz_LOG_LineErrorHandler {
    void TakeLineError(const qz_LOG_LineError& error) override { ADD_FAILURE() << error.text; }
  } refused;
  qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(lines.data(), lines.size(), &refused);
  qz_LOG_EntryLine line;
  std::string message;
  while (reader.Next(line)) {
    message = line.IsHeld() ? "held back: 5 of entry ID 7, level 2" : "lost: 3 of entry ID 7, level 2";
    if (qzlog_tool::is_entry(line))
      line.GetEntry().FormatMessage(message, line.GetUseDefault(), line.GetSelectorIndex());
    use(qzlog_tool::ShownLine{line, message});
  }
}

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_SHOWN_SHOWN_FIXTURE_H
