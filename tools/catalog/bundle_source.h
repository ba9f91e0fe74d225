#ifndef QZLOG_TOOLS_CATALOG_BUNDLE_SOURCE_H
#define QZLOG_TOOLS_CATALOG_BUNDLE_SOURCE_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_catalog {

/// A template under its message ID.
struct CatalogText {
  std::string id;
  std::string stored;
};

/// Whether a resource bundle can have the ID as a key: keys are made of the characters that all of ICU's platforms
/// share.
bool is_bundle_key(std::string_view id);

/// A digest of the source text that a message was built from, under the message's ID.
struct CatalogSource {
  std::string id;
  std::string digest;
};

/// Texts under their keys.
using BundleTable = std::map<std::string, std::string>;

/// What a resource bundle is to hold: tables under their names.
struct BundleSource {
  std::string name;
  std::map<std::string, BundleTable> tables;
};

/// A bundle with the texts in the table that the library reads, and with what they were built from in a table of its
/// own unless that is empty. The order of both does not matter.
BundleSource bundle_source(std::string name, const std::vector<CatalogText>& texts,
                           const std::vector<CatalogSource>& sources = {});

/// A bundle without texts. The library finds the texts of the bundle that ICU falls back to.
BundleSource empty_bundle_source(std::string name);

/// The bundle as genrb reads it, in ASCII.
std::string genrb_text(const BundleSource& source);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_BUNDLE_SOURCE_H
