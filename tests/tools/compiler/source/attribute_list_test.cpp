#include "tools/compiler/source/attribute_list.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"

namespace qzlog_compiler {
namespace {

TEST(LoadAttributeList, OwnAttributes_KeepOrderTypesAndRedirects) {
  ParsedSource source("- {name: B, type: UInt4, redirect: free}\n- {name: A, type: TypeGUID}\n");
  AttributeNames names;
  const auto attributes = load_attribute_list(source.root(), AttributeListKind::kOwn, names, source.diagnostics());
  ASSERT_EQ(attributes.size(), 2U);
  EXPECT_EQ(attributes[0].name, "B");
  EXPECT_EQ(attributes[0].type, TypeUInt4);
  EXPECT_EQ(attributes[0].redirect, "free");
  EXPECT_EQ(attributes[0].position, (SourcePosition{1, 10}));
  EXPECT_EQ(attributes[1].type, TypeGUID);
  EXPECT_EQ(attributes[1].redirect, "");
  EXPECT_EQ(names.find("A"), TypeGUID);
  EXPECT_EQ(names.find("C"), std::nullopt);
  EXPECT_EQ(source.printed_diagnostics(), "");
}

TEST(LoadAttributeList, MistakenType_KeepsTheNameWithoutAType) {
  ParsedSource source("- {name: A, type: Char33}\n");
  AttributeNames names;
  const auto attributes = load_attribute_list(source.root(), AttributeListKind::kOwn, names, source.diagnostics());
  EXPECT_EQ(attributes.size(), 1U);
  EXPECT_EQ(names.find("A"), TypeUnknown);
  EXPECT_EQ(source.printed_diagnostics(), "f:1:19: error: unknown type 'Char33' for attribute 'A' [unknown-type]\n");
}

TEST(LoadAttributeList, MistakenName_LeavesEveryOtherNameOpen) {
  ParsedSource source("- {name: 'a%', type: Bool}\n");
  AttributeNames names;
  EXPECT_TRUE(load_attribute_list(source.root(), AttributeListKind::kOwn, names, source.diagnostics()).empty());
  EXPECT_EQ(names.find("anything"), TypeUnknown);
}

TEST(LoadAttributeList, GlobalAttributes_KeepTheirRedirect) {
  ParsedSource source("- {name: A, type: Bool, redirect: x}\n- {name: B, type: Bool, format: x}\n");
  AttributeNames names;
  const auto globals = load_attribute_list(source.root(), AttributeListKind::kGlobal, names, source.diagnostics());
  ASSERT_EQ(globals.size(), 2U);
  EXPECT_EQ(globals[0].redirect, "x");
  EXPECT_EQ(source.printed_diagnostics(), "f:2:25: error: unknown key 'format' in a global attribute [unknown-key]\n");
}

TEST(LoadAttributeList, TwoOfOneName_KeepsTheFirst) {
  ParsedSource source("- {name: A, type: Bool}\n- {name: A, type: Date}\n");
  AttributeNames names;
  const auto attributes = load_attribute_list(source.root(), AttributeListKind::kGlobal, names, source.diagnostics());
  ASSERT_EQ(attributes.size(), 1U);
  EXPECT_EQ(attributes[0].type, TypeBool);
  EXPECT_EQ(source.printed_diagnostics(),
            "f:2:10: error: 'A' is the name of another of these global attributes [duplicate-global]\n");
}

TEST(LoadAttributeList, TwoHundredFiftyFive_AreAllowedAndOneMoreIsNot) {
  std::string text;
  for (int i = 1; i <= 255; ++i) text += "- {name: A" + std::to_string(i) + ", type: Bool}\n";
  ParsedSource full(text);
  ParsedSource over(text + "- {name: B, type: Bool}\n");
  AttributeNames full_names;
  AttributeNames over_names;
  load_attribute_list(full.root(), AttributeListKind::kOwn, full_names, full.diagnostics());
  load_attribute_list(over.root(), AttributeListKind::kOwn, over_names, over.diagnostics());
  EXPECT_EQ(full.printed_diagnostics(), "");
  EXPECT_EQ(over.printed_diagnostics(),
            "f:256:10: error: 256 attributes are too many; 255 are allowed [too-many-attributes]\n");
}

}  // namespace
}  // namespace qzlog_compiler
