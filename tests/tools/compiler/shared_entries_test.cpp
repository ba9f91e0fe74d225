/// The warning about entries that two files define, beside what the library does with them once it has seen all others.
#include <gtest/gtest.h>

#include <string>

#include "qzlog/definition_cache.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "qzlog/qz_exception.h"
#include "tests/support/settings_test.h"
#include "tests/tools/compiler/source_fixture.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

constexpr const char* kHead = "version: '1.0'\nentries:\n";

std::string entry_line(unsigned id) {
  const std::string number = std::to_string(id);
  return "  - {id: " + number + ", name: E" + number + ", message: '{A}', attributes: [{name: A, type: UInt1}]}\n";
}

class SharedEntries : public qz_test::SettingsTest {
 protected:
  SharedEntries() { qz_LOG_LogConfig::SetICUEnabled(false); }

  /// The standard file has the entries 1 to `standard`, the auxiliary one extends the first of them and adds `added`.
  void load(unsigned standard, unsigned added) {
    standard_ = kHead;
    for (unsigned id = 1; id <= standard; ++id) standard_ += entry_line(id);
    auxiliary_ =
        std::string(kHead) + "  - {id: 1, name: E1, selector: {messages: [{index: 1, value: 1, id: S, text: s}]}}\n";
    for (unsigned id = standard + 1; id <= standard + added; ++id) auxiliary_ += entry_line(id);
    const CompileResult compiled = compile_source(standard_, "s", {});
    ASSERT_EQ(printed(compiled.diagnostics), "");
    const CompileResult extension =
        compile_source(auxiliary_, "a", {.standard = &compiled.model, .standard_file = "s"});
    ASSERT_TRUE(extension.ok()) << printed(extension.diagnostics);
    warned_ = !extension.diagnostics.empty();
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", compiled.bytes).c_str());
    qz_LOG_LogConfig::SetAuxDefinitionPath(folder_.write("aux.ldf", extension.bytes).c_str());
    for (unsigned id = 1; id <= standard + added; ++id) use(id);
  }

  /// Whether the entry has the standard file's attribute and message.
  static bool use(unsigned id) {
    try {
      qz_LOG_LogEntry entry(id, 3);
      entry.AddAttrib1u("A", 7);
      return entry.FormatMessage(true) == "7";
    } catch (const QZX_logging_all&) {
      return false;
    }
  }

  std::string standard_;
  std::string auxiliary_;
  bool warned_ = false;
};

TEST_F(SharedEntries, AsManyIdsAsTheLibraryKeeps_StayWholeWithoutAWarning) {
  load(qz_DefinitionCacheSize - 8, 8);
  EXPECT_FALSE(warned_);
  EXPECT_TRUE(use(1));
}

TEST_F(SharedEntries, OneIdMoreInTheStandardFile_IsWarnedOfAndBreaksTheExtendedEntry) {
  load(qz_DefinitionCacheSize + 1, 0);
  EXPECT_TRUE(warned_);
  EXPECT_FALSE(use(1));
}

TEST_F(SharedEntries, OneIdMoreInTheAuxiliaryFile_IsWarnedOfAndBreaksTheExtendedEntry) {
  load(1, qz_DefinitionCacheSize);
  EXPECT_TRUE(warned_);
  EXPECT_FALSE(use(1));
}

TEST_F(SharedEntries, MergedIntoOneFile_StayWholeWithoutAWarning) {
  load(qz_DefinitionCacheSize, 8);
  const CompileResult merged =
      compile_merged(compile_source(standard_, "s", {}).model, "s", auxiliary_, "a", RenderingPaths::kBoth);
  EXPECT_EQ(printed(merged.diagnostics), "");
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(folder_.write("all.ldf", merged.bytes).c_str());
  for (unsigned id = 1; id <= qz_DefinitionCacheSize + 8; ++id) EXPECT_TRUE(use(id)) << id;
  EXPECT_TRUE(use(1));
}

}  // namespace
}  // namespace qzlog_compiler
