#ifndef QZLOG_MESSAGE_ICU_FORMATS_H
#define QZLOG_MESSAGE_ICU_FORMATS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/timezone.h>

#include "foundation/no_copies.h"
#include "foundation/text_buffer.h"
#include "message/format_types.h"
#include "message/icu_arguments.h"
#include "message/icu_template.h"
#include "message/integer_style.h"
#include "message/logmsg.h"
#include "message/number_style.h"
#include "message/recent_cache.h"

namespace qzlog {

/// The MessageFormat of a pattern for one locale and, where it shows times, one time zone.
class KeptFormat : public qz_UTIL_no_inadvertant_copies {
 public:
  /// QZX_logging_internal_error when ICU refuses the pattern, QZX_memory_alloc when there is no memory.
  KeptFormat(const icu::UnicodeString& pattern, bool shows_time, const char* locale_name);

  /// Whether it still is what would be made now.
  bool is_current(const char* locale_name) const;
  /// The message of a whole pattern. For a failure of ICU's other than that of memory there is no exception: a
  /// formatter that accepts a pattern and cannot apply it is broken, and ends the process.
  icu::UnicodeString format(const icu::Formattable* values, int count);
  /// Appends what the formatter of a top-level argument writes for a value. False when it has no formatter of its own,
  /// or writes what UTF-8 cannot say.
  bool append(unsigned index, const IcuArgument& value, TextBuffer& text);
  /// The formatter of a top-level argument, which the format owns; null when there is none.
  const icu::Format* formatter(unsigned index) const {
    return index < formatters_.size() ? formatters_[index].format : nullptr;
  }

 private:
  /// What `write` appends to a text, ICU's failures dealt with.
  template <typename Write>
  icu::UnicodeString formatted(Write&& write);

  std::string locale_name_;
  bool is_damaged_ = false;              // by want of memory
  std::unique_ptr<icu::TimeZone> zone_;  // null when no time is shown
  std::unique_ptr<icu::MessageFormat> format_;
  /// The formatter of an argument, which the format owns, and what it wrote last: messages that follow each other
  /// mostly show the same second, and ICU takes its time to write it.
  struct Formatter {
    const icu::Format* format;
    bool has_last = false;
    double last_time = 0.0;
    std::string last_text = {};
  };
  std::vector<Formatter> formatters_;
};

/// How one locale shows the values of messages, as a thread keeps it. Callers delay forks.
class LocaleFormats : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Of the locale that is set, whose name this is.
  explicit LocaleFormats(std::string name);

  const std::string& name() const { return name_; }
  const IntegerStyle& integer_style() const { return integer_style_; }
  /// Appends what an argument in the style of a format shows for a value. False when it is none that UTF-8 can say.
  bool append(MessageFormatKind kind, const IcuArgument& value, TextBuffer& text);

 private:
  static constexpr unsigned kKinds = static_cast<unsigned>(MessageFormatKind::kInteger) + 1;

  std::unique_ptr<KeptFormat> make_format(MessageFormatKind kind) const;
  /// The formatter of a style, which all arguments of that style have, whatever the template.
  KeptFormat& format_of(MessageFormatKind kind);
  const NumberStyle& number_style(MessageFormatKind kind);

  std::string name_;
  IntegerStyle integer_style_;
  std::unique_ptr<KeptFormat> formats_[kKinds];
  std::optional<NumberStyle> number_styles_[kKinds];
};

/// What a thread keeps of ICU's formatters, for the locale that is set: making one costs many times what using it does.
/// Used through with_thread_instance, by callers that delay forks.
class IcuFormats : public qz_UTIL_no_inadvertant_copies {
 public:
  ~IcuFormats();

  /// Valid until the next call.
  LocaleFormats& of_locale() {
    const char* const name = _qz_LOG_log_message::get_locale_name();
    return last_locale_ != nullptr && last_locale_->name() == name ? *last_locale_ : of_another_locale(name);
  }
  /// The format of a whole template, for those that cannot be assembled of parts.
  KeptFormat& format_of(const IcuTemplate& message_template);

 private:
  LocaleFormats& of_another_locale(const char* name);

  RecentCache<std::uint64_t, KeptFormat> formats_;
  RecentCache<std::string, LocaleFormats> locales_;
  LocaleFormats* last_locale_ = nullptr;  // nearly always the next message's too
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_FORMATS_H
