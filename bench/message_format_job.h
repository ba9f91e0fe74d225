#ifndef QZLOG_BENCH_MESSAGE_FORMAT_JOB_H
#define QZLOG_BENCH_MESSAGE_FORMAT_JOB_H

#include <unicode/bytestream.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <tuple>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/run_time_value.h"

namespace qzlog_bench {

inline icu::Formattable to_argument(const char* text) { return icu::UnicodeString::fromUTF8(text); }
inline icu::Formattable to_argument(int number) { return number; }
inline icu::Formattable to_argument(unsigned number) { return static_cast<int>(number); }
inline icu::Formattable to_argument(double number) { return number; }
inline icu::Formattable to_argument(const qz_Time& time) {
  constexpr double kMillisecondsPerSecond = 1000.0;
  return {static_cast<double>(time.unix_seconds()) * kMillisecondsPerSecond, icu::Formattable::kIsDate};
}

enum class Lifetime { kKept, kPerMessage };

/// The same text through ICU's MessageFormat alone: arguments made from the values, the text turned into UTF-8 in the
/// caller's buffer. The MessageFormat is kept, or made anew for each message.
template <typename Workload, Lifetime kLifetime>
class MessageFormatJob {
 public:
  explicit MessageFormatJob(const char* locale, const char* pattern = Workload::kPattern)
      : locale_(locale), pattern_(icu::UnicodeString::fromUTF8(pattern)), kept_(make()) {}

  const char* operator()(char* buffer) {
    make_unknown(workload_);
    if constexpr (kLifetime == Lifetime::kKept) return format(*kept_, buffer);
    return format(*make(), buffer);
  }

 private:
  static void check(UErrorCode status) {
    if (U_FAILURE(status)) std::abort();
  }

  std::unique_ptr<icu::MessageFormat> make() const {
    UErrorCode status = U_ZERO_ERROR;
    auto made = std::make_unique<icu::MessageFormat>(pattern_, locale_, status);
    check(status);
    return made;
  }

  const char* format(const icu::MessageFormat& message_format, char* buffer) const {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString message;
    std::apply(
        [&](const auto&... values) {
          const icu::Formattable arguments[] = {to_argument(values)...};
          icu::FieldPosition position;
          message_format.format(arguments, sizeof...(values), message, position, status);
        },
        workload_.values());
    check(status);
    icu::CheckedArrayByteSink sink(buffer, kTextSize);
    message.toUTF8(sink);
    buffer[sink.NumberOfBytesWritten()] = '\0';
    return buffer;
  }

  Workload workload_;
  icu::Locale locale_;
  icu::UnicodeString pattern_;
  std::shared_ptr<const icu::MessageFormat> kept_;
};

/// What ICU alone makes of the workload.
template <typename Workload>
std::string icu_text(const char* locale, const char* pattern) {
  char buffer[kTextSize + 1];
  return MessageFormatJob<Workload, Lifetime::kKept>(locale, pattern)(buffer);
}

/// The cases "NAME/MessageFormat_kept" and "NAME/MessageFormat_per_message".
template <typename Workload>
void add_message_format_pair(CaseList& cases, const std::string& name, const char* locale, const char* pattern,
                             const Expected& expected) {
  cases.add_text(name + "/MessageFormat_kept", icu_path(), expected,
                 [=] { return MessageFormatJob<Workload, Lifetime::kKept>(locale, pattern); });
  cases.add_text(name + "/MessageFormat_per_message", icu_path(), expected,
                 [=] { return MessageFormatJob<Workload, Lifetime::kPerMessage>(locale, pattern); });
}

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_MESSAGE_FORMAT_JOB_H
