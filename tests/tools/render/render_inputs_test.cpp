#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

/// Lines whose messages are their numbers.
class RenderInputs : public qzlog_test::CommandFixture {
 protected:
  RenderInputs() {
    write("d.yaml",
          "version: \"1.0\"\nentries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    std::filesystem::create_directory(folder_.path("logs"));
  }

  static std::string entry(int number) { return R"({"id":1,"attributes":{"N":)" + std::to_string(number) + "}}\n"; }
  static std::string numbered(const std::string& writer, int seq) {
    return R"({"writer":")" + writer + R"(","seq":)" + std::to_string(seq) + R"(,"id":1,"attributes":{"N":)" +
           std::to_string(seq) + "}}\n";
  }
  CommandResult render(const std::string& arguments) const {
    return run("$QZLOG render --no-icu --definitions d.yaml " + arguments);
  }
};

TEST_F(RenderInputs, SeveralFiles_AreRenderedInTheOrderGiven) {
  write("b.jsonl", entry(1) + entry(2));
  write("a.jsonl", entry(3));
  write("c.jsonl", entry(4));
  const CommandResult result = run("$QZLOG render --definitions d.yaml b.jsonl - a.jsonl <c.jsonl");
  EXPECT_EQ(result.out, "1\n2\n4\n3\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderInputs, LastLineWithoutItsEnd_EndsWithItsFile) {
  write("a.jsonl", R"({"id":1,"attributes":{"N":1}})");
  write("b.jsonl", R"({"id":1,"attr)");
  write("c.jsonl", entry(3));
  const CommandResult result = render("a.jsonl b.jsonl c.jsonl b.jsonl");
  EXPECT_EQ(result.out, "1\n3\n");
  const std::string torn =
      "b.jsonl:1:14: error: the last line breaks off: it is not written whole [torn-line]\n"
      "    1 | {\"id\":1,\"attr\n"
      "      |              ^\n";
  EXPECT_EQ(result.err, torn + torn + "qzlog: error: 2 lines passed over (2 torn-line); the first at b.jsonl:1\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderInputs, TornLineOfAnOlderFile_IsToldApartFromADamagedOne) {
  write("logs/s.20261121.0001", entry(1) + R"({"id":1,"attr)");
  write("logs/s.20261121.0002", R"({"id":1,"attr)"
                                "\n" +
                                    entry(2));
  const CommandResult result = render("logs/s 2>&1 | grep error");
  EXPECT_EQ(result.out,
            "logs/s.20261121.0001:2:14: error: the last line breaks off: it is not written whole [torn-line]\n"
            "logs/s.20261121.0002:1:14: error: not valid JSON: a text has no end [bad-json]\n"
            "qzlog: error: 2 lines passed over (1 torn-line, 1 bad-json); the first at logs/s.20261121.0001:2\n");
}

TEST_F(RenderInputs, FolderAndSeries_AreRenderedInTheirOrder) {
  write("logs/s.20261122.0001", entry(3));
  write("logs/s.20261121.0002", entry(2));
  write("logs/s.20261121.0001", entry(1));
  write("logs/a.jsonl", entry(4));
  write("logs/notes.txt", "nothing");
  EXPECT_EQ(render("logs").out, "1\n2\n3\n4\n");
  EXPECT_EQ(render("logs/s").out, "1\n2\n3\n");
  EXPECT_EQ(run("cd logs && $QZLOG render --definitions ../d.yaml s a.jsonl").out, "1\n2\n3\n4\n");
  EXPECT_EQ(run("cd logs && $QZLOG render --definitions ../d.yaml .").out, "1\n2\n3\n4\n");
}

TEST_F(RenderInputs, ErrorsNameTheirFiles) {
  write("logs/s.20261121.0001", entry(1) + "x\n");
  write("a.jsonl", "\n{}\n");
  const CommandResult result = render("logs a.jsonl");
  EXPECT_EQ(result.err,
            "logs/s.20261121.0001:2:1: error: not valid JSON: a value has to be a text, a number, an array, an object, "
            "true, false or null [bad-json]\n"
            "    2 | x\n"
            "      | ^\n"
            "a.jsonl:2: error: the entry has no 'id' [missing-id]\n"
            "    2 | {}\n"
            "      | ^\n"
            "qzlog: error: 2 lines passed over (1 bad-json, 1 missing-id); the first at logs/s.20261121.0001:2\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderInputs, WhatCannotBeRead_IsReportedAndTheOthersAreRendered) {
  write("a.jsonl", entry(1) + "{}\n");
  write("b.jsonl", entry(2));
  std::filesystem::create_directory(folder_.path("empty"));
  const CommandResult result = render("--level-low 0 none.jsonl a.jsonl logs/s empty b.jsonl");
  EXPECT_EQ(result.out, "1\n2\n");
  EXPECT_EQ(result.err,
            "qzlog: error: cannot open 'none.jsonl': No such file or directory\n"
            "a.jsonl:2: error: the entry has no 'id' [missing-id]\n"
            "    2 | {}\n"
            "      | ^\n"
            "qzlog: error: cannot open 'logs/s': No such file or directory\n"
            "qzlog: error: the folder 'empty' has no log: neither files PREFIX.YYYYMMDD.NNNN nor *.jsonl\n"
            "entries: 3 read, 2 passed, 0 refused, 1 wrong\n"
            "qzlog: error: 1 line passed over (1 missing-id); the first at a.jsonl:2\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderInputs, FileThatFailsWhileItIsRead_IsReportedAndTheOthersAreRendered) {
  write("b.jsonl", entry(2));
  // Reading the process's own memory from its beginning is an error.
  const CommandResult result = render("/proc/self/mem b.jsonl");
  EXPECT_EQ(result.out, "2\n");
  EXPECT_EQ(result.err, "qzlog: error: cannot read '/proc/self/mem': Input/output error\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderInputs, OutputThatFails_EndsTheCommand) {
  write("a.jsonl", entry(1));
  const CommandResult result = render("a.jsonl none a.jsonl >/dev/full");
  EXPECT_EQ(result.err, "qzlog: error: cannot write to standard output: No space left on device\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderInputs, StandardInputTwice_IsRefused) {
  const CommandResult result = render("- -");
  EXPECT_EQ(result.err, "qzlog: error: standard input can be read for one file only\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderInputs, OptionsCountOverAllInputs) {
  write("a.jsonl", R"({"id":1,"level":5,"attributes":{"N":1}})"
                   "\n" +
                       entry(2));
  write("b.jsonl", R"({"id":1,"level":5,"attributes":{"N":3}})"
                   "\n");
  const CommandResult result = render("--level-low 5 --count events a.jsonl b.jsonl");
  EXPECT_EQ(result.out, "1\n3\n");
  EXPECT_EQ(result.err, "entries: 3 read, 2 passed, 1 refused\n");
  EXPECT_NE(run("$QZLOG count show events").out.find(" 2"), std::string::npos);
}

TEST_F(RenderInputs, HeldEntries_AreShown) {
  write(
      "a.jsonl",
      R"({"held":[{"id":1001,"level":3,"count":990,"since":"2026-11-21T08:15:30.250000000Z"},{"id":7,"level":0,"count":1}]})"
      "\n");
  const CommandResult result = render("--level-high 5 a.jsonl");
  EXPECT_EQ(result.out,
            "held back: 990 of entry ID 1001, level 3, since 2026-11-21T08:15:30.250000000Z; 1 of entry ID 7, level "
            "0\n");
  EXPECT_EQ(result.err, "entries: 0 read, 0 passed, 0 refused\n");
}

class RenderGaps : public RenderInputs {};

TEST_F(RenderGaps, WholeLog_HasNoFinding) {
  write("logs/s.20261121.0001", numbered("h/1/1", 1) + numbered("h/2/1", 1) + numbered("h/1/1", 2));
  write("logs/s.20261121.0002", numbered("h/2/1", 2) +
                                    R"({"writer":"h/1/1","seq":3,"lost":[]})"
                                    "\n" +
                                    R"({"writer":"h/1/1","seq":4,"held":[]})"
                                    "\n" +
                                    numbered("h/1/1", 5));
  const CommandResult result = render("--check-gaps logs");
  EXPECT_EQ(result.err, "seq: 7 lines of 2 writers, 0 missing, 0 doubled\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderGaps, MissingAndDoubledLines_AreFindings) {
  write("logs/s.20261121.0001", numbered("h/1/1", 1) + numbered("h/1/1", 1));
  write("logs/s.20261121.0002", entry(7) + numbered("h/1/1", 5) + numbered("h/2/1", 3));
  write("logs/s.20261121.0003", numbered("h/2/1", 5) + numbered("h/1/1", 4));
  const CommandResult result = render("--check-gaps --level-low 0 logs");
  EXPECT_EQ(result.out, "1\n1\n7\n5\n3\n5\n4\n");
  EXPECT_EQ(result.err,
            "logs/s.20261121.0001:2: error: the writer h/1/1 has a line with this seq already: 1 [doubled-line]\n"
            "    2 | {\"writer\":\"h/1/1\",\"seq\":1,\"id\":1,\"attributes\":{\"N\":1}}\n"
            "      | ^\n"
            "logs/s.20261121.0003:1: error: 1 line of the writer h/2/1 is missing before this one: seq 4 "
            "[missing-lines]\n"
            "logs/s.20261121.0003:2: error: 2 lines of the writer h/1/1 are missing before this one: seq 2 to 3 "
            "[missing-lines]\n"
            "entries: 7 read, 7 passed, 0 refused\n"
            "seq: 6 lines of 2 writers, 3 missing, 1 doubled; 1 writer whose first lines are in no file; 1 line "
            "without writer and seq\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(RenderGaps, LinesThatALaterOpenWrites_AreNotMissing) {
  write("a.jsonl", numbered("h/1/1", 1) + numbered("h/1/1", 4) + numbered("h/2/1", 1) + numbered("h/1/1", 2) +
                       numbered("h/1/1", 3));
  EXPECT_EQ(render("--check-gaps a.jsonl").status, 0);
}

TEST_F(RenderGaps, LineThatIsWrongButWhole_IsNotMissing) {
  write("a.jsonl", numbered("h/1/1", 1) +
                       R"({"writer":"h/1/1","seq":2,"id":99})"
                       "\n" +
                       numbered("h/1/1", 3) +
                       R"({"writer":"h/1/1","seq":4,"id")"
                       "\n" +
                       numbered("h/1/1", 4));
  const CommandResult result = render("--check-gaps a.jsonl");
  EXPECT_EQ(result.err.find("missing-lines"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("\nseq: 4 lines of 1 writer, 0 missing, 0 doubled\n"), std::string::npos) << result.err;
}

TEST_F(RenderGaps, WithoutTheOption_NumbersDoNotMatter) {
  write("a.jsonl", numbered("h/1/1", 1) + numbered("h/1/1", 1) + numbered("h/1/1", 7));
  const CommandResult result = render("a.jsonl");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
