#include "tools/compiler/source/compiler.h"

#include <gtest/gtest.h>

#include <ctime>
#include <sstream>

#include "tests/tools/compiler/example_model.h"
#include "tests/tools/compiler/source_fixture.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"

namespace qzlog_compiler {
namespace {

constexpr const char* kExample = R"(version: "2.5"
globals:
  - {name: HOST, type: MBChar64}
entries:
  - {id: 0x01020304, name: PLAIN, raw: "", mask: 0, message_id: ""}
  - id: 7
    name: FULL
    word: 9
    mask: 5
    message: "{R}"
    message_id: m
    attributes: [{name: R, type: UInt2, redirect: r}]
    selector: {attribute: R, messages: [{index: 1, value: 0x10, id: s, raw: "é"}]}
)";

TEST(CompileSource, ExampleSource_GivesTheBytesOfTheFormat) {
  const CompileResult result = compile_source(kExample, "f", {.names = false});
  EXPECT_EQ(
      printed(result.diagnostics),
      "f:5:65: warning: an empty catalog key: the message fails wherever a catalog is in use [empty-message-id]\n");
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(result.bytes, example_bytes());
}

TEST(CompileSource, ByteOrderMarkAndLineEndsOfWindows_ChangeNothing) {
  std::string text = "\xEF\xBB\xBF";
  for (const char character : std::string(kExample))
    text += character == '\n' ? std::string("\r\n") : std::string(1, character);
  const CompileResult result = compile_source(text, "f", {.names = false});
  EXPECT_EQ(result.bytes, example_bytes());
  EXPECT_EQ(result.diagnostics.at(0).place, TextPlace(5, 65));
}

TEST(CompileSource, Names_StandBehindTheRecords) {
  const CompileResult result = compile_source(kExample, "f", {});
  std::string expected = example_bytes();
  append_names(result.model, expected);
  EXPECT_EQ(result.bytes, expected);
  EXPECT_NE(expected, example_bytes());
}

TEST(CompileSource, AnyError_LeavesNoBytes) {
  const CompileResult result = compile_source("version: 1\nentries: []\n", "f", {});
  EXPECT_FALSE(result.ok());
  EXPECT_EQ(result.bytes, "");
}

TEST(CompileSource, PathAskedFor_ChoosesTheTemplate) {
  const std::string text = "version: 1.0\nentries: [{id: 1, name: A, message: 'a {{'}]\n";
  CompileOptions options;
  options.path = RenderingPaths::kIcu;
  EXPECT_EQ(compile_source(text, "f", options).model.entries.at(0).message.stored, "a '{'%_%TIMESTAMP%");
  options.path = RenderingPaths::kNarrow;
  EXPECT_EQ(compile_source(text, "f", options).model.entries.at(0).message.stored, "a {%_%TIMESTAMP%");
}

TEST(CompileSource, AuxiliarySource_IsCheckedAgainstItsStandard) {
  const DefinitionModel standard = read_ldf(example_bytes()).model;
  CompileOptions options;
  options.standard = &standard;
  const CompileResult good = compile_source("version: 1.0\nentries: [{id: 7, name: FULL}]\n", "f", options);
  EXPECT_EQ(printed(good.diagnostics), "");
  const EntryDefinition entry = read_ldf(good.bytes).model.entries.at(0);
  EXPECT_EQ(entry.word, 9U);
  EXPECT_EQ(entry.mask, 0U);
  EXPECT_EQ(entry.message_id, "");
  const CompileResult bad = compile_source(
      "version: 1.0\nentries: [{id: 7, name: FULL, attributes: [{name: R, type: UInt2}]}]\n", "f", options);
  EXPECT_EQ(printed(bad.diagnostics),
            "f:2:51: error: the entry has the attribute 'R' in the standard definitions already "
            "[aux-attribute-exists]\n");
}

TEST(CompileMerged, TwoSources_GiveOneFile) {
  const CompileResult merged =
      compile_merged(compile_source("version: 1.0\nentries: [{id: 1, name: A, message: m}]\n", "std", {}).model, "std",
                     "version: 1.0\nentries: [{id: 1, name: A, message: n}, {id: 2, name: B, message: o}]\n", "aux",
                     RenderingPaths::kBoth);
  EXPECT_EQ(printed(merged.diagnostics), "");
  EXPECT_EQ(merged.model.entries.size(), 2U);
  const LdfFile file = read_ldf(merged.bytes);
  EXPECT_FALSE(file.damage);
  ASSERT_EQ(file.model.entries.size(), 2U);
  EXPECT_EQ(file.model.entries[0].message.stored, "n%_%TIMESTAMP%");
  EXPECT_EQ(file.model.entries[1].message.stored, "o%_%TIMESTAMP%");
}

TEST(CompileMerged, ErrorInTheAuxiliarySource_LeavesNoBytes) {
  const CompileResult merged =
      compile_merged(compile_source("version: 1.0\nentries: [{id: 1, name: A, message: m}]\n", "std", {}).model, "std",
                     "version: 1.0\nentries: [{id: x, name: B, message: n}]\n", "aux", RenderingPaths::kBoth);
  EXPECT_FALSE(merged.ok());
  EXPECT_EQ(merged.bytes, "");
  EXPECT_EQ(printed(merged.diagnostics), "aux:2:16: error: 'x' is no number [bad-number]\n");
}

TEST(ErrorsOf, WholeFile_HasNone) { EXPECT_TRUE(errors_of(read_ldf(example_bytes()), "std.ldf").empty()); }

TEST(ErrorsOf, DamagedFile_IsToldWithTheOffset) {
  EXPECT_EQ(printed(errors_of(read_ldf(example_bytes().substr(0, 130)), "std.ldf")),
            "std.ldf: error: the file ends within the global attributes, at offset 128 [bad-definition-file]\n");
}

TEST(ErrorsOf, CountThatTheLibraryWraps_IsToldOnce) {
  LdfFile file;
  file.model.globals.resize(256);
  file.model.entries.resize(1);
  file.model.entries[0].id = 7;
  file.model.entries[0].attributes.resize(256);
  EXPECT_EQ(printed(errors_of(file, "std.ldf")),
            "std.ldf: error: more than 255 global attributes [bad-definition-file]\n");
  file.model.globals.resize(255);
  EXPECT_EQ(printed(errors_of(file, "std.ldf")),
            "std.ldf: error: more than 255 attributes in entry 7 [bad-definition-file]\n");
}

/// A source of many small entries.
std::string many_entries(std::size_t count) {
  std::ostringstream text;
  text << "version: 1.0\nentries:\n";
  for (std::size_t i = 0; i < count; ++i) {
    text << "- id: " << i << "\n  name: E" << i << "\n  message: \"{P1} of {P2}, it's " << i << "\"\n"
         << "  attributes:\n  - {name: P1, type: Char32}\n  - {name: P2, type: UInt4}\n";
  }
  return text.str();
}

/// Processor time, which other work on the machine does not stretch.
std::clock_t time_for(const std::string& text) {
  const std::clock_t start = std::clock();
  EXPECT_TRUE(compile_source(text, "f", {}).ok());
  return std::clock() - start;
}

TEST(CompileSource, TenTimesTheEntries_TakeAboutTenTimesTheTime) {
  const std::clock_t small = time_for(many_entries(2000));
  const std::clock_t large = time_for(many_entries(20000));
  EXPECT_LT(large, 40 * small);  // quadratic work would take a hundred times as long
}

TEST(CompileSource, HostileRepetition_StaysLinear) {
  std::string text = "version: 1.0\nentries:\n- id: 1\n  name: A\n";
  for (int i = 0; i < 50000; ++i) text += "  k" + std::to_string(i) + ": x\n";
  text += "  message: \"";
  for (int i = 0; i < 50000; ++i) text += "{A" + std::to_string(i) + "} ";
  text += "\"\n  attributes:\n";
  for (int i = 0; i < 50000; ++i) text += "  - {name: A" + std::to_string(i) + ", type: Bool}\n";
  const CompileResult result = compile_source(text, "f", {});
  EXPECT_EQ(result.diagnostics.size(), 50002U);
}

}  // namespace
}  // namespace qzlog_compiler
