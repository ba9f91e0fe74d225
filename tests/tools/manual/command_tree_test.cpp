#include "tools/manual/command_tree.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace {

using qzlog_tool::CommandNode;
using Names = std::vector<std::string>;

class CommandTree : public ::testing::Test {
 protected:
  CLI::App app_{"Does things", "tool"};
  std::string text_;
  std::vector<std::string> texts_;
  bool flag_ = false;
};

TEST_F(CommandTree, Subcommands_HaveTheNamesBeforeThem) {
  app_.add_subcommand("count", "Counts")->add_subcommand("show", "Shows")->footer("Examples:\n  tool count show");
  app_.add_subcommand("other", "Others");
  const CommandNode root = qzlog_tool::read_command_tree(app_);
  EXPECT_EQ(root.description, "Does things");
  Names names;
  for (const CommandNode* const command : qzlog_tool::all_commands(root)) names.push_back(command->name);
  EXPECT_EQ(names, (Names{"tool", "tool count", "tool count show", "tool other"}));
  const CommandNode& show = root.subcommands.at(0).subcommands.at(0);
  EXPECT_EQ(show.last_name(), "show");
  EXPECT_EQ(show.description, "Shows");
  EXPECT_EQ(show.footer, "Examples:\n  tool count show");
}

TEST_F(CommandTree, Options_TellTheirNamesAndValues) {
  text_ = "both";
  app_.add_option("-p,--path", text_, "The path")->type_name("icu|both")->capture_default_str()->required();
  app_.add_flag("--json", flag_, "As JSON");
  const CommandNode root = qzlog_tool::read_command_tree(app_);
  ASSERT_EQ(root.options.size(), 3U);
  EXPECT_EQ(root.options[0].names, (Names{"-h", "--help"}));
  EXPECT_FALSE(root.options[0].takes_value());
  EXPECT_EQ(root.options[1].names, (Names{"-p", "--path"}));
  EXPECT_EQ(root.options[1].value_name, "icu|both");
  EXPECT_EQ(root.options[1].value.items, (Names{"icu", "both"}));
  EXPECT_EQ(root.options[1].description, "The path");
  EXPECT_EQ(root.options[1].default_value, "both");
  EXPECT_TRUE(root.options[1].required);
  EXPECT_FALSE(root.options[1].repeatable);
  EXPECT_FALSE(root.options[1].several_values);
  EXPECT_EQ(root.options[2].names, Names{"--json"});
  EXPECT_FALSE(root.options[2].takes_value());
  EXPECT_FALSE(root.options[2].required);
}

TEST_F(CommandTree, ValuesWithoutANameOfTheirOwn_AreNamedByWhatIsChecked) {
  app_.add_option("--kind", text_)->check(CLI::IsMember({"a", "b"}));
  app_.add_option("--file", text_)->check(CLI::ExistingFile);
  app_.add_option("--text", text_);
  app_.add_option("SRC", text_);
  const CommandNode root = qzlog_tool::read_command_tree(app_);
  EXPECT_EQ(root.options.at(1).value_name, "{a,b}");
  EXPECT_EQ(root.options.at(1).value.type, qzlog_tool::ValueKind::Type::kChoice);
  EXPECT_EQ(root.options.at(2).value_name, "FILE");
  EXPECT_EQ(root.options.at(3).value_name, "TEXT");
  EXPECT_EQ(root.positionals.at(0).value_name, "SRC");
}

TEST_F(CommandTree, Positionals_AreInTheirOrder) {
  app_.add_option("STD", text_, "First")->type_name("STD.ldf")->required();
  app_.add_option("MORE", texts_, "Others");
  const CommandNode root = qzlog_tool::read_command_tree(app_);
  ASSERT_EQ(root.positionals.size(), 2U);
  EXPECT_EQ(root.positionals[0].names, Names{"STD"});
  EXPECT_EQ(root.positionals[0].value.items, Names{".ldf"});
  EXPECT_TRUE(root.positionals[0].positional);
  EXPECT_TRUE(root.positionals[1].repeatable);
}

TEST_F(CommandTree, OptionsThatDependOnOthers_NameThemSorted) {
  CLI::Option* const from = app_.add_option("--from", text_);
  CLI::Option* const to = app_.add_option("-t,--to", text_);
  app_.add_option("--day", text_)->excludes(to)->excludes(from);
  from->needs(to);
  const CommandNode root = qzlog_tool::read_command_tree(app_);
  EXPECT_EQ(root.options.at(1).needs, Names{"--to"});
  EXPECT_EQ(root.options.at(3).excludes, (Names{"--from", "--to"}));
}

TEST_F(CommandTree, OptionsThatAreGivenMoreThanOnce_TellWhetherEachTimeWithSeveralValues) {
  app_.add_option("--po", texts_);
  app_.add_option("--aux", texts_)->allow_extra_args(false);
  const CommandNode root = qzlog_tool::read_command_tree(app_);
  EXPECT_TRUE(root.options.at(1).repeatable);
  EXPECT_TRUE(root.options.at(1).several_values);
  EXPECT_TRUE(root.options.at(2).repeatable);
  EXPECT_FALSE(root.options.at(2).several_values);
}

TEST_F(CommandTree, HiddenOptions_AreLeftOut) {
  app_.add_flag("--secret", flag_)->group("");
  EXPECT_EQ(qzlog_tool::read_command_tree(app_).options.size(), 1U);
}

}  // namespace
