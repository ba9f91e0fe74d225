#ifndef QZLOG_TOOLS_CATALOG_GENRB_H
#define QZLOG_TOOLS_CATALOG_GENRB_H

#include <string>
#include <vector>

namespace qzlog_catalog {

/// A resource bundle as text or compiled, with the name of its language.
struct NamedBundle {
  std::string name;
  std::string content;
};

/// Compiles resource bundles with ICU's genrb, `program` being its path or a name that PATH knows. The results have the
/// order of the sources. Throws CommandError: cannot run when there is no such program, findings with its messages when
/// it fails, or has not written all of a bundle without saying so.
std::vector<NamedBundle> run_genrb(const std::string& program, const std::vector<NamedBundle>& sources);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_GENRB_H
