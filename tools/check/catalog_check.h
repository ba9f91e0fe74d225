#ifndef QZLOG_TOOLS_CHECK_CATALOG_CHECK_H
#define QZLOG_TOOLS_CHECK_CATALOG_CHECK_H

#include <string>
#include <vector>

#include "tools/definitions/entry_view.h"
#include "tools/report/finding.h"
#include "tools/templates/message_catalog.h"

namespace qzlog_tool {

/// Compares every language of a catalog with the definitions whose messages it translates. `source_language` is the
/// language of the definitions' texts ("en"): bundles of it, and the root bundle, may read as the definitions do.
void check_catalog(const std::vector<CatalogBundle>& bundles, const std::string& folder,
                   const DefinitionPair& definitions, const std::string& source_language,
                   std::vector<qzlog_compiler::Finding>& findings);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHECK_CATALOG_CHECK_H
