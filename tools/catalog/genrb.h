#ifndef QZLOG_TOOLS_CATALOG_GENRB_H
#define QZLOG_TOOLS_CATALOG_GENRB_H

#include <string>
#include <vector>

#include "tools/catalog/bundle_source.h"

namespace qzlog_catalog {

/// A compiled resource bundle with the name of its language.
struct NamedBundle {
  std::string name;
  std::string content;
};

/// Compiles resource bundles with ICU's genrb, `program` being its path or a name that PATH knows. The results have the
/// order of the sources, and each holds what its source says. Throws CommandError: cannot run when there is no such
/// program, findings with its messages when it fails, or has made anything else without saying so.
std::vector<NamedBundle> run_genrb(const std::string& program, const std::vector<BundleSource>& sources);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_GENRB_H
