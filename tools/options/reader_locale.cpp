#include "tools/options/reader_locale.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/uloc.h>

#include "message/icu_memory.h"
#include "qzlog/logcfg.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/options/locale_names.h"

namespace qzlog_tool {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostNameBytes = 100;
constexpr std::string_view kNameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.@=;";

/// "de_AT.UTF-8@euro" is "de_AT@euro".
std::string without_code_page(std::string name) {
  const std::size_t point = name.find('.');
  if (point == std::string::npos) return name;
  return name.erase(point, std::min(name.find('@', point), name.size()) - point);
}

/// Bogus for a text that is no name.
icu::Locale parse_name(const std::string& name) {
  icu::Locale none;
  none.setToBogus();
  if (name.empty() || name.size() > kMostNameBytes || name.find_first_not_of(kNameCharacters) != std::string::npos) {
    return none;
  }
  const std::string plain = without_code_page(name);
  if (plain.substr(0, plain.find('@')).find('-') == std::string::npos)
    return icu::Locale::createCanonical(plain.c_str());
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = icu::Locale::forLanguageTag(plain, status);
  return U_SUCCESS(status) ? icu::Locale::createCanonical(locale.getName()) : none;
}

/// Whether a name has keywords, as "de_DE@calendar=buddhist", or extensions, as "de-DE-u-ca-buddhist": the library's
/// locales have none.
bool has_keywords(const std::string& name) {
  if (name.find('=') != std::string::npos) return true;
  for (std::size_t at = name.find('-'); at != std::string::npos; at = name.find('-', at + 1)) {
    if (at + 2 < name.size() && name[at + 2] == '-') return true;
  }
  return false;
}

/// What ICU has for numbers of a locale, which is as good as what it has for anything else.
icu::Locale locale_with_data(const icu::Locale& wanted) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::NumberFormat> format(icu::NumberFormat::createInstance(wanted, status));
  if (format == nullptr || U_FAILURE(status)) return icu::Locale::getRoot();
  return format->getLocale(ULOC_VALID_LOCALE, status);
}

bool has_language(const icu::Locale& wanted) {
  const std::string_view language = wanted.getLanguage();
  if (language.empty()) return false;
  const int count = uloc_countAvailable();
  for (int index = 0; index < count; ++index) {
    if (language == icu::Locale(uloc_getAvailable(index)).getLanguage()) return true;
  }
  return false;
}

/// Whether the data are those of the script and the country that the name has.
bool is_same_place(const icu::Locale& wanted, const icu::Locale& found) {
  if (*wanted.getCountry() != '\0' && std::string_view(wanted.getCountry()) != found.getCountry()) return false;
  if (*wanted.getScript() == '\0') return true;
  icu::Locale likely = found;
  UErrorCode status = U_ZERO_ERROR;
  likely.addLikelySubtags(status);
  return std::string_view(wanted.getScript()) == likely.getScript();
}

std::vector<std::string> all_locales() {
  std::vector<std::string> names = locale_names();
  const int count = uloc_countAvailable();
  for (int index = 0; index < count; ++index) names.emplace_back(uloc_getAvailable(index));
  return names;
}

std::string language_of(const std::string& locale) { return locale.substr(0, locale.find_first_of("_@")); }

/// The names of the bundles in a folder.
std::vector<std::string> bundles_in(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator file(folder, error), end; !error && file != end; file.increment(error)) {
    if (file->path().extension() == ".res") names.push_back(file->path().stem().string());
  }
  return names;
}

}  // namespace

std::optional<ReaderLocale> find_reader_locale(const std::string& name) {
  ReaderLocale result;
  if (!has_keywords(name) && qz_I18N_find_locale(name.c_str(), result.library)) {
    result.name = qz_I18N_get_locale_name(result.library);
    return result;
  }
  return qzlog::with_icu_memory([&]() -> std::optional<ReaderLocale> {
    const qzlog::IcuMemory memory;
    const icu::Locale wanted = parse_name(name);
    const bool is_known = !wanted.isBogus() && has_language(wanted);
    memory.check();
    if (!is_known) return std::nullopt;
    const icu::Locale found = locale_with_data(wanted);
    result.name = wanted.getName();
    if (!is_same_place(wanted, found)) result.fallback = found.getName();
    memory.check();
    return result;
  });
}

std::string check_reader_locale(const std::string& name) {
  if (find_reader_locale(name)) return "";
  const std::vector<std::string> names = all_locales();
  const std::string question =
      qzlog_compiler::did_you_mean(name, std::vector<std::string_view>(names.begin(), names.end()));
  return "unknown locale " + qzlog_compiler::quoted(name) + "; " +
         (question.empty() ? "locales are called as in de_AT or zh-Hant" : question);
}

void use_reader_locale(const std::string& name) {
  const std::optional<ReaderLocale> locale = find_reader_locale(name);
  if (name.empty() || !locale) return;
  if (locale->library == QZ_LOCALE_PROCESS) {
    qzlog::with_icu_memory([&] {
      const qzlog::IcuMemory memory;
      UErrorCode status = U_ZERO_ERROR;
      icu::Locale::setDefault(icu::Locale(locale->name.c_str()), status);
      memory.check(status);
    });
  }
  qz_LOG_LogConfig::SetLocale(locale->library);
  if (locale->fallback.empty()) return;
  std::cerr << "qzlog: there is no locale " << qzlog_compiler::quoted(name) << "; numbers and dates are those of '"
            << locale->fallback << "'\n";
}

void tell_of_catalog_fallback(const std::string& folder, const std::string& locale) {
  const std::optional<ReaderLocale> wanted = find_reader_locale(locale);
  if (folder.empty() || locale.empty() || !wanted) return;
  const std::vector<std::string> bundles = bundles_in(folder);
  const auto is_of_language = [&](const std::string& bundle) {
    return language_of(bundle) == language_of(wanted->name);
  };
  if (bundles.empty() || std::any_of(bundles.begin(), bundles.end(), is_of_language)) return;
  std::cerr << "qzlog: the catalog " << qzlog_compiler::quoted(folder) << " has no messages for the locale "
            << qzlog_compiler::quoted(locale) << "; what it falls back to is shown\n";
}

}  // namespace qzlog_tool
