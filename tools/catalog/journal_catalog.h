#ifndef QZLOG_TOOLS_CATALOG_JOURNAL_CATALOG_H
#define QZLOG_TOOLS_CATALOG_JOURNAL_CATALOG_H

#include <span>
#include <string>
#include <vector>

#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/language_catalog.h"

namespace qzlog_catalog {

/// A file of journald's catalog, by which `journalctl -x` explains messages.
struct JournalCatalog {
  std::string name;  ///< of the file: journald takes the language from it
  std::string content;
};

/// The file of the source texts, for readers of any language, and one for each language. An event has its name and ID,
/// its message with the values of the journal's fields where it refers to attributes, the selector messages with the
/// values that pick them, and in the file of the source texts its summary.
std::vector<JournalCatalog> journal_catalogs(const std::string& product, const CatalogMessages& messages,
                                             std::span<const LanguageCatalog> languages);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_JOURNAL_CATALOG_H
