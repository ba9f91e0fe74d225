#ifndef QZLOG_TESTS_TOOLS_CATALOG_BUNDLE_FIXTURE_H
#define QZLOG_TESTS_TOOLS_CATALOG_BUNDLE_FIXTURE_H

#include <unicode/locid.h>
#include <unicode/resbund.h>
#include <unicode/unistr.h>

#include <optional>
#include <string>

#include "tests/support/temp_dir.h"
#include "tools/catalog/genrb.h"

namespace qzlog_catalog {

/// The texts of a catalog as the library looks them up: the folder's bundle for a language, then its table, then the
/// key. None where any of this fails.
inline std::optional<std::string> look_up(const std::string& folder, const char* language, const std::string& id) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::ResourceBundle bundle(icu::UnicodeString::fromUTF8(folder), icu::Locale(language), status);
  const icu::ResourceBundle table = bundle.get("STRING_TABLE", status);
  const icu::UnicodeString text = table.getStringEx(id.c_str(), status);
  if (U_FAILURE(status)) return std::nullopt;
  std::string result;
  text.toUTF8String(result);
  return result;
}

/// A folder with resource bundles made from their sources.
class CatalogFolder {
 public:
  explicit CatalogFolder(const std::vector<BundleSource>& sources) {
    for (const NamedBundle& bundle : run_genrb("genrb", sources)) folder_.write(bundle.name + ".res", bundle.content);
  }

  std::optional<std::string> text(const std::string& id, const char* language = "root") const {
    return look_up(folder_.path(), language, id);
  }

 private:
  qz_test::TempDir folder_;
};

}  // namespace qzlog_catalog

#endif  // QZLOG_TESTS_TOOLS_CATALOG_BUNDLE_FIXTURE_H
