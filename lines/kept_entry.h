#ifndef QZLOG_LINES_KEPT_ENTRY_H
#define QZLOG_LINES_KEPT_ENTRY_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lines/line_fields.h"
#include "qzlog/logentry.h"

namespace qzlog {

/// How an entry holds an attribute.
struct EntryAttribute {
  qz_AttributeType type = TypeUnknown;
  unsigned position = 0;  ///< as _qz_LOG_log_entry_imp::find_own_position has it
  unsigned expected = 0;  ///< how many values were added before
};

/// Which values an entry was given: one with the same ID and the same attributes in the same order needs no clearing,
/// and no question about names and types.
class EntryShape {
 public:
  /// Whether `source` gives an entry of this ID exactly these values anew. Never after `forget`.
  bool matches(std::uint32_t id, const LineFields& source) const {
    return is_known_ && id == id_ && (source.time != nullptr) == has_time_ && source.attributes.is_read() &&
           has_attributes(source.attributes.read());
  }
  /// The attribute at `index` of a matching source.
  const EntryAttribute& attribute(std::size_t index) const { return attributes_[index]; }

  /// The entry may hold anything.
  void forget() { is_known_ = false; }
  /// The entry was emptied, and then given an ID and maybe a time.
  void begin(std::uint32_t id, bool has_time);
  void add(std::string_view name, const EntryAttribute& attribute);
  /// The entry holds what was added, and nothing else.
  void complete() { is_known_ = true; }

 private:
  bool has_attributes(std::span<const LineAttribute> attributes) const {
    if (attributes.size() != count_) return false;
    for (std::size_t index = 0; index < count_; ++index) {
      if (!are_equal(attributes[index].name, names_[index])) return false;
    }
    return true;
  }
  /// Most names are so short that a call takes longer.
  static bool are_equal(std::string_view name, std::string_view other) {
    constexpr std::size_t kShort = 8;
    if (name.size() > kShort) return name == other;
    if (name.size() != other.size()) return false;
    for (std::size_t place = 0; place < name.size(); ++place) {
      if (name[place] != other[place]) return false;
    }
    return true;
  }

  // The first `count_` of both count; what took memory is kept.
  std::vector<std::string> names_;
  std::vector<EntryAttribute> attributes_;
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

}  // namespace qzlog

#endif  // QZLOG_LINES_KEPT_ENTRY_H
