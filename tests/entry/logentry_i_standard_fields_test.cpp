#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class StandardFields : public EntryTest {};

struct Field {
  const char* name;
  void (*set)(Entry& entry);
};

const Field kFields[] = {
    {"COMPUTER_NAME", [](Entry& entry) { entry.set_computer_info("host"); }},
    {"PRODUCT_CODE", [](Entry& entry) { entry.set_product_code(1); }},
    {"PRODUCT_PLATFORM_CODE", [](Entry& entry) { entry.set_product_platform_code(1); }},
    {"PRODUCT_LANGUAGE_CODE", [](Entry& entry) { entry.set_product_language_code(1); }},
    {"PRODUCT_VERSION", [](Entry& entry) { entry.set_product_version("1.0"); }},
    {"COMPONENT_CODE", [](Entry& entry) { entry.set_component_code(1); }},
    {"SEVERITY_CODE", [](Entry& entry) { entry.set_severity_code(1); }},
    {"REASON_CODE", [](Entry& entry) { entry.set_reason_code(1); }},
    {"REASON_CODE_SOURCE", [](Entry& entry) { entry.set_reason_code_source(1); }},
};

TEST_F(StandardFields, EachSet_ReadsBackAndNoOtherIsSet) {
  for (const Field& field : kFields) {
    Entry entry(kPlainId, 0);
    field.set(entry);
    for (const Field& other : kFields) EXPECT_EQ(entry.has_value(other.name), &other == &field) << field.name;
  }
}

TEST_F(StandardFields, Texts_ReadBack) {
  Entry entry(kPlainId, 0);
  entry.set_computer_info("host\nname\r");
  entry.set_product_version("1.0\n");
  EXPECT_STREQ(entry.get_computer_info(), "host\\nname\\r");
  EXPECT_STREQ(entry.get_product_version(), "1.0\\n");
  EXPECT_STREQ(entry.get_attrib_mbstr("COMPUTER_NAME"), "host\\nname\\r");
  EXPECT_STREQ(entry.get_attrib_mbstr("PRODUCT_VERSION"), "1.0\\n");
}

TEST_F(StandardFields, Codes_ReadBackWhole) {
  Entry entry(kPlainId, 0);
  entry.set_product_language_code(4294967295U);
  entry.set_component_code(4294967294U);
  entry.set_reason_code(-2147483647 - 1);
  entry.set_reason_code_source(4294967293U);
  EXPECT_EQ(entry.get_product_language_code(), 4294967295U);
  EXPECT_EQ(entry.get_component_code(), 4294967294U);
  EXPECT_EQ(entry.get_reason_code(), -2147483647 - 1);
  EXPECT_EQ(entry.get_reason_code_source(), 4294967293U);
}

TEST_F(StandardFields, ProductAndPlatformCode_AreNarrowedTo16Bits) {
  Entry entry(kPlainId, 0);
  entry.set_product_code(65536 + 5);
  entry.set_product_platform_code(4294967295U);
  EXPECT_EQ(entry.get_product_code(), 5);
  EXPECT_EQ(entry.get_product_platform_code(), 65535);
}

TEST_F(StandardFields, CodesOutOfRange_AreRefusedWhereThatIsAskedFor) {
  qz_LOG_LogConfig::SetActionOutOfRange(QZ_OUT_OF_RANGE_REFUSE);
  struct {
    const char* name;
    void (Entry::*set)(unsigned code);
    unsigned highest;
  } const fields[] = {{"PRODUCT_CODE", &Entry::set_product_code, 65535},
                      {"PRODUCT_PLATFORM_CODE", &Entry::set_product_platform_code, 65535},
                      {"SEVERITY_CODE", &Entry::set_severity_code, 255}};
  for (const auto& field : fields) {
    Entry entry(kPlainId, 0);
    (entry.*field.set)(field.highest);
    for (const unsigned code : {field.highest + 1, UINT_MAX}) {
      EXPECT_EQ(thrown_by([&] { (entry.*field.set)(code); }),
                "QZX_logging_invalid_attribute_value \"" + std::string(field.name) +
                    " Attribute value is out of range under Entry ID " + std::to_string(kPlainId) + " !\"");
      EXPECT_EQ(static_cast<unsigned>(entry.get_attrib_as_4(field.name)), field.highest);
    }
  }
}

TEST_F(StandardFields, SeverityCode_IsNarrowedTo8Bits) {
  Entry entry(kPlainId, 0);
  entry.set_severity_code(256 + 7);
  EXPECT_EQ(entry.get_severity_code(), 7);
  entry.set_severity_code(255);
  EXPECT_EQ(entry.get_severity_code(), 255);
}

TEST_F(StandardFields, Unset_ReadAsDefaults) {
  const Entry entry(kPlainId, 0);
  EXPECT_STREQ(entry.get_computer_info(), "");
  EXPECT_EQ(entry.get_product_code(), 0);
  EXPECT_EQ(entry.get_product_platform_code(), 0);
  EXPECT_EQ(entry.get_product_language_code(), 0U);
  EXPECT_STREQ(entry.get_product_version(), "");
  EXPECT_EQ(entry.get_component_code(), 0U);
  EXPECT_EQ(entry.get_severity_code(), 0);
  EXPECT_EQ(entry.get_reason_code(), 0);
  EXPECT_EQ(entry.get_reason_code_source(), 0U);
}

TEST_F(StandardFields, UnsetInMode1_Throws) {
  qz_LOG_LogEntry::SetOperationMode(1);
  const Entry entry(kPlainId, 0);
  EXPECT_EQ(thrown_by([&] { entry.get_computer_info(); }),
            "QZX_logging_attribute_not_found \"<QZX_logging_attribute_not_found> Attribute COMPUTER_NAME cannot be "
            "located.\"");
  EXPECT_EQ(thrown_by([&] { entry.get_reason_code(); }),
            "QZX_logging_attribute_not_found \"<QZX_logging_attribute_not_found> Attribute REASON_CODE cannot be "
            "located.\"");
}

TEST_F(StandardFields, NullOrEmptyComputerName_ThrowsWithRecord) {
  for (const char* text : {static_cast<const char*>(nullptr), ""}) {
    Entry entry(kPlainId, 0);
    EXPECT_EQ(thrown_by([&] { entry.set_computer_info(text); }),
              "QZX_logging_illegal_argument \"invalid argument:computer_info\"");
    EXPECT_EQ(records_at(1, [&] { entry.set_computer_info(text); }),
              Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_computer_info, computer_info=NULL\n"}));
    EXPECT_FALSE(entry.has_value("COMPUTER_NAME"));
  }
}

TEST_F(StandardFields, NullOrEmptyProductVersion_ThrowsWithRecordWithoutLineBreak) {
  for (const char* text : {static_cast<const char*>(nullptr), ""}) {
    Entry entry(kPlainId, 0);
    EXPECT_EQ(thrown_by([&] { entry.set_product_version(text); }),
              "QZX_logging_illegal_argument \"invalid argument:product_version\"");
    EXPECT_EQ(records_at(1, [&] { entry.set_product_version(text); }),
              Texts({"logentry_i:# _qz_LOG_log_entry_imp::set_product_language_code, version=NULL"}));
    EXPECT_FALSE(entry.has_value("PRODUCT_VERSION"));
  }
}

TEST_F(StandardFields, Undefined_EachSetterThrows) {
  load({.tag = "2.5", .entries = {{.id = kId}}});
  for (const Field& field : kFields) {
    Entry entry(kId, 0);
    EXPECT_EQ(thrown_by([&] { field.set(entry); }), "QZX_logging_invalid_attribute_name \"" + std::string(field.name) +
                                                        "is an invalid attibute under Entry ID 1001 !\"");
  }
}

TEST_F(StandardFields, DefinedOtherwise_EachSetterThrowsMismatch) {
  LdfFile file{.tag = "2.5", .entries = {{.id = kId}}};
  for (const Field& field : kFields) file.globals.push_back({field.name, TypeFloat});
  load(file);
  for (const Field& field : kFields) {
    Entry entry(kId, 0);
    EXPECT_EQ(thrown_by([&] { field.set(entry); }),
              "QZX_logging_attribute_type_mismatch \"Used the wrong add method under Entry ID 1001 !\"")
        << field.name;
  }
}

TEST_F(StandardFields, WithoutId_EachSetterThrowsNotInitialized) {
  for (const Field& field : kFields) {
    Entry entry;
    EXPECT_EQ(thrown_by([&] { field.set(entry); }),
              "QZX_logging_misc \"_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized\"")
        << field.name;
  }
}

}  // namespace
