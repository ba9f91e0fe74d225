#include "sinks/text_line_format.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>

#include "foundation/itoa.h"
#include "lines/level_name.h"
#include "lines/moment_text.h"
#include "lines/stored_code_page.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_time.h"
#include "sinks/brace_format.h"
#include "sinks/setting_checks.h"

namespace qzlog {

namespace {

constexpr std::string_view kNoName = "-";

[[noreturn]] void refuse(const std::string& text) { refuse_setting("format", text); }

[[noreturn]] void refuse_at(std::size_t position, const std::string& text) {
  refuse(text + " at character " + std::to_string(position + 1));
}

void append_number(unsigned number, std::string& out) {
  char digits[kMaxIntegerText];
  out.append(digits, write_number(digits, number));
}

void append_moment(std::time_t moment, std::string& out) {
  char text[kMomentText];
  out.append(text, write_moment(text, moment));
}

void append_written(const std::timespec& written, std::string& out) {
  append_moment(written.tv_sec, out);
  char fraction[] = ".000000Z";
  write_digit_pair(fraction + 1, static_cast<unsigned>(written.tv_nsec / 10'000'000 % 100));
  write_digit_pair(fraction + 3, static_cast<unsigned>(written.tv_nsec / 100'000 % 100));
  write_digit_pair(fraction + 5, static_cast<unsigned>(written.tv_nsec / 1'000 % 100));
  out += fraction;
}

void append_local(std::time_t moment, std::string& out) {
  qz_Time time = qz_Time::from_unix_seconds(moment);
  time.GMT_to_local();
  char text[32];
  time.print_out(text, sizeof(text));
  out += text;
}

bool is_control(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
}

void append_escaped(char character, std::string& out) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(character);
  out += '\\';
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

/// In code pages other than UTF-8 control characters may belong to the encoding.
void append_one_line(std::string_view text, bool is_utf8, std::string& out) {
  const auto needs_escape = [is_utf8](char character) {
    if (character == '\n' || character == '\r' || character == '\0') return true;
    return is_utf8 && character != '\t' && is_control(character);
  };
  if (is_printable_ascii(text.data(), text.size())) [[likely]] {
    out += text;
    return;
  }
  while (!text.empty()) {
    const auto* const stop = std::find_if(text.begin(), text.end(), needs_escape);
    const auto count = static_cast<std::size_t>(stop - text.begin());
    out.append(text.substr(0, count));
    text.remove_prefix(count);
    if (text.empty()) return;
    append_escaped(text.front(), out);
    text.remove_prefix(1);
  }
}

}  // namespace

const TextLineFormat::FieldName TextLineFormat::kFieldNames[] = {
    {"time", Field::kTime},       {"time:local", Field::kLocalTime}, {"written", Field::kWritten},
    {"level", Field::kLevel},     {"level:name", Field::kLevelName}, {"id", Field::kId},
    {"name", Field::kName},       {"pid", Field::kProcess},          {"tid", Field::kThread},
    {"message", Field::kMessage},
};

TextLineFormat::Field TextLineFormat::field_of(std::string_view name, std::size_t position) {
  const auto* const found = std::find_if(std::begin(kFieldNames), std::end(kFieldNames),
                                         [&](const FieldName& each) { return each.name == name; });
  if (found != std::end(kFieldNames)) return found->field;
  refuse_at(position, "unknown field '{" + std::string(name) +
                          "}' (there are time, time:local, written, level, level:name, id, name, pid, tid and "
                          "message)");
}

/// Makes pieces of what split_format finds.
class TextLineFormat::Parts {
 public:
  explicit Parts(std::vector<Piece>& pieces) : pieces_(pieces) { pieces_.emplace_back(); }

  void take_text(std::string_view text, std::size_t place) {
    const auto* const control =
        std::find_if(text.begin(), text.end(), [](char each) { return is_control(each) && each != '\t'; });
    if (control != text.end()) refuse(place + static_cast<std::size_t>(control - text.begin()), "control character");
    pieces_.back().text += text;
  }
  void take_field(std::string_view name, std::size_t place) {
    pieces_.back().field = field_of(name, place);
    pieces_.emplace_back();
  }
  [[noreturn]] static void refuse(std::size_t place, const char* reason) { refuse_at(place, reason); }

 private:
  std::vector<Piece>& pieces_;
};

TextLineFormat::TextLineFormat(std::string_view format) try {
  if (format.empty()) refuse("it is empty");
  if (format.size() > kMostBytes) refuse("it is longer than " + std::to_string(kMostBytes) + " bytes");
  Parts parts(pieces_);
  split_format(format, parts);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

void TextLineFormat::append(const Line& line, std::string& out) const {
  for (const Piece& piece : pieces_) {
    out += piece.text;
    append_field(piece.field, line, out);
  }
}

void TextLineFormat::append_field(Field field, const Line& line, std::string& out) {
  const std::time_t time = line.time != 0 ? line.time : line.written.tv_sec;
  switch (field) {
    case Field::kNone:
      return;
    case Field::kTime:
      append_moment(time, out);
      out += 'Z';
      return;
    case Field::kLocalTime:
      return append_local(time, out);
    case Field::kWritten:
      return append_written(line.written, out);
    case Field::kLevel:
      return append_number(line.level, out);
    case Field::kLevelName:
      out += level_name(line.level);
      return;
    case Field::kId:
      return append_number(line.id, out);
    case Field::kName:
      out += line.name.empty() ? kNoName : line.name;
      return;
    case Field::kProcess:
      return append_number(static_cast<unsigned>(getpid()), out);
    case Field::kThread:
      return append_number(static_cast<unsigned>(syscall(SYS_gettid)), out);
    case Field::kMessage:
      out += line.message;
      return;
  }
}

bool append_message_line(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& room,
                         std::string& out) {
  const char* reason = nullptr;
  try {
    const bool is_utf8 = StoredCodePage::current().is_utf8();
    entry.FormatMessage(room, use_default, selector_index);
    append_one_line(room, is_utf8, out);
    return true;
  } catch (const QZX_logging_all& thrown) {
    reason = thrown.get_message();
    room = reason != nullptr ? reason : "no memory";
  } catch (const QZX_memory_alloc&) {
    room = "no memory";
  }
  out += "(this message cannot be rendered: ";
  append_one_line(room, true, out);
  out += ')';
  return false;
}

}  // namespace qzlog
