#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "tests/support/temp_dir.h"
#include "tests/tools/compiler/source_fixture.h"
#include "tools/compiler/source/compiler.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

const std::filesystem::path kCorpora = QZLOG_CORPORA;

CompileResult compile(const std::string& name, const std::string& suffix, RenderingPaths path) {
  CompileOptions options;
  options.path = path;
  options.surprises = false;  // here texts are judged, not definitions
  return compile_source(qz_test::read_file(kCorpora / name / (name + suffix)), name, options);
}

/// The entries whose message a diagnostic is about.
std::set<std::uint32_t> entries_of(const CompileResult& result) {
  std::map<std::uint64_t, std::uint32_t> by_line;
  for (const EntryDefinition& entry : result.model.entries) by_line[entry.message.position.line] = entry.id;
  std::set<std::uint32_t> ids;
  for (const Finding& diagnostic : result.diagnostics) ids.insert(by_line.at(diagnostic.place.line));
  return ids;
}

class Corpus : public ::testing::TestWithParam<std::pair<const char*, std::set<std::uint32_t>>> {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kCorpora)) GTEST_SKIP() << "the corpora are not here";
  }
};

TEST_P(Corpus, OnePathAskedFor_HasNothingToSay) {
  for (const RenderingPaths path : {RenderingPaths::kIcu, RenderingPaths::kNarrow}) {
    const CompileResult result = compile(GetParam().first, ".yaml", path);
    EXPECT_EQ(printed(result.diagnostics), "");
    EXPECT_FALSE(result.bytes.empty());
  }
}

TEST_P(Corpus, BothPaths_WarnAtTheEntriesThatNeedOneEach) {
  const CompileResult result = compile(GetParam().first, ".yaml", RenderingPaths::kBoth);
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(entries_of(result), GetParam().second);
}

TEST(CorpusNarrowOnly, EntriesWithMoreThanTenReferences_AreRefusedForTheIcuPathAlone) {
  if (!std::filesystem::exists(kCorpora)) GTEST_SKIP() << "the corpora are not here";
  for (const char* name : {"Mac", "OpenStack"}) {
    EXPECT_EQ(printed(compile(name, ".narrow-only.yaml", RenderingPaths::kNarrow).diagnostics), "");
    for (const RenderingPaths path : {RenderingPaths::kIcu, RenderingPaths::kBoth}) {
      const CompileResult result = compile(name, ".narrow-only.yaml", path);
      EXPECT_EQ(result.ok(), path == RenderingPaths::kBoth);
      EXPECT_EQ(result.diagnostics.size(), result.model.entries.size());
      for (const Finding& diagnostic : result.diagnostics) EXPECT_EQ(diagnostic.rule, Rule::kTooManyReferences);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Corpora, Corpus,
                         ::testing::Values(std::pair("HDFS", std::set<std::uint32_t>{}),
                                           std::pair("OpenSSH", std::set<std::uint32_t>{}),
                                           std::pair("OpenStack", std::set<std::uint32_t>{1039, 1040}),
                                           std::pair("Mac", std::set<std::uint32_t>{1009, 1105, 1152, 1187, 1188, 1206,
                                                                                    1281, 1303, 1304, 1313})),
                         [](const auto& corpus) { return std::string(corpus.param.first); });

}  // namespace
}  // namespace qzlog_compiler
