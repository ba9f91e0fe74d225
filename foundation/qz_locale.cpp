#include "qzlog/qz_locale.h"

#include <cstring>

#include "foundation/atomic_word.h"

using namespace qzlog;

namespace {

// In the order of the enumeration.
constexpr const char* kLocaleNames[] = {"",      "en_US", "en_GB", "de_DE", "fr_FR", "es_ES", "it_IT",
                                        "pt_PT", "pt_BR", "nl_NL", "sv_SE", "pl_PL", "tr_TR", "ru_RU",
                                        "ar_SA", "ja_JP", "ko_KR", "zh_CN", "zh_TW"};
constexpr unsigned kLocaleCount = sizeof(kLocaleNames) / sizeof(kLocaleNames[0]);
static_assert(kLocaleCount == QZ_LOCALE_ZH_TW + 1);

qz_Locale current_locale = QZ_LOCALE_PROCESS;

/// Whether `name` is the language and country of `known` ("de_DE", "de-DE"), a code page or variant after it left
/// aside.
bool names_locale(const char* name, const char* known) {
  const std::size_t length = std::strlen(known);
  for (std::size_t i = 0; i < length; ++i) {
    if (name[i] != known[i] && !(known[i] == '_' && name[i] == '-')) return false;
  }
  return name[length] == '\0' || name[length] == '.' || name[length] == '@';
}

}  // namespace

qz_Locale qz_I18N_get_locale() { return load_word(current_locale); }

void qz_I18N_set_locale(qz_Locale locale) {
  if (locale < kLocaleCount) store_word(current_locale, locale);
}

const char* qz_I18N_get_locale_name(qz_Locale locale) { return locale < kLocaleCount ? kLocaleNames[locale] : ""; }

bool qz_I18N_find_locale(const char* name, qz_Locale& locale) {
  if (name == nullptr) return false;
  for (unsigned i = 1; i < kLocaleCount; ++i) {
    if (!names_locale(name, kLocaleNames[i])) continue;
    locale = static_cast<qz_Locale>(i);
    return true;
  }
  return false;
}
