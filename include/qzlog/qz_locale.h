#ifndef QZLOG_QZ_LOCALE_H
#define QZLOG_QZ_LOCALE_H

#include "qzlog/export.h"

/// The locales a process can choose for its messages, numbers and dates.
enum qz_Locale : unsigned {
  QZ_LOCALE_PROCESS = 0,  ///< the locale the process started with
  QZ_LOCALE_EN_US,
  QZ_LOCALE_EN_GB,
  QZ_LOCALE_DE_DE,
  QZ_LOCALE_FR_FR,
  QZ_LOCALE_ES_ES,
  QZ_LOCALE_IT_IT,
  QZ_LOCALE_PT_PT,
  QZ_LOCALE_PT_BR,
  QZ_LOCALE_NL_NL,
  QZ_LOCALE_SV_SE,
  QZ_LOCALE_PL_PL,
  QZ_LOCALE_TR_TR,
  QZ_LOCALE_RU_RU,
  QZ_LOCALE_AR_SA,
  QZ_LOCALE_JA_JP,
  QZ_LOCALE_KO_KR,
  QZ_LOCALE_ZH_CN,
  QZ_LOCALE_ZH_TW
};

/// The process's current locale, QZ_LOCALE_PROCESS until it is set. Any thread.
QZLOG_EXPORT qz_Locale qz_I18N_get_locale();
/// Sets it; a value outside the enumeration is ignored. Any thread. Callers of the library use
/// qz_LOG_LogConfig::SetLocale, which also makes an open message catalog follow.
QZLOG_EXPORT void qz_I18N_set_locale(qz_Locale locale);

/// The name of a locale as language and country ("de_DE"), "" for QZ_LOCALE_PROCESS and for values outside the
/// enumeration. Static storage. Any thread.
QZLOG_EXPORT const char* qz_I18N_get_locale_name(qz_Locale locale);
/// The locale with that name (also written "de-DE"; a ".UTF-8" or "@..." after it is ignored). False when there is
/// none.
QZLOG_EXPORT bool qz_I18N_find_locale(const char* name, qz_Locale& locale);

#endif  // QZLOG_QZ_LOCALE_H
