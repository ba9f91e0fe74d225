#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include "tests/tools/command_fixture.h"
#include "tests/tools/command_table.h"

namespace {

using qzlog_test::command_names;

class Help : public qzlog_test::CommandFixture {
 protected:
  std::string help(const std::string& command, const std::string& environment = "") const {
    const qzlog_test::CommandResult result = run(environment + " $QZLOG" + command.substr(5) + " --help");
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_EQ(result.err, "") << command;
    return result.out;
  }
};

std::string file_name(std::string command) {
  std::replace(command.begin(), command.end(), ' ', '-');
  return command + ".txt";
}

/// QZLOG_REWRITE_GOLDEN=1 writes what the command gives now into the files; look at the difference before keeping it.
TEST_F(Help, EveryCommand_IsTheGoldenFile) {
  for (const std::string& command : command_names()) {
    const std::filesystem::path path = std::filesystem::path(QZLOG_GOLDEN "/help") / file_name(command);
    const std::string shown = help(command);
    if (std::getenv("QZLOG_REWRITE_GOLDEN") != nullptr) std::ofstream(path, std::ios::binary) << shown;
    EXPECT_EQ(shown, qz_test::read_file(path)) << path;
    EXPECT_NE(shown.find("\nUsage: " + command + " "), std::string::npos) << shown;
  }
}

TEST_F(Help, GoldenFiles_AreThoseOfTheCommands) {
  std::set<std::string> expected;
  for (const std::string& command : command_names()) expected.insert(file_name(command));
  std::set<std::string> actual;
  for (const auto& file : std::filesystem::directory_iterator(QZLOG_GOLDEN "/help"))
    actual.insert(file.path().filename());
  EXPECT_EQ(actual, expected);
}

TEST_F(Help, TerminalAndLocale_ChangeNothing) {
  for (const std::string& command : command_names()) {
    const std::string plain = help(command);
    for (const char* const environment :
         {"COLUMNS=40", "COLUMNS=300 LINES=5", "LC_ALL=de_DE.UTF-8 LANGUAGE=de", "LC_ALL=C", "TERM=xterm-256color"}) {
      EXPECT_EQ(help(command, environment), plain) << environment << ' ' << command;
    }
  }
}

TEST_F(Help, EveryLine_FitsIn80Columns) {
  for (const std::string& command : command_names()) {
    std::istringstream lines(help(command));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << command << ": " << line;
  }
}

TEST_F(Help, EveryCommandThatRuns_ShowsAnExampleOfItself) {
  const qzlog_tool::CommandNode root = qzlog_tool::command_line_tree();
  for (const qzlog_tool::CommandNode* const command : qzlog_tool::all_commands(root)) {
    if (!command->subcommands.empty()) continue;
    const std::string shown = help(command->name);
    const std::size_t examples = std::min(shown.find("\nExample:\n"), shown.find("\nExamples:\n"));
    ASSERT_NE(examples, std::string::npos) << command->name;
    EXPECT_NE(shown.find(command->name + " ", examples), std::string::npos) << command->name;
  }
}

}  // namespace
