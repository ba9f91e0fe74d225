// What is the same for all commands that read definitions: where these may come from, and how mistakes are told.
#include <gtest/gtest.h>

#include <string>

#include "tests/tools/command_fixture.h"

namespace {

using qzlog_test::CommandFixture;
using qzlog_test::CommandResult;

constexpr const char* kStandard =
    "version: \"2.5\"\nentries:\n  - {id: 7, name: FULL, message: \"full\", message_id: full}\n";
constexpr const char* kAuxiliary =
    "version: \"1.0\"\nentries:\n  - {id: 8, name: EMPTY, message: \"empty\", message_id: empty}\n";

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

class DefinitionCommands : public CommandFixture {
 protected:
  DefinitionCommands() {
    write("s.yaml", kStandard);
    write("a.yaml", kAuxiliary);
    write("e.jsonl", "{\"id\":7}\n{\"id\":8}\n");
    EXPECT_EQ(run("$QZLOG compile s.yaml -o s.ldf && $QZLOG compile a.yaml -o a.ldf --aux-of s.yaml && "
                  "$QZLOG render --definitions s.yaml --aux a.yaml --count c e.jsonl")
                  .status,
              0);
  }
};

/// "@" stands before each path of definitions.
const char* const kLines[] = {
    "compile @s.yaml -o -",
    "compile @a.yaml --aux-of @s.yaml -o -",
    "compile @a.yaml --aux-of @s.ldf -o -",
    "compile @s.yaml --merge @a.yaml -o -",
    "compile @s.yaml --emit-json",
    "inspect @s.ldf",
    "inspect @a.ldf --yaml --aux-of @s.yaml",
    "inspect @a.ldf --yaml --aux-of @s.ldf",
    "diff @s.ldf @s.yaml --aux @a.ldf",
    "diff @a.yaml @a.ldf --aux-of @s.yaml",
    "check @s.ldf @a.ldf",
    "check @s.yaml @a.yaml",
    "explain 8 --definitions @s.ldf --aux @a.yaml",
    "explain EMPTY --definitions @s.yaml --aux @a.yaml",
    "catalog extract @s.yaml @a.yaml -o -",
    "render --definitions @s.ldf --aux @a.ldf e.jsonl",
    "render --definitions @s.yaml --aux @a.yaml e.jsonl",
    "render --definitions @s.ldf --aux @a.yaml e.jsonl",
    "count show c.cnt --definitions @s.yaml",
    "count add c --key FULL --definitions @s.yaml",
};

/// A repository with all of them committed, and a folder inside without definitions.
class CommittedDefinitions : public DefinitionCommands {
 protected:
  CommittedDefinitions() {
    EXPECT_EQ(run("git init --quiet && git add . && git -c user.name=Test -c user.email=test@example.com "
                  "-c commit.gpgsign=false commit --quiet --message=First && mkdir work && cp e.jsonl c.cnt work")
                  .status,
              0);
  }
};

TEST_F(CommittedDefinitions, ObjectOfGit_IsNoFileToDependOn) {
  EXPECT_EQ(run("$QZLOG compile a.yaml --aux-of git:HEAD:s.yaml -o out.ldf --depfile out.d").status, 0);
  EXPECT_EQ(read("out.d"), "out.ldf: \\\n  a.yaml\n");
}

// The library opens files by their names; it must not find another one.
TEST_F(CommittedDefinitions, FileNamedAsTheObject_IsNotTaken) {
  write("git:HEAD:s.ldf", "no definitions");
  EXPECT_EQ(run("$QZLOG render --definitions git:HEAD:s.ldf e.jsonl").out, "full\n");
  EXPECT_EQ(run("$QZLOG render --definitions ./git:HEAD:s.ldf e.jsonl").status, 1);
}

TEST_F(CommittedDefinitions, ObjectOfGit_IsReadAsTheFileIs) {
  for (const std::string line : kLines) {
    const CommandResult from_file = run("$QZLOG " + replaced(line, "@", ""));
    EXPECT_EQ(from_file.status, 0) << line << from_file.err;
    const CommandResult from_git = run("cd work && $QZLOG " + replaced(line, "@", "git:HEAD:"));
    EXPECT_EQ(from_git.status, from_file.status) << line;
    EXPECT_EQ(replaced(from_git.out, "git:HEAD:", ""), from_file.out) << line;
    EXPECT_EQ(from_git.err, from_file.err) << line;
  }
}

/// A line whose last path of definitions is left open.
struct OpenLine {
  std::string before;
  std::string path;
  std::string after;

  explicit OpenLine(const std::string& line) {
    const std::size_t begin = line.rfind('@');
    const std::size_t end = line.find(' ', begin);
    before = "$QZLOG " + replaced(line.substr(0, begin), "@", "");
    path = line.substr(begin + 1, end - begin - 1);
    after = end == std::string::npos ? "" : line.substr(end);
  }
  std::string with(const std::string& other) const { return before + other + after; }
};

TEST_F(DefinitionCommands, StandardInput_IsReadAsTheFileIs) {
  for (const std::string line : kLines) {
    const OpenLine open(line);
    const CommandResult from_file = run(open.with(open.path));
    const CommandResult piped = run("cat " + open.path + " | " + open.with("-"));
    EXPECT_EQ(piped.status, 0) << line << piped.err;
    EXPECT_EQ(replaced(piped.out, "<stdin>", open.path), from_file.out) << line;
    EXPECT_EQ(piped.err, from_file.err) << line;
  }
}

TEST_F(DefinitionCommands, UnreadableFile_IsToldTheSameWayByAll) {
  for (const std::string line : kLines) {
    const OpenLine open(line);
    const CommandResult missing = run(open.with("none.yaml"));
    EXPECT_EQ(missing.err, "qzlog: error: cannot open 'none.yaml': No such file or directory\n") << line;
    EXPECT_EQ(missing.status, 2) << line;
    EXPECT_EQ(run(open.with(".")).err, "qzlog: error: cannot read '.': Is a directory\n") << line;
    EXPECT_EQ(run(open.with("git:HEAD")).err, "qzlog: error: 'git:HEAD' lacks a path; write git:REV:PATH\n") << line;
  }
}

TEST_F(DefinitionCommands, CompiledFileForASource_IsToldTheSameWayByAll) {
  for (const std::string line : {
           "compile s.ldf -o -",
           "compile s.yaml --merge s.ldf -o -",
           "catalog extract s.ldf -o -",
           "catalog extract s.yaml s.ldf -o -",
           "catalog status s.ldf --po .",
       }) {
    const CommandResult result = run("$QZLOG " + line);
    EXPECT_EQ(result.err, "qzlog: error: 's.ldf' is a compiled definition file; give its source\n") << line;
    EXPECT_EQ(result.out, "") << line;
    EXPECT_EQ(result.status, 2) << line;
  }
}

TEST_F(DefinitionCommands, CompiledFileWhereNamesAreWanted_HasToHaveThem) {
  ASSERT_EQ(run("$QZLOG compile s.yaml -o stripped.ldf --strip").status, 0);
  for (const std::string line : {"count show c.cnt --definitions ", "count add c --key FULL --definitions "}) {
    EXPECT_EQ(run("$QZLOG " + line + "s.ldf").status, 0) << line;
    const CommandResult result = run("$QZLOG " + line + "stripped.ldf");
    EXPECT_EQ(result.err, "qzlog: error: 'stripped.ldf' has no names; give its source\n") << line;
    EXPECT_EQ(result.out, "") << line;
    EXPECT_EQ(result.status, 2) << line;
  }
}

// Before anything is read: the input of these never ends.
TEST_F(DefinitionCommands, StandardInputForTwo_IsToldTheSameWayByAll) {
  ASSERT_EQ(run("mkfifo endless").status, 0);
  for (const std::string line : {
           "compile - --aux-of - -o -",
           "compile - --merge - -o -",
           "inspect - --yaml --aux-of -",
           "diff - -",
           "diff s.yaml - --accept -",
           "diff s.yaml s.yaml --aux - --aux -",
           "diff a.yaml - --aux-of -",
           "check - -",
           "explain 7 --definitions - --aux -",
           "catalog extract - - -o -",
           "catalog build - --po - -o out",
           "catalog status s.yaml --po - -",
           "render --definitions -",
           "render --definitions s.yaml --aux -",
           "render --definitions s.yaml --config - -",
           "render --definitions - --config - e.jsonl",
           "render --definitions - --aux - e.jsonl",
           "count show - --definitions -",
       }) {
    const CommandResult result = run("exec 3<>endless && $QZLOG " + line + " <&3");
    EXPECT_EQ(result.err, "qzlog: error: standard input can be read for one file only\n") << line;
    EXPECT_EQ(result.out, "") << line;
    EXPECT_EQ(result.status, 2) << line;
  }
}

}  // namespace
