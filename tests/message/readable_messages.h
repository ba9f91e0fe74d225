#ifndef QZLOG_TESTS_MESSAGE_READABLE_MESSAGES_H
#define QZLOG_TESTS_MESSAGE_READABLE_MESSAGES_H

#include <memory>
#include <string>

#include "entry/logentry_i.h"
#include "tests/message/message_fixture.h"

namespace qz_test {

inline constexpr const char* kConversionText =
    "_qz_LOG_log_message::get_readable_message:  MessageFormat::format() failed!";
inline constexpr const char* kConversionRecord =
    "logentry_i:2122 _qz_LOG_log_entry_imp::get_readable_message, fromUnicodeString error\n";
inline constexpr unsigned kId = 30;
inline constexpr unsigned kBrokenId = 31;
inline constexpr unsigned kLongId = 32;

/// Entries whose messages both paths show alike: "Disk <Name>".
class ReadableMessages {
 public:
  ReadableMessages() {
    settings_.load({{.id = kId,
                     .message_text = "Disk %s%Name%",
                     .attributes = {{"Name", TypeMBChar1K}},
                     .selector_messages = {{1, 10, "", "Selected %s%Name%"}}},
                    {.id = kBrokenId, .message_text = "%d%Missing%"}});
  }

  /// An entry with the message "Disk " + name.
  std::unique_ptr<_qz_LOG_log_entry_imp> entry(const std::string& name) const {
    auto made = std::make_unique<_qz_LOG_log_entry_imp>(kId, 0);
    made->add_attrib_mbstr("Name", name.c_str(), true);
    return made;
  }

  /// Other definitions: one entry, kLongId, with this template.
  std::unique_ptr<_qz_LOG_log_entry_imp> entry_with_template(const std::string& text) const {
    settings_.load({{.id = kLongId, .message_text = text, .attributes = {{"Name", TypeMBChar2K}}}});
    return std::make_unique<_qz_LOG_log_entry_imp>(kLongId, 0);
  }

 private:
  RenderingSettings settings_;
};

/// A buffer with marks in and behind the part that a call may use.
class MarkedBuffer {
 public:
  explicit MarkedBuffer(std::size_t size) : memory_(size, '#') {}
  char* data() { return memory_.data(); }
  const std::string& memory() const { return memory_; }
  bool untouched() const { return memory_.find_first_not_of('#') == std::string::npos; }

 private:
  std::string memory_;
};

inline std::string buffer_form(const _qz_LOG_log_entry_imp& entry, bool use_default = false, unsigned index = 0) {
  char buffer[4097];
  return entry.get_readable_message(buffer, 4096, use_default, index);
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_READABLE_MESSAGES_H
