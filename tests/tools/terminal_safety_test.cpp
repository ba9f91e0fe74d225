// No command passes what commands a terminal on to one: neither in results, nor in errors, nor in names of files.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"

namespace {

using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;
using qzlog_test::run_on_terminal;
using qzlog_test::TerminalRun;

// A window title, a bell, a screen that is cleared (by one character of C1), and writing that is turned round.
constexpr std::string_view kSource = R"yaml(version: "1.0"
globals:
  - {name: COMPUTER_NAME, type: MBChar64}
entries:
  - id: 1
    name: LOGIN
    summary: "Somebody\e]0;owned\a came\u009B2J"
    message: "User {Name} \e]0;owned\a\u202Ecame"
    attributes:
      - {name: Name, type: MBChar2K}
)yaml";

constexpr std::string_view kEntries =
    R"({"id":1,"level":9,"attributes":{"Name":"\u001b]0;owned\u0007 \u009b2J \u202egnp.exe \u007f \r"}})"
    "\n"
    R"({"id":1,"level":9,"attributes":{"Nam\u001b]0;owned\u0007\u009be":"x"}})"
    "\n{\"id\":1,\"level\":9,\"\033]0;owned\a\xC2\x9B\":1}\n"
    "{\"id\":1,\"attributes\":{\"Name\":\"\xC3\xA4 \xE2\x82\xAC\"}}\n";

/// The places that a terminal must not get: controls but those that move to the next line or column, and characters
/// that turn the direction of writing. What the command itself colours is no such place.
std::vector<std::string> unsafe_places(std::string text) {
  for (const std::string_view ours : {"\033[1;31m", "\033[1;35m", "\033[1;36m", "\033[1;32m", "\033[0m"}) {
    for (std::size_t at = text.find(ours); at != std::string::npos; at = text.find(ours)) text.erase(at, ours.size());
  }
  std::vector<std::string> places;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool is_control = (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
    const bool is_c1 = byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    const bool turns = text.compare(at, 3, "\u202E") == 0;
    if (is_control || is_c1 || turns) places.push_back(text.substr(at, 16));
  }
  return places;
}

class TerminalSafety : public CommandFixture {
 protected:
  TerminalSafety() {
    write("storage.yaml", kSource);
    write("entries.jsonl", kEntries);
    write("\033]0;owned\a\u009B.yaml", "nothing: [");
    ::setenv("TERM", "xterm", 1);
  }
  ~TerminalSafety() override { ::unsetenv("TERM"); }

  std::string on_terminal(const std::string& shell_line) const {
    return run_on_terminal(folder_.path(), shell_line).shown;
  }
};

struct SafetyCase {
  const char* name;
  const char* command;
};

class TerminalSafetyOf : public TerminalSafety, public ::testing::WithParamInterface<SafetyCase> {};

TEST_P(TerminalSafetyOf, WhatCommandsATerminal_IsEscaped) {
  const std::string shown = on_terminal(GetParam().command);
  EXPECT_EQ(unsafe_places(shown), std::vector<std::string>()) << shown;
  EXPECT_NE(shown, "");
}

constexpr const char* kNamed = "N=$(printf '\\033]0;owned\\007\\302\\233.yaml'); ";

constexpr SafetyCase kCases[] = {
    {"Render", "$QZLOG render --definitions storage.yaml entries.jsonl"},
    {"RenderOneOfTwoOnTheTerminal", "$QZLOG render --definitions storage.yaml entries.jsonl >out.txt"},
    {"RenderNarrowly", "$QZLOG render --no-icu --definitions storage.yaml entries.jsonl"},
    {"RenderLatin1", "$QZLOG render --code-page ISO-8859-1 --definitions storage.yaml entries.jsonl"},
    {"RenderMissingFile", "$QZLOG render --definitions storage.yaml \"$(printf 'no\\033]0;x\\007\\302\\233')\""},
    {"RenderMissingDefinitions", "$QZLOG render --definitions \"$(printf 'no\\033]0;x\\007\\302\\233')\""},
    {"RenderBadOption", "$QZLOG render \"$(printf -- '--no\\033]0;x\\007\\302\\233')\""},
    {"RenderBadValue",
     "$QZLOG render --level-low \"$(printf 'no\\033]0;x\\007\\302\\233')\" --definitions storage.yaml"},
    {"RenderBadCodePage", "$QZLOG render --code-page \"$(printf '\\033]0;x\\007')\" --definitions storage.yaml"},
    {"RenderBadCatalog", "$QZLOG render --catalog \"$(printf '\\033]0;x\\007')\" --definitions storage.yaml"},
    {"Explain", "$QZLOG explain 1 --definitions storage.yaml"},
    {"ExplainJson", "$QZLOG explain 1 --json --definitions storage.yaml"},
    {"ExplainUnknown", "$QZLOG explain \"$(printf 'no\\033]0;x\\007\\302\\233')\" --definitions storage.yaml"},
    {"Check", "sed 's/LOGIN/\"LO\\\\x1b]0;x\\\\x07\\\\x9bGIN\"/' storage.yaml >b.yaml; $QZLOG check b.yaml"},
    {"CheckJson", "$QZLOG compile storage.yaml -o a.ldf; $QZLOG check --json a.ldf"},
    {"CheckNamed",
     "printf '\\0001' >\"$(printf '\\033]0;owned\\007')\"; $QZLOG check \"$(printf '\\033]0;owned\\007')\""},
    {"CompileToTheTerminal", "$QZLOG compile storage.yaml -o -"},
    {"CompileToTheDevice", "$QZLOG compile storage.yaml -o /dev/stdout"},
    {"Inspect", "$QZLOG compile storage.yaml -o a.ldf; $QZLOG inspect a.ldf"},
    {"InspectJson", "$QZLOG compile storage.yaml -o a.ldf; $QZLOG inspect --json a.ldf"},
    {"InspectYaml", "$QZLOG compile storage.yaml -o a.ldf; $QZLOG inspect --yaml a.ldf"},
    {"InspectAnnotated", "$QZLOG compile storage.yaml -o a.ldf; $QZLOG inspect --annotate a.ldf"},
    {"Diff", "sed 's/User/Guest/' storage.yaml >b.yaml; $QZLOG diff storage.yaml b.yaml"},
    {"DiffJson", "sed 's/User/Guest/' storage.yaml >b.yaml; $QZLOG diff --json storage.yaml b.yaml"},
    {"DiffGit", "$QZLOG diff \"$(printf 'git:HEAD:\\033]0;x\\007\\302\\233')\" storage.yaml"},
    {"Count",
     "$QZLOG render --definitions storage.yaml --count c entries.jsonl >o 2>&1; "
     "$QZLOG count show --definitions storage.yaml c.cnt"},
    {"CountChart",
     "$QZLOG render --definitions storage.yaml --count c entries.jsonl >o 2>&1; "
     "$QZLOG count show --chart c.cnt"},
    {"CatalogExtract", "$QZLOG catalog extract storage.yaml -o -"},
    {"CatalogStatus", "$QZLOG catalog status storage.yaml --po \"$(printf '\\033]0;x\\007\\302\\233.po')\""},
};

INSTANTIATE_TEST_SUITE_P(Commands, TerminalSafetyOf, ::testing::ValuesIn(kCases),
                         [](const auto& of) { return std::string(of.param.name); });

TEST_F(TerminalSafety, NameOfAFile_IsEscapedInErrorsToo) {
  for (const char* const command :
       {"$QZLOG compile \"$N\" -o a.ldf", "$QZLOG render --definitions \"$N\"", "$QZLOG explain 1 --definitions \"$N\"",
        "$QZLOG check \"$N\"", "$QZLOG inspect \"$N\"", "$QZLOG diff \"$N\" storage.yaml", "$QZLOG count show \"$N\"",
        "$QZLOG catalog extract \"$N\" -o -"}) {
    const std::string shown = on_terminal(std::string(kNamed) + command);
    EXPECT_EQ(unsafe_places(shown), std::vector<std::string>()) << shown;
    EXPECT_NE(shown.find("\\u001B]0;owned\\u0007\\u009B.yaml"), std::string::npos) << shown;
  }
}

TEST_F(TerminalSafety, MessageOnATerminal_ShowsWhatIsEscaped) {
  write("entries.jsonl", R"({"id":1,"attributes":{"Name":")"
                         "\\u001b\\u0007\\u009b\\u202e\\u200f \\t\u00E4 \u05D0"
                         R"("}})"
                         "\n");
  EXPECT_EQ(on_terminal("$QZLOG render --definitions storage.yaml entries.jsonl"),
            "User \\u001B\\u0007\\u009B\\u202E\u200F \t\u00E4 \u05D0 \\u001B]0;owned\\u0007\\u202Ecame\n");
}

TEST_F(TerminalSafety, RawTexts_AreAsTheyCame) {
  write("entries.jsonl", R"({"id":1,"attributes":{"Name":"\u001b\u009b"}})"
                         "\n");
  EXPECT_EQ(on_terminal("$QZLOG render --raw --definitions storage.yaml entries.jsonl"),
            "User \033\u009B \033]0;owned\a\u202Ecame\n");
  EXPECT_NE(on_terminal("$QZLOG explain 1 --raw --definitions storage.yaml").find("\033]0;owned\a"), std::string::npos);
}

TEST_F(TerminalSafety, ErrorsBesideRawTexts_AreEscaped) {
  const std::string shown = on_terminal(std::string(kNamed) + "$QZLOG render --raw --definitions \"$N\"");
  EXPECT_EQ(unsafe_places(shown), std::vector<std::string>()) << shown;
}

TEST_F(TerminalSafety, MessageInAFile_IsAsItCame) {
  write("entries.jsonl", R"({"id":1,"attributes":{"Name":"\u001b\u0007\u009b\u202e"}})"
                         "\n");
  const CommandResult result = run("$QZLOG render --definitions storage.yaml entries.jsonl");
  EXPECT_EQ(result.out, "User \033\a\u009B\u202E \033]0;owned\a\u202Ecame\n");
}

}  // namespace
