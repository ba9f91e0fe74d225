#include "tools/templates/message_catalog.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "message/icu_memory.h"
#include "message/resource_bundle.h"
#include "message/whole_file.h"
#include "tools/system/command_error.h"
#include "tools/templates/source_digest.h"

namespace qzlog_tool {

namespace {

namespace fs = std::filesystem;
using qzlog::MessageBundle;
using qzlog::ReadResource;
using qzlog::WholeFile;

constexpr const char* kStringTable = "STRING_TABLE";
constexpr const char* kRoot = "root";

/// The root locale has two names.
std::string name_of(const std::string& locale) {
  return qzlog::with_icu_memory<std::bad_alloc>([&] {
    const qzlog::IcuMemory memory;
    const std::string name = icu::Locale(locale.c_str()).getName();
    memory.check();
    return name.empty() ? kRoot : name;
  });
}

std::string utf8_of(std::u16string_view text) {
  return qzlog::with_icu_memory<std::bad_alloc>([&] {
    const qzlog::IcuMemory memory;
    std::string converted;
    icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size())).toUTF8String(converted);
    memory.check();
    return converted;
  });
}

/// Why the library would not open the bundle, in words that say which one is meant when it is another.
std::string failure_of(const MessageBundle& bundle, const std::string& locale) {
  const std::string& failed = bundle.failed_bundle();
  return failed == locale ? bundle.problem() : "it needs the bundle '" + failed + "': " + bundle.problem();
}

std::string why_not_read(const std::string& file) {
  std::error_code ignored;
  return fs::is_regular_file(file, ignored) ? "the file cannot be read" : "it is not a regular file";
}

/// Opens a bundle as the library does. Returns why it is not opened, or an empty text.
std::string open_bundle(const std::string& folder, const CatalogBundle& bundle, MessageBundle& opened) {
  WholeFile whole = qzlog::read_whole_file(bundle.file);
  if (whole.state != WholeFile::State::kRead) return why_not_read(bundle.file);
  const ReadResource file = qzlog::ResourceData::read(std::move(whole.bytes));
  if (file.state != ReadResource::State::kGood) return file.problem;
  const std::string path = fs::absolute(folder).string();  // without a slash it would be a package of its own
  const std::string name = name_of(bundle.locale);
  const MessageBundle::State state = opened.open(path, name.c_str());
  if (state == MessageBundle::State::kFailed) return failure_of(opened, bundle.locale);
  if (state != MessageBundle::State::kOpened || opened.name() != name) {
    return "the library does not open the file for the locale that it is named after";
  }
  return "";
}

std::map<std::string, std::string> utf8_texts(const MessageBundle::Table& table) {
  std::map<std::string, std::string> texts;
  for (const auto& [id, text] : table.texts) texts.emplace_hint(texts.end(), id, utf8_of(text));
  return texts;
}

/// A bundle that does not say what its messages were built from is given the table of one that it falls back to.
std::map<std::string, std::string> read_sources(const MessageBundle& opened, const MessageBundle::Table& messages) {
  const MessageBundle::Table sources = opened.read_table(kSourceTable);
  if (sources.is_of_first_bundle != messages.is_of_first_bundle) return {};
  return utf8_texts(sources);
}

void read_bundle(const std::string& folder, CatalogBundle& bundle) {
  MessageBundle opened;
  bundle.failure = open_bundle(folder, bundle, opened);
  if (!bundle.failure.empty()) return;
  const MessageBundle::Table table = opened.read_table(kStringTable);
  if (!table.is_found) {
    bundle.failure = "neither the bundle nor one that it falls back to has a table STRING_TABLE";
    return;
  }
  bundle.has_own_table = table.is_of_first_bundle;
  bundle.templates = utf8_texts(table);
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
