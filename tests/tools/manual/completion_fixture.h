#ifndef QZLOG_TESTS_TOOLS_MANUAL_COMPLETION_FIXTURE_H
#define QZLOG_TESTS_TOOLS_MANUAL_COMPLETION_FIXTURE_H

#include <filesystem>
#include <string>

#include "tests/tools/command_fixture.h"

namespace qzlog_test {

/// Runs the completions that the build made, in a folder with a file of each kind and a folder.
class CompletionFixture : public CommandFixture {
 protected:
  CompletionFixture() {
    for (const char* const name : {"events.yaml", "events.ldf", "entries.jsonl", "disks.cnt", "notes.txt", "de.po"}) {
      write(name, "");
    }
    std::filesystem::create_directory(folder_.path("more"));
  }

  /// What is printed by a line of shell in which $DOCS is the folder of what was made. Nothing may go wrong.
  std::string output_of(const std::string& shell_line) const {
    const CommandResult result = run("DOCS='" QZLOG_COMMAND_DOCS "'; " + shell_line);
    EXPECT_EQ(result.status, 0) << shell_line;
    EXPECT_EQ(result.err, "") << shell_line;
    return result.out;
  }
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_MANUAL_COMPLETION_FIXTURE_H
