#include "tools/catalog/catalog_manifest.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/content_digest.h"

namespace qzlog_catalog {
namespace {

using nlohmann::ordered_json;
using qzlog_compiler::quoted;

constexpr int kFormat = 1;
constexpr const char* kFormatKey = "format";
constexpr const char* kBundlesKey = "bundles";
constexpr const char* kUnfinishedKey = "unfinished";
constexpr std::string_view kExtension = ".res";

bool is_name_character(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '_';
}

/// Why a list is none; empty when it is one.
std::string read_digests(const ordered_json& manifest, const char* key, CatalogManifest::Digests& digests) {
  const auto list = manifest.find(key);
  if (list == manifest.end() || !list->is_object()) return "it has no list '" + std::string(key) + "'";
  for (const auto& [name, digest] : list->items()) {
    if (!is_bundle_file_name(name)) return quoted(name) + " is no name of a bundle";
    if (!digest.is_string() || !qzlog_tool::is_content_digest(digest.get_ref<const std::string&>())) {
      return "the digest of " + quoted(name) + " is none";
    }
    digests[name] = digest.get<std::string>();
  }
  return "";
}

std::string read_lists(const ordered_json& manifest, CatalogManifest& result) {
  if (!manifest.is_object()) return "it is no JSON object";
  const auto format = manifest.find(kFormatKey);
  if (format == manifest.end() || *format != kFormat) {
    return "its format is not " + std::to_string(kFormat) + ", the one that this command knows";
  }
  std::string failure = read_digests(manifest, kBundlesKey, result.bundles);
  if (failure.empty() && manifest.contains(kUnfinishedKey)) {
    failure = read_digests(manifest, kUnfinishedKey, result.unfinished);
  }
  return failure;
}

}  // namespace

bool CatalogManifest::lists(const std::string& name, const std::string& digest) const {
  for (const Digests* const list : {&bundles, &unfinished}) {
    const auto found = list->find(name);
    if (found != list->end() && found->second == digest) return true;
  }
  return false;
}

bool is_bundle_file_name(std::string_view name) {
  if (name.size() <= kExtension.size() || !name.ends_with(kExtension)) return false;
  name.remove_suffix(kExtension.size());
  return std::all_of(name.begin(), name.end(), is_name_character);
}

std::string write_manifest(const CatalogManifest& manifest) {
  ordered_json json;
  json["made by"] = "qzlog catalog build";
  json[kFormatKey] = kFormat;
  json[kBundlesKey] = ordered_json(manifest.bundles);
  if (!manifest.unfinished.empty()) json[kUnfinishedKey] = ordered_json(manifest.unfinished);
  return json.dump(2) + '\n';
}

CatalogManifest read_manifest(std::string_view text, std::string& failure) {
  CatalogManifest result;
  const ordered_json json = ordered_json::parse(text, nullptr, false);
  std::string found = json.is_discarded() ? "it is no JSON" : read_lists(json, result);
  if (!found.empty()) failure = std::move(found);
  return result;
}

}  // namespace qzlog_catalog
