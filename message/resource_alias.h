#ifndef QZLOG_MESSAGE_RESOURCE_ALIAS_H
#define QZLOG_MESSAGE_RESOURCE_ALIAS_H

#include <memory>
#include <string>

#include "message/resource_chain.h"

namespace qzlog {

/// A value and the bundle that it is in, which the place keeps alive.
struct ResourcePlace {
  std::shared_ptr<const ResourceData> data;  ///< null for nowhere
  Resource resource = 0;
};

/// Follows values that stand for others: "LOCALE", "LOCALE/KEYS" of the same catalog, "/LOCALE/KEYS" from the bundle
/// that was opened, "/PATH/LOCALE/KEYS" of another catalog. KEYS are those of tables and positions in arrays, with
/// slashes between; without them it is the value of the same keys. The other bundles are read when they are needed.
class ResourceAliases {
 public:
  /// Of the catalog at `path`, whose bundle was opened as `opened`; both outlive this.
  ResourceAliases(const std::string& path, const ResourceChain& opened) : path_(path), opened_(opened) {}

  /// Where a value leads that was found under these keys: to itself when it stands for none, nowhere when there is
  /// nothing, or too long a way. Throws std::bad_alloc.
  ResourcePlace follow(const ResourcePlace& place, const std::string& keys);

 private:
  struct Target;

  ResourcePlace follow_alias(const ResourcePlace& place, const std::string& keys);
  ResourceChain load(const Target& target) const;
  ResourcePlace find(const ResourceEntry& entry, const std::string& keys);
  static bool step(const ResourcePlace& from, const std::string& key, Resource& found);

  static constexpr unsigned kLongestWay = 16;

  const std::string& path_;
  const ResourceChain& opened_;
  unsigned steps_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_ALIAS_H
