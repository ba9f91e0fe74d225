#include "message/resource_locales.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include <unicode/uloc.h>
#include <unicode/ures.h>
#include <unicode/uversion.h>

namespace qzlog {

namespace {

/// From here on ICU looks for more than the beginnings of a name.
constexpr int kFirstWithParents = 72;
constexpr const char* kCommonScript = "Latn";

struct BundleCloser {
  void operator()(UResourceBundle* bundle) const { ures_close(bundle); }
};
using IcuBundle = std::unique_ptr<UResourceBundle, BundleCloser>;

using LocalePart = std::int32_t (*)(const char* locale, char* part, std::int32_t capacity, UErrorCode* status);

/// A part of a locale, or another locale made of it, as one of ICU's functions writes it; empty when it refuses.
std::string part_of(const std::string& locale, LocalePart part) {
  char text[ULOC_FULLNAME_CAPACITY] = "";
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length = part(locale.c_str(), text, ULOC_FULLNAME_CAPACITY, &status);
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  return U_SUCCESS(status) && length < ULOC_FULLNAME_CAPACITY ? std::string(text, static_cast<std::size_t>(length))
                                                              : "";
}

std::string language_of(const std::string& locale) { return part_of(locale, uloc_getLanguage); }
std::string script_of(const std::string& locale) { return part_of(locale, uloc_getScript); }
std::string region_of(const std::string& locale) { return part_of(locale, uloc_getCountry); }

std::string likely_script(const std::string& locale) { return script_of(part_of(locale, uloc_addLikelySubtags)); }

/// The script in which a language is written in a region. Of the regions ICU knows here only those with another script
/// than the common one: Serbian in Montenegro counts as Cyrillic, as everywhere else.
std::string usual_script(const std::string& language, const std::string& region) {
  if (language.empty()) return kCommonScript;
  if (!region.empty()) {
    std::string regional = likely_script(language + "_" + region);
    if (!regional.empty() && regional != kCommonScript) return regional;
  }
  std::string script = likely_script(language);
  return script.empty() ? kCommonScript : script;
}

/// Whether a list of ICU's locale data (one text or an array of them) has the name.
bool lists(UResourceBundle* list, const std::string& name) {
  for (std::int32_t i = 0; i < ures_getSize(list); ++i) {
    UErrorCode status = U_ZERO_ERROR;
    char text[ULOC_FULLNAME_CAPACITY] = "";
    std::int32_t length = ULOC_FULLNAME_CAPACITY;
    const char* const child = ures_getUTF8StringByIndex(list, i, text, &length, 0, &status);
    if (U_SUCCESS(status) && name == child) return true;
  }
  return false;
}

/// The parent that ICU's locale data name for a locale whose parent is not its name's beginning.
bool find_named_parent(std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  const IcuBundle data(ures_openDirect(nullptr, "supplementalData", &status));
  const IcuBundle parents(ures_getByKey(data.get(), "parentLocales", nullptr, &status));
  while (U_SUCCESS(status) && ures_hasNext(parents.get())) {
    const IcuBundle children(ures_getNextResource(parents.get(), nullptr, &status));
    if (U_SUCCESS(status) && lists(children.get(), name)) {
      name = ures_getKey(children.get());
      return true;
    }
  }
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  return false;
}

}  // namespace

bool base_locale(const char* locale, std::string& base) {
  char text[ULOC_FULLNAME_CAPACITY] = "";
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length = uloc_getBaseName(locale, text, ULOC_FULLNAME_CAPACITY, &status);
  if (status == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return false;
  base.assign(text, static_cast<std::size_t>(length));
  return true;
}

bool chop_locale(std::string& name) {
  const std::size_t end = name.rfind('_');
  if (end != std::string::npos) name.resize(end);
  return end != std::string::npos;
}

bool next_locale(std::string& name, const std::string& origin) {
  if (U_ICU_VERSION_MAJOR_NUM < kFirstWithParents) return chop_locale(name);
  if (name.empty() || name.back() == '_' || !part_of(name, uloc_getVariant).empty()) return chop_locale(name);
  if (find_named_parent(name)) return true;
  const std::string language = language_of(name);
  const std::string script = script_of(name);
  const std::string region = region_of(name);
  if (region.empty()) {
    if (script.empty() || usual_script(language, "") != script) return false;
    name = language;
  } else if (script.empty()) {
    const std::string asked = script_of(origin);
    name = language + "_" + (asked.empty() ? usual_script(language, region) : asked);
  } else {
    name = language + "_" + (usual_script(language, region) == script ? region : script);
  }
  return !name.empty();
}

}  // namespace qzlog
