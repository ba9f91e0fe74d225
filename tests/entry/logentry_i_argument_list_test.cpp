#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <string>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class ArgumentList : public EntryTest {};

constexpr const char* kEnd = nullptr;

void add(Entry* entry, ...) {
  std::va_list arguments;
  va_start(arguments, entry);
  try {
    entry->add_attributes(arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
}

TEST_F(ArgumentList, EveryType_IsAdded) {
  for (const std::string& prefix : {std::string(), std::string("Global")}) {
    Entry entry(kId, 0);
    const auto name = [&](const char* type) { return prefix + type; };
    add(&entry, name("TypeBool").c_str(), 1, name("TypeUInt1").c_str(), 200, name("TypeSInt1").c_str(), -3,
        name("TypeUInt2").c_str(), 60000, name("TypeSInt2").c_str(), -30000, name("TypeUInt4").c_str(), 4000000000U,
        name("TypeSInt4").c_str(), -2000000000, name("TypeFloat").c_str(), 2.5, kEnd);
    EXPECT_TRUE(entry.get_attrib_bool(name("TypeBool").c_str()));
    EXPECT_EQ(entry.get_attrib_1u(name("TypeUInt1").c_str()), 200);
    EXPECT_EQ(entry.get_attrib_1(name("TypeSInt1").c_str()), static_cast<char>(-3));
    EXPECT_EQ(entry.get_attrib_2u(name("TypeUInt2").c_str()), 60000);
    EXPECT_EQ(entry.get_attrib_2(name("TypeSInt2").c_str()), -30000);
    EXPECT_EQ(entry.get_attrib_4u(name("TypeUInt4").c_str()), 4000000000U);
    EXPECT_EQ(entry.get_attrib_4(name("TypeSInt4").c_str()), -2000000000);
    EXPECT_EQ(entry.get_attrib_float8(name("TypeFloat").c_str()), 2.5);
    for (int code = TypeChar32; code <= TypeChar2K; ++code) {
      add(&entry, name(type_name(code)).c_str(), "a\nb", kEnd);
      EXPECT_STREQ(entry.get_attrib_str(name(type_name(code)).c_str()), "a\\nb");
    }
    for (int code = TypeMBChar32; code <= TypeMBChar2K; ++code) {
      add(&entry, name(type_name(code)).c_str(), "a\nb", kEnd);
      EXPECT_STREQ(entry.get_attrib_mbstr(name(type_name(code)).c_str()), "a\\nb");
    }
    for (int code = TypeDate; code <= TypeTimestamp; ++code) {
      add(&entry, name(type_name(code)).c_str(), "2026-11-21 08:15:30 GMT", kEnd);
      EXPECT_EQ(entry.get_attrib_time(name(type_name(code)).c_str()).unix_seconds(), 1795248930);
      unsigned char type = 0;
      EXPECT_EQ(entry._get_attribute_internal(name(type_name(code)).c_str(), type)->get_type(), code);
    }
  }
}

TEST_F(ArgumentList, TimesAsText_AreParsedWithTheirMode) {
  const TimeZone zone("Asia/Kathmandu");
  struct {
    const char* text;
    long long seconds;
    bool gmt;
  } const cases[] = {
      {"2026-11-21 08:15:30 GMT", 1795248930, true},
      {"2026-11-21 08:15:30", 1795248930 - 345 * 60, false},
      {"2026-11-21T08:15:30Z", 1795248930, true},
      {"2026-11-21T09:15:30.5+01:00", 1795248930, true},
  };
  for (const auto& test_case : cases) {
    Entry entry(kId, 0);
    add(&entry, "TypeTimestamp", test_case.text, kEnd);
    EXPECT_EQ(entry.get_attrib_time("TypeTimestamp").unix_seconds(), test_case.seconds) << test_case.text;
    EXPECT_EQ(entry.get_attrib_time("TypeTimestamp").is_GMT_time_mode(), test_case.gmt) << test_case.text;
  }
}

TEST_F(ArgumentList, TimeThatCannotBeRead_AddsTheZeroTime) {
  for (const char* text : {"", "tomorrow", "2026-02-30 08:15:30", "2026-11-21", static_cast<const char*>(nullptr)}) {
    Entry entry(kId, 0);
    add(&entry, "TypeDate", text, kEnd);
    EXPECT_TRUE(entry.has_value("TypeDate"));
    EXPECT_EQ(entry.get_attrib_time("TypeDate").unix_seconds(), 0);
    EXPECT_TRUE(entry.get_attrib_time("TypeDate").is_GMT_time_mode());
  }
}

TEST_F(ArgumentList, IntegersTooWide_AreNarrowed) {
  Entry entry(kId, 0);
  add(&entry, "TypeUInt1", 300, "TypeSInt1", 200, "TypeUInt2", 65537, "TypeSInt2", 70000, "TypeBool", 256, kEnd);
  EXPECT_EQ(entry.get_attrib_1u("TypeUInt1"), 44);
  EXPECT_EQ(entry.get_attrib_1("TypeSInt1"), static_cast<char>(-56));
  EXPECT_EQ(entry.get_attrib_2u("TypeUInt2"), 1);
  EXPECT_EQ(entry.get_attrib_2("TypeSInt2"), 4464);
  EXPECT_TRUE(entry.get_attrib_bool("TypeBool"));
}

TEST_F(ArgumentList, IntegersOutOfRange_AreRefusedWhereThatIsAskedFor) {
  qz_LOG_LogConfig::SetActionOutOfRange(QZ_OUT_OF_RANGE_REFUSE);
  struct {
    const char* name;
    int lowest;
    int highest;
  } const types[] = {
      {"TypeUInt1", 0, 255}, {"TypeSInt1", -128, 127}, {"TypeUInt2", 0, 65535}, {"TypeSInt2", -32768, 32767}};
  for (const auto& type : types) {
    for (const IdCase& id : kIds) {
      Entry entry(id.id, 0);
      for (const int value : {type.lowest, type.highest}) {
        add(&entry, type.name, value, kEnd);
        EXPECT_EQ(entry.get_attrib_as_4(type.name), value);
      }
      for (const int value : {type.lowest - 1, type.highest + 1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(thrown_by([&] { add(&entry, "TypeUInt4", 7, type.name, value, "TypeSInt4", 8, kEnd); }),
                  "QZX_logging_invalid_attribute_value \"" + std::string(type.name) +
                      " Attribute value is out of range under Entry ID " + id.text + " !\"")
            << value;
        EXPECT_EQ(entry.get_attrib_as_4(type.name), type.highest);
        EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
        EXPECT_FALSE(entry.has_value("TypeSInt4"));
      }
    }
  }
}

TEST_F(ArgumentList, ValuesOfWiderTypes_AreTakenWhereOutOfRangeIsRefused) {
  qz_LOG_LogConfig::SetActionOutOfRange(QZ_OUT_OF_RANGE_REFUSE);
  Entry entry(kId, 0);
  add(&entry, "TypeBool", 256, "TypeUInt4", 4000000000U, "TypeSInt4", INT_MIN, "TypeFloat", 1e300, kEnd);
  EXPECT_TRUE(entry.get_attrib_bool("TypeBool"));
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 4000000000U);
}

TEST_F(ArgumentList, Booleans_AreTrueUnlessZero) {
  for (const int value : {1, 2, -1, 65536, 0}) {
    Entry entry(kId, 0);
    add(&entry, "TypeBool", value, kEnd);
    EXPECT_EQ(entry.get_attrib_bool("TypeBool"), value != 0);
    EXPECT_TRUE(entry.has_value("TypeBool"));
  }
}

TEST_F(ArgumentList, PromotedArguments_AreTakenAsGiven) {
  Entry entry(kId, 0);
  add(&entry, "TypeBool", true, "TypeSInt1", static_cast<char>(-1), "TypeUInt2", static_cast<unsigned short>(65535),
      "TypeFloat", 1.5F, kEnd);
  EXPECT_TRUE(entry.get_attrib_bool("TypeBool"));
  EXPECT_EQ(entry.get_attrib_1("TypeSInt1"), static_cast<char>(-1));
  EXPECT_EQ(entry.get_attrib_2u("TypeUInt2"), 65535);
  EXPECT_EQ(entry.get_attrib_float8("TypeFloat"), 1.5);
}

TEST_F(ArgumentList, NothingOrEmptyName_EndsIt) {
  Entry entry(kId, 0);
  add(&entry, kEnd);
  add(&entry, "");
  add(&entry, "TypeUInt4", 7, "", "TypeSInt4", 8, kEnd);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
  EXPECT_FALSE(entry.has_value("TypeSInt4"));
}

TEST_F(ArgumentList, SameNameTwice_KeepsTheSecondValue) {
  Entry entry(kId, 0);
  add(&entry, "TypeUInt4", 7, "TypeUInt4", 8, kEnd);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 8U);
}

TEST_F(ArgumentList, UndefinedName_ThrowsAfterAddingThePairsBefore) {
  for (const IdCase& id : kIds) {
    Entry entry(id.id, 0);
    EXPECT_EQ(thrown_by([&] { add(&entry, "TypeUInt4", 7, "Nowhere", 1, "TypeSInt4", 8, kEnd); }),
              "QZX_logging_invalid_attribute_name \"Nowhereis an invalid attibute under Entry ID " +
                  std::string(id.text) + " !\"");
    EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
    EXPECT_FALSE(entry.has_value("TypeSInt4"));
  }
}

TEST_F(ArgumentList, UndefinedName_WritesRecord) {
  Entry entry(kId, 0);
  EXPECT_EQ(records_at(1, [&] { add(&entry, "Nowhere", 1, kEnd); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::add_attributes, attribute_name is invalid\n"}));
}

TEST_F(ArgumentList, Guid_ThrowsAsTheTextAddDoes) {
  for (const IdCase& id : kIds) {
    Entry entry(id.id, 0);
    EXPECT_EQ(thrown_by([&] { add(&entry, "TypeGUID", "0123", kEnd); }),
              "QZX_logging_attribute_type_mismatch \"Used the wrong add method.\"");
    EXPECT_FALSE(entry.has_value("TypeGUID"));
  }
}

TEST_F(ArgumentList, NullText_Throws) {
  Entry entry(kId, 0);
  for (const char* name : {"TypeChar32", "TypeMBChar32"}) {
    EXPECT_EQ(thrown_by([&] { add(&entry, name, static_cast<const char*>(nullptr), kEnd); }),
              "QZX_logging_illegal_argument \"invalid argument\"");
  }
}

TEST_F(ArgumentList, TooLongText_ThrowsOrIsCut) {
  Entry entry(kId, 0);
  const std::string text(33, 'x');
  EXPECT_EQ(thrown_by([&] { add(&entry, "TypeChar32", text.c_str(), kEnd); }),
            "QZX_logging_invalid_attribute_value \"TypeChar32 Attribute value is overflow under Entry ID 1001 !\"");
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  add(&entry, "TypeChar32", text.c_str(), "TypeMBChar32", text.c_str(), kEnd);
  EXPECT_EQ(entry.get_attrib_str("TypeChar32"), std::string(32, 'x'));
  EXPECT_EQ(entry.get_attrib_mbstr("TypeMBChar32"), std::string(32, 'x'));
}

TEST_F(ArgumentList, TypesWithoutValue_ConsumeNoArgument) {
  for (const int type : {0, 25}) {
    const std::string name = "Type" + std::to_string(type);
    Entry::add_product_specific_attribute_definition(0, name.c_str(), static_cast<qz_AttributeType>(type));
    Entry entry(kId, 0);
    add(&entry, name.c_str(), "TypeUInt4", 7, name.c_str(), name.c_str(), "TypeSInt4", 8, kEnd);
    EXPECT_FALSE(entry.has_value(name.c_str()));
    EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
    EXPECT_EQ(entry.get_attrib_4("TypeSInt4"), 8);
  }
}

TEST_F(ArgumentList, WithoutId_ThrowsNotInitialized) {
  Entry entry;
  EXPECT_EQ(thrown_by([&] { add(&entry, "COMPUTER_NAME", "host", kEnd); }),
            "QZX_logging_misc \"_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized\"");
}

}  // namespace
