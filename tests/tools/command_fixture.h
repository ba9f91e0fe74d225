#ifndef QZLOG_TESTS_TOOLS_COMMAND_FIXTURE_H
#define QZLOG_TESTS_TOOLS_COMMAND_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"

namespace qzlog_test {

struct CommandResult {
  int status = -1;  ///< 128 + the signal where one ended the command
  std::string out;
  std::string err;
};

/// Runs the built command in a folder of the test's own.
class CommandFixture : public ::testing::Test {
 protected:
  /// Runs a line of shell; `$QZLOG` is the command. Redirections in the line come first.
  CommandResult run(const std::string& shell_line) const;

  void write(const std::string& name, std::string_view content) const { folder_.write(name, content); }
  std::string read(const std::string& name) const { return folder_.read(name); }

  qz_test::TempDir folder_;

 private:
  qz_test::SetEnv command_{"QZLOG", QZLOG_COMMAND};
  qz_test::UnsetEnv colour_wanted_{"NO_COLOR"};
  // Something unusual on purpose: neither may show in a message.
  qz_test::SetEnv zone_{"TZ", "Asia/Kathmandu"};
  qz_test::SetEnv locale_{"LC_ALL", "C"};
};

/// The definitions that most tests of `render` use (storage.yaml in the fixture's folder).
extern const std::string_view kStorageSource;

class RenderFixture : public CommandFixture {
 protected:
  RenderFixture() { write("storage.yaml", kStorageSource); }

  /// Renders `entries` (as the file entries.jsonl) with storage.yaml.
  CommandResult render(std::string_view entries, const std::string& options = "") const {
    write("entries.jsonl", entries);
    return run("$QZLOG render --definitions storage.yaml " + options + " entries.jsonl");
  }
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_COMMAND_FIXTURE_H
