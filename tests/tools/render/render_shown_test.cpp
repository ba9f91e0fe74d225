// What `qzlog render` shows beside messages, as users see it.
#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"
#include "tools/compiler/text/display_width.h"

namespace {

using qz_test::SetEnv;
using qzlog_test::CommandResult;
using qzlog_test::run_on_terminal;

constexpr const char* kEntries =
    R"({"id":1001,"level":7,"time":"2026-11-21T08:15:30Z","attributes":{"Name":"vol1","Free":0,"Total":4096}})"
    "\n"
    R"({"id":1005,"level":2,"time":"2026-11-21T23:15:30Z"})"
    "\n"
    R"({"id":1003,"level":8,"attributes":{"C":"\u001b[2J\u009b","M":"\u202e\u05d0"}})"
    "\n";

class RenderShown : public qzlog_test::RenderFixture {
 protected:
  std::string on_terminal(const std::string& options, unsigned short columns = 80) const {
    write("entries.jsonl", kEntries);
    return run_on_terminal(folder_.path(), "$QZLOG render --definitions storage.yaml entries.jsonl " + options, columns)
        .shown;
  }

  SetEnv kind_of_terminal_{"TERM", "xterm"};
};

TEST_F(RenderShown, Short_IsInTheProcessesZone) {
  const CommandResult result = render(kEntries, "--output short --locale de_AT");
  EXPECT_EQ(result.out,
            "2026-11-21T14:00:30+05:45 error    DISK_FULL Disk vol1 is full: 0 of 4096 blocks free\n"
            "2026-11-22T05:00:30+05:45 info     WHEN At 22.11.2026 05:00:30.\n"
            "- critical TEXTS Gr\u00F6\u00DFe <\033[2J\u009B> <\u202E\u05D0>\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderShown, TimesInMessages_FollowTheZone) {
  constexpr const char* kWhen = R"({"id":1005,"time":"2026-11-21T23:15:30Z"})";
  EXPECT_EQ(render(kWhen, "--locale de-AT --time-zone America/New_York --format '{time} {message}'").out,
            "2026-11-21T18:15:30-05:00 At 21.11.2026 18:15:30.\n");
  EXPECT_EQ(render(kWhen, "--locale de-AT --utc --time-style short --format '{time} {message}'").out,
            "2026-11-21 23:15:30 At 21.11.2026 23:15:30.\n");
  EXPECT_EQ(render(kWhen, "--locale de-AT --utc --no-icu --format '{time} {level_name}'").out,
            "2026-11-21T23:15:30Z debug\n");
}

// ICU takes a language of more than eleven letters for none at all.
TEST_F(RenderShown, LocaleOfTheEnvironmentThatIsNone_IsThatOfNoLanguage) {
  constexpr const char* kWhen = R"({"id":1005,"time":"2026-11-21T23:15:30Z"})";
  for (const char* const name : {"xxxxxxxxxxxx", "\033[31m", "../../etc"}) {
    const SetEnv locale("LC_ALL", name);
    const CommandResult result = render(kWhen, "--utc --time-style locale --format '{time} {message}'");
    EXPECT_EQ(result.out, "2026 M11 21 23:15:30 At 2026 M11 21 23:15:30.\n") << name;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
}

TEST_F(RenderShown, Terminal_HasColoursOfLevelsAndEscapes) {
  EXPECT_EQ(on_terminal("--output short --locale de_AT"),
            "\033[31m2026-11-21T14:00:30+05:45 error    DISK_FULL Disk vol1 is full: 0 of 4096 blocks free\033[0m\n"
            "2026-11-22T05:00:30+05:45 info     WHEN At 22.11.2026 05:00:30.\n"
            "\033[1;31m- critical TEXTS Gr\u00F6\u00DFe <\\u001B[2J\\u009B> <\\u202E\u05D0>\033[0m\n");
  const SetEnv no_color("NO_COLOR", "1");
  EXPECT_EQ(on_terminal("--format '{level} {C}'"), "7 -\n2 -\n8 \\u001B[2J\\u009B\n");
  EXPECT_EQ(on_terminal("--raw --format '{level} {C}'"), "7 -\n2 -\n8 \033[2J\u009B\n");
}

TEST_F(RenderShown, TableOnANarrowTerminal_FitsIt) {
  const SetEnv no_color("NO_COLOR", "1");
  for (const std::size_t columns : {20u, 40u, 80u, 132u}) {
    std::istringstream lines(on_terminal("--output table", static_cast<unsigned short>(columns)));
    std::size_t count = 0;
    bool is_told = false;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("qzlog: --output table: ")) {
        is_told = true;
        continue;
      }
      EXPECT_LE(qzlog_compiler::display_width(line), columns) << line;
      ++count;
    }
    EXPECT_EQ(count, 4u);
    EXPECT_EQ(is_told, columns <= 40) << columns;
  }
}

TEST_F(RenderShown, OtherCodePage_IsThatOfTheWholeLine) {
  const CommandResult result =
      render(R"({"id":1003,"attributes":{"M":"\u00e4"}})", "--code-page ISO-8859-1 --format '{M} {message}'");
  EXPECT_EQ(result.out,
            "\xE4 Gr\xF6\xDF"
            "e <> <\xE4>\n");
  EXPECT_EQ(render(kEntries, "--code-page ISO-8859-1 --output json").err,
            "qzlog: error: JSON is in UTF-8; leave out --code-page\n");
}

TEST_F(RenderShown, FormatThatCannotBe_EndsWithStatus2) {
  const CommandResult result = render(kEntries, "--format '{time} {Nmae}'");
  EXPECT_EQ(result.err,
            "qzlog: error: --format: unknown field 'Nmae'\n"
            "  {time} {Nmae}\n"
            "          ^\n"
            "  hint: did you mean 'name'?\n");
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderShown, LossAndWrongLines_StandAmongEntries) {
  const CommandResult result = render(
      "{\"written\":\"2026-11-21T08:15:30Z\",\"lost\":[{\"id\":1001,\"level\":3,\"count\":2}]}\n{}\n{\"id\":1006}\n",
      "--output csv --columns time,id,message");
  EXPECT_EQ(result.out,
            "time,id,message\r\n"
            "2026-11-21T14:00:30+05:45,,\"lost: 2 of entry ID 1001, level 3\"\r\n"
            ",1006,\"first\nsecond\rthird\"\r\n");
  EXPECT_EQ(result.status, 1);
}

}  // namespace
