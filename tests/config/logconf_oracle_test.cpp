#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "config/logconf.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace std::string_literals;

using qz_test::SeededRandom;
using qz_test::TempDir;

/// The file format once more, step by step and without regard for time or memory.
class PlainReader {
 public:
  explicit PlainReader(std::string bytes) : bytes_(std::move(bytes)) {}

  std::map<std::string, unsigned> settings() {
    bool has_line = next_line();
    while (has_line) {
      const std::string token = first_token();
      if (token.size() < 2 || token[0] != '[') {
        has_line = next_line();
        continue;
      }
      section_ = token.substr(1, token.size() - 2);
      has_line = read_section() || next_line();
    }
    return settings_;
  }

 private:
  static bool ends_line(char character) { return character == '\n' || character == '\r'; }

  /// Whether a whole line followed by something was read.
  bool next_line() {
    std::string line;
    std::size_t position = offset_;
    while (position < bytes_.size() && !ends_line(bytes_[position])) line += bytes_[position++];
    if (line.size() > 128) return false;
    const std::size_t length = line.size();
    line_ = line.substr(0, line.find('\0'));
    if (position + 1 >= bytes_.size()) {
      offset_ += length;
      return false;
    }
    offset_ += length + (ends_line(bytes_[position + 1]) ? 2 : 1);
    return true;
  }

  std::vector<std::string> tokens() const {
    std::vector<std::string> result;
    bool in_token = false;
    for (const char character : line_) {
      const bool is_delimiter = " \t\n="s.find(character) != std::string::npos;
      if (!is_delimiter && !in_token) result.emplace_back();
      if (!is_delimiter) result.back() += character;
      in_token = !is_delimiter;
    }
    return result;
  }
  std::string first_token() const { return tokens().empty() ? "" : tokens()[0]; }

  /// Whether the current line begins the next section.
  bool read_section() {
    while (next_line()) {
      const std::vector<std::string> found = tokens();
      if (!found.empty() && found[0][0] == '[') return true;
      if (found.size() >= 2) settings_[section_ + found[0]] = number(found[1]);
    }
    return false;
  }

  static unsigned number(const std::string& text) {
    const bool hexadecimal = text.size() >= 2 && (text[1] == 'x' || text[1] == 'X');
    const std::size_t start = hexadecimal && text[0] == '0' ? 2 : 0;
    const std::string digits = hexadecimal ? "0123456789abcdef" : "0123456789";
    unsigned long long value = 0;
    for (std::size_t i = start; i < text.size(); ++i) {
      const char character = text[i] >= 'A' && text[i] <= 'F' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
      const std::size_t digit = digits.find(character);
      if (digit == std::string::npos) break;
      value = std::min(value * digits.size() + digit, 0xFFFFFFFFULL);
    }
    return static_cast<unsigned>(value);
  }

  std::string bytes_;
  std::size_t offset_ = 0;
  std::string line_;
  std::string section_;
  std::map<std::string, unsigned> settings_;
};

std::optional<unsigned> plain_lookup(const std::map<std::string, unsigned>& settings, const std::string& section,
                                     const std::string& key) {
  for (const std::string& name : {section + key, "global" + key}) {
    if (const auto found = settings.find(name); found != settings.end()) return found->second;
  }
  return std::nullopt;
}

std::string random_text(SeededRandom& random) {
  static const std::vector<std::string> pieces = {
      "[",   "]", "a",  "b",          "ab",    "global", "[a]",  "[b]\n", "[global]\n", "Key",         "=",  " = ",
      "\t",  " ", "\n", "\n",         "\n",    "\r",     "\r",   "\r\n",  "\n\r",       "0x1F",        "12", "1xF",
      "0xg", "7", "-1", "4294967296", "0X10"s, "\0"s,    "\xFF", "a=1\n", "b 2\n",      "ab\t=0x3\r\n"};
  std::string text;
  for (long long count = random.between(0, 60); count > 0; --count) {
    text += pieces[static_cast<std::size_t>(random.between(0, static_cast<long long>(pieces.size()) - 1))];
    if (random.one_in(40)) text += std::string(static_cast<std::size_t>(random.between(110, 131)), 'l');
  }
  return text;
}

/// Sections and keys that may be told apart: every way to cut each setting's name in two, and a few others.
std::set<std::pair<std::string, std::string>> questions_about(const std::map<std::string, unsigned>& settings) {
  std::set<std::pair<std::string, std::string>> questions = {
      {"a", "b"}, {"a", "a"}, {"", ""}, {"global", "Key"}, {"a", "Key"}};
  for (const auto& [name, value] : settings) {
    for (std::size_t cut = 0; cut <= std::min<std::size_t>(name.size(), 8); ++cut) {
      questions.emplace(name.substr(0, cut), name.substr(cut));
    }
    if (name.rfind("global", 0) == 0) questions.emplace("elsewhere", name.substr(6));
  }
  return questions;
}

TEST(LogConfOracle, RandomTexts_AsThePlainReader) {
  SeededRandom random;
  const TempDir folder;
  std::size_t found = 0;
  for (int round = 0; round < 2000; ++round) {
    const std::string text = random_text(random);
    const std::map<std::string, unsigned> settings = PlainReader(text).settings();
    const _qz_LOG_file_configuration configuration(folder.write(std::to_string(round), text).c_str());
    for (const auto& [section, key] : questions_about(settings)) {
      unsigned value = 0;
      const bool has_value = configuration.get_integer_value(section.c_str(), key.c_str(), value);
      const std::optional<unsigned> expected = plain_lookup(settings, section, key);
      ASSERT_EQ(has_value ? std::optional<unsigned>(value) : std::nullopt, expected)
          << testing::PrintToString(text) << " section " << section << " key " << key;
      found += has_value ? 1 : 0;
    }
  }
  EXPECT_GT(found, 1000U);
}

std::size_t index_below(SeededRandom& random, std::size_t count) {
  return static_cast<std::size_t>(random.between(0, static_cast<long long>(count) - 1));
}

/// Pieces that names are cut out of: parts of the filters' keys and of "global", so that names begin and end alike.
const char* piece(SeededRandom& random) {
  static const std::vector<const char*> pieces = {"Debug", "LogLevel",     "Low",     "High",       "Log",
                                                  "Level", "PropertyMask", "Enabled", "glob",       "LogLevelLow",
                                                  "al",    "global",       "a",       "DebugDebug", "DebugLogLevelHigh",
                                                  "b",     "Mask",         ""};
  return pieces[index_below(random, pieces.size())];
}

std::string random_name(SeededRandom& random) {
  std::string name;
  for (long long count = random.between(1, 4); count > 0; --count) name += piece(random);
  return name;
}

/// A file of `sections` sections; its settings go into `settings` too.
std::string random_file(SeededRandom& random, long long sections, std::map<std::string, unsigned>& settings) {
  std::string text;
  for (; sections > 0; --sections) {
    const std::string section = random_name(random);
    text += "[" + section + "]\n";
    for (long long count = random.between(0, 8); count > 0; --count) {
      const std::string key = random_name(random);
      const auto value = static_cast<unsigned>(random.between(0, 0xFFFFFFFFLL));
      if (key.empty()) continue;
      text += key + "=" + std::to_string(value) + "\n";
      settings[section + key] = value;
    }
  }
  return text + "\n";
}

/// A name that is set, or may be, cut in two anywhere.
std::pair<std::string, std::string> random_question(SeededRandom& random, const std::vector<std::string>& names) {
  const std::string name =
      names.empty() || random.one_in(4) ? random_name(random) : names[index_below(random, names.size())];
  const std::size_t cut = index_below(random, name.size() + 1);
  return {name.substr(0, cut), name.substr(cut)};
}

class LogConfManySettings : public testing::TestWithParam<int> {};

TEST_P(LogConfManySettings, RandomFiles_EveryLookupAsInAMap) {
  SeededRandom random;
  const TempDir folder;
  for (int round = 0; round < 20; ++round) {
    std::map<std::string, unsigned> settings;
    const std::string path = folder.write(std::to_string(round), random_file(random, GetParam(), settings));
    const _qz_LOG_file_configuration configuration(path.c_str());
    std::vector<std::string> names;
    for (const auto& [name, value] : settings) names.push_back(name);
    for (int question = 0; question < 2000; ++question) {
      const auto [section, key] = random_question(random, names);
      unsigned value = 0;
      const bool found = configuration.get_integer_value(section.c_str(), key.c_str(), value);
      ASSERT_EQ(found ? std::optional<unsigned>(value) : std::nullopt, plain_lookup(settings, section, key))
          << "section " << section << " key " << key;
    }
  }
}

TEST_P(LogConfManySettings, RandomFiles_FilterValuesAsTheLookups) {
  SeededRandom random;
  const TempDir folder;
  std::size_t found = 0;
  for (int round = 0; round < 20; ++round) {
    std::map<std::string, unsigned> settings;
    const std::string path = folder.write(std::to_string(round), random_file(random, GetParam(), settings));
    const _qz_LOG_file_configuration configuration(path.c_str());
    unsigned value = 0;
    configuration.get_integer_value("", "", value);
    for (int question = 0; question < 500; ++question) {
      const std::string section = random.one_in(20) ? "" : random_name(random);
      const FilterValues* const values = configuration.get_filter_values(section.c_str());
      ASSERT_NE(values, nullptr);
      for (std::size_t key = 0; key < kFilterKeyCount; ++key) {
        const bool has_value = values->get(static_cast<FilterKey>(key), value);
        ASSERT_EQ(has_value ? std::optional<unsigned>(value) : std::nullopt,
                  plain_lookup(settings, section, kFilterKeyNames[key]))
            << "section " << section << " key " << kFilterKeyNames[key];
        found += has_value ? 1 : 0;
      }
    }
  }
  EXPECT_GT(found, 0U);
}

INSTANTIATE_TEST_SUITE_P(Sections, LogConfManySettings, testing::Values(20, 200, 2000));

TEST(LogConfOracle, ThousandsOfDifferentSettings_EachFound) {
  const TempDir folder;
  std::map<std::string, unsigned> settings;
  std::string text;
  for (unsigned section = 0; section < 200; ++section) {
    text += "[s" + std::to_string(section) + "]\n";
    for (unsigned key = 0; key < 60; ++key) {
      // "s1" with "11k" and "s11" with "1k" are one setting.
      const std::string name = std::to_string(key) + "k";
      text += name + " " + std::to_string(section * 60 + key) + "\n";
      settings["s" + std::to_string(section) + name] = section * 60 + key;
    }
  }
  const _qz_LOG_file_configuration configuration(folder.write("conf", text + "\n").c_str());
  for (unsigned section = 0; section < 200; ++section) {
    for (unsigned key = 0; key < 60; ++key) {
      const std::string section_name = "s" + std::to_string(section);
      const std::string key_name = std::to_string(key) + "k";
      unsigned value = 0;
      ASSERT_TRUE(configuration.get_integer_value(section_name.c_str(), key_name.c_str(), value));
      ASSERT_EQ(value, settings[section_name + key_name]) << section_name << key_name;
    }
  }
}

}  // namespace
