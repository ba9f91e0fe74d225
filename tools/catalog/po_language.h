#ifndef QZLOG_TOOLS_CATALOG_PO_LANGUAGE_H
#define QZLOG_TOOLS_CATALOG_PO_LANGUAGE_H

#include <optional>
#include <string>

namespace qzlog_catalog {

/// The name of a language's resource bundle ("de", "pt_BR", "sr_Latn") from the language as PO files write it ("de",
/// "pt_BR", "sr@latin"). None for what ICU does not know as a language, script or country.
std::optional<std::string> bundle_name(const std::string& language);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_PO_LANGUAGE_H
