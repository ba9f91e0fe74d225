#include "entry/logattrib.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

#include <unicode/unistr.h>

#include "tests/support/support.h"

namespace {

using qz_test::TimeZone;

struct TypeRow {
  int code;
  const char* name;
};
constexpr TypeRow kTypes[] = {{1, "TypeBool"},       {2, "TypeUInt1"},      {3, "TypeSInt1"},      {4, "TypeUInt2"},
                              {5, "TypeSInt2"},      {6, "TypeUInt4"},      {7, "TypeSInt4"},      {8, "TypeFloat"},
                              {9, "TypeChar32"},     {10, "TypeChar64"},    {11, "TypeChar128"},   {12, "TypeChar256"},
                              {13, "TypeChar1K"},    {14, "TypeChar2K"},    {15, "TypeMBChar32"},  {16, "TypeMBChar64"},
                              {17, "TypeMBChar128"}, {18, "TypeMBChar256"}, {19, "TypeMBChar1K"},  {20, "TypeMBChar2K"},
                              {21, "TypeDate"},      {22, "TypeTime"},      {23, "TypeTimestamp"}, {24, "TypeGUID"}};

qz_AttributeType type_of(int code) { return static_cast<qz_AttributeType>(code); }

TEST(AttributeTypeList, Rows_InCodeOrderThenTwoZeroRows) {
  static_assert(std::size(AttributeTypeList) == 26);
  for (std::size_t i = 0; i < std::size(kTypes); ++i) {
    EXPECT_STREQ(AttributeTypeList[i].name, kTypes[i].name);
    EXPECT_EQ(AttributeTypeList[i].code, kTypes[i].code);
  }
  for (std::size_t i = 24; i < 26; ++i) {
    EXPECT_EQ(AttributeTypeList[i].name, nullptr);
    EXPECT_EQ(AttributeTypeList[i].code, 0);
  }
}

TEST(AttributeTypeCode, EveryName_ItsCode) {
  for (const TypeRow& row : kTypes) EXPECT_EQ(_qz_LOG_get_attribute_type_code(row.name), row.code) << row.name;
}

TEST(AttributeTypeCode, TypeGuid_Is24) { EXPECT_EQ(_qz_LOG_get_attribute_type_code("TypeGUID"), 24); }

TEST(AttributeTypeCode, LowerCaseOrTypeUnknown_Zero) {
  EXPECT_EQ(_qz_LOG_get_attribute_type_code("typeguid"), 0);
  EXPECT_EQ(_qz_LOG_get_attribute_type_code("TypeUnknown"), 0);
}

TEST(AttributeTypeCode, OtherTexts_Zero) {
  for (const char* name : {"", "Type", "TypeChar", "TypeChar3", "TypeChar322", " TypeBool", "TypeBool ", "Bool"}) {
    EXPECT_EQ(_qz_LOG_get_attribute_type_code(name), 0) << name;
  }
  EXPECT_EQ(_qz_LOG_get_attribute_type_code(nullptr), 0);
}

TEST(AttributeTypeString, EveryCode_ItsName) {
  for (const TypeRow& row : kTypes) EXPECT_STREQ(_qz_LOG_get_attribute_type_string(type_of(row.code)), row.name);
}

TEST(AttributeTypeString, ZeroOr25_TypeUnknown) {
  EXPECT_STREQ(_qz_LOG_get_attribute_type_string(type_of(0)), "TypeUnknown");
  EXPECT_STREQ(_qz_LOG_get_attribute_type_string(type_of(25)), "TypeUnknown");
}

TEST(AttributeTypeString, Code14_TypeChar2K) {
  EXPECT_STREQ(_qz_LOG_get_attribute_type_string(type_of(14)), "TypeChar2K");
}

TEST(AttributeTypeString, FarOutside_TypeUnknown) {
  for (const int code : {-1, 26, 255, 256, 257, 280, INT_MAX, INT_MIN}) {
    EXPECT_STREQ(_qz_LOG_get_attribute_type_string(type_of(code)), "TypeUnknown") << code;
  }
}

TEST(TypePredicates, EveryCode_AsTheTable) {
  for (int code = -2; code <= 300; ++code) {
    const qz_AttributeType type = type_of(code);
    EXPECT_EQ(is_string_attribute(type), (code >= 9 && code <= 14) || code == 24) << code;
    EXPECT_EQ(is_unicode_string_attribute(type), code >= 15 && code <= 20) << code;
    EXPECT_EQ(is_unsigned_integer_attribute(type), code == 2 || code == 4 || code == 6) << code;
    EXPECT_EQ(is_signed_integer_attribute(type), code == 1 || code == 3 || code == 5 || code == 7) << code;
    EXPECT_EQ(is_integer_attribute(type), code >= 1 && code <= 7) << code;
    EXPECT_EQ(is_float_attribute(type), code == 8) << code;
    EXPECT_EQ(is_time_attribute(type), code >= 21 && code <= 23) << code;
  }
}

TEST(TypePredicates, Bool_IsAnIntegerAndASignedOne) {
  EXPECT_TRUE(is_integer_attribute(TypeBool));
  EXPECT_TRUE(is_signed_integer_attribute(TypeBool));
}

TEST(TypePredicates, Guid_IsAStringButNotAUnicodeString) {
  EXPECT_TRUE(is_string_attribute(TypeGUID));
  EXPECT_FALSE(is_unicode_string_attribute(TypeGUID));
}

TEST(DefaultInfoFields, StandardNames_TheirTypes) {
  const struct {
    const char* name;
    int type;
  } cases[] = {
      {"PRODUCT_ID", 15}, {"COMPONENT_ID", 15}, {"VERSION_ID", 15}, {"COMPONENT_VERSION_ID", 15}, {"TIMESTAMP", 23}};
  for (const auto& c : cases) {
    qz_AttributeType type = TypeUnknown;
    EXPECT_TRUE(is_default_info_fields(c.name, type)) << c.name;
    EXPECT_EQ(type, c.type) << c.name;
  }
}

TEST(DefaultInfoFields, TimezoneDifference_IsNone) {
  qz_AttributeType type = TypeGUID;
  EXPECT_FALSE(is_default_info_fields("TIMEZONE_DIFFERENCE", type));
  EXPECT_EQ(type, TypeGUID);
}

TEST(DefaultInfoFields, OtherNames_FalseAndTypeUntouched) {
  for (const char* name : {"", "product_id", "PRODUCT_ID ", "PRODUCT", "VERSION", "TIMESTAMPS", "PLATFORM_ID",
                           "DAYLIGHT_SAVING_ACTIVE", "COMPONENT_VERSION"}) {
    qz_AttributeType type = TypeGUID;
    EXPECT_FALSE(is_default_info_fields(name, type)) << name;
    EXPECT_EQ(type, TypeGUID) << name;
  }
}

/// The text appended for a value; a test failure when what stood before it or the returned pointer is wrong.
template <typename Value>
std::string appended(const Value& value) {
  char buffer[4096] = "before:";
  EXPECT_EQ(printf_out_attribute_value(buffer, value), buffer);
  const std::string text = buffer;
  EXPECT_EQ(text.substr(0, 7), "before:");
  return text.substr(7);
}

TEST(PrintfOut, CharMinusFive_IsANumber) { EXPECT_EQ(appended(static_cast<char>(-5)), "-5"); }

TEST(PrintfOut, UnsignedCharZero_IsOneDigit) { EXPECT_EQ(appended(static_cast<unsigned char>(0)), "0"); }

TEST(PrintfOut, MostNegativeInt_InFull) { EXPECT_EQ(appended(INT_MIN), "-2147483648"); }

TEST(PrintfOut, DoubleTwo_SixDecimals) { EXPECT_EQ(appended(2.0), "2.000000"); }

TEST(PrintfOut, EveryChar_IsASignedNumber) {
  for (int value = -128; value <= 127; ++value) {
    EXPECT_EQ(appended(static_cast<char>(value)), std::to_string(value));
    EXPECT_EQ(appended(static_cast<unsigned char>(value)), std::to_string(value & 0xFF));
  }
}

TEST(PrintfOut, Integers_DecimalWithoutPadding) {
  for (const int value : {0, 1, -1, 9, 10, -10, 127, -128, 255, 256, 1000, 32767, -32768}) {
    EXPECT_EQ(appended(static_cast<short>(value)), std::to_string(value));
    EXPECT_EQ(appended(value), std::to_string(value));
  }
  for (const unsigned value : {0U, 1U, 10U, 255U, 32768U, 65535U}) {
    EXPECT_EQ(appended(static_cast<unsigned short>(value)), std::to_string(value));
    EXPECT_EQ(appended(value), std::to_string(value));
  }
  EXPECT_EQ(appended(4294967295U), "4294967295");
  EXPECT_EQ(appended(INT_MAX), "2147483647");
}

TEST(PrintfOut, Bool_OneOrZero) {
  EXPECT_EQ(appended(true), "1");
  EXPECT_EQ(appended(false), "0");
}

TEST(PrintfOut, Doubles_AsPercentF) {
  for (const double value :
       {0.0, -0.0, 3.5, -3.5, 0.1, 1e-7, 5e-7, 123456789.125, 1e15, 1e300, DBL_MAX, -DBL_MAX, DBL_MIN,
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
    char expected[400];
    std::snprintf(expected, sizeof(expected), "%f", value);
    EXPECT_EQ(appended(value), expected);
  }
  EXPECT_EQ(appended(3.5), "3.500000");
  EXPECT_EQ(appended(-DBL_MAX).size(), 317U);
}

TEST(PrintfOut, Texts_AppendedAsTheyAre) {
  for (const std::string& text :
       {std::string(), std::string("a"), std::string("\xE9\x80%s%n\n"), std::string(2048, 'x')}) {
    EXPECT_EQ(appended(text.c_str()), text);
    EXPECT_EQ(appended(qz_String(text.c_str())), text);
    EXPECT_EQ(appended(_qz_LOG_ustring(text.c_str())), text);
  }
  char writable[] = "writable";
  char* pointer = writable;
  EXPECT_EQ(appended(pointer), "writable");
}

TEST(PrintfOut, TextWithAZeroByte_EndsThere) {
  qz_String text;
  text._assign("ab\0cd", 5);
  EXPECT_EQ(appended(text), "ab");
}

TEST(PrintfOut, UstringWithoutText_AppendsNothing) {
  EXPECT_EQ(appended(_qz_LOG_ustring()), "");
  EXPECT_EQ(appended(_qz_LOG_ustring(nullptr)), "");
}

TEST(PrintfOut, UnicodeString_AppendsNothing) { EXPECT_EQ(appended(icu::UnicodeString("text")), ""); }

TEST(PrintfOut, Times_PrintedInGmtWhateverTheirMode) {
  const TimeZone zone("Asia/Kathmandu");
  qz_Time time = qz_Time::from_unix_seconds(1795248930);
  EXPECT_EQ(appended(time), "2026-11-21 08:15:30 GMT");
  time.GMT_to_local();
  EXPECT_EQ(appended(time), "2026-11-21 08:15:30 GMT");
  EXPECT_FALSE(time.is_GMT_time_mode()) << "the value itself is not converted";
  EXPECT_EQ(appended(qz_Time()), "1970-01-01 00:00:00 GMT");
}

TEST(PrintfOut, SeveralValues_FollowEachOther) {
  char buffer[64] = "";
  printf_out_attribute_value(buffer, 1);
  printf_out_attribute_value(buffer, "-");
  printf_out_attribute_value(buffer, true);
  printf_out_attribute_value(printf_out_attribute_value(buffer, "-"), 2.5);
  EXPECT_STREQ(buffer, "1-1-2.500000");
}

TEST(PrintfOut, ExactRoom_NothingBeyondItIsTouched) {
  char buffer[16];
  std::memset(buffer, '#', sizeof(buffer));
  buffer[0] = '\0';
  printf_out_attribute_value(buffer, -2147483647 - 1);
  EXPECT_EQ(std::string(buffer, 16), std::string("-2147483648\0####", 16));
}

}  // namespace
