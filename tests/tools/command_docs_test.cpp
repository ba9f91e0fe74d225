#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/command_fixture.h"
#include "tests/tools/command_table.h"
#include "tools/manual/document_page.h"
#include "tools/manual/manual_page.h"
#include "tools/report/source_rules.h"

namespace {

namespace fs = std::filesystem;
using qz_test::read_file;

const fs::path kMade = QZLOG_COMMAND_DOCS;

class CommandDocs : public qzlog_test::CommandFixture {
 protected:
  /// The page as a reader of a wide terminal sees it, without bold and italics.
  std::string shown_page(const std::string& name) const {
    const qzlog_test::CommandResult result =
        run("groff -man -Tutf8 -ww -P-c -P-b -P-u -rLL=500n '" + (kMade / "man1" / name).string() + "'");
    EXPECT_EQ(result.status, 0) << name;
    EXPECT_EQ(result.err, "") << name;
    return result.out;
  }

  static std::vector<fs::path> manual_pages() {
    std::vector<fs::path> pages;
    for (const char* const section : {"man1", "man5", "man7"}) {
      for (const auto& file : fs::directory_iterator(kMade / section)) pages.push_back(file.path());
    }
    return pages;
  }

  const qzlog_tool::CommandNode root_ = qzlog_tool::command_line_tree();
};

void expect_option(const std::string& page, const qzlog_tool::CommandOption& option, const std::string& command) {
  for (const std::string& name : option.names) {
    EXPECT_TRUE(std::regex_search(page, std::regex("\\n {7}(-., )?" + name + "\\b"))) << command << ' ' << name;
  }
  EXPECT_NE(page.find(option.description), std::string::npos) << command << ": " << option.description;
  if (option.takes_value() && !option.positional) {
    EXPECT_NE(page.find(option.names.back() + " " + option.value_name), std::string::npos) << command;
  }
}

TEST_F(CommandDocs, ManualPages_AreThoseOfTheCommands) {
  std::set<std::string> expected;
  for (const auto* const command : all_commands(root_)) expected.insert(manual_page_file_name(*command));
  std::set<std::string> actual;
  for (const auto& file : fs::directory_iterator(kMade / "man1")) actual.insert(file.path().filename());
  EXPECT_EQ(actual, expected);
}

TEST_F(CommandDocs, ManualPagesOfFormatsAndOfTheLibrary_AreThere) {
  for (const auto& page : qzlog_tool::all_document_pages()) {
    const fs::path path = kMade / ("man" + std::to_string(page.section)) / page.file_name();
    EXPECT_GT(read_file(path).size(), 2000U) << path;
  }
}

TEST_F(CommandDocs, EveryManualPage_TellsEnvironmentAndExitStatus) {
  for (const fs::path& page : manual_pages()) {
    const std::string text = read_file(page);
    EXPECT_NE(text.find("\n.SH ENVIRONMENT\n"), std::string::npos) << page;
    EXPECT_NE(text.find("\n.SH EXIT STATUS\n"), std::string::npos) << page;
  }
  EXPECT_NE(shown_page("qzlog-ship.1").find("\n       STATE_DIRECTORY\n"), std::string::npos);
  EXPECT_EQ(shown_page("qzlog-compile.1").find("STATE_DIRECTORY"), std::string::npos);
}

TEST_F(CommandDocs, ManualPages_TellEveryOptionAndSubcommand) {
  for (const auto* const command : all_commands(root_)) {
    const std::string page = shown_page(manual_page_file_name(*command));
    EXPECT_NE(page.find("\n       " + command->name + " "), std::string::npos) << "no synopsis of " << command->name;
    for (const auto& option : command->options) expect_option(page, option, command->name);
    for (const auto& positional : command->positionals) expect_option(page, positional, command->name);
    for (const auto& subcommand : command->subcommands) {
      std::string name = subcommand.name;
      std::replace(name.begin(), name.end(), ' ', '-');
      EXPECT_NE(page.find("\n       " + name + "(1)\n"), std::string::npos) << name;
    }
  }
}

TEST_F(CommandDocs, ManualPages_ShowTheExamplesAsTheyAreTyped) {
  const std::string page = shown_page("qzlog-compile.1");
  EXPECT_NE(page.find("\n         qzlog compile - -o - < storage.yaml > storage.ldf\n"), std::string::npos) << page;
  EXPECT_NE(shown_page("qzlog-render.1").find(R"({"id":1001,"level":3,"time":"2026-11-21T08:15:30Z",)"),
            std::string::npos);
}

/// A date is left out on purpose: pages that are made twice are the same.
TEST_F(CommandDocs, ManualPages_HaveNoFindings) {
  for (const fs::path& page : manual_pages()) {
    const auto lint = run("mandoc -T lint '" + page.string() + "' | grep -v 'WARNING: missing date'");
    EXPECT_EQ(lint.out + lint.err, "");
  }
}

TEST_F(CommandDocs, Completions_KnowTheSameCommands) {
  const std::string bash = read_file(kMade / "bash" / "qzlog");
  const std::string zsh = read_file(kMade / "zsh" / "_qzlog");
  const std::string fish = read_file(kMade / "fish" / "qzlog.fish");
  for (const std::string& name : qzlog_test::command_names()) {
    EXPECT_NE(bash.find("    '" + name + "')\n"), std::string::npos) << name;
    std::string function = name;
    std::replace(function.begin(), function.end(), ' ', '_');
    EXPECT_NE(zsh.find("\n_" + function + "() {\n"), std::string::npos) << name;
    EXPECT_NE(fish.find("\n# " + name + "\n"), std::string::npos) << name;
  }
}

/// The overview is a table whose rows begin with the command: "| [`qzlog compile`](#qzlog-compile) | ...".
TEST_F(CommandDocs, OverviewOfTheDocumentation_ListsTheSameCommands) {
  std::istringstream page(read_file(fs::path(QZLOG_DOCS) / "command.md"));
  std::set<std::string> listed{"qzlog"};
  static const std::regex kRow(R"(^\| \[`(qzlog [a-z -]+)`\]\(#([^)]+)\) \|.*)");
  std::smatch match;
  std::string headings;
  std::vector<std::string> anchors;
  for (std::string line; std::getline(page, line);) {
    if (std::regex_match(line, match, kRow)) {
      listed.insert(match[1]);
      anchors.push_back(match[2]);
    }
    if (line.rfind("## ", 0) == 0) headings += line + "\n";
  }
  EXPECT_EQ(listed, qzlog_test::command_names());
  for (std::string anchor : anchors) {
    std::replace(anchor.begin(), anchor.end(), '-', ' ');
    EXPECT_NE(headings.find("## " + anchor + "\n"), std::string::npos) << anchor;
  }
}

TEST_F(CommandDocs, BeyondTheLimitForFiles_AnErrorAndNoTemporaryFileStays) {
  const auto made =
      run("(ulimit -f 1; '" QZLOG_COMMAND_DOCS_PROGRAM "' limited '" QZLOG_DOCS "' 2>&1; echo \"status $?\") | cat");
  EXPECT_NE(made.out.find("File too large\nstatus 2\n"), std::string::npos) << made.out;
  EXPECT_EQ(run("find limited -name '.qzlog-*'").out, "");
}

TEST_F(CommandDocs, WithoutTheDocumentation_AreNotMade) {
  const auto made = run("'" QZLOG_COMMAND_DOCS_PROGRAM "' none .");
  EXPECT_EQ(made.err, "qzlog_command_docs: cannot open './environment.md': No such file or directory\n");
  EXPECT_EQ(made.status, 2);
}

TEST_F(CommandDocs, MadeTwice_AreTheSame) {
  const auto made =
      run("'" QZLOG_COMMAND_DOCS_PROGRAM "' again '" QZLOG_DOCS "' && diff -r again '" + kMade.string() + "'");
  EXPECT_EQ(made.out + made.err, "");
  EXPECT_EQ(made.status, 0);
}

TEST_F(CommandDocs, Rules_AreThoseOfTheTables) {
  const qzlog_test::CommandResult result = run(QZLOG_COMMAND_DOCS_PROGRAM " --rules");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  const nlohmann::json tables = nlohmann::json::parse(result.out);
  std::set<std::string> names;
  for (const auto& [name, table] : tables.items()) names.insert(name);
  EXPECT_EQ(names, (std::set<std::string>{"catalog", "check", "choice", "compile", "configuration", "count", "diff",
                                          "entries", "inspect"}));
  EXPECT_EQ(tables["compile"].size(), qzlog_compiler::all_rules().size());
  EXPECT_EQ(tables["inspect"][0],
            nlohmann::json({{"name", "no-yaml-form"},
                            {"meaning", "A compiled file holds what no definition source can say."},
                            {"acceptable", false}}));
  EXPECT_EQ(tables["diff"][0]["version_step"], "none");
}

TEST_F(CommandDocs, RulesThatCannotBeWritten_AreAnError) {
  const qzlog_test::CommandResult result = run(QZLOG_COMMAND_DOCS_PROGRAM " --rules >/dev/full");
  EXPECT_EQ(result.err, "qzlog_command_docs: cannot write to standard output\n");
  EXPECT_EQ(result.status, 2);
}

}  // namespace
