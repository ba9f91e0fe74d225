#ifndef QZLOG_MESSAGE_ICU_FORMATS_H
#define QZLOG_MESSAGE_ICU_FORMATS_H

#include <memory>
#include <string>
#include <vector>

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/timezone.h>

#include "foundation/no_copies.h"
#include "message/icu_template.h"
#include "message/integer_style.h"
#include "message/recent_cache.h"

/// The MessageFormat of a template for one locale and, where it shows times, one time zone.
class KeptFormat : public qz_UTIL_no_inadvertant_copies {
 public:
  /// QZX_logging_internal_error when ICU refuses the pattern.
  KeptFormat(const IcuTemplate& message_template, const char* locale_name);

  /// Whether it still is what would be made now.
  bool is_current(const char* locale_name) const;
  const icu::MessageFormat& format() const { return *format_; }
  /// The formatter of a top-level argument; null when it has none of its own.
  const icu::Format* formatter(unsigned index) const { return formatters_[index]; }

 private:
  std::string locale_name_;
  std::unique_ptr<icu::TimeZone> zone_;  // null when no time is shown
  std::unique_ptr<icu::MessageFormat> format_;
  std::vector<const icu::Format*> formatters_;  // the format owns them
};

/// What a thread keeps of ICU's formatters: making one costs many times what using it does. Used through
/// with_thread_instance.
class IcuFormats : public qz_UTIL_no_inadvertant_copies {
 public:
  const IntegerStyle& integer_style(const char* locale_name);
  const KeptFormat& format_of(const IcuTemplate& message_template, const char* locale_name);

 private:
  RecentCache<std::uint64_t, KeptFormat> formats_;
  RecentCache<std::string, IntegerStyle> styles_;
  // Nearly always the next message's too.
  std::string last_locale_name_;
  const IntegerStyle* last_style_ = nullptr;
};

#endif  // QZLOG_MESSAGE_ICU_FORMATS_H
