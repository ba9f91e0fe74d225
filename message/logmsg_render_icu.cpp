#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/timezone.h>

#include "entry/logentry_i.h"
#include "foundation/thread_instance.h"
#include "message/code_page.h"
#include "message/logmsg.h"
#include "message/logmsg_render.h"
#include "message/template_cache.h"
#include "qzlog/logcfg.h"

namespace {

// Templates were written for an ICU that knew the arguments 0 to 9 only; the limit is part of their contract.
constexpr unsigned kMaxArguments = 10;

// ICU parses nested arguments by calling itself; a pattern that is deeper than any message would exhaust the stack.
constexpr int kMaxNesting = 100;

[[noreturn]] void throw_pattern_failure() {
  throw QZX_logging_internal_error(
      "<QZX_logging_internal_error> _qz_LOG_log_message::get_message:  MessageFormat constructor failed! most caused "
      "by "
      "number of attribute in message txt more than 9. (now ICU only support 0-9 tags)",
      0);
}

/// The style of an argument in the pattern, between its number and the closing brace.
const char* argument_style(MessageFormatKind kind) {
  switch (kind) {
    case MessageFormatKind::kCurrency:
      return ",number,currency";
    case MessageFormatKind::kPercent:
      return ",number,percent";
    case MessageFormatKind::kDate:
      return ",date";
    case MessageFormatKind::kTime:
      return ",time";
    case MessageFormatKind::kFloat:
      return ",number";
    case MessageFormatKind::kInteger:
      return ",number,##########";
    case MessageFormatKind::kText:
    case MessageFormatKind::kUnknown:
      break;
  }
  return "";
}

bool shows_time(MessageFormatKind kind) { return kind == MessageFormatKind::kDate || kind == MessageFormatKind::kTime; }

/// How deeply the braces of a pattern nest, those between apostrophes left out as ICU leaves them out.
int nesting_of(const icu::UnicodeString& pattern) {
  int depth = 0;
  int deepest = 0;
  bool quoted = false;
  for (int i = 0; i < pattern.length(); ++i) {
    const UChar unit = pattern.charAt(i);
    const UChar next = pattern.charAt(i + 1);
    if (unit == u'\'' && next == u'\'') {
      ++i;
    } else if (unit == u'\'') {
      quoted = !quoted && (next == u'{' || next == u'}');
    } else if (!quoted && unit == u'{') {
      deepest = std::max(deepest, ++depth);
    } else if (!quoted && unit == u'}') {
      depth = std::max(depth - 1, 0);
    }
  }
  return deepest;
}

/// A template cut into tokens, with the ICU pattern that follows from them. Used by one thread.
class CompiledTemplate {
 public:
  explicit CompiledTemplate(const icu::UnicodeString& text) {
    _qz_LOG_log_message::_tokenize_string(text, tokens_);
    arguments_.resize(_qz_LOG_log_message::_get_number_of_attributes(tokens_));
    build_pattern();
  }

  icu::UnicodeString render(const _qz_LOG_log_entry_imp& entry, const _qz_LOG_log_definition& definition);

 private:
  void build_pattern();
  void append_argument(MessageFormatKind kind);
  const icu::MessageFormat& message_format();

  _qz_LOG_msg_token_list tokens_;
  icu::UnicodeString pattern_;
  unsigned argument_count_ = 0;
  bool shows_time_ = false;
  // As many as there are format tokens; those of references that are left out keep their default value.
  std::vector<icu::Formattable> arguments_;
  // Made for a locale and, where times are shown, a time zone: both may change between two messages.
  std::unique_ptr<icu::MessageFormat> format_;
  icu::Locale format_locale_;
  std::unique_ptr<icu::TimeZone> format_zone_;
};

void CompiledTemplate::build_pattern() {
  for (const _qz_LOG_msg_token* token = tokens_.get_head(); token != nullptr; token = token->get_next()) {
    if (token->get_type() == _QZ_STRING_TOKEN) {
      const icu::UnicodeString& text = static_cast<const _qz_LOG_string_token*>(token)->get_text();
      pattern_ += text;
      // A brace in the text may ask ICU for a time as well as a reference.
      shows_time_ = shows_time_ || text.indexOf(u'{') >= 0;
    } else if (token->get_type() == _QZ_FMT_SPECIFIER_TOKEN && argument_of(*token) != nullptr) {
      append_argument(message_format_kind(static_cast<const _qz_LOG_fmt_spec_token*>(token)->get_format()));
    }
  }
}

void CompiledTemplate::append_argument(MessageFormatKind kind) {
  if (kind == MessageFormatKind::kUnknown) return;
  char number[16];
  std::snprintf(number, sizeof(number), "{%u", argument_count_++);
  pattern_ += icu::UnicodeString(number, -1, US_INV);
  pattern_ += icu::UnicodeString(argument_style(kind), -1, US_INV);
  pattern_ += u'}';
  shows_time_ = shows_time_ || shows_time(kind);
}

const icu::MessageFormat& CompiledTemplate::message_format() {
  const icu::Locale locale = _qz_LOG_log_message::get_locale();
  std::unique_ptr<icu::TimeZone> zone(shows_time_ ? icu::TimeZone::createDefault() : nullptr);
  const bool same_zone = !shows_time_ || (format_zone_ != nullptr && zone != nullptr && *format_zone_ == *zone);
  if (format_ != nullptr && format_locale_ == locale && same_zone) return *format_;

  format_.reset();
  if (argument_count_ > kMaxArguments || nesting_of(pattern_) > kMaxNesting) throw_pattern_failure();
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::MessageFormat>(pattern_, locale, status);
  if (format == nullptr) throw QZX_memory_alloc();
  if (U_FAILURE(status)) throw_pattern_failure();
  format_locale_ = locale;
  format_zone_ = std::move(zone);
  format_ = std::move(format);
  return *format_;
}

/// A moment for ICU: the calendar fields are read as local time whatever the value's mode.
UDate to_icu_date(qz_Time time) {
  constexpr double kMillisecondsPerSecond = 1000.0;
  time.set_GMT_time_mode(false);
  return static_cast<double>(time.unix_seconds()) * kMillisecondsPerSecond;
}

/// Fills the arguments of a pattern from an entry, in the order of the template.
class ArgumentFiller {
 public:
  ArgumentFiller(const _qz_LOG_log_entry_imp& entry, std::vector<icu::Formattable>& arguments)
      : entry_(entry), arguments_(arguments) {}

  void text(const _qz_LOG_msg_token& /*token*/) {}  // part of the pattern already

  void reference(const MessageReference& reference) {
    icu::Formattable& argument = arguments_[filled_];
    switch (reference.kind) {
      case MessageFormatKind::kText:
        argument.setString(text_of(reference));
        break;
      case MessageFormatKind::kDate:
      case MessageFormatKind::kTime:
        argument.setDate(to_icu_date(referenced_time(entry_, reference.name)));
        break;
      default:
        set_number(argument, reference);
        break;
    }
    ++filled_;
  }

 private:
  icu::UnicodeString text_of(const MessageReference& reference) const {
    const char* const text = is_unicode_string_attribute(reference.type) ? entry_.get_attrib_mbstr(reference.name)
                                                                         : entry_.get_attrib_str(reference.name);
    return decode_text(text, qz_LOG_LogConfig::GetCodePage());
  }

  void set_number(icu::Formattable& argument, const MessageReference& reference) const {
    if (is_integer_attribute(reference.type)) {
      argument.setLong(entry_.get_attrib_as_4(reference.name));
    } else {
      argument.setDouble(entry_.get_attrib_float8(reference.name));
    }
  }

  const _qz_LOG_log_entry_imp& entry_;
  std::vector<icu::Formattable>& arguments_;
  unsigned filled_ = 0;
};

icu::UnicodeString CompiledTemplate::render(const _qz_LOG_log_entry_imp& entry,
                                            const _qz_LOG_log_definition& definition) {
  ArgumentFiller filler(entry, arguments_);
  render_tokens(tokens_, definition, filler);
  const icu::MessageFormat& format = message_format();
  icu::UnicodeString message;
  icu::FieldPosition position;
  UErrorCode status = U_ZERO_ERROR;
  format.format(arguments_.data(), static_cast<int>(arguments_.size()), message, position, status);
  // There is no message for this failure: a formatter that accepts a pattern and cannot apply it is broken.
  if (U_FAILURE(status)) std::abort();
  return message;
}

using CompiledTemplates = TemplateCache<char16_t, CompiledTemplate>;

}  // namespace

icu::UnicodeString _qz_LOG_log_message::get_message(const _qz_LOG_log_entry_imp& entry,
                                                    const _qz_LOG_log_definition* definition, bool use_default,
                                                    unsigned int selector_index) {
  const icu::UnicodeString text = _get_message_string(entry, definition, use_default, selector_index);
  const std::u16string_view key(text.getBuffer(), static_cast<std::size_t>(text.length()));
  return with_thread_instance<CompiledTemplates>([&](CompiledTemplates& templates) {
    return templates.get(key, [&] { return std::make_unique<CompiledTemplate>(text); }).render(entry, *definition);
  });
}
