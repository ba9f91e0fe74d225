#ifndef QZLOG_SINKS_SINK_VALUE_H
#define QZLOG_SINKS_SINK_VALUE_H

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sinks/sink_file.h"

namespace qzlog {

/// What a setting is set to. Each function throws QZX_logging_illegal_argument, naming file, line and setting, where it
/// is something else. std::bad_alloc.
class SinkValue {
 public:
  SinkValue(const SinkFile& file, const SinkSetting& setting) : file_(file), setting_(setting) {}

  const std::string& text() const { return setting_.value; }
  /// Decimal, or with 0x hexadecimal.
  unsigned long long number(unsigned long long least, unsigned long long most) const;
  /// Of 32 bits.
  unsigned word() const { return static_cast<unsigned>(number(0, 0xFFFFFFFFU)); }
  unsigned octal() const;
  /// 0 to 9, or "never", which is 10.
  unsigned level_or_never() const;
  bool flag() const;
  /// Which of the words.
  std::size_t choice(std::span<const std::string_view> words) const;
  std::size_t choice(std::initializer_list<std::string_view> words) const {
    return choice(std::span(words.begin(), words.size()));
  }
  /// "stdout", "stderr" or a number.
  int descriptor() const;
  /// Separated by commas, none of them empty.
  std::vector<std::string> names() const;

  [[noreturn]] void refuse(const std::string& text) const;

 private:
  std::string quoted() const { return '\'' + text() + '\''; }
  unsigned long long number_of_base(std::string_view digits, int base) const;

  const SinkFile& file_;
  const SinkSetting& setting_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SINK_VALUE_H
