#ifndef QZLOG_TOOLS_CATALOG_CATALOG_EXTRACT_H
#define QZLOG_TOOLS_CATALOG_CATALOG_EXTRACT_H

#include <string>

#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/po_file.h"

namespace qzlog_catalog {

/// The template for translators: a header and every message with a text, its ID being the context. `product` names what
/// the messages belong to.
PoFile make_template(const CatalogMessages& messages, const std::string& product);

/// What a file without translations begins with.
PoFile begin_language(const PoFile& po_template, const std::string& language);

/// Brings a language's file up to the template. Translations of unchanged texts stay as they are, those of changed ones
/// are marked fuzzy beside the previous text, those of vanished messages are kept as obsolete behind all others and
/// come back when the message does. The header and the translators' own comments stay.
PoFile update_po(const PoFile& old, const PoFile& po_template);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_EXTRACT_H
