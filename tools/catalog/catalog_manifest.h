#ifndef QZLOG_TOOLS_CATALOG_CATALOG_MANIFEST_H
#define QZLOG_TOOLS_CATALOG_CATALOG_MANIFEST_H

#include <map>
#include <string>
#include <string_view>

namespace qzlog_catalog {

/// The file in a catalog's folder that lists what `qzlog catalog build` has made there. It is JSON:
///
///     {
///       "made by": "qzlog catalog build",
///       "format": 1,
///       "bundles": {"de.res": "85944171f73967e8", "root.res": "cbf29ce484222325"}
///     }
///
/// with a digest of each file's content. While a build changes the folder, "unfinished" lists in the same way what it
/// is about to make, so that what an interrupted one has left is known to the next.
inline constexpr const char* kManifestName = "qzlog-catalog.json";

struct CatalogManifest {
  using Digests = std::map<std::string, std::string>;  ///< of files, by their names

  Digests bundles;
  Digests unfinished;

  /// Whether the command has made a file of this name with this content.
  bool lists(const std::string& name, const std::string& digest) const;

  friend bool operator==(const CatalogManifest&, const CatalogManifest&) = default;
};

/// The name of a language's file: letters, digits and _, then ".res", so that it never leads out of its folder.
bool is_bundle_file_name(std::string_view name);

std::string write_manifest(const CatalogManifest& manifest);

/// Reads what write_manifest() has written. Sets `failure` to what is wrong with it; the result then means nothing.
CatalogManifest read_manifest(std::string_view text, std::string& failure);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_MANIFEST_H
