#ifndef QZLOG_TOOLS_CATALOG_CATALOG_BUILD_H
#define QZLOG_TOOLS_CATALOG_CATALOG_BUILD_H

#include <span>
#include <string>
#include <vector>

#include "tools/catalog/bundle_source.h"
#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/language_catalog.h"

namespace qzlog_catalog {

/// What all resource bundles of a catalog are to hold: one with the source texts for readers of any language (`root`),
/// one for each language, and one for the language of the source texts unless that has translations: without it ICU
/// would give its readers the language of their host before it gives them the root's. Each says what its messages were
/// built from: the source text is what a translation was made for, and stands in where there is none.
std::vector<BundleSource> bundle_sources(const CatalogMessages& messages, std::span<const LanguageCatalog> catalogs,
                                         const std::string& source_language);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_BUILD_H
