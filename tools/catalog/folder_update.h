#ifndef QZLOG_TOOLS_CATALOG_FOLDER_UPDATE_H
#define QZLOG_TOOLS_CATALOG_FOLDER_UPDATE_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/catalog/catalog_manifest.h"
#include "tools/catalog/catalog_rules.h"
#include "tools/catalog/genrb.h"

namespace qzlog_catalog {

/// Brings the folder of a catalog to what was made now. The command owns what it has made there before, which it
/// replaces and removes, and nothing else; kManifestName lists it. No other update of the folder may run meanwhile: the
/// caller holds its lock.
class FolderUpdate {
 public:
  FolderUpdate(std::string folder, const std::vector<NamedBundle>& bundles);

  /// Looks at the folder, which need not exist. False, with the reasons in the findings, when the manifest is damaged
  /// or a file of a bundle's name is not ours and not what would be written; with `adopt` such a file is to be
  /// replaced. Bundles of other languages that are not ours are warnings. Throws CommandError (cannot run).
  bool prepare(bool adopt, Findings& findings);

  /// Writes what is new and removes what is no part of the catalog any more, after prepare() and in a folder that
  /// exists now. Returns the paths of what was removed. Whenever it is interrupted, the next update knows what is ours.
  /// Throws CommandError (cannot run).
  std::vector<std::string> carry_out() const;

 private:
  bool read_own_manifest(Findings& findings);
  bool take_target(const std::string& name, bool adopt, Findings& findings);
  void take_listed(const std::string& name);
  void report_strangers(Findings& findings) const;
  std::string path_of(const std::string& name) const { return folder_ + '/' + name; }

  std::string folder_;
  std::map<std::string, const std::string*> contents_;  // to be written, by the names of the files
  CatalogManifest::Digests wanted_;
  CatalogManifest manifest_;
  CatalogManifest::Digests ours_;  // what is there and may be replaced or removed
  std::set<std::string> stale_;
};

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_FOLDER_UPDATE_H
