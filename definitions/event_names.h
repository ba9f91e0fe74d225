#ifndef QZLOG_DEFINITIONS_EVENT_NAMES_H
#define QZLOG_DEFINITIONS_EVENT_NAMES_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "definitions/names_format.h"
#include "foundation/hash_index.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// What the names section of one definition file says: the events' names and summaries, and which attributes hold what
/// must not be written as it is. Does not change; any thread may ask.
class EventNames : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit EventNames(bool drops_all = false) : drops_all_(drops_all) {}

  /// Makes it of a section's bytes, which are checked one by one; null for a malformed section. QZX_memory_alloc
  /// without memory, of which it takes no more than twice the section's size and a little.
  static std::unique_ptr<const EventNames> parse(std::unique_ptr<char[]> bytes, std::size_t size);
  /// For a file without names and marks.
  static const EventNames& none();
  /// For a section that is there and cannot be read: no names, and every attribute counts as one to drop.
  static const EventNames& unreadable();

  /// Null for an ID without a name. Texts live as long as this object.
  const char* find_name(unsigned int entry_id) const;
  /// Null for an ID without a name; empty for an event without a summary.
  const char* find_summary(unsigned int entry_id) const;
  bool has_names() const { return !events_.empty(); }
  /// False for a name that no event has; of several the event with the lowest ID counts.
  bool find_id(std::string_view name, unsigned int& entry_id) const;

  /// The mark of an attribute of an entry, and of a global one.
  Sensitivity sensitivity(unsigned int entry_id, std::string_view attribute) const {
    return find_mark({ldf::kEntryMark, entry_id, attribute});
  }
  Sensitivity global_sensitivity(std::string_view attribute) const {
    return find_mark({ldf::kGlobalMark, 0, attribute});
  }
  /// The strictest mark that any attribute of this name has.
  Sensitivity strictest(std::string_view attribute) const;
  bool has_marks() const { return drops_all_ || !marks_.empty(); }

 private:
  class Parser;

  struct Event {
    unsigned int entry_id;
    std::string_view name;  // with a zero byte behind it, as the next
    std::string_view summary;
  };
  struct MarkKey {
    unsigned int owner;
    unsigned int entry_id;
    std::string_view attribute;

    bool operator<(const MarkKey& other) const;
    bool operator==(const MarkKey& other) const = default;
  };
  struct Mark {
    MarkKey key;
    Sensitivity sensitivity;
  };

  const Event* find_event(unsigned int entry_id) const;
  Sensitivity find_mark(const MarkKey& key) const;
  void index_names();

  std::unique_ptr<char[]> bytes_;
  std::vector<Event> events_;  // by ID
  std::vector<Mark> marks_;    // by key
  HashIndex ids_by_name_;
  bool drops_all_;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_EVENT_NAMES_H
