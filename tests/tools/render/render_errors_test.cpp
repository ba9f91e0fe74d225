#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/tools/command_fixture.h"
#include "tests/tools/shown_line.h"

namespace {

using qzlog_test::CommandResult;
using qzlog_test::one_line_passed_over;
using qzlog_test::RenderFixture;
using qzlog_test::shown_line;

struct BadEntry {
  const char* name;
  const char* line;
  std::size_t column;  // 0: the line as a whole
  const char* error;
};

void PrintTo(const BadEntry& entry, std::ostream* out) { *out << entry.name; }

const BadEntry kBadEntries[] = {
    {"Truncated", "{", 2, "not valid JSON: "},
    {"Text", "hello", 1, "not valid JSON: "},
    {"Array", "[]", 1, "an entry is an object in braces, not an array [not-an-object]"},
    {"NoId", "{}", 0, "the entry has no 'id' [missing-id]"},
    {"BadId", R"({"id":-5})", 7, "'id' has to be an integer from 0 to 4294967295 or an entry's name [bad-id]"},
    {"UnknownId", R"({"id":99})", 7, "entry ID 99: Entry id argument is invalid [unknown-id]"},
    {"UnknownName", R"({"id":"NO_SUCH"})", 7, "the definitions have no entry 'NO_SUCH' [unknown-name]"},
    {"UnknownKey", R"({"id":1001,"msg":1})", 12,
     "unknown key 'msg'; an entry has 'id', 'level', 'time', 'attributes', 'default' and 'selector' [unknown-key]"},
    {"DuplicateKey", R"({"id":1001,"id":1001})", 12, "the key 'id' is given twice [duplicate-key]"},
    {"Level", R"({"id":1001,"level":10})", 20, "'level' has to be an integer from 0 to 9 [bad-level]"},
    {"Time", R"({"id":1001,"time":"now"})", 19,
     "'time': 'now' is not a date and time with its zone, such as 2026-11-21T08:15:30Z or 2026-11-21T09:15:30.5+01:00 "
     "[bad-time]"},
    {"Choice", R"({"id":1001,"default":0})", 22, "'default' has to be true or false, not an integer [bad-choice]"},
    {"Attributes", R"({"id":1001,"attributes":null})", 25,
     "'attributes' has to be an object, not null [bad-attributes]"},
    {"UnknownAttribute", R"({"id":1001,"attributes":{"Nom":"x"}})", 26,
     "attribute 'Nom' is not defined for entry ID 1001 [unknown-attribute]"},
    {"DuplicateAttribute", R"({"id":1001,"attributes":{"Name":"x","Name":"y"}})", 37,
     "attribute 'Name' is given twice [duplicate-attribute]"},
    {"Guid", R"({"id":1007,"attributes":{"Key":"x"}})", 32,
     "attribute 'Key': nothing can be put into an attribute of type GUID [unsupported-type]"},
    {"Kind", R"({"id":1001,"attributes":{"Free":"5"}})", 33,
     "attribute 'Free': UInt4 takes an integer, not a text [wrong-kind]"},
    {"Range", R"({"id":1001,"attributes":{"Free":-5}})", 33,
     "attribute 'Free': -5 does not fit UInt4 (0 to 4294967295) [out-of-range]"},
    {"Nul", R"({"id":1001,"attributes":{"Name":"a\u0000"}})", 33,
     "the text 'a\\u0000' holds U+0000, which no text can [nul-character]"},
    {"TooLong", R"({"id":1001,"attributes":{"Name":"123456789012345678901234567890123"}})", 33,
     "Name Attribute value is overflow under Entry ID 1001 ! [refused-value]"},
    {"NoSelector", R"({"id":1001,"selector":9})", 0,
     "<QZX_logging_invalid_message_string> Invalid selector message index specified. [no-message]"},
    {"ControlCharacter", R"({"id":"A\u001b[31m"})", 7, "the definitions have no entry 'A\\u001B[31m' [unknown-name]"},
};

class RenderBadEntry : public RenderFixture, public ::testing::WithParamInterface<BadEntry> {};

TEST_P(RenderBadEntry, BetweenGoodOnes_IsReportedAndTheOthersAreRendered) {
  const std::string good = R"({"id":1001,"attributes":{"Name":"a","Free":1,"Total":2}})"
                           "\n";
  const std::string message = "Disk a is full: 1 of 2 blocks free\n";
  for (const char* const options : {"", "--no-icu"}) {
    const CommandResult result = render(good + GetParam().line + "\n" + good, options);
    EXPECT_EQ(result.out, message + message);
    const std::size_t column = GetParam().column;
    const std::string place = "entries.jsonl:2" + (column != 0 ? ":" + std::to_string(column) : "");
    const std::string error = place + ": error: " + GetParam().error;
    const std::string line = shown_line(2, GetParam().line, column);
    if (error.ends_with(": ")) {
      EXPECT_EQ(result.err.substr(0, error.size()), error);
      const std::string end = one_line_passed_over("bad-json", "entries.jsonl:2");
      EXPECT_TRUE(result.err.ends_with(" [bad-json]\n" + line + end)) << result.err;
    } else {
      const std::string rule = error.substr(error.rfind('[') + 1, error.size() - error.rfind('[') - 2);
      EXPECT_EQ(result.err, error + "\n" + line + one_line_passed_over(rule, "entries.jsonl:2"));
    }
    EXPECT_EQ(result.status, 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, RenderBadEntry, ::testing::ValuesIn(kBadEntries),
                         [](const auto& parameter) { return parameter.param.name; });

using RenderErrors = RenderFixture;

TEST_F(RenderErrors, EveryLineBad_EveryLineIsReported) {
  const CommandResult result = render("1\n\n2\n3");
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "entries.jsonl:1:1: error: an entry is an object in braces, not an integer [not-an-object]\n" +
                shown_line(1, "1") +
                "entries.jsonl:3:1: error: an entry is an object in braces, not an integer [not-an-object]\n" +
                shown_line(3, "2") +
                "entries.jsonl:4:1: error: an entry is an object in braces, not an integer [not-an-object]\n" +
                shown_line(4, "3") +
                "qzlog: error: 3 lines passed over (3 not-an-object); the first at entries.jsonl:1\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderErrors, LinesPassedOver_AreCountedByTheirReasons) {
  const std::string entries = "1\n{\"id\":1006}\n[]\n{}\n";
  const std::string last =
      "qzlog: error: 3 lines passed over (2 not-an-object, 1 missing-id); the first at entries.jsonl:1\n";
  const CommandResult told = render(entries);
  EXPECT_TRUE(told.err.ends_with(last)) << told.err;
  EXPECT_EQ(told.status, 1);
  const CommandResult quiet = render(entries, "--quiet");
  EXPECT_EQ(quiet.out, told.out);
  EXPECT_EQ(quiet.err + last, told.err);
  EXPECT_EQ(quiet.status, 1);
}

TEST_F(RenderErrors, TornLastLine_IsToldApart) {
  const CommandResult result = render("{\"id\":1006}\n{\"id\":10");
  EXPECT_EQ(result.out, "first\\nsecond\\rthird\n");
  EXPECT_EQ(result.err, "entries.jsonl:2:9: error: the last line breaks off: it is not written whole [torn-line]\n" +
                            shown_line(2, "{\"id\":10", 9) + one_line_passed_over("torn-line", "entries.jsonl:2"));
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderErrors, StandardInput_HasAName) {
  const CommandResult result = run("echo 1 | $QZLOG render --definitions storage.yaml");
  EXPECT_EQ(result.err, "<stdin>:1:1: error: an entry is an object in braces, not an integer [not-an-object]\n" +
                            shown_line(1, "1") + one_line_passed_over("not-an-object", "<stdin>:1"));
}

TEST_F(RenderErrors, LineWithControlCharacters_IsShownWithEscapes) {
  const CommandResult result = render("{\"id\":\x1b\u202E}\r\n");
  EXPECT_TRUE(result.err.ends_with(" [bad-json]\n" + shown_line(1, R"({"id":\u001B\u202E})", 7) +
                                   one_line_passed_over("bad-json", "entries.jsonl:1")))
      << result.err;
}

TEST_F(RenderErrors, MessagesAndErrorsInOnePlace_StandInTheOrderOfTheLines) {
  const std::string good = R"({"id":1006})"
                           "\n";
  write("entries.jsonl", good + "1\n" + good);
  EXPECT_EQ(run("$QZLOG render --definitions storage.yaml entries.jsonl 2>&1").out,
            "first\\nsecond\\rthird\n"
            "entries.jsonl:2:1: error: an entry is an object in braces, not an integer [not-an-object]\n" +
                shown_line(2, "1") + "first\\nsecond\\rthird\n" +
                one_line_passed_over("not-an-object", "entries.jsonl:2"));
}

TEST_F(RenderErrors, HugeLine_IsReportedAndTheOthersAreRendered) {
  const std::string good = R"({"id":1006})"
                           "\n";
  const CommandResult result = render(good + std::string((std::size_t{16} << 20) + 1, ' ') + "\n" + good);
  EXPECT_EQ(result.out, "first\\nsecond\\rthird\nfirst\\nsecond\\rthird\n");
  EXPECT_EQ(result.err, "entries.jsonl:2: error: the line is longer than 16 MiB [long-line]\n" +
                            one_line_passed_over("long-line", "entries.jsonl:2"));
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderErrors, LineOf16MiB_IsRendered) {
  const std::string entry = R"({"id":1006})";
  const CommandResult result = render(entry + std::string((std::size_t{16} << 20) - entry.size(), ' ') + "\n");
  EXPECT_EQ(result.out, "first\\nsecond\\rthird\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderErrors, SymbolicNameWithACompiledFileWithoutNames_IsExplained) {
  write("entries.jsonl", R"({"id":"DISK_FULL"})");
  const CommandResult result =
      run("$QZLOG compile storage.yaml --strip -o storage.ldf; $QZLOG render --definitions storage.ldf entries.jsonl");
  EXPECT_EQ(result.err,
            "entries.jsonl:1:7: error: the name 'DISK_FULL' needs definitions with names: these hold only IDs "
            "[unknown-name]\n" +
                shown_line(1, R"({"id":"DISK_FULL"})", 7) + one_line_passed_over("unknown-name", "entries.jsonl:1"));
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderErrors, SymbolicNameWithACompiledFileThatKnowsIt_IsTaken) {
  write("entries.jsonl", R"({"id":"DISK_FULL"})");
  const CommandResult by_name =
      run("$QZLOG compile storage.yaml -o storage.ldf; $QZLOG render --definitions storage.ldf entries.jsonl");
  write("entries.jsonl", R"({"id":1001})");
  const CommandResult by_id = run("$QZLOG render --definitions storage.ldf entries.jsonl");
  EXPECT_EQ(by_name.err, "");
  EXPECT_EQ(by_name.out, by_id.out);
  EXPECT_EQ(by_name.status, 0);
}

TEST_F(RenderErrors, CompiledFileWithDamagedNames_IsWarnedOf) {
  write("entries.jsonl", R"({"id":1001})");
  const CommandResult result =
      run("$QZLOG compile storage.yaml -o storage.ldf; truncate -s -1 storage.ldf; "
          "$QZLOG render --definitions storage.ldf entries.jsonl");
  EXPECT_NE(result.err.find("the names section is damaged (its end is missing or damaged) and is ignored "
                            "[bad-names-section]\n"),
            std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find(
                "\nqzlog: error: 1 names section passed over (1 bad-names-section); the first at storage.ldf, offset "),
            std::string::npos)
      << result.err;
  EXPECT_NE(result.out, "");
  EXPECT_EQ(result.status, 1);
}

constexpr const char* kBrokenSource = R"(version: "1.0"
entries:
  - {id: 1, name: GOOD, message: "good"}
  - id: 2
    name: BROKEN
    raw: "%s%N% {0,date} %_%TIMESTAMP%"
    attributes:
      - {name: N, type: Char32}
)";

TEST_F(RenderErrors, PatternThatIcuCannotApply_IsReportedBehindTheMessagesBeforeIt) {
  write("broken.yaml", kBrokenSource);
  write("entries.jsonl", "{\"id\":1}\n{\"id\":2,\"attributes\":{\"N\":\"x\"}}\n{\"id\":1}\n");
  const CommandResult result = run("$QZLOG render --definitions broken.yaml --count counts entries.jsonl");
  EXPECT_EQ(result.out, "good\n");
  EXPECT_EQ(result.err,
            "entries.jsonl:2: error: ICU takes the message's pattern but cannot apply it; nothing behind this line is "
            "rendered [broken-pattern]\n" +
                shown_line(2, R"({"id":2,"attributes":{"N":"x"}})") +
                one_line_passed_over("broken-pattern", "entries.jsonl:2"));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(read("counts.cnt").size(), 32U);
}

TEST_F(RenderErrors, NameWithControlCharacters_IsShownWithEscapes) {
  write("std.yaml", "version: \"1.0\"\nentries:\n  - {id: 1, name: A, raw: \"%s%x\\x1b[31m\\u009b%\"}\n");
  write("entries.jsonl", "{\"id\":1}\n");
  const CommandResult result = run("$QZLOG render --definitions std.yaml entries.jsonl");
  EXPECT_EQ(result.err,
            "entries.jsonl:1: error: <QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  unable to "
            "find attribute value for \"x\\u001B[31m\\u009B\"! [no-message]\n" +
                shown_line(1, R"({"id":1})") + one_line_passed_over("no-message", "entries.jsonl:1"));
}

TEST_F(RenderErrors, RecordCutOff_IsReportedAndTheOthersAreRendered) {
  write("entries.jsonl", "{\"id\":1006}\n{\"id\":1007}\n{\"id\":1006}\n");
  const CommandResult result =
      run("$QZLOG compile storage.yaml --strip -o - | head -c -4 >storage.ldf; "
          "$QZLOG render --definitions storage.ldf entries.jsonl");
  EXPECT_EQ(result.out, "first\\nsecond\\rthird\nfirst\\nsecond\\rthird\n");
  EXPECT_EQ(
      result.err,
      "entries.jsonl:2:7: error: entry ID 1007: <QZX_logging_invalid_definition> Unable to access definition file "
      "successfully. [bad-definition-file]\n" +
          shown_line(2, R"({"id":1007})", 7) + one_line_passed_over("bad-definition-file", "entries.jsonl:2"));
  EXPECT_EQ(result.status, 1);
}

// What keeps the command from starting: nothing is rendered then.
struct Refusal {
  const char* name;
  const char* arguments;
  int status;
  const char* error;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

const Refusal kRefusals[] = {
    {"MissingDefinitions", "--definitions none.ldf entries.jsonl", 2,
     "qzlog: error: cannot open 'none.ldf': No such file or directory\n"},
    {"MissingAuxiliary", "--definitions storage.yaml --aux none.yaml entries.jsonl", 2,
     "qzlog: error: cannot open 'none.yaml': No such file or directory\n"},
    {"MissingEntries", "--definitions storage.yaml none.jsonl", 2,
     "qzlog: error: cannot open 'none.jsonl': No such file or directory\n"},
    {"FolderAsDefinitions", "--definitions . entries.jsonl", 2, "qzlog: error: cannot read '.': Is a directory\n"},
    {"StandardInputTwice", "--definitions -", 2, "qzlog: error: standard input can be read for one file only\n"},
    {"DamagedDefinitions", "--definitions damaged.ldf entries.jsonl", 1,
     "damaged.ldf: error: <QZX_logging_invalid_definition> Unable to access definition file successfully. "
     "[bad-definition-file]\n"},
    {"WrongSource", "--definitions wrong.yaml entries.jsonl", 1, nullptr},
    {"CodePage", "--definitions storage.yaml --code-page nonsense entries.jsonl", 2,
     "qzlog: error: no converter for the code page 'nonsense'\n"},
    {"WideCodePage", "--definitions storage.yaml --code-page UTF-16 entries.jsonl", 2,
     "qzlog: error: the code page 'UTF-16' cannot be used for lines of text: its line ends, letters and digits are not "
     "those of ASCII\n"},
    {"Locale", "--definitions storage.yaml --locale xx_XX entries.jsonl", 2, nullptr},
    {"CatalogFolderMissing", "--definitions storage.yaml --catalog none entries.jsonl", 2, nullptr},
    {"CatalogWithoutIcu", "--definitions storage.yaml --catalog . --no-icu entries.jsonl", 2, nullptr},
    {"CatalogWithoutBundle", "--definitions storage.yaml --catalog . entries.jsonl", 2, nullptr},
};

class RenderRefusal : public RenderFixture, public ::testing::WithParamInterface<Refusal> {};

TEST_P(RenderRefusal, Start_IsRefusedWithStatusAndReason) {
  write("entries.jsonl", "{\"id\":1006}\n");
  write("damaged.ldf", ".LDF");
  write("wrong.yaml", "version: \"1.0\"\nentries: [{id: 1, name: a}]\n");
  const CommandResult result = run(std::string("$QZLOG render ") + GetParam().arguments);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.status, GetParam().status);
  if (GetParam().error != nullptr) {
    EXPECT_EQ(result.err, GetParam().error);
  } else {
    EXPECT_NE(result.err, "");
  }
}

INSTANTIATE_TEST_SUITE_P(Table, RenderRefusal, ::testing::ValuesIn(kRefusals),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_F(RenderErrors, FormatWithoutAField_IsRemarkedOn) {
  const CommandResult result = render("{\"id\":1006}\n", "--format json");
  EXPECT_EQ(result.out, "json\n");
  EXPECT_EQ(result.err,
            "qzlog: --format: no field stands in it in braces: all lines are the same; forms such as json are asked "
            "for by --output\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(render("{\"id\":1006}\n", "--format 'json {id}'").err, "");
}

TEST_F(RenderErrors, UnknownLocale_IsRefusedWithASuggestion) {
  constexpr const char* kUsage = "Run 'qzlog --help' or 'qzlog COMMAND --help' for the usage.\n";
  EXPECT_EQ(render("", "--locale xx_XX").err,
            std::string("qzlog: error: --locale: unknown locale 'xx_XX'; locales are called as in de_AT or zh-Hant\n") +
                kUsage);
  EXPECT_EQ(render("", "--locale xx_XX").status, 2);
}

TEST_F(RenderErrors, WrongSource_ShowsTheCompilersDiagnostics) {
  write("storage.yaml", "version: \"1.0\"\nentries: [{id: 1, name: a, message: x}]\n");
  const CommandResult result = render("{\"id\":1}");
  EXPECT_EQ(result.err,
            "storage.yaml:2:25: error: bad entry name 'a' [bad-entry-name]\n"
            "    2 | entries: [{id: 1, name: a, message: x}]\n"
            "      |                         ^\n"
            "  hint: a name begins with A-Z and goes on with A-Z, 0-9 and _\n");
  EXPECT_EQ(result.status, 1);
}

}  // namespace
