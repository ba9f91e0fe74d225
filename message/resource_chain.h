#ifndef QZLOG_MESSAGE_RESOURCE_CHAIN_H
#define QZLOG_MESSAGE_RESOURCE_CHAIN_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "message/resource_data.h"
#include "message/resource_files.h"

namespace qzlog {

/// A bundle's file, or none, under the name of its locale.
struct ResourceEntry {
  std::string name;
  std::shared_ptr<const ResourceData> data;  ///< null when there is no file
};

/// A bundle and those that it falls back to, in this order; some may have no file.
using ResourceChain = std::vector<ResourceEntry>;

/// A file that is damaged or cannot be read.
class ResourceFailure : public std::runtime_error {
 public:
  /// Of the bundle with that name, and what is wrong with it.
  ResourceFailure(const std::string& bundle, const std::string& problem)
      : std::runtime_error(problem), bundle_(std::make_shared<const std::string>(bundle)) {}
  const std::string& bundle() const { return *bundle_; }

 private:
  std::shared_ptr<const std::string> bundle_;  // exceptions are copied without failing
};

/// Finds the bundles of a catalog for a locale, in the order in which ICU does. One thread.
///
/// All functions throw ResourceFailure for a file that is damaged, even when there is another to fall back to, and
/// std::bad_alloc.
class ResourceChainLoader {
 public:
  explicit ResourceChainLoader(const std::string& path) : files_(path) {}

  /// For the locale, or else for ICU's default one, or else the root. Empty when there is none of them.
  ResourceChain load(const std::string& locale);
  /// For a bundle of exactly that name. Empty when there is none.
  ResourceChain load_exactly(const std::string& locale);

 private:
  /// Where a search ended.
  struct Search {
    ResourceEntry found;  // without data when there is none
    std::string name;     // the next to look at
    bool has_parent = true;
    bool is_default = false;
    bool is_root = false;
  };

  Search find_first(const std::string& locale);
  ResourceEntry read_entry(const std::string& name, unsigned aliases = 0);
  std::shared_ptr<ResourceData> read_data(const std::string& name);
  void attach_pool(const std::string& name, ResourceData& data);
  ResourceChain chain_of(const Search& search);
  void append_parents(std::string name, ResourceChain& chain);
  void append_root(ResourceChain& chain);

  ResourceFiles files_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_CHAIN_H
