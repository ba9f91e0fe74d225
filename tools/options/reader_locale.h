#ifndef QZLOG_TOOLS_OPTIONS_READER_LOCALE_H
#define QZLOG_TOOLS_OPTIONS_READER_LOCALE_H

#include <optional>
#include <string>

#include "qzlog/qz_locale.h"

namespace qzlog_tool {

/// The locale that a reader asks for.
struct ReaderLocale {
  qz_Locale library = QZ_LOCALE_PROCESS;  ///< the library's; where it has none, ICU's default takes the locale's place
  std::string name;                       ///< as ICU has it: "de_AT", "zh_Hant"
  std::string fallback;                   ///< what ICU has in its place ("de" for "de_XX"); empty when it has it
};

/// Takes every name that ICU knows, as POSIX or BCP 47 writes it: "de_AT", "de-AT", "zh-Hant", "de_DE.UTF-8". None for
/// a language that ICU does not have.
std::optional<ReaderLocale> find_reader_locale(const std::string& name);

/// For an option: "" for such a name, else what is wrong, with a suggestion.
std::string check_reader_locale(const std::string& name);

/// Has messages, numbers and dates shown in the locale from now on, and says on standard error where only a fallback is
/// there. Before definitions and a catalog are loaded. Nothing happens for an empty name.
void use_reader_locale(const std::string& name);

/// Says on standard error when the catalog in `folder` has no messages of the locale's language. Nothing happens for an
/// empty name or folder.
void tell_of_catalog_fallback(const std::string& folder, const std::string& locale);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_READER_LOCALE_H
