#include "lines/line_writer.h"

#include <cstring>
#include <new>
#include <string_view>

#include <unicode/ustring.h>

#include "foundation/itoa.h"
#include "foundation/text_buffer.h"
#include "lines/base64_text.h"
#include "lines/entry_access.h"
#include "lines/json_escape.h"
#include "lines/line_output.h"
#include "lines/stored_code_page.h"
#include "lines/value_text.h"
#include "message/code_page.h"
#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

/// The room that a line's beginning may take, up to what has no bound.
constexpr std::size_t kMaxHead = 160;
/// Names up to this length, as nearly all are, are copied in whole blocks.
constexpr std::size_t kShortName = 64;

/// A text of a code page, and what encoding it again needs to know.
struct DecodedText {
  icu::UnicodeString text;
  TextBuffer utf8;
  bool is_whole = true;  ///< what JSON has of it is what it is
};

/// Half a surrogate pair has no UTF-8, and a zero character no place in a text.
void decode(const StoredText& stored, const StoredCodePage& code_page, DecodedText& decoded) {
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

bool leads_back(const DecodedText& decoded, const StoredText& stored, const StoredCodePage& code_page) {
  std::string encoded;
  return decoded.is_whole && encode_text(decoded.text, code_page.name(), encoded) &&
         encoded == std::string_view(stored.text, stored.length);
}

bool leads_back(const StoredText& stored, const StoredCodePage& code_page) {
  if (code_page.is_utf8()) return is_valid_utf8(stored.text, stored.length);
  if (code_page.has_plain_ascii() && is_printable_ascii(stored.text, stored.length)) return true;
  DecodedText decoded;
  decode(stored, code_page, decoded);
  return leads_back(decoded, stored, code_page);
}

/// Writes one entry. What it is asked for each attribute it knows beforehand. Its functions hand around where the line
/// ends, and behind what they return is no room but where they say so.
class EntryWriter {
 public:
  EntryWriter(const _qz_LOG_log_entry_imp& entry, const EntryMarks& marks, LineOutput& out)
      : entry_(entry),
        definition_(entry.require_definition()),
        marks_(marks),
        code_page_(StoredCodePage::current()),
        out_(out) {}

  void write(const MessageChoice& choice) {
    char* at = write_head(out_.end(), choice);
    at = write_attributes(at);
    if (has_other_bytes_) at = write_bytes(at);
    out_.count_up_to(write_literal(out_.reserve_behind(at, 2), "}}"));
  }

 private:
  char* write_head(char* at, const MessageChoice& choice) {
    at = write_literal(out_.reserve_behind(at, kMaxHead), "\"id\":");
    at = write_number(at, entry_.get_entry_id());
    at = write_literal(at, ",\"level\":");
    *at++ = static_cast<char>('0' + entry_.get_log_level());
    if (const long long time = entry_.get_unix_seconds(); time != 0) {
      at = write_quoted_moment(write_literal(at, ",\"time\":"), time);
    }
    if (choice.use_default) at = write_literal(at, ",\"default\":true");
    if (choice.selector_index != 0) at = write_number(write_literal(at, ",\"selector\":"), choice.selector_index);
    if (marks_.event_name != nullptr) at = write_event_name(at);
    return write_literal(out_.reserve_behind(at, kMaxHead), ",\"attributes\":{");
  }

  char* write_event_name(char* at) {
    at = write_literal(out_.reserve_behind(at, kMaxHead), ",\"name\":");
    return write_prepared(at, marks_.event_name->json_text(), kMaxHead);
  }

  Sensitivity sensitivity_of(const KnownName* name) const {
    return marks_.sensitivity == nullptr ? Sensitivity::kKeep : marks_.sensitivity(definition_, name);
  }

  /// The key and a colon, behind a comma unless it is the first; then there is room for `more` bytes.
  char* write_key(char* at, const KnownName* name, bool& is_first, std::size_t more) {
    std::string_view key = name->json_key();
    if (is_first) key.remove_prefix(1);
    is_first = false;
    return write_prepared(at, key, more);
  }

  /// A name's text, behind which a block may be read; then there is room for `more` bytes.
  char* write_prepared(char* at, std::string_view text, std::size_t more) {
    if (text.size() > kShortName) [[unlikely]]
      return out_.reserve_behind(write_long_name(at, text), more);
    constexpr std::size_t kBlock = KnownName::kJsonKeyPadding;
    at = out_.reserve_behind(at, kShortName + kBlock + more);
    std::size_t copied = 0;
    do {
      std::memcpy(at + copied, text.data() + copied, kBlock);
      copied += kBlock;
    } while (copied < text.size());
    return at + text.size();
  }

  [[gnu::noinline]] char* write_long_name(char* at, std::string_view text) {
    out_.count_up_to(at);
    out_.append(text.data(), text.size());
    return out_.end();
  }

  char* write_attributes(char* at) {
    bool is_first = true;
    entry_.for_each_value([&](const KnownName* name, const _qz_LOG_type_base& value) {
      const Sensitivity sensitivity = sensitivity_of(name);
      if (sensitivity == Sensitivity::kKeep) [[likely]] {
        at = write_value(write_key(at, name, is_first, kMaxShortValue), value);
      } else if (sensitivity == Sensitivity::kHash && is_text(value)) {
        at = write_hash(write_key(at, name, is_first, kMaxHash), text_of(value));
      }
    });
    return at;
  }

  char* write_value(char* at, const _qz_LOG_type_base& value) {
    if (!is_text(value)) return write_short_value(at, value);
    *at = '"';
    at = write_text(at + 1, text_of(value));
    return write_literal(out_.reserve_behind(at, 1), "\"");
  }

  /// What stands between the quotes.
  char* write_text(char* at, const StoredText& stored) {
    const bool is_utf8 = code_page_.is_utf8();
    if (is_utf8 || (code_page_.has_plain_ascii() && is_printable_ascii(stored.text, stored.length))) [[likely]] {
      const EscapedText escaped = escape_json(stored.text, stored.length, at, out_);
      if (!escaped.is_valid) has_other_bytes_ = true;
      return escaped.end;
    }
    return write_decoded_text(at, stored);
  }

  [[gnu::noinline]] char* write_decoded_text(char* at, const StoredText& stored) {
    DecodedText decoded;
    decode(stored, code_page_, decoded);
    has_other_bytes_ = has_other_bytes_ || !leads_back(decoded, stored, code_page_);
    return escape_json(decoded.utf8.data(), decoded.utf8.size(), at, out_).end;
  }

  /// Texts that do not lead back to their bytes are rare: which they are is found out once more.
  [[gnu::noinline]] char* write_bytes(char* at) {
    out_.count_up_to(at);
    out_.append("},\"bytes\":{");
    bool is_first = true;
    entry_.for_each_value([&](const KnownName* name, const _qz_LOG_type_base& value) {
      if (!is_text(value) || sensitivity_of(name) != Sensitivity::kKeep) return;
      const StoredText stored = text_of(value);
      if (leads_back(stored, code_page_)) return;
      out_.count_up_to(write_key(out_.end(), name, is_first, 0));
      out_.append('"');
      append_base64(stored.text, stored.length, out_);
      out_.append('"');
    });
    return out_.end();
  }

  const _qz_LOG_log_entry_imp& entry_;
  const _qz_LOG_log_definition& definition_;
  const EntryMarks& marks_;
  const StoredCodePage& code_page_;
  LineOutput& out_;
  bool has_other_bytes_ = false;
};

}  // namespace

void append_entry_json(LineBeginning beginning, const _qz_LOG_log_entry_imp& entry, const MessageChoice& choice,
                       const EntryMarks& marks, std::string& out) try {
  LineOutput output(out);
  if (beginning == LineBeginning::kBrace) output.append('{');
  EntryWriter(entry, marks, output).write(choice);
  output.finish();
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

void append_entry_body(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& out) {
  const _qz_LOG_log_entry_imp& implementation = EntryAccess::of(entry);
  const EntryMarks marks = marks_of(implementation.require_definition());
  qz_LOG_LogConfig::GetDefinitionTable()->definitions_digest();
  append_entry_json(LineBeginning::kNone, implementation, {use_default, selector_index}, marks, out);
}

}  // namespace qzlog

const char* qz_LOG_LogEntry::GetEventName() const {
  const qzlog::KnownName* const name = qzlog::find_event_name(implementation_->require_definition());
  return name != nullptr ? name->text() : "";
}

void qz_LOG_LogEntry::AppendJson(std::string& line, bool use_default, unsigned int selector_index) const {
  const qzlog::MessageChoice choice = {use_default, selector_index};
  qzlog::append_entry_json(qzlog::LineBeginning::kBrace, *implementation_, choice,
                           qzlog::marks_of(implementation_->require_definition()), line);
}

std::string qz_LOG_LogEntry::ToJson(bool use_default, unsigned int selector_index) const {
  std::string line;
  AppendJson(line, use_default, selector_index);
  return line;
}
