#include "ship/nats/nats_subject.h"

#include <algorithm>
#include <string>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr std::size_t kLongestPart = 128;

bool is_allowed(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte > 0x20 && byte != 0x7F && character != '.' && character != '*' && character != '>';
}

/// So that a character of several bytes is not cut in two.
std::string_view cut(std::string_view text) {
  if (text.size() <= kLongestPart) return text;
  std::size_t size = kLongestPart;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) --size;
  return text.substr(0, size);
}

void append_part(std::string_view text, std::string& subject) {
  subject += '.';
  if (text.empty()) subject += '-';
  for (const char character : cut(text)) subject += is_allowed(character) ? character : '_';
}

/// The first part of a subject, which is taken off it.
std::string_view take_part(std::string_view& subject) {
  const std::size_t end = std::min(subject.find('.'), subject.size());
  const std::string_view part = subject.substr(0, end);
  subject.remove_prefix(std::min(end + 1, subject.size()));
  return part;
}

}  // namespace

void append_subject(const qzlog_record& record, std::string& subject) {
  append_part(view_of(record.product), subject);
  const bool has_name = record.event.size != 0;
  append_part(has_name || record.id == 0 ? std::string(view_of(record.event)) : std::to_string(record.id), subject);
  append_part(record.level < 0 ? "" : std::to_string(record.level), subject);
}

bool subject_covers(std::string_view pattern, std::string_view subject) {
  while (!pattern.empty() && !subject.empty()) {
    const std::string_view wanted = take_part(pattern);
    const std::string_view part = take_part(subject);
    if (wanted == ">") return true;
    if (wanted != "*" && wanted != part) return false;
  }
  return pattern.empty() && subject.empty();
}

bool is_plain_subject(std::string_view subject) {
  if (subject.empty() || subject.back() == '.') return false;
  while (!subject.empty()) {
    const std::string_view part = take_part(subject);
    if (part.empty() || !std::all_of(part.begin(), part.end(), is_allowed)) return false;
  }
  return true;
}

}  // namespace qzlog_ship
