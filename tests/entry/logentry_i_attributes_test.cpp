#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

using namespace qzlog;

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class EntryAttributes : public EntryTest {};

constexpr const char* kIllegal = "QZX_logging_illegal_argument \"invalid argument\"";
constexpr const char* kNotInitialized =
    "QZX_logging_misc \"_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized\"";

std::string invalid_name(const std::string& name, const std::string& id) {
  return "QZX_logging_invalid_attribute_name \"" + name + "is an invalid attibute under Entry ID " + id + " !\"";
}

/// An add method, the range of type codes it serves, and how it refuses the others: a text with or without the ID.
struct Add {
  const char* method;
  void (*call)(Entry& entry, const char* name);
  int first;
  int last;
  const char* mismatch;
  bool mismatch_names_id;
};

constexpr const char* kUsedWrong = "Used the wrong add method under Entry ID ";

const Add kAdds[] = {
    {"bool", [](Entry& e, const char* n) { e.add_attrib_bool(n, true); }, TypeBool, TypeBool, kUsedWrong, true},
    {"1u", [](Entry& e, const char* n) { e.add_attrib_1u(n, 1); }, TypeUInt1, TypeUInt1, kUsedWrong, true},
    {"1", [](Entry& e, const char* n) { e.add_attrib_1(n, 1); }, TypeSInt1, TypeSInt1, kUsedWrong, true},
    {"2u", [](Entry& e, const char* n) { e.add_attrib_2u(n, 1); }, TypeUInt2, TypeUInt2, kUsedWrong, true},
    {"2", [](Entry& e, const char* n) { e.add_attrib_2(n, 1); }, TypeSInt2, TypeSInt2, kUsedWrong, true},
    {"4u", [](Entry& e, const char* n) { e.add_attrib_4u(n, 1); }, TypeUInt4, TypeUInt4, kUsedWrong, true},
    {"4", [](Entry& e, const char* n) { e.add_attrib_4(n, 1); }, TypeSInt4, TypeSInt4, kUsedWrong, true},
    {"float8", [](Entry& e, const char* n) { e.add_attrib_float8(n, 1.5); }, TypeFloat, TypeFloat, kUsedWrong, true},
    {"time", [](Entry& e, const char* n) { e.add_attrib_time(n, qz_Time()); }, TypeDate, TypeTimestamp,
     "Use the wrong add method under Entry ID ", true},
    {"str", [](Entry& e, const char* n) { e.add_attrib_str(n, "text", true); }, TypeChar32, TypeChar2K,
     "Used the wrong add method.", false},
    {"mbstr", [](Entry& e, const char* n) { e.add_attrib_mbstr(n, "text", true); }, TypeMBChar32, TypeMBChar2K,
     kUsedWrong, true},
};

std::string mismatch(const Add& add, const std::string& id) {
  return "QZX_logging_attribute_type_mismatch \"" + std::string(add.mismatch) +
         (add.mismatch_names_id ? id + " !" : "") + "\"";
}

/// Every type by its own name and by its global one, and the types 0 and 25, which only run-time definitions have.
std::vector<LdfAttribute> all_names() {
  std::vector<LdfAttribute> names = own_attributes();
  names.pop_back();
  for (int code = TypeBool; code <= TypeGUID; ++code) {
    names.push_back({std::string("Global") + type_name(code), static_cast<unsigned>(code)});
  }
  for (const int code : {0, 25}) {
    const std::string name = "Type" + std::to_string(code);
    Entry::add_product_specific_attribute_definition(0, name.c_str(), static_cast<qz_AttributeType>(code));
    names.push_back({name, static_cast<unsigned>(code)});
  }
  return names;
}

TEST_F(EntryAttributes, EveryAddOnEveryType_StoresThatTypeOrRefuses) {
  const std::vector<LdfAttribute> names = all_names();
  for (const IdCase& id : kIds) {
    for (const LdfAttribute& attribute : names) {
      for (const Add& add : kAdds) {
        SCOPED_TRACE(std::string(add.method) + " on " + attribute.name + " under " + id.text);
        Entry entry(id.id, 0);
        const auto code = static_cast<int>(attribute.type);
        const bool fits = add.first <= code && code <= add.last;
        EXPECT_EQ(thrown_by([&] { add.call(entry, attribute.name.c_str()); }),
                  fits ? "nothing" : mismatch(add, id.text));
        qz_AttributeType type = TypeUnknown;
        EXPECT_EQ(entry.check_attribute(attribute.name.c_str(), type), fits ? 0 : 1);
        EXPECT_EQ(static_cast<int>(type), code);
      }
    }
  }
}

TEST_F(EntryAttributes, EveryAddWithNullOrEmptyName_Throws) {
  for (const Add& add : kAdds) {
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
      Entry entry(kId, 0);
      EXPECT_EQ(thrown_by([&] { add.call(entry, name); }), kIllegal) << add.method;
      Entry without_id;
      EXPECT_EQ(thrown_by([&] { add.call(without_id, name); }), kIllegal) << add.method;
    }
  }
}

TEST_F(EntryAttributes, EveryAddWithUndefinedName_ThrowsWithNameAndId) {
  for (const IdCase& id : kIds) {
    for (const Add& add : kAdds) {
      Entry entry(id.id, 0);
      EXPECT_EQ(thrown_by([&] { add.call(entry, "Nowhere"); }), invalid_name("Nowhere", id.text)) << add.method;
      EXPECT_FALSE(entry.has_value("Nowhere"));
    }
  }
}

TEST_F(EntryAttributes, EveryAddWithoutId_ThrowsNotInitialized) {
  for (const Add& add : kAdds) {
    Entry entry;
    EXPECT_EQ(thrown_by([&] { add.call(entry, "COMPUTER_NAME"); }), kNotInitialized) << add.method;
    EXPECT_FALSE(entry.has_value("COMPUTER_NAME"));
  }
}

TEST_F(EntryAttributes, EveryAddAfterAFailedNewId_ThrowsNotInitialized) {
  for (const Add& add : kAdds) {
    Entry entry(kId, 0);
    EXPECT_NE(thrown_by([&] { entry.set_entry_id(kUnknownId); }), "nothing");
    EXPECT_EQ(thrown_by([&] { add.call(entry, type_name(add.first)); }), kNotInitialized) << add.method;
  }
}

TEST_F(EntryAttributes, VeryLongUndefinedName_IsInTheTextWhole) {
  const std::string name(20000, 'n');
  Entry entry(kId, 0);
  for (const Add& add : kAdds) {
    EXPECT_EQ(thrown_by([&] { add.call(entry, name.c_str()); }), invalid_name(name, "1001")) << add.method;
  }
}

TEST_F(EntryAttributes, NameWithPercentSigns_IsInTextAndRecordAsItStands) {
  Entry entry(kId, 0);
  EXPECT_EQ(thrown_by([&] { entry.add_attrib_4("%s%n%d", 1); }), invalid_name("%s%n%d", "1001"));
  EXPECT_EQ(records_at(1, [&] { entry.add_attrib_4("%s%n%d", 1); }),
            Texts({"logentry_i:# _qz_LOG_log_entry_imp::_check_attribute, %s%n%d is an invalid attribute under Entry "
                   "ID\n"}));
}

// The records of refused adds.

bool is_scalar(const Add& add) { return add.last <= TypeFloat; }

TEST_F(EntryAttributes, UndefinedName_WritesTheRecordOfTheMethod) {
  for (const Add& add : kAdds) {
    SCOPED_TRACE(add.method);
    Entry entry(kId, 0);
    const std::string method = add.method;
    Texts expected;
    if (is_scalar(add)) {
      expected = {
          "logentry_i:# _qz_LOG_log_entry_imp::_check_attribute, Nowhere is an invalid attribute under Entry ID\n"};
    } else if (method == "str") {
      expected = {"logentry_i:# _qz_LOG_log_entry_imp::add_attrib_str, can not find attribute :Nowhere\n"};
    } else if (method == "mbstr") {
      expected = {"logentry_i:# _qz_LOG_log_entry_imp::add_attrib_mbstr, can not find attribute :Nowhere\n"};
    }
    EXPECT_EQ(records_at(1, [&] { add.call(entry, "Nowhere"); }), expected);
  }
}

TEST_F(EntryAttributes, WrongType_ScalarsAloneWriteARecord) {
  for (const Add& add : kAdds) {
    SCOPED_TRACE(add.method);
    Entry entry(kId, 0);
    Texts expected;
    if (is_scalar(add)) {
      expected = {"logentry_i:# _qz_LOG_log_entry_imp::_check_attribute, attribute type is not sample as provide\n"};
    }
    EXPECT_EQ(records_at(1, [&] { add.call(entry, "TypeGUID"); }), expected);
  }
}

TEST_F(EntryAttributes, NullText_ThrowsAndStrAloneWritesARecord) {
  Entry entry(kId, 0);
  const Texts expected = {"logentry_i:# _qz_LOG_log_entry_imp::add_attrib_str, name or value equal NULL\n"};
  for (const char* name : {"TypeChar32", "TypeMBChar32", "TypeUInt4", "Nowhere"}) {
    EXPECT_EQ(thrown_by([&] { entry.add_attrib_str(name, nullptr, true); }), kIllegal);
    EXPECT_EQ(thrown_by([&] { entry.add_attrib_mbstr(name, nullptr, true); }), kIllegal);
    EXPECT_EQ(records_at(1, [&] { entry.add_attrib_str(name, nullptr, true); }), expected);
    EXPECT_EQ(records_at(1, [&] { entry.add_attrib_mbstr(name, nullptr, true); }), Texts());
  }
  EXPECT_EQ(records_at(1, [&] { entry.add_attrib_str("", "text", true); }), expected);
  EXPECT_EQ(records_at(1, [&] { entry.add_attrib_str(nullptr, "text", true); }), expected);
  EXPECT_EQ(records_at(1, [&] { entry.add_attrib_mbstr("", "text", true); }), Texts());
}

// Storing.

TEST_F(EntryAttributes, AddedTwice_KeepsOneObjectWithTheSecondValue) {
  for (const Add& add : kAdds) {
    for (int code = add.first; code <= add.last; ++code) {
      Entry entry(kId, 0);
      unsigned char type = 0;
      add.call(entry, type_name(code));
      const _qz_LOG_type_base* stored = entry._get_attribute_internal(type_name(code), type);
      add.call(entry, type_name(code));
      EXPECT_EQ(entry._get_attribute_internal(type_name(code), type), stored) << type_name(code);
      EXPECT_TRUE(entry.remove_attrib(type_name(code)));
      EXPECT_FALSE(entry.has_value(type_name(code)));
    }
  }
}

TEST_F(EntryAttributes, AddedTwice_ReadsTheSecondValue) {
  Entry entry(kId, 0);
  for (const unsigned value : {1U, 4000000000U}) {
    entry.add_attrib_4u("TypeUInt4", value);
    EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), value);
  }
  for (const char* text : {"first", "", "a text longer than what is kept inside"}) {
    entry.add_attrib_str("TypeChar64", text, true);
    entry.add_attrib_mbstr("TypeMBChar64", text, true);
    EXPECT_STREQ(entry.get_attrib_str("TypeChar64"), text);
    EXPECT_STREQ(entry.get_attrib_mbstr("TypeMBChar64"), text);
  }
}

TEST_F(EntryAttributes, ItsOwnTextAddedAgain_StaysThatText) {
  Entry entry(kId, 0);
  entry.add_attrib_str("TypeChar64", "a text of its own", true);
  entry.add_attrib_str("TypeChar64", entry.get_attrib_str("TypeChar64"), true);
  EXPECT_STREQ(entry.get_attrib_str("TypeChar64"), "a text of its own");
  entry.add_attrib_mbstr("TypeMBChar64", "a text of its own", true);
  entry.add_attrib_mbstr("TypeMBChar64", entry.get_attrib_mbstr("TypeMBChar64") + 2, true);
  EXPECT_STREQ(entry.get_attrib_mbstr("TypeMBChar64"), "text of its own");
}

TEST_F(EntryAttributes, OwnAndGlobalOfOneName_TheOwnTypeCounts) {
  Entry entry(kId, 0);
  EXPECT_EQ(thrown_by([&] { entry.add_attrib_str("Shadowed", "text", true); }),
            "QZX_logging_attribute_type_mismatch \"Used the wrong add method.\"");
  entry.add_attrib_4u("Shadowed", 7);
  EXPECT_EQ(entry.get_attrib_4u("Shadowed"), 7U);
  Entry plain(kPlainId, 0);
  plain.add_attrib_str("Shadowed", "text", true);
  EXPECT_STREQ(plain.get_attrib_str("Shadowed"), "text");
}

TEST_F(EntryAttributes, Names_AreCaseSensitiveAndWhole) {
  Entry entry(kId, 0);
  for (const char* name : {"typeuint4", "TypeUInt", "TypeUInt4 ", " TypeUInt4"}) {
    EXPECT_EQ(thrown_by([&] { entry.add_attrib_4u(name, 7); }), invalid_name(name, "1001"));
  }
}

TEST_F(EntryAttributes, AddedAfterANewIdGivesTheNameAnotherType_ReplacesValueAndCode) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("TypeUInt4", 7);
  entry.add_attrib_str("TypeChar32", "text", true);
  entry.add_attrib_mbstr("TypeMBChar32", "text", true);
  entry.set_entry_id(kOtherTypesId);
  entry.add_attrib_str("TypeUInt4", "a text where a number was", true);
  entry.add_attrib_4u("TypeChar32", 9);
  entry.add_attrib_time("TypeMBChar32", qz_Time::from_unix_seconds(5));
  EXPECT_STREQ(entry.get_attrib_str("TypeUInt4"), "a text where a number was");
  EXPECT_EQ(entry.get_attrib_4u("TypeChar32"), 9U);
  EXPECT_EQ(entry.get_attrib_time("TypeMBChar32").unix_seconds(), 5);
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(entry.check_attribute("TypeUInt4", type), 0);
  EXPECT_EQ(type, TypeChar32);
  EXPECT_EQ(entry.check_attribute("TypeMBChar32", type), 0);
  EXPECT_EQ(type, TypeTimestamp);
  EXPECT_TRUE(entry.remove_attrib("TypeUInt4"));
  EXPECT_FALSE(entry.has_value("TypeUInt4"));
}

TEST_F(EntryAttributes, ScalarExtremes_AreStoredWhole) {
  Entry entry(kId, 0);
  for (const bool value : {false, true}) {
    entry.add_attrib_bool("TypeBool", value);
    EXPECT_EQ(entry.get_attrib_bool("TypeBool"), value);
  }
  for (const int value : {0, 1, 127, 128, 255}) {
    entry.add_attrib_1u("TypeUInt1", static_cast<unsigned char>(value));
    EXPECT_EQ(entry.get_attrib_1u("TypeUInt1"), value);
    entry.add_attrib_1("TypeSInt1", static_cast<char>(value - 128));
    EXPECT_EQ(entry.get_attrib_1("TypeSInt1"), static_cast<char>(value - 128));
    entry.add_attrib_2u("TypeUInt2", static_cast<unsigned short>(value * 257));
    EXPECT_EQ(entry.get_attrib_2u("TypeUInt2"), value * 257);
    entry.add_attrib_2("TypeSInt2", static_cast<short>(value * 257 - 32768));
    EXPECT_EQ(entry.get_attrib_2("TypeSInt2"), value * 257 - 32768);
    entry.add_attrib_4("TypeSInt4", static_cast<int>(value * 16843009LL - 2147483648LL));
    EXPECT_EQ(entry.get_attrib_4("TypeSInt4"), value * 16843009LL - 2147483648LL);
  }
  for (const double value : {0.0, -0.0, 1e308, -5e-324, 0.1}) {
    entry.add_attrib_float8("TypeFloat", value);
    EXPECT_EQ(entry.get_attrib_float8("TypeFloat"), value);
  }
}

TEST_F(EntryAttributes, Times_KeepMomentAndMode) {
  const TimeZone zone("Asia/Kathmandu");
  qz_Time local = qz_Time::from_unix_seconds(1000000);
  local.GMT_to_local();
  for (int code = TypeDate; code <= TypeTimestamp; ++code) {
    Entry entry(kId, 0);
    entry.add_attrib_time(type_name(code), local);
    EXPECT_EQ(entry.get_attrib_time(type_name(code)).unix_seconds(), 1000000);
    EXPECT_FALSE(entry.get_attrib_time(type_name(code)).is_GMT_time_mode());
    unsigned char type = 0;
    EXPECT_EQ(entry._get_attribute_internal(type_name(code), type)->get_type(), code);
  }
}

// The common steps.

TEST_F(EntryAttributes, CheckAttribute_RightType_GivesTheDefinition) {
  const Entry entry(kId, 0);
  EXPECT_STREQ(entry._check_attribute("TypeUInt4", TypeUInt4)->get_name(), "TypeUInt4");
  EXPECT_EQ(entry._check_attribute("TypeGUID", TypeGUID)->get_type(), TypeGUID);
  EXPECT_EQ(entry._check_attribute("GlobalTypeDate", TypeDate)->get_type(), TypeDate);
}

TEST_F(EntryAttributes, CheckAttribute_OwnAndGlobalOnes_ChangesNothingInTheEntry) {
  const Entry entry(kId, 0);
  const auto bytes = [&entry] { return std::string(reinterpret_cast<const char*>(&entry), sizeof(entry)); };
  const std::string before = bytes();
  for (const auto& [name, type] : {std::pair("TypeBool", TypeBool), std::pair("TypeGUID", TypeGUID),
                                   std::pair("TypeUInt4", TypeUInt4), std::pair("GlobalTypeDate", TypeDate)}) {
    entry._check_attribute(name, type);
    EXPECT_TRUE(bytes() == before) << name;
  }
}

TEST_F(EntryAttributes, AddAttribute_NullOrEmptyName_ThrowsWithRecordAndFreesTheValue) {
  Entry entry(kId, 0);
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(thrown_by([&] { entry._add_attribute(name, new StoredValue<TypeUInt4>(7)); }), kIllegal);
    EXPECT_EQ(records_at(1, [&] { entry._add_attribute(name, new StoredValue<TypeUInt4>(7)); }),
              Texts({"logentry_i:# _qz_LOG_log_entry_imp::_add_attribute, name=NULL\n"}));
  }
}

TEST_F(EntryAttributes, AddAttribute_AnyName_IsStoredUnchecked) {
  Entry entry;
  entry._add_attribute("Nowhere", new StoredValue<TypeUInt4>(7));
  EXPECT_EQ(entry.get_attrib_4u("Nowhere"), 7U);
}

// Removing and asking.

TEST_F(EntryAttributes, Remove_Set_TrueOnce) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("TypeUInt4", 7);
  entry.add_attrib_str("TypeChar32", "text", true);
  EXPECT_TRUE(entry.remove_attrib("TypeUInt4"));
  EXPECT_FALSE(entry.remove_attrib("TypeUInt4"));
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 0U);
  EXPECT_STREQ(entry.get_attrib_str("TypeChar32"), "text");
}

TEST_F(EntryAttributes, Remove_UnsetOrUndefinedOrWithoutId_False) {
  EXPECT_FALSE(Entry(kId, 0).remove_attrib("TypeUInt4"));
  EXPECT_FALSE(Entry(kId, 0).remove_attrib("Nowhere"));
  EXPECT_FALSE(Entry().remove_attrib("TypeUInt4"));
}

TEST_F(EntryAttributes, Remove_NullOrEmptyName_ThrowsWithRecordWithoutLineBreak) {
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    Entry entry(kId, 0);
    EXPECT_EQ(thrown_by([&] { entry.remove_attrib(name); }), kIllegal);
    EXPECT_EQ(records_at(1, [&] { entry.remove_attrib(name); }),
              Texts({"logentry_i:# _qz_LOG_log_entry_imp::remove_attrib, name==NULL"}));
  }
}

TEST_F(EntryAttributes, Check_NullOrEmptyName_MinusOneAndTypeUntouched) {
  const Entry entry(kId, 0);
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    qz_AttributeType type = TypeFloat;
    EXPECT_EQ(entry.check_attribute(name, type), -1);
    EXPECT_EQ(type, TypeFloat);
  }
}

TEST_F(EntryAttributes, Check_Undefined_MinusOneAndTypeUnknown) {
  qz_AttributeType type = TypeFloat;
  EXPECT_EQ(Entry(kId, 0).check_attribute("Nowhere", type), -1);
  EXPECT_EQ(type, TypeUnknown);
}

TEST_F(EntryAttributes, Check_DefinedButUnset_OneAndTheDefinedType) {
  const Entry entry(kId, 0);
  for (int code = TypeBool; code <= TypeGUID; ++code) {
    for (const std::string& prefix : {std::string(), std::string("Global")}) {
      qz_AttributeType type = TypeUnknown;
      EXPECT_EQ(entry.check_attribute((prefix + type_name(code)).c_str(), type), 1);
      EXPECT_EQ(static_cast<int>(type), code);
    }
  }
}

TEST_F(EntryAttributes, Check_SetUnderAnotherId_ZeroAndTheStoredType) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("TypeUInt4", 7);
  entry.set_entry_id(kOtherTypesId);
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(entry.check_attribute("TypeUInt4", type), 0);
  EXPECT_EQ(type, TypeUInt4);
}

TEST_F(EntryAttributes, Check_WithoutId_FindsOnlyGlobals) {
  const Entry entry;
  qz_AttributeType type = TypeUnknown;
  EXPECT_EQ(entry.check_attribute("COMPUTER_NAME", type), 1);
  EXPECT_EQ(type, TypeMBChar64);
  EXPECT_EQ(entry.check_attribute("TypeUInt4", type), -1);
  EXPECT_EQ(type, TypeUnknown);
}

}  // namespace
