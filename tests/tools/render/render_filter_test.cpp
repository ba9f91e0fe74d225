#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <string>

#include "tests/tools/command_fixture.h"
#include "tests/tools/shown_line.h"

namespace {

using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;
using qzlog_test::shown_line;

constexpr const char* kDefinitions = R"yaml(
version: "1.0"
entries:
  - {id: 1, name: ONE, mask: 1, message: "one"}
  - {id: 2, name: TWO, mask: 2, message: "two"}
  - {id: 3, name: NONE, mask: 0, message: "none"}
  - {id: 4, name: DEBUG, mask: 0x4000001, message: "debug"}
)yaml";

constexpr const char* kEntries = R"({"id":1,"level":0}
{"id":1,"level":5}
{"id":2,"level":5}
{"id":2,"level":9}
{"id":3,"level":5}
{"id":4,"level":3}
)";

class RenderFilter : public CommandFixture {
 protected:
  RenderFilter() {
    write("d.yaml", kDefinitions);
    write("e.jsonl", kEntries);
  }

  CommandResult render(const std::string& options) const {
    return run("$QZLOG render --definitions d.yaml " + options + " e.jsonl");
  }
  CommandResult render_with(const std::string& config, const std::string& options) const {
    write("log.conf", config);
    return render("--config log.conf " + options);
  }
};

void expect(const CommandResult& result, const std::string& out, const std::string& err) {
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err, err);
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderFilter, NoOption_RendersEverythingAndSaysNothing) {
  expect(render(""), "one\none\ntwo\ntwo\nnone\ndebug\n", "");
}

TEST_F(RenderFilter, OptionsAlone_SetTheBounds) {
  expect(render("--mask 0xFFFFFFFF"), "one\none\ntwo\ntwo\ndebug\n", "entries: 6 read, 5 passed, 1 refused\n");
  expect(render("--mask 2"), "two\ntwo\n", "entries: 6 read, 2 passed, 4 refused\n");
  expect(render("--mask 010"), "two\ntwo\n", "entries: 6 read, 2 passed, 4 refused\n");  // 010 is ten
  expect(render("--level-low 4"), "one\ntwo\ntwo\n", "entries: 6 read, 3 passed, 3 refused\n");
  expect(render("--level-high 4"), "one\ndebug\n", "entries: 6 read, 2 passed, 4 refused\n");
  expect(render("--level-low 5 --level-high 5 --mask 1"), "one\n", "entries: 6 read, 1 passed, 5 refused\n");
  expect(render("--level-low 6 --level-high 5"), "", "entries: 6 read, 0 passed, 6 refused\n");
}

// Whether lines are looked at before they are read depends on --check-gaps.
TEST_F(RenderFilter, Summary_CountsTheEntriesThatAreWanted) {
  const std::string summary = "entries: 2 read, 1 passed, 1 refused\n";
  expect(render("--level-low 1 --id 1"), "one\n", summary);
  expect(render("--level-low 1 --id 1 --check-gaps"), "one\n",
         summary + "seq: 0 lines of 0 writers, 0 missing, 0 doubled; 6 lines without writer and seq\n");
  expect(render("--level-low 5 --head 1"), "one\n", "entries: 2 read, 1 passed, 1 refused\n");
  expect(render("--level-low 5 --tail 1"), "two\n", "entries: 6 read, 3 passed, 3 refused\n");
}

TEST_F(RenderFilter, LostEntries_AreFilteredByTheOptions) {
  write("e.jsonl", R"({"lost":[{"id":1,"level":3,"count":5}]}
{"held":[{"id":2,"level":9,"count":1}]}
)");
  const std::string summary = "entries: 0 read, 0 passed, 0 refused\n";
  const std::string lost = "lost: 5 of entry ID 1, level 3\n";
  const std::string held = "held back: 1 of entry ID 2, level 9\n";
  expect(render("--mask 1"), lost, summary);
  expect(render("--mask 2"), held, summary);
  expect(render("--level-low 4"), held, summary);
  expect(render("--level-high 4"), lost, summary);
  expect(render_with("[global]\nPropertyMask=1\n\n", ""), lost + held, summary);
}

TEST_F(RenderFilter, Section_WinsOverGlobalAndOptions) {
  const std::string config = "[app]\nLogLevelLow = 5\n[global]\nLogLevelLow = 9\nPropertyMask = 0x2\n\n";
  const std::string options = "--level-low 0 --mask 1";
  expect(render_with(config, options + " --section app"), "two\ntwo\n", "entries: 6 read, 2 passed, 4 refused\n");
  expect(render_with(config, options + " --section other"), "two\n",
         "log.conf: warning: there is no section 'other': what 'global' says counts [config-missing-section]\n"
         "entries: 6 read, 1 passed, 5 refused\n");
  expect(render_with(config, options), "two\n", "entries: 6 read, 1 passed, 5 refused\n");
}

TEST_F(RenderFilter, DebugEntries_BypassTheMaskButNotTheirLevels) {
  const std::string mask = "[app]\nPropertyMask 0x2\n";
  expect(render_with(mask + "\n", "--section app"), "two\ntwo\n", "entries: 6 read, 2 passed, 4 refused\n");
  expect(render_with(mask + "DebugEnabled 1\n\n", "--section app"), "two\ntwo\ndebug\n",
         "entries: 6 read, 3 passed, 3 refused\n");
  expect(render_with(mask + "DebugEnabled 1\nDebugLogLevelLow 4\n\n", "--section app"), "two\ntwo\n",
         "entries: 6 read, 2 passed, 4 refused\n");
}

TEST_F(RenderFilter, FileWithoutTheKeys_LeavesTheOptions) {
  expect(render_with("", "--level-low 9"), "two\n", "entries: 6 read, 1 passed, 5 refused\n");
}

TEST_F(RenderFilter, ConfigurationThroughAPipe_IsRead) {
  const std::string command = "$QZLOG render --definitions d.yaml --section app --config ";
  expect(run("printf '[app]\\nLogLevelLow=9\\n\\n' | " + command + "- e.jsonl"), "two\n",
         "entries: 6 read, 1 passed, 5 refused\n");
  expect(run("printf '[app]\\nLogLevelLow=9\\n\\n' | " + command + "/dev/stdin e.jsonl"), "two\n",
         "entries: 6 read, 1 passed, 5 refused\n");
}

TEST_F(RenderFilter, LastLineWithoutAnEmptyOne_IsWarnedAbout) {
  expect(render_with("[global]\nLogLevelLow=5\nLogLevelHigh=5\n", ""), "one\ntwo\ntwo\n",
         "log.conf:3: warning: the last line has no empty line behind it and is not read [config-last-line]\n" +
             shown_line(3, "LogLevelHigh=5") + "  hint: end the file with an empty line\n" +
             "entries: 6 read, 3 passed, 3 refused\n");
}

TEST_F(RenderFilter, LongLine_IsWarnedAbout) {
  expect(render_with("[global]\nLogLevelLow=9\n" + std::string(129, '#') + "\nPropertyMask=1\n\n", ""), "two\n",
         "log.conf:3: warning: the line has more than 128 bytes: neither it nor what follows is read "
         "[config-long-line]\n" +
             shown_line(3, std::string(100, '#') + "...") + "  hint: keep lines within 128 bytes\n" +
             "entries: 6 read, 1 passed, 5 refused\n");
}

TEST_F(RenderFilter, ModificationTimeZero_IsWarnedAbout) {
  write("log.conf", "[global]\nLogLevelLow=9\n\n");
  const utimbuf zero = {0, 0};
  ASSERT_EQ(::utime(folder_.path("log.conf").c_str(), &zero), 0);
  expect(render("--config log.conf --mask 1"), "one\none\ndebug\n",
         "log.conf: warning: its modification time is 0 (1970-01-01): nothing of it is read [config-never-read]\n"
         "entries: 6 read, 3 passed, 3 refused\n");
}

TEST_F(RenderFilter, WrongLines_AreInTheSummary) {
  write("e.jsonl", "{\"id\":1}\n\n{\"id\":99}\n{\"id\":3}\n{}\n");
  const CommandResult result = render("--level-low 0");
  EXPECT_EQ(result.out, "one\n");
  EXPECT_EQ(result.err, "e.jsonl:3:7: error: entry ID 99: Entry id argument is invalid [unknown-id]\n" +
                            shown_line(3, "{\"id\":99}", 7) + "e.jsonl:5: error: the entry has no 'id' [missing-id]\n" +
                            shown_line(5, "{}") +
                            "entries: 4 read, 1 passed, 1 refused, 2 wrong\nqzlog: error: 2 lines passed over (1 "
                            "unknown-id, 1 missing-id); the first at e.jsonl:3\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderFilter, WrongOptions_AreRefusedWithStatus2) {
  const struct {
    const char* options;
    const char* text;
  } cases[] = {
      {"--section app", "--section requires --config"},
      {"--level-low 10", "--level-low: Value 10 not in range 0 to 9"},
      {"--level-high -1", "--level-high: Value -1 not in range 0 to 9"},
      {"--mask 0x100000000", "--mask: '0x100000000' is no number from 0 to 0xFFFFFFFF"},
      {"--mask ''", "--mask: '' is no number from 0 to 0xFFFFFFFF"},
      {"--config ''", "--config: the name is empty"},
  };
  for (const auto& row : cases) {
    const CommandResult result = render(row.options);
    EXPECT_EQ(result.out, "") << row.options;
    EXPECT_EQ(result.err, std::string("qzlog: error: ") + row.text +
                              "\nRun 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n");
    EXPECT_EQ(result.status, 2) << row.options;
  }
}

TEST_F(RenderFilter, FileThatCannotBeRead_IsRefusedWithStatus2) {
  const struct {
    const char* arguments;
    const char* text;
  } cases[] = {
      {"--definitions d.yaml --config none.conf e.jsonl", "cannot open 'none.conf': No such file or directory"},
      {"--definitions d.yaml --config . e.jsonl", "cannot read '.': Is a directory"},
      {"--definitions d.yaml --config -", "standard input can be read for one file only"},
      {"--definitions - --config - e.jsonl", "standard input can be read for one file only"},
  };
  for (const auto& row : cases) {
    const CommandResult result = run(std::string("$QZLOG render ") + row.arguments);
    EXPECT_EQ(result.out, "") << row.arguments;
    EXPECT_EQ(result.err, std::string("qzlog: error: ") + row.text + "\n");
    EXPECT_EQ(result.status, 2) << row.arguments;
  }
}

}  // namespace
