#include "tools/compiler/source/mapping_fields.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 3> kKeys = {{{"id", true}, {"name", true}, {"note"}}};

TEST(MappingFields, KnownKeys_AreFound) {
  ParsedSource source("{name: N, id: 7}");
  const MappingFields fields(source.root(), kKeys, "a thing", source.diagnostics());
  EXPECT_TRUE(fields.is_mapping());
  ASSERT_NE(fields.find("id"), nullptr);
  EXPECT_EQ(fields.find("id")->text(), "7");
  EXPECT_EQ(fields.find("name")->text(), "N");
  EXPECT_EQ(fields.find("note"), nullptr);
  EXPECT_EQ(source.printed_diagnostics(), "");
}

TEST(MappingFields, EveryMistake_IsReported) {
  ParsedSource source("{id: 7, nmae: N, id: 8, [x]: y}");
  const MappingFields fields(source.root(), kKeys, "a thing", source.diagnostics());
  EXPECT_EQ(fields.find("id")->text(), "7");
  EXPECT_EQ(source.printed_diagnostics(),
            "f:1:1: error: a thing lacks the key 'name' [missing-key]\n"
            "f:1:9: error: unknown key 'nmae' in a thing [unknown-key]\n"
            "f:1:18: error: the key 'id' stands in a thing twice [duplicate-key]\n"
            "f:1:25: error: expected a key, found a list [wrong-type]\n");
}

TEST(MappingFields, OtherKinds_AreReportedAndHaveNoFields) {
  ParsedSource source("[]");
  const MappingFields fields(source.root(), kKeys, "a thing", source.diagnostics());
  EXPECT_FALSE(fields.is_mapping());
  EXPECT_EQ(fields.find("id"), nullptr);
  EXPECT_EQ(source.printed_diagnostics(),
            "f:1:1: error: expected a thing, a mapping with the keys id, name, note, found a list [wrong-type]\n");
}

}  // namespace
}  // namespace qzlog_compiler
