#include "tools/explain/rule_explanation.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "tools/explain/rule_examples.h"
#include "tools/known_rules.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_compiler::KnownRule;

class RuleExplanation : public ::testing::Test {
 protected:
  std::vector<std::string> tables_with(const std::string& name) const {
    std::vector<std::string> tables;
    for (const KnownRule& rule : qzlog_tool::find_known_rules(name, all_)) tables.emplace_back(rule.table);
    return tables;
  }

  std::string shown(const std::string& name) const {
    std::ostringstream out;
    qzlog_tool::print_rule_explanation(out, qzlog_tool::find_known_rules(name, all_));
    return out.str();
  }

  const std::vector<KnownRule> all_ = qzlog_tool::all_known_rules();
};

TEST(ReadsAsRule, NamesOfEntriesAndNumbers_DoNot) {
  EXPECT_TRUE(qzlog_tool::reads_as_rule("unknown-key"));
  EXPECT_TRUE(qzlog_tool::reads_as_rule("unknown"));
  EXPECT_TRUE(qzlog_tool::reads_as_rule("Unknown"));
  for (const char* const text : {"", "DISK_FULL", "DISK_2", "1001", "0x3e9", "0XA"}) {
    EXPECT_FALSE(qzlog_tool::reads_as_rule(text)) << text;
  }
}

TEST_F(RuleExplanation, NamesOfAllRules_ReadAsRules) {
  for (const std::string_view name : qzlog_tool::rule_names(all_)) EXPECT_TRUE(qzlog_tool::reads_as_rule(name)) << name;
}

TEST_F(RuleExplanation, NameOfSeveralTables_FindsAllOfThem) {
  EXPECT_EQ(tables_with("unknown-key"), (std::vector<std::string>{"compile", "entries"}));
  EXPECT_EQ(tables_with("po-syntax"), std::vector<std::string>{"catalog"});
  EXPECT_EQ(tables_with("lost-reference"), std::vector<std::string>{"check"});
  EXPECT_EQ(tables_with("no-such-rule"), std::vector<std::string>{});
}

TEST_F(RuleExplanation, UnknownName_IsRefusedWithTheNearest) {
  EXPECT_THROW(qzlog_tool::require_known_rules("unknwon-key", all_), qzlog_tool::CommandError);
  try {
    qzlog_tool::require_known_rules("unknwon-key", all_);
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitFindings);
    EXPECT_EQ(std::string(error.what()).rfind("there is no rule 'unknwon-key'\n  hint: did you mean 'unknown-key'?", 0),
              0U)
        << error.what();
  }
}

TEST_F(RuleExplanation, EveryRule_ShowsItsNameAndMeaning) {
  for (const KnownRule& rule : all_) {
    const std::string text = shown(std::string(rule.info->name));
    EXPECT_EQ(text.rfind(rule.info->name, 0), 0U) << text;
    EXPECT_NE(text.find("\n  " + std::string(rule.info->meaning) + "\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("rule: RULE"), std::string::npos) << text;
    EXPECT_EQ(text.find("rule: " + std::string(rule.info->name)) != std::string::npos, rule.info->acceptable) << text;
  }
}

/// What a source may accept is a warning, always or sometimes; so an example shows.
TEST_F(RuleExplanation, AcceptableRulesOfDefinitions_AreShownAsWarnings) {
  for (const KnownRule& rule : all_) {
    if (rule.table == "compile" && rule.info->acceptable) {
      EXPECT_NE(shown(std::string(rule.info->name)).find("a warning\n"), std::string::npos) << rule.info->name;
    }
  }
}

TEST_F(RuleExplanation, Examples_AreOfKnownRulesAndNameThem) {
  std::map<std::string_view, std::size_t> examples;
  for (const qzlog_tool::RuleExample& example : qzlog_tool::all_rule_examples()) {
    ++examples[example.table];
    bool known = false;
    for (const KnownRule& rule : all_) known |= rule.table == example.table && rule.info->name == example.rule;
    EXPECT_TRUE(known) << example.table << ' ' << example.rule;
    const std::string_view line = example.text.substr(0, example.text.find('\n'));
    EXPECT_TRUE(line.ends_with(" [" + std::string(example.rule) + "]")) << line;
    EXPECT_NE(line.find(" " + std::string(qzlog_compiler::severity_name(example.severity)) + ": "), std::string::npos);
  }
  for (const char* const table : {"compile", "catalog", "check", "entries", "inspect"}) {
    EXPECT_GT(examples[table], 0U) << table;
  }
}

}  // namespace
