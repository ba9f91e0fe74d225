#include "tools/render/config_check.h"

#include <gtest/gtest.h>

#include <string>

#include "qzlog/logcfg.h"
#include "tests/support/temp_dir.h"

namespace {

using qzlog_tool::check_config;
using qzlog_tool::ConfigRule;

struct Case {
  std::string content;
  bool is_read;      // whether the library finds the key K of the section s
  ConfigRule rule;   // of the warning when it is not
  std::size_t line;  // of the warning; 0: none
};

const std::string kLongest = "K=5" + std::string(125, ' ');  // 128 characters

const Case kCases[] = {
    {"[s]\nK=5\n\n", true, ConfigRule::kLastLine, 0},
    {"[s]\r\nK=5\r\n", true, ConfigRule::kLastLine, 0},
    {"[s]\nK=5\n\r", true, ConfigRule::kLastLine, 0},
    {"[s]\n\nK=5\n\n\n", true, ConfigRule::kLastLine, 0},
    {"[s]\nK=5\n \n", true, ConfigRule::kLastLine, 0},
    {"[s]\nK=5\n\t", true, ConfigRule::kLastLine, 0},
    {"[s]\n" + kLongest + "\n\n", true, ConfigRule::kLastLine, 0},
    {"[s]\nK=5\n", false, ConfigRule::kLastLine, 2},
    {"[s]\nK=5", false, ConfigRule::kLastLine, 2},
    {"[s]\r\nK=5\r", false, ConfigRule::kLastLine, 2},
    {"[s]\r\nK=5", false, ConfigRule::kLastLine, 2},
    {"[s]\n\n\nK=5\n", false, ConfigRule::kLastLine, 4},
    {"[s]\nL=1\nK=5", false, ConfigRule::kLastLine, 3},
    {"[s]\n" + kLongest + " \n\n", false, ConfigRule::kLongLine, 2},
    {"\n" + kLongest + " \n[s]\nK=5\n\n", false, ConfigRule::kLongLine, 2},
};

TEST(CheckConfig, Warnings_AreTrueOfTheLibrary) {
  const qz_test::TempDir folder;
  for (const Case& row : kCases) {
    SCOPED_TRACE(row.content);
    const std::string path = folder.write("c.conf", row.content);
    qz_LOG_LogConfig::SetConfigurationSource(path.c_str(), QZ_CONFIGURATION_FILE);
    unsigned value = 0;
    EXPECT_EQ(qz_LOG_LogConfig::GetConfigurationIntegerValue("s", "K", value), row.is_read);
    const std::vector<qzlog_compiler::Finding> warnings = check_config("c.conf", row.content);
    ASSERT_EQ(warnings.size(), row.line == 0 ? 0U : 1U);
    if (row.line == 0) continue;
    EXPECT_TRUE(warnings[0].rule == row.rule);
    EXPECT_EQ(warnings[0].place.line, row.line);
    EXPECT_EQ(warnings[0].file, "c.conf");
    EXPECT_FALSE(is_error(warnings[0]));
  }
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
}

TEST(CheckConfig, NothingToRead_GivesNoWarning) {
  for (const char* const content : {"", "\n", "\n\n", "\r\n", " \t", "\n\n\n", "="}) {
    EXPECT_TRUE(check_config("c.conf", content).empty()) << content;
  }
}

}  // namespace
