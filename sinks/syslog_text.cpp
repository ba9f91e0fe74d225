#include "sinks/syslog_text.h"

#include <algorithm>
#include <cstring>

namespace qzlog {

namespace {

constexpr char kDelete = 0x7F;

constexpr bool is_control(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == kDelete;
}

/// Branches would be told wrong at every other quote.
void append_escaped(std::string_view text, std::string& out) {
  const std::size_t before = out.size();
  out.resize(before + 2 * text.size());
  char* at = out.data() + before;
  for (const char character : text) {
    *at = '\\';
    at += static_cast<int>(character == '"') | static_cast<int>(character == '\\') | static_cast<int>(character == ']');
    *at++ = character;
  }
  out.resize(static_cast<std::size_t>(at - out.data()));
}

void append_control(char character, std::string_view backslash, std::string& out) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(character);
  out += backslash;
  if (byte == '\n') {
    out += 'n';
  } else if (byte == '\r') {
    out += 'r';
  } else if (byte == '\0') {
    out += '0';
  } else {
    out += 'x';
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
  }
}

/// Hands what stands between control characters to append_plain.
template <typename AppendPlain>
void append_without_controls(std::string_view text, std::string_view backslash, std::string& out,
                             AppendPlain append_plain) {
  while (!text.empty()) {
    const auto* const stop = std::find_if(text.begin(), text.end(), is_control);
    const auto count = static_cast<std::size_t>(stop - text.begin());
    append_plain(text.substr(0, count));
    if (count == text.size()) return;
    append_control(text[count], backslash, out);
    text.remove_prefix(count + 1);
  }
}

}  // namespace

void append_syslog_line(std::string_view line, std::string& out) {
  for (;;) {
    const std::size_t found = line.find(kDelete);
    append_escaped(line.substr(0, found), out);
    if (found == std::string_view::npos) return;
    out += R"(\\u007F)";
    line.remove_prefix(found + 1);
  }
}

void append_syslog_value(std::string_view text, std::string& out) {
  append_without_controls(text, R"(\\)", out, [&](std::string_view plain) { append_escaped(plain, out); });
}

void append_syslog_message(std::string_view text, std::string& out) {
  append_without_controls(text, R"(\)", out, [&](std::string_view plain) { out += plain; });
}

void append_cut_text(std::string_view text, std::size_t room, std::string& out) {
  if (text.size() <= room) {
    out += text;
    return;
  }
  constexpr std::string_view kMark = "...";
  const bool has_mark = room >= kMark.size();
  std::size_t end = has_mark ? room - kMark.size() : room;
  while (end != 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) --end;
  out += text.substr(0, end);
  if (has_mark) out += kMark;
}

}  // namespace qzlog
