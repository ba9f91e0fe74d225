#ifndef QZLOG_TOOLS_CATALOG_CATALOG_STATUS_H
#define QZLOG_TOOLS_CATALOG_CATALOG_STATUS_H

#include <iosfwd>
#include <span>

#include "tools/catalog/language_catalog.h"

namespace qzlog_catalog {

/// The whole percent of the messages that are translated; 100 only when all are.
unsigned int percent_translated(const TranslationCounts& counts);

/// A line for each language under a heading.
void print_status_table(std::ostream& out, std::span<const LanguageCatalog> catalogs);

void print_status_json(std::ostream& out, std::span<const LanguageCatalog> catalogs, std::span<const Finding> findings);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_STATUS_H
