#include "tools/compiler/source/scalar_values.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

struct NumberCase {
  const char* text;
  std::optional<std::uint32_t> value;
  const char* rule;
};

TEST(ReadNumber, DecimalAndHexadecimal_AreReadAsWritten) {
  const NumberCase cases[] = {
      {"0", 0U, ""},
      {"010", 10U, ""},
      {"0x10", 16U, ""},
      {"0XfF", 255U, ""},
      {"4294967295", 4294967295U, ""},
      {"0xFFFFFFFF", 4294967295U, ""},
      {"4294967296", std::nullopt, "[number-out-of-range]"},
      {"0x100000000", std::nullopt, "[number-out-of-range]"},
      {"99999999999999999999999999", std::nullopt, "[number-out-of-range]"},
      {"-1", std::nullopt, "[bad-number]"},
      {"+1", std::nullopt, "[bad-number]"},
      {"1.0", std::nullopt, "[bad-number]"},
      {"1_000", std::nullopt, "[bad-number]"},
      {"0x", std::nullopt, "[bad-number]"},
      {"0o17", std::nullopt, "[bad-number]"},
      {"4294967296x", std::nullopt, "[bad-number]"},
      {"ten", std::nullopt, "[bad-number]"},
      {"'10'", std::nullopt, "[wrong-type]"},
      {"~", std::nullopt, "[wrong-type]"},
      {"[1]", std::nullopt, "[wrong-type]"},
  };
  for (const NumberCase& entry : cases) {
    ParsedSource source(entry.text);
    EXPECT_EQ(read_number(source.root(), "the id", source.diagnostics()), entry.value) << entry.text;
    const std::string found = source.printed_diagnostics();
    EXPECT_EQ(found.empty(), entry.value.has_value()) << entry.text;
    EXPECT_NE(found.find(entry.rule), std::string::npos) << entry.text << ": " << found;
  }
}

struct TextCase {
  const char* text;
  std::optional<std::string> value;
  const char* rule;
};

template <typename Read>
void check_texts(const std::vector<TextCase>& cases, Read read) {
  for (const TextCase& entry : cases) {
    ParsedSource source(entry.text);
    ASSERT_TRUE(source.parsed()) << entry.text;
    EXPECT_EQ(read(source.root(), source.diagnostics()), entry.value) << entry.text;
    const std::string found = source.printed_diagnostics();
    EXPECT_EQ(found.empty(), entry.value.has_value()) << entry.text;
    EXPECT_NE(found.find(entry.rule), std::string::npos) << entry.text << ": " << found;
  }
}

TEST(ReadText, AnyScalarButNothing_IsAText) {
  check_texts({{"abc", "abc", ""},
               {"10", "10", ""},
               {"null", "null", ""},
               {"''", "", ""},
               {"'~'", "~", ""},
               {"\"a\\nb\"", "a\nb", ""},
               {"~", std::nullopt, "[wrong-type]"},
               {"", std::nullopt, "[wrong-type]"},
               {"{}", std::nullopt, "[wrong-type]"},
               {"\"a\\0b\"", std::nullopt, "[nul-character]"}},
              [](const YamlNode& node, Findings& diagnostics) { return read_text(node, "a text", diagnostics); });
}

TEST(ReadVersion, MajorPointMinor_InEightBytes) {
  check_texts({{"2.5", "2.5", ""},
               {"'2.10'", "2.10", ""},
               {"1234.567", "1234.567", ""},
               {"1234.5678", std::nullopt, "[bad-version]"},
               {"2", std::nullopt, "[bad-version]"},
               {"2.", std::nullopt, "[bad-version]"},
               {".5", std::nullopt, "[bad-version]"},
               {"2.5.1", std::nullopt, "[bad-version]"},
               {"v2.5", std::nullopt, "[bad-version]"},
               {"' 2.5'", std::nullopt, "[bad-version]"},
               {"''", std::nullopt, "[bad-version]"}},
              [](const YamlNode& node, Findings& diagnostics) { return read_version(node, diagnostics); });
}

TEST(ReadEntryName, CapitalsDigitsUnderscores_BeginningWithACapital) {
  check_texts({{"E1", "E1", ""},
               {"DISK_FULL", "DISK_FULL", ""},
               {"A", "A", ""},
               {"1A", std::nullopt, "[bad-entry-name]"},
               {"_A", std::nullopt, "[bad-entry-name]"},
               {"Disk", std::nullopt, "[bad-entry-name]"},
               {"A-B", std::nullopt, "[bad-entry-name]"},
               {"É", std::nullopt, "[bad-entry-name]"},
               {"''", std::nullopt, "[bad-entry-name]"}},
              [](const YamlNode& node, Findings& diagnostics) { return read_entry_name(node, diagnostics); });
}

TEST(ReadAttributeName, AnythingThatATemplateCanHold) {
  check_texts({{"Name", "Name", ""},
               {"free blocks", "free blocks", ""},
               {"Größe", "Größe", ""},
               {"''", std::nullopt, "[bad-attribute-name]"},
               {"'a%b'", std::nullopt, "[bad-attribute-name]"},
               {"'a{b'", std::nullopt, "[bad-attribute-name]"},
               {"'a}b'", std::nullopt, "[bad-attribute-name]"},
               {"'a:b'", std::nullopt, "[bad-attribute-name]"}},
              [](const YamlNode& node, Findings& diagnostics) { return read_attribute_name(node, diagnostics); });
}

}  // namespace
}  // namespace qzlog_compiler
