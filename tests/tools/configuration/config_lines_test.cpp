#include "tools/configuration/config_lines.h"

#include <gtest/gtest.h>

#include <charconv>
#include <map>
#include <random>
#include <string>
#include <string_view>

#include "qzlog/logcfg.h"
#include "tests/support/temp_dir.h"

namespace {

using qzlog_tool::ConfigLine;
using qzlog_tool::ConfigLines;

/// Section and key in one, as the library has them, with values of digits.
std::map<std::string, unsigned> values_of(std::string_view content) {
  std::map<std::string, unsigned> values;
  ConfigLines lines(content);
  std::string section;
  bool in_section = false;
  while (const auto line = lines.next()) {
    if (line->words.empty()) continue;
    const std::string_view first = line->words[0].text;
    if (first.starts_with('[')) {
      in_section = first.size() > 1;
      if (in_section) section = first.substr(1, first.size() - 2);
    } else if (in_section && line->words.size() > 1) {
      const std::string_view text = line->words[1].text;
      unsigned value = 0;
      std::from_chars(text.data(), text.data() + text.size(), value);
      values[section + std::string(first)] = value;
    }
  }
  return values;
}

std::string random_content(std::mt19937& random) {
  static const std::string kPieces[] = {"[a]",
                                        "[b]",
                                        "[",
                                        "[a",
                                        "k",
                                        "l",
                                        "=",
                                        " ",
                                        "\t",
                                        "7",
                                        "12",
                                        "\n",
                                        "\n",
                                        "\r",
                                        "\r\n",
                                        "\n\n",
                                        std::string(1, '\0'),
                                        "k=3\n",
                                        "l 4\n",
                                        "[a]\n",
                                        std::string(64, 'x'),
                                        std::string(100, ' ')};
  std::string content;
  for (int count = std::uniform_int_distribution<>(0, 30)(random); count > 0; --count) {
    content += kPieces[std::uniform_int_distribution<std::size_t>(0, std::size(kPieces) - 1)(random)];
  }
  return content;
}

TEST(ConfigLines, RandomFiles_AreReadAsTheLibraryReadsThem) {
  const qz_test::TempDir folder;
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int round = 0; round < 2000; ++round) {
    const std::string content = random_content(random);
    SCOPED_TRACE(testing::PrintToString(content));
    const std::string path = folder.write("c.conf", content);
    qz_LOG_LogConfig::SetConfigurationSource(path.c_str(), QZ_CONFIGURATION_FILE);
    const std::map<std::string, unsigned> values = values_of(content);
    for (const char* const section : {"", "a", "b"}) {
      for (const char* const key : {"k", "l", "x"}) {
        const auto wanted = values.find(std::string(section) + key);
        unsigned value = 0;
        ASSERT_EQ(qz_LOG_LogConfig::GetConfigurationIntegerValue(section, key, value), wanted != values.end())
            << section << key;
        if (wanted != values.end()) {
          ASSERT_EQ(value, wanted->second) << section << key;
        }
      }
    }
  }
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
}

TEST(ConfigLines, Words_KnowTheirPlaces) {
  ConfigLines lines(
      "\r\n  Gr\xC3\xB6\xC3\x9F"
      "e=\t5 \xFF x\n\n");
  EXPECT_TRUE(lines.next()->words.empty());
  const std::optional<ConfigLine> line = lines.next();
  ASSERT_EQ(line->words.size(), 4U);
  EXPECT_EQ(line->number, 2U);
  EXPECT_EQ(line->words[1].text, "5");
  EXPECT_EQ(line->words[0].place.column, 3U);
  EXPECT_EQ(line->words[1].place.column, 10U);
  EXPECT_EQ(line->words[3].place.column, 14U);
}

}  // namespace
