#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

using namespace qzlog;

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class EntryReads : public EntryTest {};

constexpr const char* kIllegal = "QZX_logging_illegal_argument \"invalid argument\"";
constexpr const char* kNotInitialized =
    "QZX_logging_misc \"_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized\"";

std::string mismatch(const std::string& id) {
  return "QZX_logging_attribute_type_mismatch \"Use the wrong get method under Entry ID " + id + " !\"";
}
std::string not_found(const std::string& name) {
  return "QZX_logging_attribute_not_found \"<QZX_logging_attribute_not_found> Attribute " + name +
         " cannot be located.\"";
}
std::string invalid_name(const std::string& name, const std::string& id) {
  return "QZX_logging_invalid_attribute_name \"" + name + "is an invalid attibute under Entry ID " + id + " !\"";
}

/// A read method in both forms and the type codes it serves. `value_is_default` reads and compares with the default;
/// `fill` reads into a variable and tells whether that stayed as it was.
struct Read {
  const char* method;
  bool (*value_is_default)(const Entry& entry, const char* name);
  bool (*fill)(const Entry& entry, const char* name, bool& untouched);
  int first;
  int last;
};

template <typename T, T (Entry::*value_form)(const char*) const>
bool value_is_default(const Entry& entry, const char* name) {
  return (entry.*value_form)(name) == T();
}

template <typename T, bool (Entry::*fill_form)(const char*, T&) const>
bool fill(const Entry& entry, const char* name, bool& untouched) {
  T value = static_cast<T>(1);
  const bool result = (entry.*fill_form)(name, value);
  untouched = value == static_cast<T>(1);
  return result;
}

template <const char* (Entry::*value_form)(const char*) const>
bool text_is_default(const Entry& entry, const char* name) {
  return *(entry.*value_form)(name) == '\0';
}

template <bool (Entry::*fill_form)(const char*, const char*&) const>
bool fill_text(const Entry& entry, const char* name, bool& untouched) {
  static const char* const kBefore = "before";
  const char* value = kBefore;
  const bool result = (entry.*fill_form)(name, value);
  untouched = value == kBefore;
  return result;
}

bool time_is_default(const Entry& entry, const char* name) {
  const qz_Time time = entry.get_attrib_time(name);
  return time.unix_seconds() == 0 && time.is_GMT_time_mode();
}

bool fill_time(const Entry& entry, const char* name, bool& untouched) {
  qz_Time value = qz_Time::from_unix_seconds(12345);
  const bool result = entry.get_attrib_time(name, value);
  untouched = value.unix_seconds() == 12345;
  return result;
}

// clang-format off
const Read kReads[] = {
    {"bool", value_is_default<bool, &Entry::get_attrib_bool>, fill<bool, &Entry::get_attrib_bool>, 1, 1},
    {"1u", value_is_default<unsigned char, &Entry::get_attrib_1u>, fill<unsigned char, &Entry::get_attrib_1u>, 2, 2},
    {"1", value_is_default<char, &Entry::get_attrib_1>, fill<char, &Entry::get_attrib_1>, 3, 3},
    {"2u", value_is_default<unsigned short, &Entry::get_attrib_2u>, fill<unsigned short, &Entry::get_attrib_2u>, 4, 4},
    {"2", value_is_default<short, &Entry::get_attrib_2>, fill<short, &Entry::get_attrib_2>, 5, 5},
    {"4u", value_is_default<unsigned, &Entry::get_attrib_4u>, fill<unsigned, &Entry::get_attrib_4u>, 6, 6},
    {"4", value_is_default<int, &Entry::get_attrib_4>, fill<int, &Entry::get_attrib_4>, 7, 7},
    {"float8", value_is_default<double, &Entry::get_attrib_float8>, fill<double, &Entry::get_attrib_float8>, 8, 8},
    {"str", text_is_default<&Entry::get_attrib_str>, fill_text<&Entry::get_attrib_str>, 9, 14},
    {"mbstr", text_is_default<&Entry::get_attrib_mbstr>, fill_text<&Entry::get_attrib_mbstr>, 15, 20},
    {"time", time_is_default, fill_time, 21, 23},
};
// clang-format on

bool is_time(const Read& read) { return read.fill == fill_time; }
bool serves(const Read& read, unsigned type) {
  return static_cast<unsigned>(read.first) <= type && type <= static_cast<unsigned>(read.last);
}

/// Every type by its own and its global name; 0 and 25 as run-time definitions.
std::vector<LdfAttribute> all_names() {
  std::vector<LdfAttribute> names;
  for (int code = 0; code <= 25; ++code) {
    const auto type = static_cast<unsigned>(code);
    if (code == 0 || code == 25) {
      names.push_back({"Type" + std::to_string(code), type});
      Entry::add_product_specific_attribute_definition(0, names.back().name.c_str(),
                                                       static_cast<qz_AttributeType>(code));
    } else {
      names.push_back({type_name(code), type});
      names.push_back({std::string("Global") + type_name(code), type});
    }
  }
  return names;
}

/// Calls `check` for every ID, name and read.
template <typename Check>
void for_each_read(Check&& check) {
  const std::vector<LdfAttribute> names = all_names();
  for (const IdCase& id : kIds) {
    const Entry entry(id.id, 0);
    for (const LdfAttribute& attribute : names) {
      for (const Read& read : kReads) {
        SCOPED_TRACE(std::string(read.method) + " of " + attribute.name + " under " + id.text);
        check(entry, attribute, read, std::string(id.text));
      }
    }
  }
}

TEST_F(EntryReads, ValueFormOfUnset_GivesTheDefaultOrRefusesTheType) {
  for_each_read([](const Entry& entry, const LdfAttribute& attribute, const Read& read, const std::string& id) {
    bool is_default = false;
    const std::string thrown = thrown_by([&] { is_default = read.value_is_default(entry, attribute.name.c_str()); });
    const bool refused = !serves(read, attribute.type) && !is_time(read);  // a time read looks at the value's type only
    EXPECT_EQ(thrown, refused ? mismatch(id) : "nothing");
    EXPECT_EQ(is_default, !refused);
  });
}

TEST_F(EntryReads, ValueFormOfUnsetInMode1_ThrowsNotFoundOrRefusesTheType) {
  qz_LOG_LogEntry::SetOperationMode(1);
  for_each_read([](const Entry& entry, const LdfAttribute& attribute, const Read& read, const std::string& id) {
    const std::string thrown = thrown_by([&] { read.value_is_default(entry, attribute.name.c_str()); });
    const bool refused = !serves(read, attribute.type) && !is_time(read);
    EXPECT_EQ(thrown, refused ? mismatch(id) : not_found(attribute.name));
  });
}

TEST_F(EntryReads, ValueFormOfUnsetInOtherModes_GivesTheDefault) {
  for (const unsigned mode : {0U, 2U, 3U, 4294967295U}) {
    qz_LOG_LogEntry::SetOperationMode(mode);
    const Entry entry(kId, 0);
    for (const Read& read : kReads) EXPECT_TRUE(read.value_is_default(entry, type_name(read.first))) << read.method;
  }
}

TEST_F(EntryReads, FillFormOfUnset_FalseAndUntouchedInEveryMode) {
  for (const unsigned mode : {1U, 2U}) {
    qz_LOG_LogEntry::SetOperationMode(mode);
    for_each_read([](const Entry& entry, const LdfAttribute& attribute, const Read& read, const std::string& id) {
      bool untouched = false;
      bool result = true;
      const std::string thrown = thrown_by([&] { result = read.fill(entry, attribute.name.c_str(), untouched); });
      const bool refused = !serves(read, attribute.type) && !is_time(read);
      EXPECT_EQ(thrown, refused ? mismatch(id) : "nothing");
      EXPECT_EQ(result, refused);
      EXPECT_EQ(untouched, !refused);
    });
  }
}

void add_text(Entry& entry, const std::string& name, int code) {
  if (code < TypeMBChar32) {
    entry.add_attrib_str(name.c_str(), "text", true);
  } else {
    entry.add_attrib_mbstr(name.c_str(), "text", true);
  }
}

/// Gives every attribute that can hold one a value other than the default and other than 1.
void fill_all(Entry& entry) {
  for (const std::string& prefix : {std::string(), std::string("Global")}) {
    entry._add_attribute((prefix + "TypeBool").c_str(), new StoredValue<TypeBool>(true));
    entry._add_attribute((prefix + "TypeUInt1").c_str(), new StoredValue<TypeUInt1>(2));
    entry._add_attribute((prefix + "TypeSInt1").c_str(), new StoredValue<TypeSInt1>(3));
    entry._add_attribute((prefix + "TypeUInt2").c_str(), new StoredValue<TypeUInt2>(4));
    entry._add_attribute((prefix + "TypeSInt2").c_str(), new StoredValue<TypeSInt2>(5));
    entry._add_attribute((prefix + "TypeUInt4").c_str(), new StoredValue<TypeUInt4>(6));
    entry._add_attribute((prefix + "TypeSInt4").c_str(), new StoredValue<TypeSInt4>(7));
    entry._add_attribute((prefix + "TypeFloat").c_str(), new StoredValue<TypeFloat>(8.5));
    for (int code = TypeChar32; code <= TypeMBChar2K; ++code) {
      add_text(entry, prefix + type_name(code), code);
    }
    const qz_Time time = qz_Time::from_unix_seconds(77);
    entry._add_attribute((prefix + "TypeDate").c_str(), new StoredValue<TypeDate>(time));
    entry._add_attribute((prefix + "TypeTime").c_str(), new StoredValue<TypeTime>(time));
    entry._add_attribute((prefix + "TypeTimestamp").c_str(), new StoredValue<TypeTimestamp>(time));
    entry._add_attribute((prefix + "TypeGUID").c_str(), new StoredValue<TypeGUID>("0123"));
  }
}

TEST_F(EntryReads, BothFormsOfSet_ReadTheirOwnTypeAndRefuseOthersInEveryMode) {
  for (const unsigned mode : {1U, 2U}) {
    qz_LOG_LogEntry::SetOperationMode(mode);
    for (const IdCase& id : kIds) {
      Entry entry(id.id, 0);
      fill_all(entry);
      for (const LdfAttribute& attribute : all_names()) {
        if (attribute.type == 0 || attribute.type == 25) continue;  // nothing can be stored under these
        for (const Read& read : kReads) {
          SCOPED_TRACE(std::string(read.method) + " of " + attribute.name + " under " + id.text);
          const bool fits = serves(read, attribute.type);
          const std::string expected = fits ? "nothing" : mismatch(id.text);
          bool is_default = true;
          bool untouched = true;
          bool result = false;
          EXPECT_EQ(thrown_by([&] { is_default = read.value_is_default(entry, attribute.name.c_str()); }), expected);
          EXPECT_EQ(thrown_by([&] { result = read.fill(entry, attribute.name.c_str(), untouched); }), expected);
          EXPECT_EQ(is_default, !fits);
          EXPECT_EQ(result, fits);
          const bool looks_untouched = !fits || attribute.type == TypeBool;  // true is what the variable held before
          EXPECT_EQ(untouched, looks_untouched);
        }
      }
    }
  }
}

TEST_F(EntryReads, FillForm_GivesTheStoredValue) {
  Entry entry(kId, 0);
  fill_all(entry);
  bool flag = false;
  unsigned char byte_u = 0;
  char byte = 0;
  unsigned short word_u = 0;
  short word = 0;
  unsigned number_u = 0;
  int number = 0;
  double real = 0;
  qz_Time time;
  const char* text = nullptr;
  EXPECT_TRUE(entry.get_attrib_bool("TypeBool", flag) && flag);
  EXPECT_TRUE(entry.get_attrib_1u("TypeUInt1", byte_u) && byte_u == 2);
  EXPECT_TRUE(entry.get_attrib_1("TypeSInt1", byte) && byte == 3);
  EXPECT_TRUE(entry.get_attrib_2u("TypeUInt2", word_u) && word_u == 4);
  EXPECT_TRUE(entry.get_attrib_2("TypeSInt2", word) && word == 5);
  EXPECT_TRUE(entry.get_attrib_4u("TypeUInt4", number_u) && number_u == 6);
  EXPECT_TRUE(entry.get_attrib_4("TypeSInt4", number) && number == 7);
  EXPECT_TRUE(entry.get_attrib_float8("TypeFloat", real) && real == 8.5);
  EXPECT_TRUE(entry.get_attrib_time("TypeTime", time) && time.unix_seconds() == 77);
  EXPECT_TRUE(entry.get_attrib_str("TypeChar1K", text) && text == std::string("text"));
  EXPECT_TRUE(entry.get_attrib_mbstr("TypeMBChar1K", text) && text == std::string("text"));
}

TEST_F(EntryReads, NullOrEmptyName_EveryFormThrows) {
  const Entry entry(kId, 0);
  const Entry without_id;
  for (const char* name : {static_cast<const char*>(nullptr), ""}) {
    for (const Entry* each : {&entry, &without_id}) {
      for (const Read& read : kReads) {
        bool untouched = false;
        EXPECT_EQ(thrown_by([&] { read.value_is_default(*each, name); }), kIllegal) << read.method;
        EXPECT_EQ(thrown_by([&] { read.fill(*each, name, untouched); }), kIllegal) << read.method;
      }
      unsigned char type = 99;
      EXPECT_EQ(thrown_by([&] { each->get_attrib_as_4(name); }), kIllegal);
      EXPECT_EQ(thrown_by([&] { each->_get_attribute(name, TypeBool); }), kIllegal);
      EXPECT_EQ(thrown_by([&] { each->_get_attribute_internal(name, type); }), kIllegal);
    }
  }
}

TEST_F(EntryReads, UndefinedName_EveryFormThrowsInEveryMode) {
  for (const unsigned mode : {1U, 2U}) {
    qz_LOG_LogEntry::SetOperationMode(mode);
    for (const IdCase& id : kIds) {
      const Entry entry(id.id, 0);
      const std::string expected = invalid_name("Nowhere", id.text);
      for (const Read& read : kReads) {
        bool untouched = false;
        EXPECT_EQ(thrown_by([&] { read.value_is_default(entry, "Nowhere"); }), expected) << read.method;
        EXPECT_EQ(thrown_by([&] { read.fill(entry, "Nowhere", untouched); }), expected) << read.method;
      }
      EXPECT_EQ(thrown_by([&] { entry.get_attrib_as_4("Nowhere"); }), expected);
      EXPECT_EQ(thrown_by([&] { entry._get_attribute("Nowhere", TypeBool); }), expected);
    }
  }
}

TEST_F(EntryReads, WithoutId_EveryFormThrowsNotInitialized) {
  const Entry entry;
  for (const char* name : {"COMPUTER_NAME", "Nowhere"}) {
    for (const Read& read : kReads) {
      bool untouched = false;
      EXPECT_EQ(thrown_by([&] { read.value_is_default(entry, name); }), kNotInitialized) << read.method;
      EXPECT_EQ(thrown_by([&] { read.fill(entry, name, untouched); }), kNotInitialized) << read.method;
    }
    EXPECT_EQ(thrown_by([&] { entry.get_attrib_as_4(name); }), kNotInitialized);
  }
}

TEST_F(EntryReads, RefusedReads_WriteNoRecord) {
  qz_LOG_LogEntry::SetOperationMode(1);
  const Entry entry(kId, 0);
  for (const char* name : {static_cast<const char*>(nullptr), "Nowhere", "TypeChar32", "TypeUInt4"}) {
    EXPECT_EQ(records_at(3, [&] { entry.get_attrib_4u(name); }), Texts());
    EXPECT_EQ(records_at(3, [&] { entry.get_attrib_str(name); }), Texts());
  }
}

TEST_F(EntryReads, StoredUnderAnotherType_TheStoredTypeCounts) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("TypeUInt4", 7);
  entry.set_entry_id(kOtherTypesId);
  EXPECT_EQ(entry.get_attrib_4u("TypeUInt4"), 7U);
  EXPECT_EQ(thrown_by([&] { entry.get_attrib_str("TypeUInt4"); }), mismatch("1002"));
  entry.remove_attrib("TypeUInt4");
  EXPECT_STREQ(entry.get_attrib_str("TypeUInt4"), "");
  EXPECT_EQ(thrown_by([&] { entry.get_attrib_4u("TypeUInt4"); }), mismatch("1002"));
}

TEST_F(EntryReads, TimeNamedTIMESTAMP_IsTheEntrysOwn) {
  const TimeZone zone("America/New_York");
  load({.tag = "2.5",
        .globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}},
        .entries = {{.id = kId}}});
  Entry entry(kId, 0);
  entry.set_timestamp(qz_Time::from_unix_seconds(1000000), false);
  const qz_Time time = entry.get_attrib_time("TIMESTAMP");
  EXPECT_FALSE(time.is_GMT_time_mode());
  EXPECT_EQ(time.get_hour(), 13);
  EXPECT_EQ(time.get_minute(), 46);
  qz_Time filled;
  EXPECT_TRUE(entry.get_attrib_time("TIMESTAMP", filled));
  EXPECT_EQ(filled.compare_time(time), 0);
}

TEST_F(EntryReads, TimeNamedTIMESTAMP_NeedsNoIdAndNoValueInMode1) {
  qz_LOG_LogEntry::SetOperationMode(1);
  const Entry entry;
  EXPECT_EQ(entry.get_attrib_time("TIMESTAMP").unix_seconds(), 0);
  qz_Time time = qz_Time::from_unix_seconds(5);
  EXPECT_TRUE(entry.get_attrib_time("TIMESTAMP", time));
  EXPECT_EQ(time.unix_seconds(), 0);
}

TEST_F(EntryReads, TimeNamedTIMESTAMP_WinsOverAnAttributeOfThatName) {
  load({.tag = "2.5", .entries = {{.id = kId, .attributes = {{"TIMESTAMP", TypeTimestamp}}}}});
  Entry entry(kId, 0);
  entry.add_attrib_time("TIMESTAMP", qz_Time::from_unix_seconds(5));
  EXPECT_EQ(entry.get_attrib_time("TIMESTAMP").unix_seconds(), 0);
}

// Integers widened to 32 bits.

TEST_F(EntryReads, As4_EveryIntegerType_IsWidened) {
  Entry entry(kId, 0);
  entry.add_attrib_bool("TypeBool", true);
  entry.add_attrib_1u("TypeUInt1", 255);
  entry.add_attrib_1("TypeSInt1", -3);
  entry.add_attrib_2u("TypeUInt2", 65535);
  entry.add_attrib_2("TypeSInt2", -300);
  entry.add_attrib_4u("TypeUInt4", 4294967295U);
  entry.add_attrib_4("TypeSInt4", -2147483647 - 1);
  EXPECT_EQ(entry.get_attrib_as_4("TypeBool"), 0);
  EXPECT_EQ(entry.get_attrib_as_4("TypeUInt1"), 255);
  EXPECT_EQ(entry.get_attrib_as_4("TypeSInt1"), -3);
  EXPECT_EQ(entry.get_attrib_as_4("TypeUInt2"), 65535);
  EXPECT_EQ(entry.get_attrib_as_4("TypeSInt2"), -300);
  EXPECT_EQ(entry.get_attrib_as_4("TypeUInt4"), -1);
  EXPECT_EQ(entry.get_attrib_as_4("TypeSInt4"), -2147483647 - 1);
}

TEST_F(EntryReads, As4_OtherTypes_RefusesSetAndUnset) {
  for (const IdCase& id : kIds) {
    Entry unset(id.id, 0);
    Entry set(id.id, 0);
    fill_all(set);
    for (const LdfAttribute& attribute : all_names()) {
      if (attribute.type >= TypeBool && attribute.type <= TypeSInt4) continue;
      EXPECT_EQ(thrown_by([&] { unset.get_attrib_as_4(attribute.name.c_str()); }), mismatch(id.text)) << attribute.name;
      EXPECT_EQ(thrown_by([&] { set.get_attrib_as_4(attribute.name.c_str()); }), mismatch(id.text)) << attribute.name;
    }
  }
}

TEST_F(EntryReads, As4_Unset_FollowsTheMode) {
  const Entry entry(kId, 0);
  for (int code = TypeBool; code <= TypeSInt4; ++code) EXPECT_EQ(entry.get_attrib_as_4(type_name(code)), 0);
  qz_LOG_LogEntry::SetOperationMode(1);
  EXPECT_EQ(entry.get_attrib_as_4("TypeBool"), 0);
  for (int code = TypeUInt1; code <= TypeSInt4; ++code) {
    EXPECT_EQ(thrown_by([&] { entry.get_attrib_as_4(type_name(code)); }), not_found(type_name(code)));
  }
}

// The common steps.

TEST_F(EntryReads, Internal_SetOrDefined_GivesTheTypeCode) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("TypeUInt4", 7);
  unsigned char type = 99;
  const _qz_LOG_type_base* value = entry._get_attribute_internal("TypeUInt4", type);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(type, TypeUInt4);
  EXPECT_EQ(value_as<unsigned>(*value), 7U);
  EXPECT_EQ(entry._get_attribute_internal("GlobalTypeGUID", type), nullptr);
  EXPECT_EQ(type, TypeGUID);
}

TEST_F(EntryReads, ExactType_SetOrDefined_GivesTheValueOrNull) {
  Entry entry(kId, 0);
  entry.add_attrib_4u("TypeUInt4", 7);
  EXPECT_NE(entry._get_attribute("TypeUInt4", TypeUInt4), nullptr);
  EXPECT_EQ(entry._get_attribute("TypeSInt4", TypeSInt4), nullptr);
  EXPECT_EQ(thrown_by([&] { entry._get_attribute("TypeUInt4", TypeSInt4); }), mismatch("1001"));
  EXPECT_EQ(thrown_by([&] { entry._get_attribute("TypeSInt4", TypeUInt4); }), mismatch("1001"));
}

TEST_F(EntryReads, StoredTextWithoutBuffer_ReadsAsEmptyText) {
  Entry entry(kId, 0);
  entry._add_attribute("TypeMBChar32", new StoredValue<TypeMBChar32>(_qz_LOG_ustring(nullptr)));
  const char* text = nullptr;
  EXPECT_TRUE(entry.get_attrib_mbstr("TypeMBChar32", text));
  EXPECT_STREQ(text, "");
  EXPECT_STREQ(entry.get_attrib_mbstr("TypeMBChar32"), "");
}

}  // namespace
