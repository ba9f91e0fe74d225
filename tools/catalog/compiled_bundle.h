#ifndef QZLOG_TOOLS_CATALOG_COMPILED_BUNDLE_H
#define QZLOG_TOOLS_CATALOG_COMPILED_BUNDLE_H

#include <string>

#include "tools/catalog/bundle_source.h"

namespace qzlog_catalog {

/// Whether a file is a compiled resource bundle, read as the library reads it, and holds all that the source says and
/// nothing else.
bool is_compiled_from(const std::string& file, const BundleSource& source);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_COMPILED_BUNDLE_H
