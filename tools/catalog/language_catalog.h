#ifndef QZLOG_TOOLS_CATALOG_LANGUAGE_CATALOG_H
#define QZLOG_TOOLS_CATALOG_LANGUAGE_CATALOG_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/catalog/bundle_source.h"
#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/catalog_rules.h"
#include "tools/catalog/po_file.h"

namespace qzlog_catalog {

/// A translators' file as it was read. `name` is what findings call it.
struct PoText {
  std::string name;
  std::string content;
};

/// How far a language is translated. A message belongs to one of the first four counts.
struct TranslationCounts {
  std::size_t translated = 0;
  std::size_t fuzzy = 0;  ///< marked so, or made from an older source text
  std::size_t untranslated = 0;
  std::size_t refused = 0;   ///< translated, but it cannot be shown or refers to other attributes
  std::size_t obsolete = 0;  ///< kept from messages that are no more

  std::size_t messages() const { return translated + fuzzy + untranslated + refused; }
  bool complete() const { return translated == messages(); }
};

/// A language's share of a catalog.
struct LanguageCatalog {
  std::string language;  ///< the name of its resource bundle
  TranslationCounts counts;
  /// Every message. The library looks for a message in one bundle only, so that one without a good translation has to
  /// be there with its source text.
  std::vector<CatalogText> texts;
};

/// A PO file with the language that it is for.
struct LanguageFile {
  std::string name;
  std::string language;  ///< the name of its resource bundle
  PoFile po;
};

/// Reads a PO file. Its language is the one that its header names, or else the file's name. None when something is
/// wrong with it; the reasons are in the findings.
std::optional<LanguageFile> read_language(const PoText& text, Findings& findings);

/// Joins the messages with their translations, file by file, sorted by language. Refused translations and files are
/// errors in the findings, translations of texts that have changed and of messages that are gone warnings.
std::vector<LanguageCatalog> make_catalogs(const CatalogMessages& messages, std::span<const PoText> files,
                                           Findings& findings);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_LANGUAGE_CATALOG_H
