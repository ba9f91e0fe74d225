#include "tools/catalog/catalog_build.h"

#include <algorithm>

#include "tools/templates/source_digest.h"

namespace qzlog_catalog {

std::vector<BundleSource> bundle_sources(const CatalogMessages& messages, std::span<const LanguageCatalog> catalogs,
                                         const std::string& source_language) {
  std::vector<CatalogText> source_texts;
  std::vector<CatalogSource> sources;
  for (const CatalogMessage& message : messages.messages()) {
    source_texts.push_back({std::string(message.id), message.text->stored});
    sources.push_back({std::string(message.id), qzlog_tool::source_digest(message.text->stored)});
  }
  std::vector<BundleSource> bundles = {bundle_source("root", source_texts, sources)};
  const bool translated = std::any_of(catalogs.begin(), catalogs.end(), [&](const LanguageCatalog& catalog) {
    return catalog.language == source_language;
  });
  if (!translated) bundles.push_back(empty_bundle_source(source_language));
  for (const LanguageCatalog& catalog : catalogs) {
    bundles.push_back(bundle_source(catalog.language, catalog.texts, sources));
  }
  return bundles;
}

}  // namespace qzlog_catalog
