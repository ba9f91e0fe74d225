#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandResult;

constexpr const char* kGlobals =
    "version: \"1.0\"\nglobals:\n  - {name: TIMEZONE_DIFFERENCE, type: SInt2}\n"
    "  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}\nentries:\n";

class RenderMerge : public qzlog_test::CommandFixture {
 protected:
  RenderMerge() {
    write("d.yaml",
          std::string(kGlobals) + "  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
    write("e.yaml", std::string(kGlobals) +
                        "  - {id: 1, name: T, message: \"text {N}\", attributes: [{name: N, type: Char32}]}\n"
                        "  - {id: 2, name: U, message: other}\n");
  }

  static std::string at(int minute, int number) {
    return R"({"id":1,"level":3,"time":"2026-11-21T08:)" + std::to_string(minute) + R"(:00Z","attributes":{"N":)" +
           std::to_string(number) + "}}\n";
  }
  CommandResult render(const std::string& arguments) const {
    return run("$QZLOG render --definitions d.yaml " + arguments);
  }
};

TEST_F(RenderMerge, LinesOfSeveralInputs_ComeByTime) {
  std::filesystem::create_directory(folder_.path("logs"));
  write("logs/s.20261121.0001", at(10, 1) + at(20, 2));
  write("logs/s.20261121.0002", at(15, 3) + at(40, 4));
  write("logs/t.20261121.0001", at(12, 5));
  write("logs/u.jsonl", at(20, 6));
  write("v.jsonl", at(11, 7) + at(45, 8));
  EXPECT_EQ(render("--merge-by-time logs - <v.jsonl").out, "1\n7\n5\n2\n3\n6\n4\n8\n");
  EXPECT_EQ(render("logs v.jsonl").out, "1\n2\n3\n4\n5\n6\n7\n8\n");
}

TEST_F(RenderMerge, ByTime_ChoicesAreThoseOfTheWholeLog) {
  write("a.jsonl", at(10, 1) + at(30, 3) + at(50, 5));
  write("b.jsonl", at(20, 2) + at(40, 4));
  EXPECT_EQ(render("--merge-by-time --head 3 a.jsonl b.jsonl").out, "1\n2\n3\n");
  EXPECT_EQ(render("--merge-by-time --tail 2 a.jsonl b.jsonl").out, "4\n5\n");
  EXPECT_EQ(render("--merge-by-time --where 'N > 1 and N != 3' a.jsonl b.jsonl").out, "2\n4\n5\n");
  EXPECT_EQ(render("--merge-by-time --since 2026-11-21T08:30:00Z a.jsonl b.jsonl").out, "3\n4\n5\n");
  EXPECT_EQ(render("--merge-by-time --format '{file}:{line} {N}' a.jsonl b.jsonl").out,
            "a.jsonl:1 1\nb.jsonl:1 2\na.jsonl:2 3\nb.jsonl:2 4\na.jsonl:3 5\n");
}

TEST_F(RenderMerge, WhatCannotBeRead_IsToldAndTheRestIsRendered) {
  write("a.jsonl", at(10, 1));
  const CommandResult result = render("--merge-by-time none a.jsonl ./");
  EXPECT_EQ(result.out, "1\n1\n");
  EXPECT_EQ(result.err, "qzlog: error: cannot open 'none': No such file or directory\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderMerge, ByTime_NothingIsFollowed) {
  const CommandResult result = render("--merge-by-time --follow a.jsonl");
  EXPECT_EQ(result.err, "qzlog: error: --merge-by-time takes logs that have an end: leave out --follow\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(RenderMerge, SeveralDefinitions_AreTakenAsLinesNameThem) {
  write("a.jsonl", at(10, 1) + R"({"definitions":"0123456789abcdef","id":1,"level":3,"attributes":{"N":7}})" + "\n" +
                       R"({"id":2,"level":3,"attributes":{}})" + "\n" + R"({"id":"T","attributes":{"N":"x"}})");
  for (const char* const options : {"", "--merge-by-time ", "--tail 9 "}) {
    const CommandResult result = render("--definitions e.yaml " + std::string(options) + "a.jsonl");
    EXPECT_EQ(result.out, "1\n7\nother\ntext x\n") << options;
    EXPECT_EQ(result.err,
              "qzlog: warning: lines name no definitions, and the ID 1 has several: the first that have their IDs are "
              "used\n"
              "qzlog: warning: lines name the definitions 0123456789abcdef, which are not given: the first that have "
              "their IDs are used\n");
    EXPECT_EQ(result.status, 0);
  }
}

TEST_F(RenderMerge, SeveralDefinitions_AreAllKnownToChoicesAndFields) {
  write("a.jsonl", at(10, 1) + R"({"id":2,"level":3,"attributes":{}})" + "\n");
  EXPECT_EQ(render("--definitions e.yaml --name U --format '{name} {message}' a.jsonl").out, "U other\n");
  EXPECT_EQ(render("--definitions e.yaml --where 'N = 1' a.jsonl").err.find("error: "), std::string::npos);
}

TEST_F(RenderMerge, SecondAuxiliaryFileOfOneDefinition_IsWrongUsage) {
  const CommandResult result = render("--aux x.yaml --aux y.yaml a.jsonl");
  EXPECT_NE(result.err.find("'d.yaml' has 'x.yaml' already"), std::string::npos) << result.err;
  EXPECT_EQ(result.status, 2);
}

}  // namespace
