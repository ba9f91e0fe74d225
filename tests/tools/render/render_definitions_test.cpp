// Several --definitions: each line is read against those whose digest it names.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/seeded_random.h"
#include "tests/tools/command_fixture.h"
#include "tests/tools/pseudo_terminal.h"

namespace {

using qzlog_test::CommandResult;

constexpr const char* kHead =
    "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
    "globals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n  - {name: DAYLIGHT_SAVING_ACTIVE, type: "
    "Bool}\nentries:\n";

class RenderDefinitions : public qzlog_test::CommandFixture {
 protected:
  RenderDefinitions() {
    write("a.yaml", std::string(kHead) +
                        "  - {id: 1, name: DISK, message: \"a {N}\", attributes: [{name: N, type: UInt4}]}\n"
                        "  - {id: 2, name: ONLY_A, message: \"only a\"}\n");
    write("b.yaml", std::string(kHead) +
                        "  - {id: 1, name: DISK, message: \"b {N}\", attributes: [{name: N, type: UInt1}]}\n"
                        "  - {id: 3, name: ONLY_B, message: \"only b\"}\n");
    write("x.yaml",
          "version: \"1.0\"\nentries:\n"
          "  - {id: 4, name: OF_X, message: \"of x {M}\", attributes: [{name: M, type: Char32}]}\n");
    const CommandResult compiled =
        run("for name in a b; do $QZLOG compile $name.yaml -o $name.ldf; done; $QZLOG compile x.yaml -o x.ldf --aux-of "
            "a.ldf");
    EXPECT_EQ(compiled.status, 0) << compiled.err;
    // That of the file without its names, as sha256sum(1) has it.
    const auto digest = [this](const std::string& name, const std::string& options) {
      return run("$QZLOG compile --strip " + name + ".yaml " + options +
                 " -o stripped.ldf && sha256sum <stripped.ldf | "
                 "cut -c1-16 | tr -d '\\n'")
          .out;
    };
    a_ = digest("a", "");
    b_ = digest("b", "");
    ax_ = a_ + '+' + digest("x", "--aux-of a.ldf");
    EXPECT_EQ(ax_.size(), 33u);
    EXPECT_NE(a_, b_);
  }

  static std::string line(const std::string& definitions, int id, const std::string& attributes, int minute = 0) {
    return (definitions.empty() ? "{" : R"({"definitions":")" + definitions + "\",") + R"("id":)" + std::to_string(id) +
           R"(,"level":3,"time":"2026-11-21T08:)" + (minute < 10 ? "0" : "") + std::to_string(minute) +
           R"(:00Z","attributes":{)" + attributes + "}}\n";
  }
  CommandResult render(const std::string& arguments) const {
    return run("$QZLOG render --definitions a.ldf --definitions b.ldf " + arguments);
  }

  std::string a_;
  std::string b_;
  std::string ax_;
};

TEST_F(RenderDefinitions, LinesThatNameThem_AreReadAgainstThem) {
  write("e.jsonl", line(a_, 1, R"("N":1)") + line(b_, 1, R"("N":2)") + line("", 1, R"("N":3)") + line(b_, 3, "") +
                       line(a_, 2, "") + line("", 3, "") + line("", 2, "") + line(b_, 1, R"("N":4)"));
  const CommandResult result = render("e.jsonl");
  EXPECT_EQ(result.out, "a 1\nb 2\na 3\nonly b\nonly a\nonly b\nonly a\nb 4\n");
  EXPECT_EQ(result.err,
            "qzlog: warning: lines name no definitions, and the ID 1 has several: the first that have their IDs are "
            "used\n");
  EXPECT_EQ(result.status, 0);
  // Sources are what is compiled of them, and the order decides only where lines name none.
  EXPECT_EQ(run("$QZLOG render --definitions b.yaml --definitions a.yaml e.jsonl").out,
            "a 1\nb 2\nb 3\nonly b\nonly a\nonly b\nonly a\nb 4\n");
}

TEST_F(RenderDefinitions, EventsOfOneId_HaveTheNamesOfTheirDefinitions) {
  write("n.yaml", std::string(kHead) +
                      "  - {id: 1, name: OTHER, summary: Something else., mask: 2, message: other}\n"
                      "  - {id: 9, message: nameless, name: NINE}\n");
  const std::string digest =
      run("$QZLOG compile --strip n.yaml -o n.ldf && sha256sum <n.ldf | cut -c1-16 | tr -d '\\n'").out;
  write("e.jsonl", line(a_, 1, R"("N":1)") + line(digest, 1, "") + line(digest, 9, ""));
  const auto render_both = [this](const std::string& options) {
    return run("$QZLOG render --definitions a.ldf --definitions n.yaml " + options + " e.jsonl").out;
  };
  EXPECT_EQ(render_both("--format '{name} {summary} {message}'"),
            "DISK - a 1\nOTHER Something else. other\nNINE - nameless\n");
  EXPECT_NE(render_both("--output json").find(R"("name":"OTHER","message":"other")"), std::string::npos);
  EXPECT_EQ(render_both("--name 'OTH*'"), "other\n");
  EXPECT_EQ(render_both("--where '@name != \"OTHER\"'"), "a 1\nnameless\n");
  EXPECT_EQ(render_both("--where '@name = \"DISK\"'"), "a 1\n");
  EXPECT_EQ(render_both("--where '@mask = 2'"), "other\n");
  EXPECT_EQ(run("$QZLOG stats --definitions a.ldf --definitions n.yaml --csv e.jsonl | cut -d, -f1-3").out,
            "id,name,count\n1,DISK,1\n9,NINE,1\n1,OTHER,1\n");
}

TEST_F(RenderDefinitions, LineThatTheNamedOnesDoNotHave_IsWrong) {
  write("e.jsonl", line(a_, 3, "") + line(b_, 2, "") + line(b_, 1, R"("N":256)") + line(a_, 1, R"("N":256)"));
  const CommandResult result = render("e.jsonl");
  EXPECT_EQ(result.out, "a 256\n");
  EXPECT_NE(result.err.find("e.jsonl:1:40: error: entry ID 3: "), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("e.jsonl:2:40: error: entry ID 2: "), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("e.jsonl:3:100: error: attribute 'N': 256 does not fit UInt1 (0 to 255) [out-of-range]"),
            std::string::npos)
      << result.err;
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderDefinitions, AuxiliaryFile_BelongsToTheDefinitionsBeforeIt) {
  write("e.jsonl",
        line(ax_, 4, R"("M":"x")") + line(b_, 1, R"("N":1)") + line(ax_, 1, R"("N":2)") + line("", 4, R"("M":"y")"));
  const CommandResult result = run("$QZLOG render --definitions b.ldf --definitions a.ldf --aux x.ldf e.jsonl");
  EXPECT_EQ(result.out, "of x x\nb 1\na 2\nof x y\n");
  EXPECT_EQ(result.err, "");
  // Of another pair with the same beginning nothing is known.
  write("other.jsonl", line(a_, 1, R"("N":1)"));
  EXPECT_EQ(run("$QZLOG render --definitions b.ldf --definitions a.ldf --aux x.ldf other.jsonl").err,
            "qzlog: warning: lines name the definitions " + a_ +
                ", which are not given: the first that have their IDs are used\n");
}

TEST_F(RenderDefinitions, UnknownDigests_AreEachToldOnce) {
  std::string text;
  for (int round = 0; round < 3; ++round) {
    text += line("0123456789abcdef", 1, R"("N":1)") + line(b_, 1, R"("N":2)") + line("fedcba9876543210", 3, "");
  }
  write("e.jsonl", text);
  const CommandResult result = render("e.jsonl");
  EXPECT_EQ(result.out, "a 1\nb 2\nonly b\na 1\nb 2\nonly b\na 1\nb 2\nonly b\n");
  const std::string rest = ", which are not given: the first that have their IDs are used\n";
  EXPECT_EQ(result.err, "qzlog: warning: lines name the definitions 0123456789abcdef" + rest +
                            "qzlog: warning: lines name the definitions fedcba9876543210" + rest);
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderDefinitions, HostileDigest_IsEscapedOnATerminal) {
  write("e.jsonl", line("\\u001b]0;x\\u0007", 1, R"("N":1)"));
  const std::string shown =
      qzlog_test::run_on_terminal(folder_.path(), "$QZLOG render --definitions a.ldf --definitions b.ldf e.jsonl")
          .shown;
  EXPECT_EQ(shown.find('\a'), std::string::npos) << shown;
  EXPECT_EQ(shown.find("\033]"), std::string::npos) << shown;
}

TEST_F(RenderDefinitions, Stats_CountLinesByTheDefinitionsThatTheyName) {
  std::string text;
  for (const int number : {7, 9, 300}) {
    text += line(a_, 1, R"("N":)" + std::to_string(number)) + line(b_, 1, R"("N":)" + std::to_string(number));
  }
  write("e.jsonl", text + line(b_, 3, "") + line(a_, 2, "") + line(a_, 3, ""));
  const CommandResult result = run("$QZLOG stats --definitions a.ldf --definitions b.ldf --of N --json e.jsonl");
  // One value does not fit, and one event is not there.
  EXPECT_EQ(result.status, 1);
  write("made.json", result.out);
  EXPECT_EQ(run("jq -c '.wrong, (.groups[] | [.id, .name, .count, .numbers.maximum])' made.json").out,
            "2\n[1,\"DISK\",5,300]\n[2,\"ONLY_A\",1,null]\n[3,\"ONLY_B\",1,null]\n");
}

// Which definitions a line is read against does not depend on the order, the choice or the form of what is shown.
TEST_F(RenderDefinitions, RandomLines_AreReadAgainstThoseThatTheyName) {
  qz_test::SeededRandom random;
  std::string text;
  std::string all;
  std::string chosen;
  std::string of_b;
  for (int number = 0; number < 200; ++number) {
    const bool is_b = random.one_in(2);
    const std::string seen = std::string(is_b ? "b " : "a ") + std::to_string(number % 100);
    const std::string own = line(is_b ? b_ : a_, 1, R"("N":)" + std::to_string(number % 100), number * 59 / 200);
    text += random.one_in(3) ? "{ " + own.substr(1) : own;
    all += seen + '\n';
    if (number % 100 >= 50) chosen += "DISK " + seen + '\n';
  }
  write("e.jsonl", text);
  EXPECT_EQ(render("e.jsonl").out, all);
  EXPECT_EQ(render("--merge-by-time e.jsonl").out, all);
  EXPECT_EQ(render("--tail 1000 e.jsonl").out, all);
  EXPECT_EQ(render("-f <e.jsonl").out, all);
  EXPECT_EQ(render("--where 'N >= 50' --level 3 --name 'D*' --format '{name} {message}' e.jsonl").out, chosen);
  EXPECT_EQ(render("--output json e.jsonl | jq -r .message").out, all);
  EXPECT_EQ(render("--output json --merge-by-time --where 'N >= 50' e.jsonl | jq -r '\"DISK \" + .message'").out,
            chosen);
}

}  // namespace
