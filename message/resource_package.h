#ifndef QZLOG_MESSAGE_RESOURCE_PACKAGE_H
#define QZLOG_MESSAGE_RESOURCE_PACKAGE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog {

/// An ICU package file (.dat) in memory: files by their names, in the byte order of this machine.
class ResourcePackage {
 public:
  enum class State : unsigned char { kGood, kForeign, kDamaged };

  /// Takes the bytes of a file and checks its table of contents. Throws std::bad_alloc.
  State read(std::string bytes);
  /// The bytes of a file in it, or null; valid as long as the package.
  const std::string_view* find(std::string_view name) const;

 private:
  struct File {
    std::string_view name;
    std::string_view bytes;
  };
  bool read_contents(std::string_view contents);

  std::string bytes_;
  std::vector<File> files_;  // ordered by name
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_PACKAGE_H
