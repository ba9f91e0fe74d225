#ifndef QZLOG_DEFINITIONS_LDF_DEF_H
#define QZLOG_DEFINITIONS_LDF_DEF_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "definitions/attribute_name.h"
#include "definitions/file_names.h"
#include "definitions/prepared_message.h"
#include "foundation/counted_ref.h"
#include "foundation/hash_index.h"
#include "foundation/no_copies.h"
#include "foundation/owned_text.h"
#include "qzlog/logattrib.h"

/// One attribute that entries may carry.
class _qz_LOG_attribute_entry : public qz_UTIL_no_inadvertant_copies {
 public:
  /// Copies the texts; a null redirection name means none.
  _qz_LOG_attribute_entry(const char* name, const char* redirection_name, unsigned char type);

  void set_name(const char* name);
  void set_redirection_name(const char* redirection_name);

  const char* get_name() const { return name_->text(); }
  const qzlog::KnownName* get_known_name() const { return name_; }
  /// Null when none was given.
  const char* get_redirection_name() const { return redirection_name_.get(); }
  unsigned char get_type() const { return type_; }
  /// my_hashcode of the name.
  unsigned get_name_hash() const { return name_->hash(); }
  /// What was set. Each thread that sets it sets the same.
  qzlog::Sensitivity get_sensitivity() const { return sensitivity_.load(std::memory_order_relaxed); }
  void set_sensitivity(qzlog::Sensitivity sensitivity) const {
    sensitivity_.store(sensitivity, std::memory_order_relaxed);
  }
  /// Whether any attribute was ever renamed: lists that hold it then know it under its former name.
  static bool any_renamed() { return any_renamed_.load(std::memory_order_relaxed); }
  /// How often attributes were changed, modulo 2^32: none is another than it was while this stays.
  static std::uint32_t changes() { return changes_.load(std::memory_order_relaxed); }
  std::size_t memory_bytes() const;

 private:
  static inline std::atomic<bool> any_renamed_{false};
  static inline std::atomic<std::uint32_t> changes_{0};

  const qzlog::KnownName* name_;
  qzlog::OwnedText redirection_name_;
  unsigned char type_;
  mutable std::atomic<qzlog::Sensitivity> sensitivity_{qzlog::Sensitivity::kKeep};
};

/// A message that the value of the selector attribute, or an explicit index, picks instead of the default message.
class _qz_LOG_selector_message : public qz_UTIL_no_inadvertant_copies {
 public:
  _qz_LOG_selector_message(unsigned int index, unsigned int value, const char* message_id, const char* message_text);

  unsigned int get_index() const { return index_; }
  unsigned int get_value() const { return value_; }
  const char* get_message_id() const { return message_id_.get(); }
  const char* get_message_text() const { return message_text_.get(); }
  const qzlog::DefinitionMessage& get_message() const { return message_text_; }
  std::size_t memory_bytes() const;

 private:
  unsigned int index_;
  unsigned int value_;
  qzlog::OwnedText message_id_;
  qzlog::DefinitionMessage message_text_;
};

namespace qzlog {

/// The numbers of a version tag "MAJOR.MINOR", read as entries with an ID read them.
struct VersionNumbers {
  unsigned int major = 0;
  unsigned int minor = 0;
  bool has_minor = false;  ///< the tag has a point
};

}  // namespace qzlog

class _qz_LOG_log_definition_tbl;

namespace qzlog {
class CachedDefinitions;
}

/// The definition of one entry ID, and the global attributes of all of them.
///
/// Filled by the definition table, then read by many threads at once; there is no lock here. Counts are 8-bit and wrap:
/// the 256th element of a list empties it. Running out of memory throws QZX_memory_alloc.
///
/// A definition is reference-counted: the table's cache holds one reference and each entry that uses it another.
class _qz_LOG_log_definition : public qz_UTIL_no_inadvertant_copies {
 public:
  _qz_LOG_log_definition() = default;
  ~_qz_LOG_log_definition();

  unsigned int get_entry_id() const { return entry_id_; }
  unsigned int get_entry_word() const { return entry_word_; }
  unsigned int get_property_mask() const { return property_mask_; }
  /// The tag of the file that the definition was read from, at most 8 characters.
  const char* get_version_tag() const { return version_tag_; }
  const qzlog::VersionNumbers& get_version_numbers() const { return version_numbers_; }
  /// Null while none was set.
  const char* get_default_msg_id() const { return default_msg_id_.get(); }
  const char* get_default_msg_text() const { return default_msg_text_.get(); }
  const qzlog::DefinitionMessage& get_default_message() const { return default_msg_text_; }
  unsigned char get_attr_count() const { return attribute_count_; }
  unsigned char get_selector_msg_count() const { return selector_message_count_; }
  /// One of the own attributes, or null.
  const _qz_LOG_attribute_entry* get_selector_attribute() const { return selector_attribute_; }

  /// The numbers of a record. A property mask that is not 0 stays: an auxiliary record does not change it.
  void set_record_numbers(unsigned int entry_id, unsigned int entry_word, unsigned int property_mask) {
    note_change();
    entry_id_ = entry_id;
    entry_word_ = entry_word;
    if (property_mask_ == 0) property_mask_ = property_mask;
  }
  void set_default_msg_id(const char* message_id);
  void set_default_msg_text(const char* message_text);

  /// Adds an own attribute at the last position. One of the same name is removed first, and stays removed when there is
  /// no memory for the new one.
  void add_attr_info(const char* name, unsigned char type, bool is_selector, const char* redirection_name);
  void add_selector_message(unsigned int index, unsigned int value, const char* message_id, const char* message_text);
  /// Makes an own attribute the selector attribute; does nothing when there is none of that name.
  void set_selector_attribute(const char* name);

  /// The own attribute of that name, else the global one, else null.
  _qz_LOG_attribute_entry* get_attr_info_by_name(const char* name) const {
    return find_attribute(qzlog::AttributeName(name));
  }
  _qz_LOG_attribute_entry* find_attribute(const qzlog::AttributeName& name) const;
  /// Own attributes only.
  _qz_LOG_attribute_entry* find_own_attribute(const qzlog::AttributeName& name) const;
  /// The position of an own attribute, or of none: then it is not below get_attr_count().
  unsigned find_own_position(const qzlog::AttributeName& name) const;
  /// The own attribute at a position, or null.
  const _qz_LOG_attribute_entry* get_own_attribute(unsigned position) const {
    return position < attribute_count_ ? attributes_[position] : nullptr;
  }
  bool get_attr_info_by_name(const char* name, unsigned char& type, const char*& redirection_name) const;
  /// The i-th own attribute in insertion order. Throws QZX_logging_internal_error when there is none.
  void get_attr_info_by_index(unsigned char i, const char*& name, unsigned char& type,
                              const char*& redirection_name) const;
  /// The first message whose stored index (not its position), or whose value, equals the argument, else null.
  _qz_LOG_selector_message* get_selector_msg_by_index(unsigned int index) const;
  _qz_LOG_selector_message* get_selector_msg_by_value(unsigned int value) const;
  /// The i-th message in insertion order; `i` must be below the count.
  const _qz_LOG_selector_message& get_selector_msg_at(unsigned char i) const { return *selector_messages_[i]; }

  /// Removes an own, else a global attribute; false when it is neither.
  bool remove_attr_by_ptr(_qz_LOG_attribute_entry* entry);
  /// Destroys all own attributes and selector messages. The selector attribute must be set again afterwards.
  void clear_attr_info();

  // Global attributes: written while files are loaded or cleared, under the process-wide lock; read without a lock.
  /// `names` are those of its file, null for no file.
  static void add_global_attr_info(const char* name, unsigned char type, qzlog::FileNames* names = nullptr);
  static bool get_global_attr_info_by_name(const char* name, unsigned char& type);
  static _qz_LOG_attribute_entry* find_global_attribute(const qzlog::AttributeName& name);
  /// As find_own_position.
  static unsigned find_global_position(const qzlog::AttributeName& name);
  /// Throws QZX_logging_index_out_of_bound when there is no i-th global attribute: another class than for own
  /// attributes, callers tell them apart by it.
  static void get_global_attr_info_by_index(unsigned char i, const char*& name, unsigned char& type);
  static void clear_global_attr_info();
  static unsigned char get_global_attr_count() { return n_global_attr_entries; }

  // What the names sections of the files say. The first to ask reads them, and may throw QZX_memory_alloc then; a file
  // that cannot be read is asked again by the next. Any thread.

  /// The event's name, null where no file knows it.
  const qzlog::KnownName* get_event_name() const {
    return resolve_names() ? event_name_.load(std::memory_order_relaxed) : nullptr;
  }
  /// Whether some attribute of an entry with this definition may be marked; most files mark none.
  bool may_have_marks() const {
    return !resolve_names() || may_have_marks_.load(std::memory_order_relaxed) ||
           resolve_global_marks() != GlobalMarks::kUnmarked;
  }
  /// What becomes of the value of an attribute. One that the definition does not know, which an entry keeps from
  /// another ID, is treated as the strictest mark for an attribute of its name asks for.
  qzlog::Sensitivity find_sensitivity(const qzlog::KnownName* name) const {
    return may_have_marks() ? find_mark(name) : qzlog::Sensitivity::kKeep;
  }

  /// Whether `table` would answer a lookup with this definition now.
  bool is_cached_in(const _qz_LOG_log_definition_tbl* table) const {
    return caching_table_.load(std::memory_order_acquire) == table;
  }

  /// Whether it is what reading its record again would give: nothing was changed since mark_as_read().
  bool is_as_read() const {
    return is_as_read_.load(std::memory_order_relaxed) && attribute_changes_ == _qz_LOG_attribute_entry::changes();
  }
  /// For who knows that a record gives something else now.
  void note_change() { is_as_read_.store(false, std::memory_order_relaxed); }
  /// What it takes of the process's memory, with what was prepared from its texts.
  std::size_t memory_bytes() const;

  /// Of a definition that was not used for long, asks for what an entry reads beside it; then, when that is there, for
  /// what it refers to.
  void prefetch_lists() const;
  void prefetch_items() const;

  void add_reference() { references_.fetch_add(1, std::memory_order_relaxed); }
  /// Gives up a reference; the last one destroys the definition.
  void release();

 private:
  friend class _qz_LOG_log_definition_tbl;
  friend class qzlog::CachedDefinitions;

  /// Its record was read wholly; from here on memory_bytes() looks at the prepared texts alone.
  void mark_as_read();
  void set_version_tag(const char (&tag)[16]);
  /// The files that may know its name, either of which may be null.
  void set_file_names(qzlog::FileNames* standard, qzlog::FileNames* auxiliary);
  /// False while the files cannot be read.
  bool resolve_names() const { return names_resolved_.load(std::memory_order_acquire) || read_names(); }
  bool read_names() const;
  qzlog::Sensitivity find_mark(const qzlog::KnownName* name) const;

  enum class GlobalMarks : unsigned char { kUnknown, kUnmarked, kMarked };
  /// kUnknown while a file cannot be read.
  static GlobalMarks resolve_global_marks() {
    const GlobalMarks known = global_marks_.load(std::memory_order_acquire);
    return known != GlobalMarks::kUnknown ? known : read_global_marks();
  }
  static GlobalMarks read_global_marks();
  /// What CachedDefinitions counts it as while it keeps it.
  std::size_t kept_bytes() const { return kept_bytes_; }
  void set_kept_bytes(std::size_t bytes);
  void set_caching_table(const _qz_LOG_log_definition_tbl* table) {
    caching_table_.store(table, std::memory_order_release);
  }
  std::unique_ptr<_qz_LOG_attribute_entry> take_own_attribute(const _qz_LOG_attribute_entry* entry);
  static std::unique_ptr<_qz_LOG_attribute_entry> take_global_attribute(const _qz_LOG_attribute_entry* entry);
  bool _remove_attr_by_ptr(const _qz_LOG_attribute_entry* entry);
  static bool _remove_global_attr_by_ptr(const _qz_LOG_attribute_entry* entry);

  // What every entry reads comes first. The reference count stands apart from it: it is written by every thread that
  // begins to use the definition.
  std::atomic<const _qz_LOG_log_definition_tbl*> caching_table_{nullptr};
  unsigned int entry_id_ = 0;
  unsigned int entry_word_ = 0;
  unsigned int property_mask_ = 0;
  qzlog::VersionNumbers version_numbers_;
  unsigned char attribute_count_ = 0;
  unsigned char selector_message_count_ = 0;
  char version_tag_[16] = {};
  _qz_LOG_attribute_entry** attributes_ = nullptr;
  qzlog::HashIndex attribute_index_;
  _qz_LOG_attribute_entry* selector_attribute_ = nullptr;
  qzlog::DefinitionMessage default_msg_text_;
  qzlog::OwnedText default_msg_id_;
  _qz_LOG_selector_message** selector_messages_ = nullptr;
  mutable std::atomic<const qzlog::KnownName*> event_name_{nullptr};
  mutable std::atomic<bool> names_resolved_{false};
  mutable std::atomic<bool> may_have_marks_{false};
  qzlog::FileNamesRef standard_names_;
  qzlog::FileNamesRef auxiliary_names_;
  std::uint32_t read_bytes_ = 0;  // what it took when it was read
  std::uint32_t kept_bytes_ = 0;
  std::uint32_t attribute_changes_ = 0;  // when it was read
  std::atomic<unsigned> references_{1};
  std::atomic<bool> is_as_read_{false};
  // Whether any global attribute is marked. Forgotten where they are changed.
  static inline std::atomic<GlobalMarks> global_marks_{GlobalMarks::kUnknown};

 public:
  static _qz_LOG_attribute_entry** p_global_attr_entries;
  static unsigned char n_global_attr_entries;
};

namespace qzlog {
using DefinitionRef = CountedRef<_qz_LOG_log_definition>;
}

#endif  // QZLOG_DEFINITIONS_LDF_DEF_H
