#include "tools/shown/shown_options.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>

#include "tests/support/thrown_by.h"
#include "tools/compiler/text/display_width.h"
#include "tools/manual/command_tree.h"
#include "tools/shown/line_format.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::ShownOptions;

class ShownOptionsTest : public ::testing::Test {
 protected:
  ShownOptionsTest() { add_shown_options(app_, options_); }

  /// "" when the command line is taken.
  std::string refusal(const std::string& line) {
    try {
      app_.parse(line);
      check_shown_options(options_);
    } catch (const CLI::ParseError& error) {
      return error.what();
    } catch (const qzlog_tool::CommandError& error) {
      return error.what();
    }
    return "";
  }

  CLI::App app_{"", "show"};
  ShownOptions options_;
};

TEST_F(ShownOptionsTest, Given_AreTaken) {
  EXPECT_EQ(refusal("--output table --columns time,name --locale de-AT --time-zone Europe/Berlin --time-style locale"),
            "");
  EXPECT_EQ(options_.output, "table");
  EXPECT_EQ(options_.columns, "time,name");
  EXPECT_EQ(options_.locale, "de-AT");
  EXPECT_EQ(options_.time_zone, "Europe/Berlin");
  EXPECT_EQ(options_.time_style, "locale");
}

TEST_F(ShownOptionsTest, NoneGiven_ShowsMessagesAlone) {
  EXPECT_EQ(refusal(""), "");
  EXPECT_TRUE(options_.shows_messages_alone());
  EXPECT_FALSE(options_.may_have_colour());
}

TEST_F(ShownOptionsTest, ThatExcludeEachOther_AreRefused) {
  EXPECT_EQ(refusal("--utc --time-zone Europe/Berlin"), "--time-zone excludes --utc");
  EXPECT_EQ(refusal("--format {id} --output short"), "--output excludes --format");
  EXPECT_EQ(refusal("--columns id"), "--columns requires --output");
  EXPECT_EQ(refusal("--columns id --output short"), "--columns needs --output table or csv");
}

TEST_F(ShownOptionsTest, ThatCannotBe_AreRefused) {
  EXPECT_NE(refusal("--output xml"), "");
  EXPECT_NE(refusal("--time-style rfc"), "");
  EXPECT_EQ(refusal("--time-zone Europe/Belin"),
            "--time-zone: unknown time zone 'Europe/Belin'; did you mean 'Europe/Berlin'?");
  EXPECT_EQ(refusal("--locale qqq"), "--locale: unknown locale 'qqq'; locales are called as in de_AT or zh-Hant");
  EXPECT_NE(refusal("--format ''"), "");
}

TEST_F(ShownOptionsTest, Help_FitsEightyColumns) {
  app_.footer(qzlog_tool::kShownFooter);
  std::istringstream help(app_.help());
  for (std::string line; std::getline(help, line);) EXPECT_LE(qzlog_compiler::display_width(line), 80u) << line;
}

TEST_F(ShownOptionsTest, Help_NamesEveryField) {
  const std::string help(qzlog_tool::kShownFooter);
  for (const std::string_view field : qzlog_tool::field_names()) {
    EXPECT_TRUE(field == "level:name" || help.find(field) != std::string::npos) << field;
  }
}

TEST_F(ShownOptionsTest, Choices_AreCompleted) {
  for (const auto& option : qzlog_tool::read_command_tree(app_).options) {
    const std::string name = option.names.front();
    const bool has_choices =
        name == "--output" || name == "--time-style" || name == "--locale" || name == "--time-zone";
    EXPECT_EQ(option.value.items.size() >= 3, has_choices) << name;
  }
}

}  // namespace
