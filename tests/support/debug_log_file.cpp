#include "tests/support/debug_log_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <string_view>

#include "qzlog/debug_log.h"

namespace qz_test {

namespace {

bool is_digit(char character) { return std::isdigit(static_cast<unsigned char>(character)) != 0; }

/// Moves `position` past `pattern`, in which a 'd' stands for one digit.
bool skip(const std::string& text, std::size_t& position, std::string_view pattern) {
  if (text.size() - position < pattern.size()) return false;
  for (const char expected : pattern) {
    const char found = text[position++];
    if (expected == 'd' ? !is_digit(found) : found != expected) return false;
  }
  return true;
}

bool skip_text(const std::string& text, std::size_t& position, std::string_view expected) {
  if (text.compare(position, expected.size(), expected) != 0) return false;
  position += expected.size();
  return true;
}

bool skip_number(const std::string& text, std::size_t& position, long& number) {
  const std::size_t start = position;
  if (position < text.size() && text[position] == '-') ++position;
  const std::size_t digits = position;
  while (position < text.size() && is_digit(text[position])) ++position;
  number = std::strtol(text.c_str() + start, nullptr, 10);
  return position > digits;
}

std::string without_line_number(const std::string& record) {
  const std::size_t colon = record.find(':');
  if (colon == std::string::npos) return record;
  const std::size_t end = record.find_first_not_of("0123456789", colon + 1);
  if (end == std::string::npos || end == colon + 1 || record[end] != ' ') return record;
  return record.substr(0, colon + 1) + "#" + record.substr(end);
}

}  // namespace

std::optional<RecordPrefix> parse_record_prefix(const std::string& text, std::size_t position) {
  RecordPrefix prefix;
  const std::size_t start = position;
  if (!skip(text, position, "dddd/dd/dd dd:dd:dd")) return std::nullopt;
  prefix.time = text.substr(start, position - start);
  if (!skip_text(text, position, "(pid=") || !skip_number(text, position, prefix.pid)) return std::nullopt;
  if (!skip_text(text, position, ")(tid=") || !skip_number(text, position, prefix.tid)) return std::nullopt;
  if (!skip_text(text, position, "):")) return std::nullopt;
  prefix.end = position;
  return prefix;
}

DebugLogFile::DebugLogFile(int level) : working_folder_(folder_.path()), previous_level_(GetDebugLogLevel()) {
  EnableDebugLog(level);
}

DebugLogFile::~DebugLogFile() { EnableDebugLog(static_cast<int>(previous_level_)); }

Texts DebugLogFile::records() const {
  const std::string all = text();
  Texts records;
  for (std::size_t position = 0; position < all.size();) {
    if (const auto prefix = parse_record_prefix(all, position)) {
      EXPECT_EQ(prefix->pid, getpid());
      records.emplace_back();
      position = prefix->end;
      continue;
    }
    if (records.empty()) {
      ADD_FAILURE() << "the debug log does not begin with a record prefix: " << all.substr(0, 100);
      return records;
    }
    records.back() += all[position++];
  }
  return records;
}

Texts DebugLogFile::unnumbered_records() const {
  Texts texts = records();
  for (std::string& text : texts) text = without_line_number(text);
  return texts;
}

}  // namespace qz_test
