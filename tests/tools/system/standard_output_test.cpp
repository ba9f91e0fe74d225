#include "tools/system/standard_output.h"

#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

class StandardOutput : public qzlog_test::CommandFixture {
 protected:
  /// A definition file with that many entries, as events.ldf.
  void make_definitions(int entries) const {
    std::string source = "version: \"1.0\"\nentries:\n";
    for (int id = 1; id <= entries; ++id) {
      source += "  - {id: " + std::to_string(id) + ", name: N" + std::to_string(id) + ", message: text}\n";
    }
    write("events.yaml", source);
    EXPECT_EQ(run("$QZLOG compile events.yaml -o events.ldf").err, "");
  }

  void expect_failure(const std::string& line, const std::string& reason) const {
    const CommandResult result = run(line);
    EXPECT_EQ(result.status, 2) << line;
    EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: " + reason + "\n") << line;
  }
};

TEST_F(StandardOutput, ResultsOfAnySizeWithoutAPlace_AreAnErrorWithItsReason) {
  for (const int entries : {1, 500}) {
    make_definitions(entries);
    for (const std::string form : {"", " --json", " --yaml", " --annotate"}) {
      expect_failure("$QZLOG inspect events.ldf" + form + " >/dev/full", "No space left on device");
      expect_failure("$QZLOG inspect events.ldf" + form + " >&-", "Bad file descriptor");
    }
  }
}

TEST_F(StandardOutput, FileOfLimitedSize_IsAnError) {
  make_definitions(500);
  const CommandResult result =
      run("{ (ulimit -f 4; $QZLOG inspect events.ldf --json >out.json); echo $?; } 2>&1 | cat");
  EXPECT_EQ(result.out, "qzlog: error: cannot write to standard output: File too large\n2\n");
}

// As for the commands that print line by line; here the signal that would end the command is ignored.
TEST_F(StandardOutput, ReaderThatIsGone_EndsTheCommandWithoutAWord) {
  EXPECT_EQ(run("mkfifo pipe && printf '{\"id\":1}\\n' >entries.jsonl").status, 0);
  for (const int entries : {1, 500}) {
    make_definitions(entries);
    for (const std::string command :
         {"inspect events.ldf", "explain 1 --definitions events.ldf", "diff events.ldf events.yaml",
          "render --definitions events.ldf --count c entries.jsonl", "count show c.cnt", "count show c.cnt --json",
          "count show c.cnt --chart"}) {
      const CommandResult result = run("{ trap '' PIPE; exec 3<>pipe 4>pipe 3>&-; $QZLOG " + command + " >&4; }");
      EXPECT_EQ(result.status, 1) << command;
      EXPECT_EQ(result.err, "") << command;
    }
  }
}

}  // namespace
