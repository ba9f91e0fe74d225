#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace fs = std::filesystem;

extern "C" {
int fuzz_catalog(const std::uint8_t* bytes, std::size_t size);
int fuzz_catalog_manifest(const std::uint8_t* bytes, std::size_t size);
int fuzz_compiled_file(const std::uint8_t* bytes, std::size_t size);
int fuzz_configuration_file(const std::uint8_t* bytes, std::size_t size);
int fuzz_count_batch(const std::uint8_t* bytes, std::size_t size);
int fuzz_definition_file(const std::uint8_t* bytes, std::size_t size);
int fuzz_definition_source(const std::uint8_t* bytes, std::size_t size);
int fuzz_diff(const std::uint8_t* bytes, std::size_t size);
int fuzz_entry_line(const std::uint8_t* bytes, std::size_t size);
int fuzz_entry_scan(const std::uint8_t* bytes, std::size_t size);
int fuzz_group_state(const std::uint8_t* bytes, std::size_t size);
int fuzz_inspect(const std::uint8_t* bytes, std::size_t size);
int fuzz_journal_export(const std::uint8_t* bytes, std::size_t size);
int fuzz_line_format(const std::uint8_t* bytes, std::size_t size);
int fuzz_merged_logs(const std::uint8_t* bytes, std::size_t size);
int fuzz_names_section(const std::uint8_t* bytes, std::size_t size);
int fuzz_otlp_answer(const std::uint8_t* bytes, std::size_t size);
int fuzz_pattern_nesting(const std::uint8_t* bytes, std::size_t size);
int fuzz_resource_bundle(const std::uint8_t* bytes, std::size_t size);
int fuzz_ship_state(const std::uint8_t* bytes, std::size_t size);
int fuzz_sink_file(const std::uint8_t* bytes, std::size_t size);
int fuzz_syslog(const std::uint8_t* bytes, std::size_t size);
int fuzz_where(const std::uint8_t* bytes, std::size_t size);
}

namespace {

constexpr std::size_t kMaximumSeedSize = 2048;

struct Fuzzer {
  std::string name;
  int (*run)(const std::uint8_t*, std::size_t);
};

std::ostream& operator<<(std::ostream& out, const Fuzzer& fuzzer) { return out << fuzzer.name; }

const Fuzzer kFuzzers[] = {
    {"catalog", fuzz_catalog},
    {"catalog_manifest", fuzz_catalog_manifest},
    {"compiled_file", fuzz_compiled_file},
    {"configuration_file", fuzz_configuration_file},
    {"count_batch", fuzz_count_batch},
    {"definition_file", fuzz_definition_file},
    {"definition_source", fuzz_definition_source},
    {"diff", fuzz_diff},
    {"entry_line", fuzz_entry_line},
    {"entry_scan", fuzz_entry_scan},
    {"group_state", fuzz_group_state},
    {"inspect", fuzz_inspect},
    {"journal_export", fuzz_journal_export},
    {"line_format", fuzz_line_format},
    {"merged_logs", fuzz_merged_logs},
    {"names_section", fuzz_names_section},
    {"otlp_answer", fuzz_otlp_answer},
    {"pattern_nesting", fuzz_pattern_nesting},
    {"resource_bundle", fuzz_resource_bundle},
    {"ship_state", fuzz_ship_state},
    {"sink_file", fuzz_sink_file},
    {"syslog", fuzz_syslog},
    {"where", fuzz_where},
};

std::vector<fs::path> sorted_files(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

class Seeds : public testing::TestWithParam<Fuzzer> {};

// A copy without room behind the end lets the address sanitizer see what reads too far.
TEST_P(Seeds, EachOne_IsTaken) {
  const std::vector<fs::path> seeds = sorted_files(fs::path(QZLOG_FUZZ) / "seeds" / GetParam().name);
  ASSERT_GE(seeds.size(), 5u);
  for (const fs::path& seed : seeds) {
    SCOPED_TRACE(seed);
    const std::string content = qz_test::read_file(seed);
    ASSERT_EQ(content.size(), fs::file_size(seed));
    ASSERT_LE(content.size(), kMaximumSeedSize);
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    EXPECT_EQ(GetParam().run(bytes.data(), bytes.size()), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Fuzzers, Seeds, testing::ValuesIn(kFuzzers),
                         [](const testing::TestParamInfo<Fuzzer>& tested) { return tested.param.name; });

TEST(Fuzzers, EachSourceFile_IsInTheTable) {
  std::vector<std::string> names;
  for (const fs::path& file : sorted_files(QZLOG_FUZZ)) {
    const std::string name = file.filename().string();
    if (name.ends_with("_fuzz.cpp")) names.push_back(name.substr(0, name.find("_fuzz.cpp")));
  }
  std::vector<std::string> expected;
  for (const Fuzzer& fuzzer : kFuzzers) expected.push_back(fuzzer.name);
  EXPECT_EQ(names, expected);
}

}  // namespace
