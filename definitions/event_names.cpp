#include "definitions/event_names.h"

#include <algorithm>
#include <functional>
#include <new>
#include <tuple>
#include <utility>

#include "definitions/names_trailer.h"
#include "foundation/allocate.h"
#include "foundation/never_destroyed.h"

namespace qzlog {

/// Reads a section from its beginning to its end, and stops for good at the first thing that is wrong.
class EventNames::Parser {
 public:
  Parser(std::string_view bytes, EventNames& names) : left_(bytes), names_(names) {}

  bool parse() {
    if (take_int4() != ldf::kNamesMagic) return false;
    while (good_ && !left_.empty()) take_part();
    return good_;
  }

 private:
  static constexpr std::string_view kEmpty = "";  // with a zero byte behind it

  std::string_view take_bytes(std::size_t size) {
    good_ = good_ && size <= left_.size();
    if (!good_) return {};
    const std::string_view taken = left_.substr(0, size);
    left_.remove_prefix(size);
    return taken;
  }
  std::uint32_t take_int4() {
    const std::string_view taken = take_bytes(4);
    return good_ ? big_endian_int4(taken, 0) : 0;
  }
  /// Views the bytes before the one zero byte, the last.
  std::string_view take_text() {
    const std::uint32_t size = take_int4();
    if (size == 0) return kEmpty;
    const std::string_view stored = take_bytes(size);
    good_ = good_ && stored.find('\0') + 1 == size;
    return good_ ? stored.substr(0, size - 1) : kEmpty;
  }
  /// A count that the bytes that are left may hold.
  std::uint32_t take_count(std::size_t smallest_size) {
    const std::uint32_t count = take_int4();
    good_ = good_ && count <= left_.size() / smallest_size;
    return good_ ? count : 0;
  }

  void take_part() {
    const std::uint32_t type = take_int4();
    const std::uint32_t size = take_int4();
    const std::string_view part = take_bytes(size);
    if (!good_ || (type != ldf::kEventsPart && type != ldf::kMarksPart)) return;
    bool& seen = type == ldf::kEventsPart ? seen_events_ : seen_marks_;
    if (std::exchange(seen, true)) good_ = false;
    const std::string_view rest = std::exchange(left_, part);
    if (type == ldf::kEventsPart) {
      take_events();
    } else {
      take_marks();
    }
    good_ = good_ && left_.empty();
    left_ = rest;
  }

  void take_events() {
    const std::uint32_t count = take_count(ldf::kSmallestEvent);
    names_.events_.reserve(count);
    for (std::uint32_t i = 0; i < count && good_; ++i) {
      Event event{take_int4(), {}, {}};
      event.name = take_text();
      event.summary = take_text();
      good_ = good_ && !event.name.empty() && (i == 0 || names_.events_.back().entry_id < event.entry_id);
      if (good_) names_.events_.push_back(event);
    }
  }

  void take_marks() {
    const std::uint32_t count = take_count(ldf::kSmallestMark);
    names_.marks_.reserve(count);
    for (std::uint32_t i = 0; i < count && good_; ++i) {
      MarkKey key{take_int4(), 0, {}};
      key.entry_id = take_int4();
      key.attribute = take_text();
      const Sensitivity sensitivity = take_sensitivity();
      good_ = good_ && is_owner(key) && (i == 0 || names_.marks_.back().key < key);
      if (good_) names_.marks_.push_back({key, sensitivity});
    }
  }

  static bool is_owner(const MarkKey& key) {
    return key.owner == ldf::kEntryMark || (key.owner == ldf::kGlobalMark && key.entry_id == 0);
  }
  Sensitivity take_sensitivity() {
    const std::uint32_t mark = take_int4();
    good_ = good_ && mark != static_cast<std::uint32_t>(Sensitivity::kKeep);
    return mark == static_cast<std::uint32_t>(Sensitivity::kHash) ? Sensitivity::kHash : Sensitivity::kDrop;
  }

  std::string_view left_;
  EventNames& names_;
  bool good_ = true;
  bool seen_events_ = false;
  bool seen_marks_ = false;
};

namespace {

NeverDestroyed<EventNames> no_names;
NeverDestroyed<EventNames> unreadable_names(true);

unsigned name_hash(std::string_view name) { return static_cast<unsigned>(std::hash<std::string_view>()(name)); }

}  // namespace

bool EventNames::MarkKey::operator<(const MarkKey& other) const {
  return std::tie(owner, entry_id, attribute) < std::tie(other.owner, other.entry_id, other.attribute);
}

std::unique_ptr<const EventNames> EventNames::parse(std::unique_ptr<char[]> bytes, std::size_t size) try {
  std::unique_ptr<EventNames> names(new_object<EventNames>());
  names->bytes_ = std::move(bytes);
  if (!Parser({names->bytes_.get(), size}, *names).parse()) return nullptr;
  names->index_names();
  return names;
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

const EventNames& EventNames::none() { return *no_names; }

const EventNames& EventNames::unreadable() { return *unreadable_names; }

const EventNames::Event* EventNames::find_event(unsigned int entry_id) const {
  const auto found = std::lower_bound(events_.begin(), events_.end(), entry_id,
                                      [](const Event& event, unsigned int id) { return event.entry_id < id; });
  return found != events_.end() && found->entry_id == entry_id ? &*found : nullptr;
}

const char* EventNames::find_name(unsigned int entry_id) const {
  const Event* const event = find_event(entry_id);
  return event != nullptr ? event->name.data() : nullptr;
}

const char* EventNames::find_summary(unsigned int entry_id) const {
  const Event* const event = find_event(entry_id);
  return event != nullptr ? event->summary.data() : nullptr;
}

/// In the order of IDs: of equal names the index finds the one that it got first.
void EventNames::index_names() {
  const auto count = static_cast<unsigned>(events_.size());
  if (count == 0) return;
  ids_by_name_.reserve(count, count, [this](unsigned place) { return name_hash(events_[place].name); });
}

bool EventNames::find_id(std::string_view name, unsigned int& entry_id) const {
  if (ids_by_name_.empty()) return false;
  const unsigned place =
      ids_by_name_.find(name_hash(name), [&](unsigned candidate) { return events_[candidate].name == name; });
  if (place == HashIndex::kNone) return false;
  entry_id = events_[place].entry_id;
  return true;
}

Sensitivity EventNames::find_mark(const MarkKey& key) const {
  if (drops_all_) return Sensitivity::kDrop;
  const auto found = std::lower_bound(marks_.begin(), marks_.end(), key,
                                      [](const Mark& mark, const MarkKey& wanted) { return mark.key < wanted; });
  return found != marks_.end() && found->key == key ? found->sensitivity : Sensitivity::kKeep;
}

Sensitivity EventNames::strictest(std::string_view attribute) const {
  Sensitivity found = drops_all_ ? Sensitivity::kDrop : Sensitivity::kKeep;
  for (const Mark& mark : marks_) {
    if (mark.key.attribute == attribute) found = std::max(found, mark.sensitivity);
  }
  return found;
}

}  // namespace qzlog
