#include "tools/configuration/config_check.h"

#include <gtest/gtest.h>

#include <string>

#include "qzlog/logcfg.h"
#include "tests/support/temp_dir.h"
#include "tools/configuration/config_rules.h"

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
    EXPECT_TRUE(is_error(warnings[0]));
  }
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
}

std::string shown(const std::vector<qzlog_compiler::Finding>& findings) {
  std::string text;
  for (const qzlog_compiler::Finding& found : findings) {
    text += std::to_string(found.place.line) + ":" + std::to_string(found.place.column) +
            (is_error(found) ? " error " : " warning ") + std::string(found.rule.name()) + ": " + found.text;
    if (!found.hint.empty()) text += " / " + found.hint;
    text += '\n';
  }
  return text;
}

struct Mistake {
  std::string lines;  // behind the header of the section s
  std::string findings;
};

const Mistake kMistakes[] = {
    {"LogLevelLow = banana",
     "2:15 error config-bad-value: 'banana' is no number of 32 bits: it is read as 0 / "
     "write digits, or 0x and hexadecimal digits\n"},
    {"LogLevelHgh = 3",
     "2:1 warning config-near-key: no filter asks for 'LogLevelHgh' / did you mean 'LogLevelHigh'?\n"},
    {"loglevelhigh 3",
     "2:1 warning config-near-key: no filter asks for 'loglevelhigh' / did you mean 'LogLevelHigh'?\n"},
    {"PropertyMask: 0x80",
     "2:1 warning config-near-key: no filter asks for 'PropertyMask:' / did you mean 'PropertyMask'?\n"},
    {"PropertyMask = 80h",
     "2:16 error config-bad-value: '80h' is no number of 32 bits: it is read as 80 / "
     "write digits, or 0x and hexadecimal digits\n"},
    {"PropertyMask = 0x",
     "2:16 error config-bad-value: '0x' is no number of 32 bits: it is read as 0 / "
     "write digits, or 0x and hexadecimal digits\n"},
    {"PropertyMask = -1",
     "2:16 error config-bad-value: '-1' is no number of 32 bits: it is read as 0 / "
     "write digits, or 0x and hexadecimal digits\n"},
    {"PropertyMask = 4294967296",
     "2:16 error config-bad-value: '4294967296' is no number of 32 bits: it is read as "
     "4294967295 / write digits, or 0x and hexadecimal digits\n"},
    {"PropertyMask = 0XfF", ""},
    {"PropertyMask 1x",
     "2:14 error config-bad-value: '1x' is no number of 32 bits: it is read as 1 / "
     "write digits, or 0x and hexadecimal digits\n"},
    {"LogLevelLow =",
     "2:1 error config-bad-value: 'LogLevelLow' has no value and is not read / write the value on the same line\n"},
    {"LogLevelLow = 3 4", "2:17 warning config-bad-value: what stands behind the value is not read\n"},
    {"LogLevelLow = 3 # the usual", ""},
    {"#LogLevelLow = x", ""},
    {"; LogLevelLow = x", ""},
    {"Colour = blue", ""},
    {"Größe = 5\nLogLevelLow = ü",
     "3:15 error config-bad-value: 'ü' is no number of 32 bits: it is read as 0 / "
     "write digits, or 0x and hexadecimal digits\n"},
    {"DebugEnabled = 1\nDebugEnabled = 0",
     "3:1 warning config-repeated-key: 'DebugEnabled' stands here again: this value counts\n"},
    {"LogLevelLow = 10", "2:15 warning config-nothing-passes: no entry passes with a low level above 9\n"},
    {"LogLevelLow = 5\nLogLevelHigh = 4",
     "3:16 warning config-nothing-passes: no entry passes with a high level below the low one, 5\n"},
    {"DebugLogLevelLow = 5\n[global]\nLogLevelHigh = 4",
     "2:20 warning config-nothing-passes: no debug entry passes with a low level above the high one, 4\n"},
    {"PropertyMask = 0x0", "2:16 warning config-nothing-passes: no entry passes without a bit in PropertyMask\n"},
    {"[t",
     "2:1 error config-bad-section: the section is read as '' / a name has no blanks and no equals signs, and ']' "
     "directly behind it\n"},
    {"[two words]",
     "2:1 error config-bad-section: the section is read as 'tw' / a name has no blanks and no equals signs, and ']' "
     "directly behind it\n"},
    {"[\nLogLevelLow = 3",
     "2:1 error config-bad-section: '[' alone begins no section / write the name without blanks: [name]\n"
     "3:1 warning config-no-section: 'LogLevelLow' stands in no section and is not read / put '[global]' in front of "
     "it\n"},
};

TEST(CheckConfig, Mistakes_AreTold) {
  for (const Mistake& row : kMistakes) {
    EXPECT_EQ(shown(check_config("c.conf", "[s]\n" + row.lines + "\n\n")), row.findings) << row.lines;
  }
}

TEST(CheckConfig, ByteOrderMark_HidesTheFirstSection) {
  EXPECT_EQ(shown(check_config("c.conf", "\xEF\xBB\xBF[s]\nLogLevelLow = 3\n[t]\nLogLevelLow = 4\n\n")),
            "1:1 error config-bad-section: the section is not begun: a byte order mark stands in front of it / "
            "save the file without one, or begin it with an empty line\n"
            "2:1 warning config-no-section: 'LogLevelLow' stands in no section and is not read / put '[global]' in "
            "front of it\n");
  EXPECT_EQ(shown(check_config("c.conf", "\xEF\xBB\xBF\n[s]\nLogLevelLow = 3\n\n")), "");
}

TEST(CheckConfig, WantedSection_IsLookedFor) {
  EXPECT_EQ(shown(check_config("c.conf", "[shop]\nLogLevelLow = 2\n\n", "shop")), "");
  EXPECT_EQ(shown(check_config("c.conf", "[shop]\nLogLevelLow = 2\n\n", "shp")),
            "0:0 error config-missing-section: there is no section 'shp': nothing counts / did you mean 'shop'?\n");
  EXPECT_EQ(shown(check_config("c.conf", "[global]\nLogLevelLow = 2\n\n", "shop")),
            "0:0 error config-missing-section: there is no section 'shop': what 'global' says counts\n");
}

TEST(CheckConfig, NothingToRead_GivesNoWarning) {
  for (const char* const content : {"", "\n", "\n\n", "\r\n", " \t", "\n\n\n", "="}) {
    EXPECT_TRUE(check_config("c.conf", content).empty()) << content;
  }
}

}  // namespace
