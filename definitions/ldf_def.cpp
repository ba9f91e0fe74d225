#include "definitions/ldf_def.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "definitions/definition_format.h"
#include "foundation/allocate.h"
#include "foundation/hashing.h"
#include "foundation/never_destroyed.h"
#include "foundation/prefetch.h"

using namespace qzlog;

_qz_LOG_attribute_entry** _qz_LOG_log_definition::p_global_attr_entries = nullptr;
unsigned char _qz_LOG_log_definition::n_global_attr_entries = 0;

namespace {

constexpr unsigned char kMaxCount = ldf::kMostElements;
static_assert(kMaxCount == std::numeric_limits<unsigned char>::max());

NeverDestroyed<HashIndex> global_attribute_index;

// The lists of attributes and of selector messages: arrays of owned elements, exactly as long as their 8-bit counts.

template <typename Element>
void destroy_list(Element**& list, unsigned char& count) {
  std::for_each_n(list, count, std::default_delete<Element>());
  delete[] list;
  list = nullptr;
  count = 0;
}

/// True when the list holds the element afterwards; false when its count wrapped and the list is empty.
template <typename Element>
bool append_to_list(Element**& list, unsigned char& count, std::unique_ptr<Element> element) {
  if (count == kMaxCount) {
    destroy_list(list, count);
    return false;
  }
  Element** longer = new_array<Element*>(std::size_t{count} + 1);
  std::copy_n(list, count, longer);
  longer[count++] = element.release();
  delete[] list;
  list = longer;
  return true;
}

/// Takes an element out, keeping the order of the others; null when the list does not hold it.
template <typename Element>
std::unique_ptr<Element> take_from_list(Element** list, unsigned char& count, const Element* element) {
  Element** const end = list + count;
  Element** const place = std::find(list, end, element);
  if (place == end) return nullptr;
  std::unique_ptr<Element> taken(*place);
  std::move(place + 1, end, place);
  list[--count] = nullptr;
  return taken;
}

constexpr unsigned kNone = HashIndex::kNone;

unsigned find_position(_qz_LOG_attribute_entry* const* list, unsigned char count, const HashIndex& index,
                       const AttributeName& name) {
  const auto matches = [&](unsigned position) { return list[position]->get_known_name()->equals(name); };
  if (!index.empty() && !_qz_LOG_attribute_entry::any_renamed()) return index.find(name.hash, matches);
  for (unsigned position = 0; position < count; ++position) {
    if (matches(position)) return position;
  }
  return kNone;
}

/// Room in the index for one attribute more, which a list that is short enough does not need.
void reserve_in_index(_qz_LOG_attribute_entry* const* list, unsigned char count, HashIndex& index) {
  if (count < HashIndex::kWorthwhile) return;
  index.reserve(count + 1U, count, [list](unsigned position) { return list[position]->get_name_hash(); });
}

/// After an attribute was added at the end, or the list was emptied.
void index_last(_qz_LOG_attribute_entry* const* list, unsigned char count, HashIndex& index) {
  if (count == 0) return index.clear();
  if (!index.empty()) index.insert(list[count - 1]->get_name_hash(), count - 1U);
}

void reindex(_qz_LOG_attribute_entry* const* list, unsigned char count, HashIndex& index) {
  if (index.empty()) return;
  index.reindex(count, [list](unsigned position) { return list[position]->get_name_hash(); });
}

std::size_t text_bytes(const char* text) { return text != nullptr ? block_bytes(std::strlen(text) + 1) : 0; }

/// The most that can be said stands for more.
std::uint32_t in_32_bits(std::size_t bytes) {
  return static_cast<std::uint32_t>(std::min<std::size_t>(bytes, std::numeric_limits<std::uint32_t>::max()));
}

// They lie side by side mostly.
constexpr unsigned char kPrefetchedAttributes = 10;

const char* text_or_empty(const char* text) { return text == nullptr ? "" : text; }

FileNamesRef share_or_none(FileNames* names) { return names != nullptr ? FileNamesRef::share(names) : FileNamesRef(); }

const EventNames& names_of(const FileNames* file) { return file != nullptr ? file->get() : EventNames::none(); }

bool is_unreadable(const EventNames& names) { return &names == &EventNames::unreadable(); }

/// Of which file each global attribute is. Attributes of several files live together, and long after their files are
/// closed; those of entries have their definition's files.
class GlobalNames {
 public:
  void add(const _qz_LOG_attribute_entry* entry, FileNames* names) {
    files_[count_] = {entry, FileNamesRef::share(names)};
    ++count_;
  }
  const FileNames* find(const _qz_LOG_attribute_entry* entry) const {
    for (unsigned i = 0; i < count_; ++i) {
      if (files_[i].entry == entry) return files_[i].names.get();
    }
    return nullptr;
  }
  void remove(const _qz_LOG_attribute_entry* entry) {
    for (unsigned i = 0; i < count_; ++i) {
      if (files_[i].entry != entry) continue;
      std::swap(files_[i], files_[--count_]);
      files_[count_] = {};
      return;
    }
  }
  void clear() {
    while (count_ != 0) files_[--count_] = {};
  }

 private:
  static constexpr unsigned kMost = 255;

  struct File {
    const _qz_LOG_attribute_entry* entry = nullptr;
    FileNamesRef names;
  };
  File files_[kMost];
  unsigned count_ = 0;
};

NeverDestroyed<GlobalNames> global_names;

}  // namespace

_qz_LOG_attribute_entry::_qz_LOG_attribute_entry(const char* name, const char* redirection_name, unsigned char type)
    : name_(KnownName::of(name)), redirection_name_(duplicate_text(redirection_name)), type_(type) {}

void _qz_LOG_attribute_entry::set_name(const char* name) {
  name_ = KnownName::of(name);
  any_renamed_.store(true, std::memory_order_relaxed);
  changes_.fetch_add(1, std::memory_order_relaxed);
}

void _qz_LOG_attribute_entry::set_redirection_name(const char* redirection_name) {
  redirection_name_ = duplicate_text(redirection_name);
  changes_.fetch_add(1, std::memory_order_relaxed);
}

std::size_t _qz_LOG_attribute_entry::memory_bytes() const {
  return block_bytes(sizeof *this) + text_bytes(redirection_name_.get());
}

_qz_LOG_selector_message::_qz_LOG_selector_message(unsigned int index, unsigned int value, const char* message_id,
                                                   const char* message_text)
    : index_(index), value_(value), message_id_(duplicate_text(message_id)), message_text_(message_text) {}

std::size_t _qz_LOG_selector_message::memory_bytes() const {
  return block_bytes(sizeof *this) + text_bytes(message_id_.get()) + text_bytes(message_text_.get());
}

_qz_LOG_log_definition::~_qz_LOG_log_definition() { clear_attr_info(); }

void _qz_LOG_log_definition::set_default_msg_id(const char* message_id) {
  note_change();
  default_msg_id_ = duplicate_text(message_id);
}

void _qz_LOG_log_definition::set_default_msg_text(const char* message_text) {
  note_change();
  default_msg_text_.set(message_text);
}

void _qz_LOG_log_definition::add_attr_info(const char* name, unsigned char type, bool is_selector,
                                           const char* redirection_name) {
  note_change();
  _qz_LOG_attribute_entry* const former = find_own_attribute(AttributeName(name));
  // Held to the end: the caller's name may be the former entry's own.
  const auto replaced = take_own_attribute(former);
  reserve_in_index(attributes_, attribute_count_, attribute_index_);

  auto entry =
      std::unique_ptr<_qz_LOG_attribute_entry>(new_object<_qz_LOG_attribute_entry>(name, redirection_name, type));
  _qz_LOG_attribute_entry* const added = entry.get();
  if (!append_to_list(attributes_, attribute_count_, std::move(entry))) {
    selector_attribute_ = nullptr;
  } else if (is_selector) {
    selector_attribute_ = added;
  }
  index_last(attributes_, attribute_count_, attribute_index_);
}

/// Null when it is not an own attribute.
std::unique_ptr<_qz_LOG_attribute_entry> _qz_LOG_log_definition::take_own_attribute(
    const _qz_LOG_attribute_entry* entry) {
  note_change();
  auto taken = take_from_list(attributes_, attribute_count_, entry);
  if (taken == nullptr) return taken;
  if (taken.get() == selector_attribute_) selector_attribute_ = nullptr;
  reindex(attributes_, attribute_count_, attribute_index_);
  return taken;
}

void _qz_LOG_log_definition::add_selector_message(unsigned int index, unsigned int value, const char* message_id,
                                                  const char* message_text) {
  note_change();
  append_to_list(selector_messages_, selector_message_count_,
                 std::unique_ptr<_qz_LOG_selector_message>(
                     new_object<_qz_LOG_selector_message>(index, value, message_id, message_text)));
}

void _qz_LOG_log_definition::set_selector_attribute(const char* name) {
  note_change();
  for (unsigned i = 0; i < attribute_count_; ++i) {
    if (QZ_strcmp(text_or_empty(attributes_[i]->get_name()), name) != 0) continue;
    selector_attribute_ = attributes_[i];
    return;
  }
}

_qz_LOG_attribute_entry* _qz_LOG_log_definition::find_attribute(const AttributeName& name) const {
  _qz_LOG_attribute_entry* const own = find_own_attribute(name);
  return own != nullptr ? own : find_global_attribute(name);
}

bool _qz_LOG_log_definition::get_attr_info_by_name(const char* name, unsigned char& type,
                                                   const char*& redirection_name) const {
  const _qz_LOG_attribute_entry* const entry = get_attr_info_by_name(name);
  if (entry == nullptr) return false;
  type = entry->get_type();
  redirection_name = entry->get_redirection_name();
  return true;
}

void _qz_LOG_log_definition::get_attr_info_by_index(unsigned char i, const char*& name, unsigned char& type,
                                                    const char*& redirection_name) const {
  if (i >= attribute_count_) {
    throw QZX_logging_internal_error("_qz_LOG_log_definition::get_attr_info_by_index()", 0);
  }
  name = text_or_empty(attributes_[i]->get_name());
  type = attributes_[i]->get_type();
  redirection_name = attributes_[i]->get_redirection_name();
}

_qz_LOG_selector_message* _qz_LOG_log_definition::get_selector_msg_by_index(unsigned int index) const {
  for (unsigned i = 0; i < selector_message_count_; ++i) {
    if (selector_messages_[i]->get_index() == index) return selector_messages_[i];
  }
  return nullptr;
}

_qz_LOG_selector_message* _qz_LOG_log_definition::get_selector_msg_by_value(unsigned int value) const {
  for (unsigned i = 0; i < selector_message_count_; ++i) {
    if (selector_messages_[i]->get_value() == value) return selector_messages_[i];
  }
  return nullptr;
}

bool _qz_LOG_log_definition::remove_attr_by_ptr(_qz_LOG_attribute_entry* entry) {
  return _remove_attr_by_ptr(entry) || _remove_global_attr_by_ptr(entry);
}

void _qz_LOG_log_definition::set_version_tag(const char (&tag)[16]) {
  QZ_memcpy(version_tag_, tag, sizeof(version_tag_));
  const char* const point = std::strchr(version_tag_, '.');
  version_numbers_.major = static_cast<unsigned>(std::strtol(version_tag_, nullptr, 10));
  version_numbers_.minor = point == nullptr ? 0 : static_cast<unsigned>(std::strtol(point + 1, nullptr, 10));
  version_numbers_.has_minor = point != nullptr;
}

void _qz_LOG_log_definition::clear_attr_info() {
  note_change();
  destroy_list(attributes_, attribute_count_);
  attribute_index_.clear();
  destroy_list(selector_messages_, selector_message_count_);
}

void _qz_LOG_log_definition::prefetch_lists() const {
  prefetch(attributes_, attribute_count_ * sizeof(void*));
  default_msg_text_.prefetch_prepared();
}

void _qz_LOG_log_definition::prefetch_items() const {
  for (unsigned i = 0; i < std::min(attribute_count_, kPrefetchedAttributes); ++i) {
    prefetch(attributes_[i], sizeof(_qz_LOG_attribute_entry));
  }
  default_msg_text_.prefetch_prepared_parts();
}

void _qz_LOG_log_definition::set_kept_bytes(std::size_t bytes) { kept_bytes_ = in_32_bits(bytes); }

void _qz_LOG_log_definition::mark_as_read() {
  std::size_t bytes = block_bytes(sizeof *this) + block_bytes(attribute_count_ * sizeof(void*)) +
                      block_bytes(selector_message_count_ * sizeof(void*)) + attribute_index_.memory_bytes() +
                      text_bytes(default_msg_id_.get()) + text_bytes(default_msg_text_.get());
  for (unsigned i = 0; i < attribute_count_; ++i) bytes += attributes_[i]->memory_bytes();
  for (unsigned i = 0; i < selector_message_count_; ++i) bytes += selector_messages_[i]->memory_bytes();
  read_bytes_ = in_32_bits(bytes);
  attribute_changes_ = _qz_LOG_attribute_entry::changes();
  is_as_read_.store(true, std::memory_order_relaxed);
}

std::size_t _qz_LOG_log_definition::memory_bytes() const {
  std::size_t bytes = read_bytes_ + default_msg_text_.prepared_bytes();
  for (unsigned i = 0; i < selector_message_count_; ++i) bytes += selector_messages_[i]->get_message().prepared_bytes();
  return bytes;
}

void _qz_LOG_log_definition::add_global_attr_info(const char* name, unsigned char type, FileNames* names) {
  global_marks_.store(GlobalMarks::kUnknown, std::memory_order_relaxed);
  const auto replaced = take_global_attribute(find_global_attribute(AttributeName(name)));
  reserve_in_index(p_global_attr_entries, n_global_attr_entries, *global_attribute_index);
  std::unique_ptr<_qz_LOG_attribute_entry> added(new_object<_qz_LOG_attribute_entry>(name, nullptr, type));
  const _qz_LOG_attribute_entry* const entry = added.get();
  const bool is_kept = append_to_list(p_global_attr_entries, n_global_attr_entries, std::move(added));
  index_last(p_global_attr_entries, n_global_attr_entries, *global_attribute_index);
  if (!is_kept) global_names->clear();
  if (is_kept && names != nullptr) global_names->add(entry, names);
}

bool _qz_LOG_log_definition::get_global_attr_info_by_name(const char* name, unsigned char& type) {
  const _qz_LOG_attribute_entry* const entry = find_global_attribute(AttributeName(name));
  if (entry == nullptr) return false;
  type = entry->get_type();
  return true;
}

void _qz_LOG_log_definition::get_global_attr_info_by_index(unsigned char i, const char*& name, unsigned char& type) {
  if (i >= n_global_attr_entries) {
    throw QZX_logging_index_out_of_bound("_qz_LOG_log_definition::get_global_attr_info_by_index()", 0);
  }
  name = text_or_empty(p_global_attr_entries[i]->get_name());
  type = p_global_attr_entries[i]->get_type();
}

void _qz_LOG_log_definition::clear_global_attr_info() {
  destroy_list(p_global_attr_entries, n_global_attr_entries);
  global_names->clear();
  global_attribute_index->clear();
  global_marks_.store(GlobalMarks::kUnknown, std::memory_order_relaxed);
}

void _qz_LOG_log_definition::set_file_names(FileNames* standard, FileNames* auxiliary) {
  standard_names_ = share_or_none(standard);
  auxiliary_names_ = share_or_none(auxiliary);
  names_resolved_.store(false, std::memory_order_relaxed);
}

/// Several threads may be here at once, and find the same.
bool _qz_LOG_log_definition::read_names() const {
  const EventNames& standard = names_of(standard_names_.get());
  const EventNames& auxiliary = names_of(auxiliary_names_.get());
  if (is_unreadable(standard) || is_unreadable(auxiliary)) return false;
  for (unsigned i = 0; i < attribute_count_; ++i) {
    const _qz_LOG_attribute_entry& attribute = *attributes_[i];
    attribute.set_sensitivity(std::max(standard.sensitivity(entry_id_, attribute.get_name()),
                                       auxiliary.sensitivity(entry_id_, attribute.get_name())));
  }
  const char* const own_name = standard.find_name(entry_id_);
  const char* const name = own_name != nullptr ? own_name : auxiliary.find_name(entry_id_);
  event_name_.store(name != nullptr ? KnownName::of(name) : nullptr, std::memory_order_relaxed);
  may_have_marks_.store(standard.has_marks() || auxiliary.has_marks(), std::memory_order_relaxed);
  names_resolved_.store(true, std::memory_order_release);
  return true;
}

_qz_LOG_log_definition::GlobalMarks _qz_LOG_log_definition::read_global_marks() {
  GlobalMarks found = GlobalMarks::kUnmarked;
  for (unsigned i = 0; i < n_global_attr_entries; ++i) {
    const _qz_LOG_attribute_entry& attribute = *p_global_attr_entries[i];
    const EventNames& names = names_of(global_names->find(&attribute));
    if (is_unreadable(names)) return GlobalMarks::kUnknown;
    attribute.set_sensitivity(names.global_sensitivity(attribute.get_name()));
    if (attribute.get_sensitivity() != Sensitivity::kKeep) found = GlobalMarks::kMarked;
  }
  global_marks_.store(found, std::memory_order_release);
  return found;
}

Sensitivity _qz_LOG_log_definition::find_mark(const KnownName* name) const {
  if (!resolve_names() || resolve_global_marks() == GlobalMarks::kUnknown) return Sensitivity::kDrop;
  for (const auto& [list, count] :
       {std::pair(attributes_, attribute_count_), std::pair(p_global_attr_entries, n_global_attr_entries)}) {
    for (unsigned i = 0; i < count; ++i) {
      if (list[i]->get_known_name() == name) return list[i]->get_sensitivity();
    }
  }
  return std::max(names_of(standard_names_.get()).strictest(name->text()),
                  names_of(auxiliary_names_.get()).strictest(name->text()));
}

// The release pairs with the acquire of the last holder, so that it destroys what all others have finished reading.
void _qz_LOG_log_definition::release() {
  if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

_qz_LOG_attribute_entry* _qz_LOG_log_definition::find_own_attribute(const AttributeName& name) const {
  const unsigned position = find_own_position(name);
  return position != kNone ? attributes_[position] : nullptr;
}

unsigned _qz_LOG_log_definition::find_own_position(const AttributeName& name) const {
  return find_position(attributes_, attribute_count_, attribute_index_, name);
}

_qz_LOG_attribute_entry* _qz_LOG_log_definition::find_global_attribute(const AttributeName& name) {
  const unsigned position = find_global_position(name);
  return position != kNone ? p_global_attr_entries[position] : nullptr;
}

unsigned _qz_LOG_log_definition::find_global_position(const AttributeName& name) {
  return find_position(p_global_attr_entries, n_global_attr_entries, *global_attribute_index, name);
}

/// Null when it is not a global attribute.
std::unique_ptr<_qz_LOG_attribute_entry> _qz_LOG_log_definition::take_global_attribute(
    const _qz_LOG_attribute_entry* entry) {
  auto taken = take_from_list(p_global_attr_entries, n_global_attr_entries, entry);
  if (taken != nullptr) global_names->remove(taken.get());
  if (taken != nullptr) reindex(p_global_attr_entries, n_global_attr_entries, *global_attribute_index);
  return taken;
}

bool _qz_LOG_log_definition::_remove_attr_by_ptr(const _qz_LOG_attribute_entry* entry) {
  return take_own_attribute(entry) != nullptr;
}

bool _qz_LOG_log_definition::_remove_global_attr_by_ptr(const _qz_LOG_attribute_entry* entry) {
  return take_global_attribute(entry) != nullptr;
}
