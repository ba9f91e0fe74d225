#ifndef QZLOG_BENCH_LANGUAGES_H
#define QZLOG_BENCH_LANGUAGES_H

#include "qzlog/qz_locale.h"

namespace qzlog_bench {

/// The languages that messages are measured in.
struct Language {
  const char* name;
  qz_Locale locale;
  const char* icu_locale;
};

inline constexpr Language kLanguages[] = {{"en", QZ_LOCALE_EN_US, "en_US"},
                                          {"de", QZ_LOCALE_DE_DE, "de_DE"},
                                          {"ar", QZ_LOCALE_AR_SA, "ar_SA"},
                                          {"ja", QZ_LOCALE_JA_JP, "ja_JP"}};

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_LANGUAGES_H
