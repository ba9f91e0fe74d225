#include "tools/check/library_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/tools/check_fixture.h"
#include "tools/compiler/file/ldf_reader.h"

namespace {

using check_fixture::compiled;
using check_fixture::shown;
using qzlog_compiler::Finding;
using qzlog_tool::CheckReport;
using Texts = std::vector<std::string>;

std::vector<Finding> standard_findings(const std::string& bytes) {
  std::vector<Finding> findings;
  CheckReport report("std.ldf", findings);
  qzlog_tool::check_standard_with_library(bytes, report);
  return findings;
}

std::vector<Finding> auxiliary_findings(const std::string& bytes, const std::string& standard) {
  std::vector<Finding> findings;
  CheckReport report("aux.ldf", findings);
  qzlog_tool::check_auxiliary_with_library(bytes, standard, report);
  return findings;
}

class LibraryCheck : public ::testing::Test {
 protected:
  const std::string standard_ = compiled(check_fixture::kSource);
};

TEST_F(LibraryCheck, WholeFile_HasNoFinding) { EXPECT_EQ(shown(standard_findings(standard_)), Texts{}); }

TEST_F(LibraryCheck, Refusal_HasTheLibrarysText) {
  const auto findings = standard_findings(".LDF");
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].text, "<QZX_logging_invalid_definition> Unable to access definition file successfully.");
  EXPECT_EQ(findings[0].rule.name(), "refused-file");
  EXPECT_FALSE(findings[0].entry_id);
}

/// What the reader of the tools calls damage is what the library refuses.
TEST_F(LibraryCheck, EveryPrefix_IsRefusedWhereItIsDamaged) {
  for (std::size_t size = 0; size < standard_.size(); ++size) {
    const std::string prefix = standard_.substr(0, size);
    EXPECT_EQ(standard_findings(prefix).empty(), !qzlog_compiler::read_ldf(prefix).damage) << size;
  }
}

TEST_F(LibraryCheck, EveryPrefixOfAnAuxiliaryFile_IsRefusedWhereItIsDamaged) {
  const std::string auxiliary = compiled(R"(
version: "1.0"
entries: [{id: 3, name: A, message: "A"}, {id: 4, name: B, message: "B"}]
)");
  EXPECT_EQ(shown(auxiliary_findings(auxiliary, standard_)), Texts{});
  for (std::size_t size = 0; size < auxiliary.size(); ++size) {
    const std::string prefix = auxiliary.substr(0, size);
    EXPECT_EQ(auxiliary_findings(prefix, standard_).empty(), !qzlog_compiler::read_ldf(prefix).damage) << size;
  }
}

TEST_F(LibraryCheck, StandardFileOverItself_EachEntryIsRefusedOnce) {
  EXPECT_EQ(shown(auxiliary_findings(standard_, standard_)), (Texts{"1 refused-attribute", "2 refused-attribute"}));
}

/// More of them than the library keeps in memory, in a file with as many global attributes as it takes.
TEST_F(LibraryCheck, ManyRefusedEntries_EachIsReportedOnce) {
  constexpr int kCount = 2000;
  std::string source = "version: \"1.0\"\nglobals:\n";
  for (int i = 0; i < 255; ++i) source += "  - {name: G" + std::to_string(i) + ", type: Char32}\n";
  source += "entries:\n";
  Texts expected;
  for (int id = 1; id <= kCount; ++id) {
    source += "  - {id: " + std::to_string(id) + ", name: A" + std::to_string(id) +
              ", message: A, attributes: [{name: Name, type: Char32}]}\n";
    expected.push_back(std::to_string(id) + " refused-attribute");
  }
  const std::string bytes = compiled(source);
  EXPECT_EQ(shown(auxiliary_findings(bytes, bytes)), expected);
}

TEST_F(LibraryCheck, RefusedEntries_DoNotHideEachOther) {
  const std::string auxiliary = compiled(R"(
version: "1.0"
entries:
  - {id: 1, name: FULL, raw: "x", attributes: [{name: K, type: UInt1}], selector: {attribute: K, messages: []}}
  - {id: 2, name: GONE, raw: "x", attributes: [{name: Name, type: Char32}]}
  - {id: 3, name: NEW, raw: "x"}
)");
  EXPECT_EQ(shown(auxiliary_findings(auxiliary, standard_)),
            (Texts{"1 refused-selector-attribute", "2 refused-attribute"}));
}

/// The second record meets what the first one left.
TEST_F(LibraryCheck, IdTwiceInAnAuxiliaryMap_IsRefusedAsTheLibraryRefusesIt) {
  std::string auxiliary = compiled(R"(
version: "1.0"
entries:
  - {id: 3, name: A, raw: "x", attributes: [{name: Name, type: Char32}]}
  - {id: 4, name: B, raw: "x"}
)");
  const std::size_t map = 128;
  std::copy_n(auxiliary.begin() + map, 8, auxiliary.begin() + map + 8);
  EXPECT_EQ(shown(auxiliary_findings(auxiliary, standard_)), Texts{"3 refused-attribute"});
}

TEST_F(LibraryCheck, AnyByteChanged_GivesFindingsOrNone) {
  std::size_t refused = 0;
  for (std::size_t i = 0; i < standard_.size(); ++i) {
    std::string changed = standard_;
    changed[i] = static_cast<char>(changed[i] ^ 0xFF);
    if (!standard_findings(changed).empty()) ++refused;
    if (!auxiliary_findings(changed, standard_).empty()) ++refused;
  }
  EXPECT_GT(refused, standard_.size());  // over itself every file is refused
}

}  // namespace
