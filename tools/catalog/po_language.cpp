#include "tools/catalog/po_language.h"

#include <unicode/uchar.h>
#include <unicode/uloc.h>
#include <unicode/uregion.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

#include "message/icu_memory.h"

namespace qzlog_catalog {
namespace {

struct Modifier {
  std::string_view name;    ///< as PO files write it
  std::string_view script;  ///< as ICU does
};

constexpr std::array kScriptModifiers = {
    Modifier{"latin", "Latn"},
    Modifier{"cyrillic", "Cyrl"},
    Modifier{"arabic", "Arab"},
    Modifier{"devanagari", "Deva"},
};

bool is_tag(std::string_view text) {
  for (const char character : text) {
    const bool letter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
    const bool other = (character >= '0' && character <= '9') || character == '_' || character == '-';
    if (!letter && !other) return false;
  }
  return !text.empty();
}

/// "sr_RS@latin" as "sr_Latn_RS".
std::optional<std::string> with_script(std::string_view language) {
  const std::size_t at = language.find('@');
  const std::string tag(language.substr(0, at));
  if (at == std::string_view::npos) return tag;
  for (const Modifier& modifier : kScriptModifiers) {
    if (language.substr(at + 1) != modifier.name) continue;
    const std::size_t end = std::min(tag.find('_'), tag.size());
    return tag.substr(0, end) + "_" + std::string(modifier.script) + tag.substr(end);
  }
  return std::nullopt;
}

template <typename Part>
std::string part_of(const std::string& locale, Part part) {
  std::array<char, ULOC_FULLNAME_CAPACITY> buffer = {};
  UErrorCode status = U_ZERO_ERROR;
  part(locale.c_str(), buffer.data(), static_cast<int32_t>(buffer.size()), &status);
  return U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING ? "" : buffer.data();
}

/// By the name that readers' locales have, not by a number or an alias.
bool is_region(const std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  const URegion* const region = uregion_getRegionFromCode(name.c_str(), &status);
  return region != nullptr && uregion_getType(region) != URGN_UNKNOWN && name == uregion_getRegionCode(region);
}

bool is_known(const std::string& locale) {
  if (*uloc_getISO3Language(locale.c_str()) == '\0') return false;
  const std::string script = part_of(locale, uloc_getScript);
  if (!script.empty() && u_getPropertyValueEnum(UCHAR_SCRIPT, script.c_str()) == UCHAR_INVALID_CODE) {
    return false;
  }
  const std::string region = part_of(locale, uloc_getCountry);
  if (!region.empty() && !is_region(region)) return false;
  return part_of(locale, uloc_getVariant).empty();
}

}  // namespace

std::optional<std::string> bundle_name(const std::string& language) {
  const std::optional<std::string> tag = with_script(language);
  if (!tag || !is_tag(*tag)) return std::nullopt;
  return qzlog::with_icu_memory<std::bad_alloc>([&] {
    const qzlog::IcuMemory memory;
    const std::string locale = part_of(*tag, uloc_canonicalize);
    const bool is_usable = !locale.empty() && locale != "root" && is_known(locale);
    memory.check();
    return is_usable ? std::optional(locale) : std::nullopt;
  });
}

}  // namespace qzlog_catalog
