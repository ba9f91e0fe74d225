#include "tools/check/compiled_check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/check_fixture.h"
#include "tools/compiler/file/ldf_reader.h"

namespace {

using check_fixture::compiled;
using check_fixture::shown;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::Finding;
using qzlog_compiler::RenderingPaths;
using Texts = std::vector<std::string>;

std::vector<Finding> findings_in(const std::string& bytes, const DefinitionModel* standard = nullptr) {
  const qzlog_compiler::LdfFile file = qzlog_compiler::read_ldf(bytes);
  std::vector<Finding> findings;
  qzlog_tool::CheckReport report("in.ldf", findings);
  qzlog_tool::check_compiled({bytes, &file.model}, standard, RenderingPaths::kBoth, report);
  return findings;
}

class ModelCheck : public ::testing::Test {
 protected:
  const std::string bytes_ = compiled(check_fixture::kSource);
};

TEST_F(ModelCheck, GoodFile_HasNoFinding) { EXPECT_EQ(shown(findings_in(bytes_)), Texts{}); }

TEST_F(ModelCheck, AuxiliaryEntry_KnowsTheStandardAttributes) {
  const DefinitionModel standard = qzlog_compiler::read_ldf(bytes_).model;
  const std::string source = R"(
version: "1.0"
entries:
  - id: 1
    name: FULL
    mask: 0
    raw: ""
    message_id: ""
    selector: {attribute: Why, messages: [{index: 2, value: 20, id: x, raw: "%s%Name% at %s%SITE%: %d%Why%"}]}
)";
  const std::string auxiliary = compiled(source + "    attributes: [{name: Why, type: UInt2}]\n");
  EXPECT_EQ(shown(findings_in(auxiliary, &standard)), Texts{});
  EXPECT_EQ(shown(findings_in(auxiliary)), (Texts{"1 empty-message-id", "1 unknown-attribute", "1 unknown-attribute"}));
}

/// Flipped bytes make lengths, counts, types and templates of every kind.
TEST_F(ModelCheck, AnyByteChanged_IsCheckedAlone_AndOverTheGoodFile) {
  const DefinitionModel standard = qzlog_compiler::read_ldf(bytes_).model;
  std::size_t with_findings = 0;
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    for (const int flip : {0x01, 0x20, 0xFF}) {
      std::string changed = bytes_;
      changed[i] = static_cast<char>(changed[i] ^ flip);
      if (!findings_in(changed).empty()) ++with_findings;
      findings_in(changed, &standard);
    }
  }
  EXPECT_GT(with_findings, 100U);
}

}  // namespace
