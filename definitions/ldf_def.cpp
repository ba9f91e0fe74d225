#include "definitions/ldf_def.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "foundation/allocate.h"
#include "foundation/hashing.h"

_qz_LOG_attribute_entry** _qz_LOG_log_definition::p_global_attr_entries = nullptr;
unsigned char _qz_LOG_log_definition::n_global_attr_entries = 0;

namespace {

constexpr unsigned char kMaxCount = std::numeric_limits<unsigned char>::max();

/// Releases the global attributes when the library is unloaded.
struct GlobalAttributesGuard {
  ~GlobalAttributesGuard() { _qz_LOG_log_definition::clear_global_attr_info(); }
} global_attributes_guard;

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
  Element** longer = qz_new_array<Element*>(std::size_t{count} + 1);
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

_qz_LOG_attribute_entry* find_by_name(_qz_LOG_attribute_entry* const* list, unsigned char count, const char* name) {
  const unsigned hash = my_hashcode(name);
  for (unsigned i = 0; i < count; ++i) {
    if (list[i]->get_name_hash() == hash && QZ_strcmp(list[i]->get_name(), name) == 0) return list[i];
  }
  return nullptr;
}

const char* text_or_empty(const char* text) { return text == nullptr ? "" : text; }

}  // namespace

_qz_LOG_attribute_entry::_qz_LOG_attribute_entry(const char* name, const char* redirection_name, unsigned char type)
    : name_(qz_duplicate_text(name)),
      redirection_name_(qz_duplicate_text(redirection_name)),
      type_(type),
      name_hash_(my_hashcode(name)) {}

void _qz_LOG_attribute_entry::set_name(const char* name) {
  name_ = qz_duplicate_text(name);
  name_hash_ = my_hashcode(name_.get());
}

void _qz_LOG_attribute_entry::set_redirection_name(const char* redirection_name) {
  redirection_name_ = qz_duplicate_text(redirection_name);
}

_qz_LOG_selector_message::_qz_LOG_selector_message(unsigned int index, unsigned int value, const char* message_id,
                                                   const char* message_text)
    : index_(index),
      value_(value),
      message_id_(qz_duplicate_text(message_id)),
      message_text_(qz_duplicate_text(message_text)) {}

_qz_LOG_log_definition::~_qz_LOG_log_definition() { clear_attr_info(); }

void _qz_LOG_log_definition::set_default_msg_id(const char* message_id) {
  default_msg_id_ = qz_duplicate_text(message_id);
}

void _qz_LOG_log_definition::set_default_msg_text(const char* message_text) {
  default_msg_text_ = qz_duplicate_text(message_text);
}

void _qz_LOG_log_definition::add_attr_info(const char* name, unsigned char type, bool is_selector,
                                           const char* redirection_name) {
  _qz_LOG_attribute_entry* const former = _find_attr_entry_by_name(name);
  if (former != nullptr && former == selector_attribute_) selector_attribute_ = nullptr;
  // Held to the end: the caller's name may be the former entry's own.
  const auto replaced = take_from_list(attributes_, attribute_count_, former);

  auto entry = std::unique_ptr<_qz_LOG_attribute_entry>(qz_new<_qz_LOG_attribute_entry>(name, redirection_name, type));
  _qz_LOG_attribute_entry* const added = entry.get();
  if (!append_to_list(attributes_, attribute_count_, std::move(entry))) {
    selector_attribute_ = nullptr;
  } else if (is_selector) {
    selector_attribute_ = added;
  }
}

void _qz_LOG_log_definition::add_selector_message(unsigned int index, unsigned int value, const char* message_id,
                                                  const char* message_text) {
  append_to_list(selector_messages_, selector_message_count_,
                 std::unique_ptr<_qz_LOG_selector_message>(
                     qz_new<_qz_LOG_selector_message>(index, value, message_id, message_text)));
}

void _qz_LOG_log_definition::set_selector_attribute(const char* name) {
  for (unsigned i = 0; i < attribute_count_; ++i) {
    if (QZ_strcmp(text_or_empty(attributes_[i]->get_name()), name) != 0) continue;
    selector_attribute_ = attributes_[i];
    return;
  }
}

_qz_LOG_attribute_entry* _qz_LOG_log_definition::get_attr_info_by_name(const char* name) const {
  _qz_LOG_attribute_entry* const own = _find_attr_entry_by_name(name);
  return own != nullptr ? own : _find_global_attr_entry_by_name(name);
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

void _qz_LOG_log_definition::clear_attr_info() {
  destroy_list(attributes_, attribute_count_);
  destroy_list(selector_messages_, selector_message_count_);
}

void _qz_LOG_log_definition::add_global_attr_info(const char* name, unsigned char type) {
  const auto replaced =
      take_from_list(p_global_attr_entries, n_global_attr_entries, _find_global_attr_entry_by_name(name));
  append_to_list(p_global_attr_entries, n_global_attr_entries,
                 std::unique_ptr<_qz_LOG_attribute_entry>(qz_new<_qz_LOG_attribute_entry>(name, nullptr, type)));
}

bool _qz_LOG_log_definition::get_global_attr_info_by_name(const char* name, unsigned char& type) {
  const _qz_LOG_attribute_entry* const entry = _find_global_attr_entry_by_name(name);
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

void _qz_LOG_log_definition::clear_global_attr_info() { destroy_list(p_global_attr_entries, n_global_attr_entries); }

// The release pairs with the acquire of the last holder, so that it destroys what all others have finished reading.
void _qz_LOG_log_definition::release() {
  if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

_qz_LOG_attribute_entry* _qz_LOG_log_definition::_find_attr_entry_by_name(const char* name) const {
  return find_by_name(attributes_, attribute_count_, name);
}

_qz_LOG_attribute_entry* _qz_LOG_log_definition::_find_global_attr_entry_by_name(const char* name) {
  return find_by_name(p_global_attr_entries, n_global_attr_entries, name);
}

bool _qz_LOG_log_definition::_remove_attr_by_ptr(const _qz_LOG_attribute_entry* entry) {
  const auto removed = take_from_list(attributes_, attribute_count_, entry);
  if (removed != nullptr && removed.get() == selector_attribute_) selector_attribute_ = nullptr;
  return removed != nullptr;
}

bool _qz_LOG_log_definition::_remove_global_attr_by_ptr(const _qz_LOG_attribute_entry* entry) {
  return take_from_list(p_global_attr_entries, n_global_attr_entries, entry) != nullptr;
}
