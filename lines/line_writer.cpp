#include "lines/line_writer.h"

#include <cmath>
#include <cstring>
#include <new>
#include <string_view>

#include <unicode/ustring.h>

#include "foundation/append_number.h"
#include "foundation/sha256.h"
#include "foundation/shortest_float.h"
#include "foundation/text_buffer.h"
#include "lines/base64_text.h"
#include "lines/json_escape.h"
#include "lines/line_output.h"
#include "lines/moment_text.h"
#include "lines/text_code_page.h"
#include "message/code_page.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

struct StoredText {
  const char* text;
  std::size_t length;
};

/// A stored value of a text type.
StoredText text_of(const _qz_LOG_type_base& value) {
  if (is_unicode_string_attribute(static_cast<qz_AttributeType>(value.get_type()))) {
    const auto& text = value_as<_qz_LOG_ustring>(value);
    return {text.text(), text.length};
  }
  const auto& text = value_as<qz_String>(value);
  return {text.c_str(), text.length()};
}

bool is_text(const _qz_LOG_type_base& value) {
  const auto type = static_cast<qz_AttributeType>(value.get_type());
  return is_string_attribute(type) || is_unicode_string_attribute(type);
}

void append_moment(long long unix_seconds, LineOutput& out) {
  char* const begin = out.reserve(kMomentText + 3);
  *begin = '"';
  char* const end = write_moment(begin + 1, unix_seconds);
  std::memcpy(end, "Z\"", 2);
  out.count_up_to(end + 2);
}

void append_float(double value, LineOutput& out) {
  if (std::isfinite(value)) [[likely]] {
    out.count_up_to(write_shortest_float(out.reserve(kMaxShortestFloat), value));
  } else if (std::isnan(value)) {
    out.append("\"NaN\"");
  } else if (value > 0) {
    out.append("\"Infinity\"");
  } else {
    out.append("\"-Infinity\"");
  }
}

/// The digits say whether texts are the same, and little else.
void append_hash(const StoredText& stored, LineOutput& out) {
  Sha256 hash;
  hash.add(stored.text, stored.length);
  out.append("\"sha256:");
  write_short_digest(hash.digest(), out.reserve(kShortDigestDigits));
  out.count_in(kShortDigestDigits);
  out.append('"');
}

/// A text of a code page, and what encoding it again needs to know.
struct DecodedText {
  icu::UnicodeString text;
  TextBuffer utf8;
  bool is_whole = true;  ///< what JSON has of it is what it is
};

/// Half a surrogate pair has no UTF-8, and a zero character no place in a text.
void decode(const StoredText& stored, const TextCodePage& code_page, DecodedText& decoded) {
  decoded.text = decode_text(stored.text, code_page.name());
  const int capacity = decoded.text.length() * 3;
  int length = 0;
  int replaced = 0;
  UErrorCode status = U_ZERO_ERROR;
  constexpr UChar32 kReplacement = 0xFFFD;
  u_strToUTF8WithSub(decoded.utf8.reserve(static_cast<std::size_t>(capacity)), capacity, &length,
                     decoded.text.getBuffer(), decoded.text.length(), kReplacement, &replaced, &status);
  decoded.utf8.count_in(static_cast<std::size_t>(length));
  decoded.is_whole = replaced == 0 && decoded.text.indexOf(u'\0') < 0;
}

bool leads_back(const StoredText& stored, const TextCodePage& code_page) {
  if (code_page.is_utf8()) return is_valid_utf8(stored.text, stored.length);
  if (code_page.has_plain_ascii() && is_printable_ascii(stored.text, stored.length)) return true;
  DecodedText decoded;
  decode(stored, code_page, decoded);
  std::string encoded;
  return decoded.is_whole && encode_text(decoded.text, code_page.name(), encoded) &&
         encoded == std::string_view(stored.text, stored.length);
}

/// Writes one entry. What it is asked for each attribute it knows beforehand.
class EntryWriter {
 public:
  EntryWriter(const _qz_LOG_log_entry_imp& entry, const EntryMarks& marks, LineOutput& out)
      : entry_(entry),
        definition_(entry.require_definition()),
        marks_(marks),
        code_page_(TextCodePage::current()),
        out_(out) {}

  void write(const MessageChoice& choice) {
    write_head(choice);
    out_.append(",\"attributes\":{");
    write_attributes();
    if (has_other_bytes_) write_bytes();
    out_.append("}}");
  }

 private:
  void write_head(const MessageChoice& choice) {
    out_.append("\"id\":");
    append_integer(out_, entry_.get_entry_id());
    out_.append(",\"level\":");
    out_.append(static_cast<char>('0' + entry_.get_log_level()));
    if (const long long time = entry_.get_unix_seconds(); time != 0) {
      out_.append(",\"time\":");
      append_moment(time, out_);
    }
    if (choice.use_default) out_.append(",\"default\":true");
    if (choice.selector_index != 0) {
      out_.append(",\"selector\":");
      append_integer(out_, choice.selector_index);
    }
    if (marks_.event_name == nullptr) return;
    out_.append(",\"name\":\"");
    escape_json(marks_.event_name, std::strlen(marks_.event_name), out_);
    out_.append('"');
  }

  Sensitivity sensitivity_of(const KnownName* name) const {
    return marks_.sensitivity == nullptr ? Sensitivity::kKeep : marks_.sensitivity(definition_, name);
  }

  /// The key and a colon, behind a comma unless it is the first.
  void write_key(const KnownName* name, bool& is_first) {
    std::string_view key = name->json_key();
    if (is_first) key.remove_prefix(1);
    is_first = false;
    out_.append_padded(key.data(), key.size());
  }

  void write_attributes() {
    bool is_first = true;
    entry_.for_each_value([&](const KnownName* name, const _qz_LOG_type_base& value) {
      const Sensitivity sensitivity = sensitivity_of(name);
      if (sensitivity == Sensitivity::kKeep) [[likely]] {
        write_key(name, is_first);
        write_value(value);
      } else if (sensitivity == Sensitivity::kHash && is_text(value)) {
        write_key(name, is_first);
        append_hash(text_of(value), out_);
      }
    });
  }

  void write_value(const _qz_LOG_type_base& value) {
    switch (value.get_type()) {
      case TypeBool:
        return value_as<bool>(value) ? out_.append("true") : out_.append("false");
      case TypeUInt1:
        return append_integer(out_, unsigned{value_as<unsigned char>(value)});
      case TypeUInt2:
        return append_integer(out_, unsigned{value_as<unsigned short>(value)});
      case TypeUInt4:
        return append_integer(out_, value_as<unsigned>(value));
      case TypeSInt1:
        return append_integer(out_, int{static_cast<signed char>(value_as<char>(value))});
      case TypeSInt2:
        return append_integer(out_, int{value_as<short>(value)});
      case TypeSInt4:
        return append_integer(out_, value_as<int>(value));
      case TypeFloat:
        return append_float(value_as<double>(value), out_);
      case TypeDate:
      case TypeTime:
      case TypeTimestamp:
        return append_moment(value_as<qz_Time>(value).unix_seconds(), out_);
      default:
        return write_text(text_of(value));
    }
  }

  void write_text(const StoredText& stored) {
    out_.append('"');
    if (code_page_.is_utf8()) [[likely]] {
      if (!escape_json(stored.text, stored.length, out_)) has_other_bytes_ = true;
    } else if (code_page_.has_plain_ascii() && is_printable_ascii(stored.text, stored.length)) {
      escape_json(stored.text, stored.length, out_);
    } else {
      write_decoded_text(stored);
    }
    out_.append('"');
  }

  [[gnu::noinline]] void write_decoded_text(const StoredText& stored) {
    DecodedText decoded;
    decode(stored, code_page_, decoded);
    escape_json(decoded.utf8.data(), decoded.utf8.size(), out_);
    has_other_bytes_ = has_other_bytes_ || !leads_back(stored, code_page_);
  }

  /// Texts that do not lead back to their bytes are rare: which they are is found out once more.
  [[gnu::noinline]] void write_bytes() {
    out_.append("},\"bytes\":{");
    bool is_first = true;
    entry_.for_each_value([&](const KnownName* name, const _qz_LOG_type_base& value) {
      if (!is_text(value) || sensitivity_of(name) != Sensitivity::kKeep) return;
      const StoredText stored = text_of(value);
      if (leads_back(stored, code_page_)) return;
      write_key(name, is_first);
      out_.append('"');
      append_base64(stored.text, stored.length, out_);
      out_.append('"');
    });
  }

  const _qz_LOG_log_entry_imp& entry_;
  const _qz_LOG_log_definition& definition_;
  const EntryMarks& marks_;
  const TextCodePage& code_page_;
  LineOutput& out_;
  bool has_other_bytes_ = false;
};

}  // namespace

void append_entry_json(const char* beginning, const _qz_LOG_log_entry_imp& entry, const MessageChoice& choice,
                       const EntryMarks& marks, std::string& out) try {
  LineOutput output(out);
  output.append(beginning, std::strlen(beginning));
  EntryWriter(entry, marks, output).write(choice);
  output.finish();
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

/// What may look behind the facade.
class EntryLines {
 public:
  static void append(const char* beginning, const qz_LOG_LogEntry& entry, const MessageChoice& choice,
                     std::string& out) {
    const _qz_LOG_log_entry_imp& implementation = *entry.implementation_;
    append_entry_json(beginning, implementation, choice, marks_of(implementation.require_definition()), out);
  }
};

void append_entry_body(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) {
  EntryLines::append("", entry, {use_default, selector_index}, out);
}

}  // namespace qzlog

void qz_LOG_LogEntry::AppendJson(std::string& line, bool use_default, unsigned int selector_index) const {
  qzlog::EntryLines::append("{", *this, {use_default, selector_index}, line);
}

std::string qz_LOG_LogEntry::ToJson(bool use_default, unsigned int selector_index) const {
  std::string line;
  AppendJson(line, use_default, selector_index);
  return line;
}
