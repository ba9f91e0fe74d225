#ifndef QZLOG_TESTS_ENTRY_ENTRY_FIXTURE_H
#define QZLOG_TESTS_ENTRY_ENTRY_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qzlog/debug_log.h"
#include "qzlog/logattrib.h"
#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace qz_test {

/// The entry's own records among what the debug log holds, line numbers replaced by "#".
inline Texts entry_records(const DebugLogFile& log) {
  Texts own;
  for (const std::string& record : log.unnumbered_records()) {
    if (record.rfind("logentry_i:", 0) == 0) own.push_back(record);
  }
  return own;
}

/// The entry's records that `operation` writes at `level`; one level lower it must write none of them.
template <typename Operation>
Texts records_at(int level, Operation&& operation) {
  {
    const DebugLogFile log(level - 1);
    static_cast<void>(thrown_by(operation));
    EXPECT_EQ(entry_records(log), Texts()) << "at level " << level - 1;
  }
  const DebugLogFile log(level);
  static_cast<void>(thrown_by(operation));
  return entry_records(log);
}

struct IdCase {
  unsigned id;
  const char* text;
};
/// IDs that have the same attributes, and how exceptions write them.
constexpr IdCase kIds[] = {{1001, "1001"}, {2147483648U, "-2147483648"}, {4294967295U, "-1"}};

constexpr unsigned kId = 1001;            // one attribute of each type, named after it
constexpr unsigned kOtherTypesId = 1002;  // some of the same names with other types
constexpr unsigned kPlainId = 1003;       // no attribute of its own
constexpr unsigned kUnknownId = 77;

inline const char* type_name(int code) { return AttributeTypeList[code - 1].name; }

/// Every type under its own name, then "Shadowed".
inline std::vector<LdfAttribute> own_attributes() {
  std::vector<LdfAttribute> attributes;
  for (int code = TypeBool; code <= TypeGUID; ++code)
    attributes.push_back({type_name(code), static_cast<unsigned>(code)});
  attributes.push_back({"Shadowed", TypeUInt4});
  return attributes;
}

/// The standard information attributes, "Shadowed" with another type, and every type as "Global" + its name.
inline std::vector<LdfAttribute> global_attributes() {
  std::vector<LdfAttribute> attributes = {
      {"COMPUTER_NAME", TypeMBChar64},      {"PRODUCT_VERSION", TypeMBChar32},    {"PRODUCT_CODE", TypeUInt2},
      {"PRODUCT_PLATFORM_CODE", TypeUInt2}, {"PRODUCT_LANGUAGE_CODE", TypeUInt4}, {"COMPONENT_CODE", TypeUInt4},
      {"SEVERITY_CODE", TypeUInt1},         {"REASON_CODE", TypeSInt4},           {"REASON_CODE_SOURCE", TypeUInt4},
      {"TIMEZONE_DIFFERENCE", TypeSInt2},   {"DAYLIGHT_SAVING_ACTIVE", TypeBool}, {"Shadowed", TypeChar32},
  };
  for (int code = TypeBool; code <= TypeGUID; ++code) {
    attributes.push_back({std::string("Global") + type_name(code), static_cast<unsigned>(code)});
  }
  return attributes;
}

inline std::vector<LdfEntry> standard_entries() {
  std::vector<LdfEntry> entries;
  for (const IdCase& id : kIds) {
    entries.push_back({.id = id.id, .mask = 0x80000005U, .message_text = "text", .attributes = own_attributes()});
  }
  entries.push_back(
      {.id = kOtherTypesId,
       .mask = 0x22,
       .attributes = {{"TypeUInt4", TypeChar32}, {"TypeChar32", TypeUInt4}, {"TypeMBChar32", TypeTimestamp}}});
  entries.push_back({.id = kPlainId, .mask = 0x44});
  return entries;
}

/// Loads definitions of the IDs above, version "2.5", and gives every process-wide setting its initial value, before
/// and after the test.
class EntryTest : public testing::Test {
 protected:
  EntryTest() {
    reset();
    load({.tag = "2.5", .globals = global_attributes(), .entries = standard_entries()});
  }
  ~EntryTest() override { reset(); }

  /// Replaces every definition.
  void load(const LdfFile& file) const {
    qz_LOG_LogConfig::ClearDefinitions();
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", file.bytes()).c_str());
  }
  void load_auxiliary(const LdfFile& file) const {
    qz_LOG_LogConfig::SetAuxDefinitionPath(folder_.write("aux.ldf", file.bytes()).c_str());
  }

 private:
  static void reset() {
    reset_settings();
    qz_LOG_LogEntry::SetOperationMode(2);
  }

  TempDir folder_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_ENTRY_ENTRY_FIXTURE_H
