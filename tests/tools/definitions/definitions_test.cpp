#include "tools/definitions/definitions.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tools/printed_findings.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_compiler::DefinitionModel;
using qzlog_tool::CommandError;
using qzlog_tool::DefinitionFile;
using qzlog_tool::Definitions;
using qzlog_tool::merge_definitions;
using qzlog_tool::read_definitions;
using qzlog_tool::read_errors_only;
using qzlog_tool::read_without_errors;

constexpr const char* kSource = "version: \"2.5\"\nentries:\n  - {id: 7, name: FULL, message: \"full\"}\n";
constexpr const char* kWrong = "version: \"2.5\"\nentries:\n  - {id: x, name: FULL, message: \"full\"}\n";
constexpr const char* kSurprising =
    "version: \"2.5\"\nentries:\n"
    "  - {id: 7, name: FULL, message: \"a {{ b\", attributes: [{name: Unused, type: UInt4}]}\n";

DefinitionFile source(const char* content) { return {"s.yaml", "s.yaml", content, true}; }
DefinitionFile compiled(std::string bytes) { return {"c.ldf", "c.ldf", std::move(bytes), false}; }

std::string printed(const Definitions& definitions) { return qzlog_compiler::printed(definitions.diagnostics); }

TEST(ReadDefinitions, SourceAndItsCompiledFile_SayTheSame) {
  const Definitions written = read_definitions(source(kSource), {});
  EXPECT_TRUE(written.ok());
  EXPECT_TRUE(written.is_source);
  EXPECT_TRUE(written.is_whole);
  EXPECT_EQ(written.shown_path, "s.yaml");
  EXPECT_EQ(written.source, kSource);
  const Definitions read = read_definitions(compiled(written.bytes), {});
  EXPECT_TRUE(read.ok());
  EXPECT_FALSE(read.is_source);
  EXPECT_TRUE(read.is_whole);
  EXPECT_EQ(read.bytes, written.bytes);
  EXPECT_EQ(read.source, "");
  ASSERT_EQ(read.model.entries.size(), 1U);
  EXPECT_EQ(read.model.entries[0].message.stored, written.model.entries[0].message.stored);
  EXPECT_TRUE(read.model.has_names);
  EXPECT_EQ(read.model.entries[0].name, written.model.entries[0].name);
}

TEST(ReadDefinitions, WithoutNames_GivesTheRecordsAlone) {
  const Definitions named = read_definitions(source(kSource), {});
  const Definitions stripped = read_definitions(source(kSource), {.names = false});
  EXPECT_TRUE(named.bytes.starts_with(stripped.bytes));
  EXPECT_LT(stripped.bytes.size(), named.bytes.size());
  const Definitions read = read_definitions(compiled(stripped.bytes), {});
  EXPECT_FALSE(read.model.has_names);
  EXPECT_EQ(read.model.entries.at(0).name, "");
}

TEST(ReadErrorsOnly, DamagedNames_AreToldAllTheSame) {
  std::string bytes = read_definitions(source(kSource), {}).bytes;
  bytes[bytes.size() - 30] ^= 1;
  const Definitions read = qzlog_tool::read_errors_only(compiled(bytes), {});
  EXPECT_TRUE(read.ok() && read.is_whole);
  EXPECT_EQ(printed(read).substr(0, 14), "c.ldf: offset ");
  EXPECT_NE(printed(read).find("[bad-names-section]"), std::string::npos);
}

TEST(ReadDefinitions, SourceWithErrors_IsNotWhole) {
  const Definitions wrong = read_definitions(source(kWrong), {});
  EXPECT_FALSE(wrong.ok());
  EXPECT_FALSE(wrong.is_whole);
  EXPECT_EQ(wrong.bytes, "");
  EXPECT_EQ(printed(wrong), "s.yaml:3:10: error: 'x' is no number [bad-number]\n");
}

TEST(ReadDefinitions, DamagedFile_IsNotWhole) {
  const Definitions damaged = read_definitions(compiled(".LDF"), {});
  EXPECT_FALSE(damaged.ok());
  EXPECT_FALSE(damaged.is_whole);
  EXPECT_EQ(damaged.bytes, ".LDF");
  EXPECT_EQ(printed(damaged), "c.ldf: error: the file ends within the header, at offset 0 [bad-definition-file]\n");
}

TEST(ReadDefinitions, SourceNamedAsCompiled_IsDamage) {
  EXPECT_EQ(printed(read_definitions(compiled(kSource), {})),
            "c.ldf: error: the file does not begin with \".LDF\", at offset 0 [bad-definition-file]\n");
}

TEST(ReadDefinitions, AuxiliarySource_NamesTheStandardOne) {
  const Definitions standard = read_definitions(source(kSource), {});
  const Definitions aux = read_definitions(
      {"a.yaml", "a.yaml", "version: \"1.0\"\nentries:\n  - {id: 7, name: EMPTY, message: \"\"}\n", true},
      {.standard = &standard});
  ASSERT_FALSE(aux.diagnostics.empty());
  ASSERT_FALSE(aux.diagnostics[0].notes.empty());
  EXPECT_EQ(aux.diagnostics[0].notes[0].file, "s.yaml");
}

TEST(ReadErrorsOnly, Warnings_AreLeftOut) {
  EXPECT_FALSE(read_definitions(source(kSurprising), {}).diagnostics.empty());
  EXPECT_TRUE(read_errors_only(source(kSurprising), {}).diagnostics.empty());
  EXPECT_EQ(read_errors_only(source(kWrong), {}).diagnostics.size(), 1U);
}

TEST(ReadWithoutErrors, Errors_ArePrintedAndEndTheCommand) {
  EXPECT_EQ(read_without_errors(source(kSurprising), {}, 2).model.entries.size(), 1U);
  ::testing::internal::CaptureStderr();
  try {
    read_without_errors(source(kWrong), {}, 2);
    ADD_FAILURE();
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "");
    EXPECT_EQ(error.exit_status(), 2);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "s.yaml:3:10: error: 'x' is no number [bad-number]\n"
            "    3 |   - {id: x, name: FULL, message: \"full\"}\n"
            "      |          ^\n"
            "  hint: the id is decimal or 0x hexadecimal, from 0 to 4294967295\n");
}

TEST(MergeDefinitions, TwoSources_GiveOneFile) {
  const Definitions standard = read_definitions(source(kSource), {});
  const Definitions merged = merge_definitions(
      standard,
      {"a.yaml", "a.yaml", "version: \"2.5\"\nentries:\n  - {id: 8, name: EMPTY, message: \"empty\"}\n", true},
      qzlog_compiler::RenderingPaths::kBoth, true);
  EXPECT_TRUE(merged.ok());
  EXPECT_EQ(merged.shown_path, "a.yaml");
  EXPECT_EQ(read_definitions(compiled(merged.bytes), {}).model.entries.size(), 2U);
}

}  // namespace
