#ifndef QZLOG_TOOLS_RENDER_KEPT_ENTRY_H
#define QZLOG_TOOLS_RENDER_KEPT_ENTRY_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/logentry.h"
#include "tools/render/json_value.h"

namespace qzlog_tool {

/// Which values an entry was given: one with the same ID and the same attributes in the same order needs no clearing,
/// and no question about names and types.
class EntryShape {
 public:
  /// Whether `source` gives an entry of this ID exactly these values anew. Never after `forget`.
  bool matches(std::uint32_t id, const JsonEntry& source) const {
    return is_known_ && id == id_ && (source.time != nullptr) == has_time_ && source.attributes.is_read() &&
           has_attributes(source.attributes.read());
  }
  /// The type of the attribute at `index` of a matching source.
  qz_AttributeType type(std::size_t index) const { return attributes_[index].type; }

  /// The entry may hold anything.
  void forget() { is_known_ = false; }
  /// The entry was emptied, and then given an ID and maybe a time.
  void begin(std::uint32_t id, bool has_time);
  void add(std::string_view name, qz_AttributeType type);
  /// The entry holds what was added, and nothing else.
  void complete() { is_known_ = true; }

 private:
  struct Attribute {
    std::string name;
    qz_AttributeType type = TypeUnknown;
  };

  bool has_attributes(std::span<const JsonAttribute> attributes) const {
    if (attributes.size() != count_) return false;
    for (std::size_t index = 0; index < count_; ++index) {
      if (attributes[index].name != attributes_[index].name) return false;
    }
    return true;
  }

  std::vector<Attribute> attributes_;  // the first `count_` count; what took memory is kept
  std::size_t count_ = 0;
  std::uint32_t id_ = 0;
  bool has_time_ = false;
  bool is_known_ = false;
};

/// An entry that is built again and again.
struct KeptEntry {
  qz_LOG_LogEntry entry;
  EntryShape shape;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_KEPT_ENTRY_H
