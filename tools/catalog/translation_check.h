#ifndef QZLOG_TOOLS_CATALOG_TRANSLATION_CHECK_H
#define QZLOG_TOOLS_CATALOG_TRANSLATION_CHECK_H

#include <optional>
#include <string>
#include <string_view>

#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/catalog_rules.h"

namespace qzlog_catalog {

/// The template of a translation for the ICU path: lowered as the compiler lowers texts, or as it stands where the
/// message is a stored template. None when the path cannot show it or when it does not refer to the same attributes in
/// the same formats as the message, in whatever order; every reason is in the findings, at that line of the file.
std::optional<std::string> lower_translation(const CatalogMessage& message, std::string_view translation,
                                             const std::string& file, std::size_t line, Findings& findings);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_TRANSLATION_CHECK_H
