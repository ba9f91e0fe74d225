#include "tools/message_catalog.h"

#include <unicode/locid.h>
#include <unicode/resbund.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "tools/command_error.h"
#include "tools/file_descriptor.h"
#include "tools/source_digest.h"

namespace qzlog_tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStringTable = "STRING_TABLE";
constexpr const char* kRoot = "root";

// Of a bundle's file: two sizes, two magic bytes, the byte order; then the first word and an index of sizes in words.
constexpr std::size_t kMagicOffset = 2;
constexpr std::size_t kByteOrderOffset = 8;
constexpr std::size_t kBundleEndIndex = 3;
constexpr std::size_t kSmallestBundle = 16;

template <typename Number>
Number number_at(std::string_view bytes, std::size_t offset) {
  Number number = 0;
  std::memcpy(&number, bytes.data() + offset, sizeof(number));
  return number;
}

/// ICU maps a bundle into memory and believes the sizes in it, so a shortened file would be read beyond its end.
std::string find_damage(std::string_view bytes) {
  const bool begins_well =
      bytes.size() >= kSmallestBundle && bytes[kMagicOffset] == '\xDA' && bytes[kMagicOffset + 1] == '\x27';
  if (!begins_well) return "the file is no resource bundle";
  constexpr char kBigEndianHere = static_cast<char>(__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__);
  if (bytes[kByteOrderOffset] != kBigEndianHere) return "the bundle was made for machines of another byte order";
  const std::size_t header_size = number_at<std::uint16_t>(bytes, 0);
  const std::size_t end_offset = header_size + sizeof(std::uint32_t) * (1 + kBundleEndIndex);
  const bool has_index = end_offset + sizeof(std::uint32_t) <= bytes.size();
  if (has_index &&
      header_size + sizeof(std::uint32_t) * std::size_t{number_at<std::uint32_t>(bytes, end_offset)} <= bytes.size()) {
    return "";
  }
  return "the file is shorter than the bundle in it";
}

std::string utf8_of(const icu::UnicodeString& text) {
  std::string converted;
  return text.toUTF8String(converted);
}

/// What is no text in the table is no message either: the library cannot retrieve it.
std::map<std::string, std::string> read_table(icu::ResourceBundle& table) {
  std::map<std::string, std::string> texts;
  table.resetIterator();
  while (table.hasNext()) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::ResourceBundle item = table.getNext(status);
    if (U_FAILURE(status)) break;
    const icu::UnicodeString text = item.getString(status);
    if (U_SUCCESS(status) && item.getKey() != nullptr) texts.emplace(item.getKey(), utf8_of(text));
  }
  return texts;
}

/// The root locale has two names.
std::string_view name_of(const icu::Locale& locale) {
  const std::string_view name = locale.getName();
  return name.empty() ? kRoot : name;
}

/// A file that ICU does not take makes it open what the locale falls back to.
bool is_bundle_of(const icu::ResourceBundle& opened, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale actual = opened.getLocale(ULOC_ACTUAL_LOCALE, status);
  return U_SUCCESS(status) && name_of(actual) == name_of(locale);
}

std::string actual_locale_of(const icu::ResourceBundle& resource) {
  UErrorCode status = U_ZERO_ERROR;
  return resource.getLocale(ULOC_ACTUAL_LOCALE, status).getName();
}

/// A bundle that does not say what its messages were built from is given the table of one that it falls back to.
std::map<std::string, std::string> read_sources(const icu::ResourceBundle& opened,
                                                const icu::ResourceBundle& messages) {
  UErrorCode status = U_ZERO_ERROR;
  icu::ResourceBundle table = opened.get(kSourceTable, status);
  if (U_FAILURE(status) || actual_locale_of(table) != actual_locale_of(messages)) return {};
  return read_table(table);
}

void read_bundle(const std::string& folder, CatalogBundle& bundle) {
  bundle.failure = find_damage(read_file(bundle.file));
  if (!bundle.failure.empty()) return;
  const std::string path = fs::absolute(folder).string();  // ICU takes a path without a slash for a package of its own
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale locale(bundle.locale.c_str());
  const icu::ResourceBundle opened(path.c_str(), locale, status);
  if (U_FAILURE(status)) {
    bundle.failure = std::string("ICU cannot open the bundle (") + u_errorName(status) + ")";
    return;
  }
  if (!is_bundle_of(opened, locale)) {
    bundle.failure = "ICU does not open the file for the locale that it is named after";
    return;
  }
  icu::ResourceBundle table = opened.get(kStringTable, status);
  if (U_FAILURE(status)) {
    bundle.failure = "neither the bundle nor one that it falls back to has a table STRING_TABLE";
    return;
  }
  bundle.has_own_table = status != U_USING_DEFAULT_WARNING && status != U_USING_FALLBACK_WARNING;
  bundle.templates = read_table(table);
  bundle.sources = read_sources(opened, table);
}

std::vector<CatalogBundle> find_bundles(const std::string& folder) {
  std::vector<CatalogBundle> bundles;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
       entry.increment(failure)) {
    if (entry->path().extension() != ".res") continue;
    const std::string locale = entry->path().stem().string();
    if (locale != "res_index" && locale != "pool")
      bundles.push_back({locale, entry->path().string(), {}, {}, true, ""});
  }
  if (failure) throw CommandError(kExitCannotRun, "cannot read '" + folder + "': " + failure.message());
  return bundles;
}

}  // namespace

std::vector<CatalogBundle> read_catalog(const std::string& folder) {
  std::vector<CatalogBundle> bundles = find_bundles(folder);
  if (bundles.empty()) {
    throw CommandError(kExitCannotRun, "'" + folder + "' holds no message catalog: it has no file LOCALE.res");
  }
  std::sort(bundles.begin(), bundles.end(), [](const CatalogBundle& a, const CatalogBundle& b) {
    return std::pair(a.locale != kRoot, a.locale) < std::pair(b.locale != kRoot, b.locale);
  });
  for (CatalogBundle& bundle : bundles) read_bundle(folder, bundle);
  return bundles;
}

}  // namespace qzlog_tool
