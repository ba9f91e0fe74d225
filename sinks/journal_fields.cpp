#include "sinks/journal_fields.h"

#include <algorithm>
#include <cstdint>

#include "lines/stored_code_page.h"
#include "lines/utf8_text.h"
#include "lines/value_text.h"
#include "message/code_page.h"
#include "sinks/journal_names.h"

namespace qzlog {

namespace {

constexpr std::size_t kLengthBytes = 8;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// What stands between the quotes, if there are some.
void append_unquoted(std::string_view text, std::string& out) {
  const bool is_quoted = text.front() == '"';
  out += text.substr(is_quoted ? 1 : 0, text.size() - (is_quoted ? 2 : 0));
}

void append_value(const _qz_LOG_type_base& value, Sensitivity sensitivity, std::string& out) {
  char room[std::max(kMaxShortValue, kMaxHash)];
  if (!is_text(value)) {
    append_unquoted({room, static_cast<std::size_t>(write_short_value(room, value) - room)}, out);
  } else if (sensitivity == Sensitivity::kHash) {
    append_unquoted({room, static_cast<std::size_t>(write_hash(room, text_of(value)) - room)}, out);
  } else {
    const StoredText stored = text_of(value);
    append_journal_text({stored.text, stored.length}, out);
  }
}

}  // namespace

JournalField::JournalField(std::string_view name, std::string& out) : out_(out) {
  out_ += '\n';
  out_ += name;
  begin_value();
}

JournalField JournalField::of_attribute(std::string_view name, std::string& out) {
  out += '\n';
  append_journal_field_name(name, out);
  return {out, Named{}};
}

void JournalField::begin_value() {
  out_ += '=';
  value_ = out_.size();
}

void JournalField::end() {
  if (out_.find('\n', value_) == std::string::npos) return;
  char length[kLengthBytes];
  std::uint64_t rest = out_.size() - value_;
  for (char& byte : length) {
    byte = static_cast<char>(rest & 0xFF);
    rest >>= 8;
  }
  out_[value_ - 1] = '\n';
  out_.insert(value_, length, kLengthBytes);
}

void append_utf8_text(std::string_view text, std::string& out) {
  if (is_valid_utf8(text.data(), text.size())) {
    out += text;
    return;
  }
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = decode_utf8(text, at).size;
    out += size != 0 ? text.substr(at, size) : kReplacement;
    at += std::max<std::size_t>(size, 1);
  }
}

void append_journal_text(std::string_view text, std::string& out) {
  const StoredCodePage& code_page = StoredCodePage::current();
  if (code_page.has_plain_ascii() && is_printable_ascii(text.data(), text.size())) [[likely]] {
    out += text;
  } else if (code_page.is_utf8()) {
    append_utf8_text(text, out);
  } else {
    std::string utf8;
    decode_text(std::string(text).c_str(), code_page.name()).toUTF8String(utf8);
    append_utf8_text(utf8, out);
  }
}

void append_attribute_fields(const _qz_LOG_log_entry_imp& entry, const EntryMarks& marks, std::string& out) {
  const _qz_LOG_log_definition& definition = entry.require_definition();
  entry.for_each_value([&](const KnownName* name, const _qz_LOG_type_base& value) {
    const Sensitivity sensitivity =
        marks.sensitivity == nullptr ? Sensitivity::kKeep : marks.sensitivity(definition, name);
    const bool is_shown = sensitivity == Sensitivity::kKeep || (sensitivity == Sensitivity::kHash && is_text(value));
    if (!is_shown) return;
    JournalField field = JournalField::of_attribute(name->text(), out);
    append_value(value, sensitivity, out);
    field.end();
  });
}

}  // namespace qzlog
