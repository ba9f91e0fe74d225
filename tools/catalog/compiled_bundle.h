#ifndef QZLOG_TOOLS_CATALOG_COMPILED_BUNDLE_H
#define QZLOG_TOOLS_CATALOG_COMPILED_BUNDLE_H

#include <string_view>

namespace qzlog_catalog {

/// Whether a compiled resource bundle, made on a host like this one, is as long as it says that it is. What a full disk
/// has cut off is not; ICU would not notice, but read behind its end.
bool is_whole_bundle(std::string_view bundle);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_COMPILED_BUNDLE_H
