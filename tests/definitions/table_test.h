#ifndef QZLOG_TESTS_DEFINITIONS_TABLE_TEST_H
#define QZLOG_TESTS_DEFINITIONS_TABLE_TEST_H

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "definitions/ldf_load.h"
#include "tests/support/ldf_file.h"
#include "tests/support/support.h"

namespace qz_test {

constexpr const char* kUnreadable = "<QZX_logging_invalid_definition> Unable to access definition file successfully.";
constexpr const char* kCorrupted = "<QZX_logging_invalid_definition> The definition file is corrupted.";
constexpr const char* kAuxBeforeStd =
    "<QZX_logging_invalid_definition> user should set STD definition file before set AUX definition file.";
constexpr const char* kSelectorNameConflict = "<QZX_logging_invalid_definition> selector_attribute name conflict.";
constexpr const char* kSelectorMessageConflict =
    "<QZX_logging_invalid_definition> selector message index in AUX definition file conflict with STD definition";

inline std::string already_exists(const std::string& name) {
  return "<QZX_logging_invalid_definition> attribute " + name + " already exist.";
}

/// "name:type>redirection" for each own attribute, in order.
inline Texts own_attributes(const _qz_LOG_log_definition& definition) {
  Texts texts;
  for (unsigned i = 0; i < definition.get_attr_count(); ++i) {
    const char* name = nullptr;
    const char* redirection_name = nullptr;
    unsigned char type = 0;
    definition.get_attr_info_by_index(static_cast<unsigned char>(i), name, type, redirection_name);
    texts.push_back(std::string(name) + ":" + std::to_string(type) + ">" +
                    (redirection_name == nullptr ? "(null)" : redirection_name));
  }
  return texts;
}

/// "index=value id|text" for each selector message, in order.
inline Texts selector_messages(const _qz_LOG_log_definition& definition) {
  Texts texts;
  for (unsigned i = 0; i < definition.get_selector_msg_count(); ++i) {
    const _qz_LOG_selector_message& message = definition.get_selector_msg_at(static_cast<unsigned char>(i));
    texts.push_back(std::to_string(message.get_index()) + "=" + std::to_string(message.get_value()) + " " +
                    message.get_message_id() + "|" + message.get_message_text());
  }
  return texts;
}

inline std::string selector_of(const _qz_LOG_log_definition& definition) {
  const auto* const attribute = definition.get_selector_attribute();
  return attribute == nullptr ? "(none)" : attribute->get_name();
}

/// "id|text" of the default message.
inline std::string default_message(const _qz_LOG_log_definition& definition) {
  const auto readable = [](const char* text) { return text == nullptr ? "(null)" : text; };
  return readable(definition.get_default_msg_id()) + std::string("|") + readable(definition.get_default_msg_text());
}

/// "name:type" for each global attribute, in order.
inline Texts global_attributes() {
  Texts texts;
  for (unsigned i = 0; i < _qz_LOG_log_definition::n_global_attr_entries; ++i) {
    const char* name = nullptr;
    unsigned char type = 0;
    _qz_LOG_log_definition::get_global_attr_info_by_index(static_cast<unsigned char>(i), name, type);
    texts.push_back(std::string(name) + ":" + std::to_string(type));
  }
  return texts;
}

inline std::ptrdiff_t open_file_count() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

/// A table of the test's own and files for it; no global attributes before and after.
class TableTest : public testing::Test {
 protected:
  TableTest() { _qz_LOG_log_definition::clear_global_attr_info(); }
  ~TableTest() override { _qz_LOG_log_definition::clear_global_attr_info(); }

  void set_std(const LdfFile& file) { set_std_bytes(file.bytes()); }
  void set_aux(const LdfFile& file) { set_aux_bytes(file.bytes()); }
  void set_std_bytes(const std::string& bytes) {
    table_.set_precompiled_definition_file_path(write("std.ldf", bytes).c_str());
  }
  void set_aux_bytes(const std::string& bytes) {
    table_.set_precompiled_aux_definition_file_path(write("aux.ldf", bytes).c_str());
  }

  /// The definition of an ID that must exist.
  const _qz_LOG_log_definition& at(unsigned entry_id) const {
    static const _qz_LOG_log_definition none;
    const auto* const definition = table_.find_entry(entry_id);
    EXPECT_NE(definition, nullptr) << entry_id;
    return definition == nullptr ? none : *definition;
  }

  static std::string invalid_definition(const std::string& text) {
    return thrown<QZX_logging_invalid_definition>(text);
  }

  /// A new file each time: some file systems write a file that is replaced in place to the disk at once.
  std::string write(const char* name, const std::string& bytes) const {
    std::filesystem::remove(folder_.path(name));
    return folder_.write(name, bytes);
  }

  TempDir folder_;
  _qz_LOG_log_definition_tbl table_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_DEFINITIONS_TABLE_TEST_H
