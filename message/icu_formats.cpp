#include "message/icu_formats.h"

#include <cstdlib>

#include <unicode/fieldpos.h>

#include "foundation/fork_gate.h"
#include "message/code_page.h"
#include "message/icu_memory.h"
#include "message/logmsg.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

[[noreturn]] void throw_pattern_failure() {
  throw QZX_logging_internal_error(
      "<QZX_logging_internal_error> _qz_LOG_log_message::get_message:  MessageFormat constructor failed! most caused "
      "by "
      "number of attribute in message txt more than 9. (now ICU only support 0-9 tags)",
      0);
}

void end_process_on_failure(UErrorCode status) {
  if (U_FAILURE(status)) std::abort();
}

}  // namespace

KeptFormat::KeptFormat(const icu::UnicodeString& pattern, bool shows_time, const char* locale_name)
    : locale_name_(locale_name) {
  const IcuMemory memory;
  UErrorCode status = U_ZERO_ERROR;
  if (shows_time) {
    zone_.reset(icu::TimeZone::createDefault());
    memory.check_made(zone_.get());
  }
  format_ = std::make_unique<icu::MessageFormat>(pattern, _qz_LOG_log_message::get_locale(), status);
  memory.check_made(format_.get());
  memory.check(status);
  if (U_FAILURE(status)) throw_pattern_failure();
  int count = 0;
  const icu::Format** const formatters = format_->getFormats(count);
  memory.check_made(formatters);
  for (int i = 0; i < count; ++i) formatters_.push_back({formatters[i]});
}

bool KeptFormat::is_current(const char* locale_name) const {
  if (is_damaged_ || locale_name_ != locale_name) return false;
  if (zone_ == nullptr) return true;
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  return zone != nullptr && *zone_ == *zone;
}

template <typename Write>
icu::UnicodeString KeptFormat::formatted(Write&& write) {
  const IcuMemory memory;
  icu::UnicodeString text;
  UErrorCode status = U_ZERO_ERROR;
  // ICU makes some of what it needs when it first formats, and keeps what it has made of it so far.
  is_damaged_ = true;
  write(text, status);
  memory.check(text, status);
  is_damaged_ = false;
  end_process_on_failure(status);
  return text;
}

icu::UnicodeString KeptFormat::format(const icu::Formattable* values, int count) {
  icu::FieldPosition position;
  return formatted([&](icu::UnicodeString& message, UErrorCode& status) {
    format_->format(values, count, message, position, status);
  });
}

bool KeptFormat::append(unsigned index, const IcuArgument& value, TextBuffer& text) {
  Formatter& formatter = formatters_[index];
  if (formatter.format == nullptr) return false;
  const bool is_time = value.type == IcuArgument::Type::kTime;
  if (is_time && formatter.has_last && formatter.last_time == value.number) {
    text.append(formatter.last_text.data(), formatter.last_text.size());
    return true;
  }
  icu::Formattable argument;
  fill_argument(value, argument);
  const icu::UnicodeString shown = formatted(
      [&](icu::UnicodeString& written, UErrorCode& status) { formatter.format->format(argument, written, status); });
  const std::size_t begin = text.size();
  if (!append_utf8(shown, text)) return false;
  if (is_time) {
    formatter.has_last = false;
    formatter.last_text.assign(text.data() + begin, text.size() - begin);
    formatter.last_time = value.number;
    formatter.has_last = true;
  }
  return true;
}

LocaleFormats::LocaleFormats(std::string name)
    : name_(std::move(name)), integer_style_(_qz_LOG_log_message::get_locale()) {}

bool LocaleFormats::append(MessageFormatKind kind, const IcuArgument& value, TextBuffer& text) {
  const bool is_number = value.type == IcuArgument::Type::kFloat || value.type == IcuArgument::Type::kInteger;
  if (!is_number) return format_of(kind).append(0, value, text);
  const NumberStyle& style = number_style(kind);
  if (!style.is_usable()) return format_of(kind).append(0, value, text);
  style.append(text, value.type == IcuArgument::Type::kFloat ? value.number : value.integer);
  return true;
}

std::unique_ptr<KeptFormat> LocaleFormats::make_format(MessageFormatKind kind) const {
  const icu::UnicodeString style(argument_style(kind), -1, US_INV);
  return std::make_unique<KeptFormat>(icu::UnicodeString(u"{0") + style + u'}', shows_time(kind), name_.c_str());
}

KeptFormat& LocaleFormats::format_of(MessageFormatKind kind) {
  std::unique_ptr<KeptFormat>& kept = formats_[static_cast<unsigned>(kind)];
  if (kept == nullptr || !kept->is_current(name_.c_str())) kept = make_format(kind);
  return *kept;
}

/// Learnt from a format of its own, which want of memory may leave damaged.
const NumberStyle& LocaleFormats::number_style(MessageFormatKind kind) {
  std::optional<NumberStyle>& style = number_styles_[static_cast<unsigned>(kind)];
  if (!style) style.emplace(make_format(kind)->formatter(0));
  return *style;
}

IcuFormats::~IcuFormats() {
  const ForkDelay fork_delay;
  formats_.clear();
  locales_.clear();
}

LocaleFormats& IcuFormats::of_another_locale(const char* name) {
  last_locale_ = nullptr;
  const std::string key = name;
  return *(last_locale_ = &locales_.get(key, [&] { return std::make_unique<LocaleFormats>(key); }));
}

KeptFormat& IcuFormats::format_of(const IcuTemplate& message_template) {
  if (!message_template.is_within_limits()) throw_pattern_failure();
  const char* const locale_name = _qz_LOG_log_message::get_locale_name();
  const auto make = [&] {
    return std::make_unique<KeptFormat>(message_template.pattern(), message_template.shows_time(), locale_name);
  };
  return formats_.get(
      message_template.serial(), [locale_name](const KeptFormat& kept) { return kept.is_current(locale_name); }, make);
}

}  // namespace qzlog
