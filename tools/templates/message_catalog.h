#ifndef QZLOG_TOOLS_TEMPLATES_MESSAGE_CATALOG_H
#define QZLOG_TOOLS_TEMPLATES_MESSAGE_CATALOG_H

#include <map>
#include <string>
#include <vector>

namespace qzlog_tool {

/// One language of a message catalog.
struct CatalogBundle {
  std::string locale;  ///< "root", "de", "de_AT", as the file is named
  std::string file;    ///< as it is shown
  /// The templates by their keys, UTF-8: what the library finds for readers of the locale. A bundle with a table of its
  /// own gets nothing from its parents, one without a table gets their whole table.
  std::map<std::string, std::string> templates;
  /// What they were built from, by the same keys: digests of source texts, see source_digest(). Where one is missing,
  /// the bundle does not say.
  std::map<std::string, std::string> sources = {};
  bool has_own_table = true;
  std::string failure;  ///< why the library finds no message at all, else empty
};

/// Reads every bundle (LOCALE.res) of a folder, opened as the library opens it; "root" comes first, then by name.
/// Throws CommandError (cannot run) when the folder cannot be read or has no bundles.
std::vector<CatalogBundle> read_catalog(const std::string& folder);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TEMPLATES_MESSAGE_CATALOG_H
