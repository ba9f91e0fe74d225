#ifndef QZLOG_MESSAGE_RESOURCE_FILES_H
#define QZLOG_MESSAGE_RESOURCE_FILES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "message/resource_package.h"
#include "message/whole_file.h"

namespace qzlog {

/// The files of a catalog, found where ICU finds those of a package: the folder that the path names, then those of
/// ICU's data directory; single files (NAME.res), then the package file (.dat). A name without a slash may also be that
/// of data that the program gave ICU.
///
/// A path that begins with a name is what ICU makes of it: "name" is looked for in ICU's data directory only, "a/b" is
/// the package a/b within the folder a, and "name-tree" the folder tree of the package name. "/a/b", "./a/b" and
/// "a/b/c" are folders.
class ResourceFiles {
 public:
  explicit ResourceFiles(std::string path);

  /// The bytes of a bundle's file as they are at one moment: kFailed when there is one that cannot be read. What is no
  /// bundle of this machine is passed over. Throws std::bad_alloc.
  WholeFile find(const std::string& name);

 private:
  std::vector<std::string> single_files(const std::string& name) const;
  std::vector<std::string> package_files() const;
  WholeFile find_in_package(const std::string& name);
  WholeFile::State read_package();
  WholeFile find_in_icu(const std::string& name) const;

  std::string path_;
  std::string package_;
  std::string tree_;  // "/name", or empty
  bool has_read_package_ = false;
  WholeFile::State package_state_ = WholeFile::State::kAbsent;
  ResourcePackage package_file_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_FILES_H
