#include "tools/compiler/model/attribute_type.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

TEST(FindAttributeType, FullAndShortNames_GiveTheCode) {
  EXPECT_EQ(find_attribute_type("TypeChar32"), TypeChar32);
  EXPECT_EQ(find_attribute_type("Char32"), TypeChar32);
  EXPECT_EQ(find_attribute_type("GUID"), TypeGUID);
  EXPECT_EQ(find_attribute_type("TypeBool"), TypeBool);
}

TEST(FindAttributeType, OtherTexts_GiveNothing) {
  for (const char* name : {"", "Type", "char32", "Unknown", "TypeUnknown", "Char33", "TypeTypeBool"}) {
    EXPECT_EQ(find_attribute_type(name), std::nullopt) << name;
  }
}

struct FormatCase {
  qz_AttributeType type;
  const char* accepted;
  const char* standing_for;
};

TEST(Formats, EveryType_HasItsOwn) {
  const FormatCase cases[] = {
      {TypeBool, "duCP", "d"},  {TypeUInt1, "duCP", "d"}, {TypeSInt1, "duCP", "d"},    {TypeUInt2, "duCP", "d"},
      {TypeSInt2, "duCP", "d"}, {TypeUInt4, "duCP", "d"}, {TypeSInt4, "duCP", "d"},    {TypeFloat, "fCP", "f"},
      {TypeChar32, "s", "s"},   {TypeChar2K, "s", "s"},   {TypeMBChar32, "s", "s"},    {TypeMBChar2K, "s", "s"},
      {TypeDate, "DT", "D"},    {TypeTime, "DT", "T"},    {TypeTimestamp, "DT", "DT"}, {TypeGUID, "", ""},
      {TypeUnknown, "", ""},
  };
  for (const FormatCase& entry : cases) {
    EXPECT_EQ(accepted_formats(entry.type), entry.accepted) << entry.type;
    EXPECT_EQ(default_formats(entry.type), entry.standing_for) << entry.type;
  }
}

TEST(Formats, EveryCharacter_IsKnownWhereItIsListed) {
  for (int code = 0; code < 256; ++code) {
    const char format = static_cast<char>(code);
    EXPECT_EQ(is_known_format(format), kFormatCharacters.find(format) != std::string_view::npos) << code;
  }
}

TEST(SelectorValueLimit, OnlyUnsignedIntegers_HaveOne) {
  EXPECT_EQ(selector_value_limit(TypeUInt1), 255U);
  EXPECT_EQ(selector_value_limit(TypeUInt2), 65535U);
  EXPECT_EQ(selector_value_limit(TypeUInt4), 4294967295U);
  for (const qz_AttributeType type : {TypeBool, TypeSInt1, TypeSInt2, TypeSInt4, TypeFloat, TypeChar32, TypeDate}) {
    EXPECT_EQ(selector_value_limit(type), std::nullopt) << type;
  }
}

TEST(FindStandardField, FiveNames_HaveTypes) {
  for (const char* name : {"PRODUCT_ID", "COMPONENT_ID", "VERSION_ID", "COMPONENT_VERSION_ID"}) {
    EXPECT_EQ(find_standard_field(name), TypeMBChar32) << name;
  }
  EXPECT_EQ(find_standard_field("TIMESTAMP"), TypeTimestamp);
  EXPECT_EQ(find_standard_field("timestamp"), std::nullopt);
  EXPECT_EQ(find_standard_field("TIMEZONE_DIFFERENCE"), std::nullopt);
}

TEST(AllTypeNames, List_BeginsAndEndsWithTheCodes) {
  const std::string names = all_type_names();
  EXPECT_EQ(names.substr(0, 13), "Bool, UInt1, ");
  EXPECT_EQ(names.substr(names.size() - 17), ", Timestamp, GUID");
}

}  // namespace
}  // namespace qzlog_compiler
