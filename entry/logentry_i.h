#ifndef QZLOG_ENTRY_LOGENTRY_I_H
#define QZLOG_ENTRY_LOGENTRY_I_H

#include <cstdarg>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "definitions/ldf_def.h"
#include "definitions/ldf_load.h"
#include "entry/attribute_store.h"
#include "entry/logattrib.h"
#include "entry/ustring.h"
#include "foundation/no_copies.h"
#include "foundation/thread_blocks.h"
#include "qzlog/logentry.h"
#include "qzlog/qz_string.h"
#include "qzlog/qz_time.h"

/// The highest valid log level.
constexpr unsigned int LOG_LEVEL_HIGH = 9;

/// The implementation behind an entry; qz_LOG_LogEntry documents what its callers see. Used by one thread at a time.
///
/// A name is an attribute's name; null and empty ones throw QZX_logging_illegal_argument "invalid argument", except
/// from check_attribute.
class _qz_LOG_log_entry_imp : public qz_UTIL_no_inadvertant_copies {
 public:
  _qz_LOG_log_entry_imp();
  _qz_LOG_log_entry_imp(unsigned int entry_id, unsigned int log_level);
  _qz_LOG_log_entry_imp(const _qz_LOG_log_entry_imp& source);
  /// Clears the entry, then copies: assigning an entry to itself leaves it empty.
  _qz_LOG_log_entry_imp& operator=(const _qz_LOG_log_entry_imp& source);
  ~_qz_LOG_log_entry_imp();

  // Entries come and go with every event.
  static void* operator new(std::size_t /*size*/) {
    if (void* const block = qzlog::ThreadBlocks<_qz_LOG_log_entry_imp>::take()) return block;
    throw std::bad_alloc();
  }
  static void* operator new(std::size_t /*size*/, const std::nothrow_t& /*tag*/) noexcept {
    return qzlog::ThreadBlocks<_qz_LOG_log_entry_imp>::take();
  }
  static void operator delete(void* block) noexcept { qzlog::ThreadBlocks<_qz_LOG_log_entry_imp>::give(block); }
  static void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    qzlog::ThreadBlocks<_qz_LOG_log_entry_imp>::give(block);
  }

  // Entry ID, level, version, time.
  const _qz_LOG_entry_head& get_head() const { return head_; }
  unsigned int get_entry_id() const { return head_.entry_id; }
  unsigned int get_log_level() const { return head_.log_level; }
  unsigned int get_property_mask() const { return head_.property_mask; }
  const char* get_version_text() const { return version_text_; }
  /// Whether the definition is still the one that a new entry of this ID would get.
  bool has_current_definition() const { return hold_ && hold_->definition().is_cached_in(definition_table_); }
  /// Null while the entry has no ID.
  const _qz_LOG_log_definition* get_definition() const { return hold_ ? &hold_->definition() : nullptr; }
  /// Throws QZX_logging_misc then.
  const _qz_LOG_log_definition& require_definition() const {
    if (!hold_) throw_not_initialized();
    return hold_->definition();
  }
  void set_entry_id(unsigned int entry_id);
  void set_log_level(unsigned int log_level);
  static void set_log_major_version(unsigned int major);
  static void set_log_minor_version(unsigned int minor);
  static void set_log_version(unsigned int major, unsigned int minor);
  static unsigned int get_log_major_version();
  static unsigned int get_log_minor_version();
  static void get_log_version(unsigned int& major, unsigned int& minor);
  qz_Time get_timestamp(bool gmt) const;
  /// The moment of the entry's time; 0 while it is not set.
  long long get_unix_seconds() const { return timestamp_.unix_seconds(); }
  void set_timestamp(const qz_Time& time, bool gmt);

  // Standard information attributes.
  void set_computer_info(const char* computer_info);
  void set_product_code(unsigned int code);
  void set_product_platform_code(unsigned int code);
  void set_product_language_code(unsigned int code);
  void set_product_version(const char* version);
  void set_component_code(unsigned int code);
  void set_severity_code(unsigned int code);
  void set_reason_code(int code);
  void set_reason_code_source(unsigned int code);
  const char* get_computer_info() const;
  unsigned short get_product_code() const;
  unsigned short get_product_platform_code() const;
  unsigned int get_product_language_code() const;
  const char* get_product_version() const;
  unsigned int get_component_code() const;
  unsigned char get_severity_code() const;
  int get_reason_code() const;
  unsigned int get_reason_code_source() const;

  /// With entry ID 0 a global attribute. False when the name exists already. Changes the shared definition.
  static bool add_product_specific_attribute_definition(unsigned int entry_id, const char* name, qz_AttributeType type);

  // Adding attributes.
  void add_attrib_bool(const char* name, bool value);
  void add_attrib_1u(const char* name, unsigned char value);
  void add_attrib_1(const char* name, char value);
  void add_attrib_2u(const char* name, unsigned short value);
  void add_attrib_2(const char* name, short value);
  void add_attrib_4u(const char* name, unsigned int value);
  void add_attrib_4(const char* name, int value);
  void add_attrib_float8(const char* name, double value);
  void add_attrib_time(const char* name, const qz_Time& value);
  /// `escape` turns line breaks into backslash and letter, false turns these back.
  void add_attrib_str(const char* name, const char* value, bool escape);
  void add_attrib_mbstr(const char* name, const char* value, bool escape);
  /// For a Char or MBChar attribute: takes what an entry gave for its text, with the line breaks escaped already. It
  /// may be longer than the type's limit, which counts each of them once. What is too long all the same is treated as
  /// the other adds do. `length` bytes, with a zero byte behind them; false for `escape` stores line breaks as they
  /// are.
  void add_stored_text(const char* name, const char* text, std::size_t length, bool escape);
  /// Where an attribute stands among those of the entry's own ID; kNoPosition for a global one.
  static constexpr unsigned kNoPosition = static_cast<unsigned>(-1);
  unsigned find_own_position(const char* name) const {
    const unsigned position = require_definition().find_own_position(qzlog::AttributeName(name));
    return require_definition().get_own_attribute(position) != nullptr ? position : kNoPosition;
  }
  /// The adds for an attribute of the entry's own ID at such a position, which has to be of that type: its name is not
  /// compared. `expected` is where the value stands if that many values were added before it, as in AttributeStore.
  template <unsigned char code>
  void add_own(unsigned position, unsigned expected, typename qzlog::ValueOf<code>::type value) {
    message_stale_ = true;
    attributes_.put<code>(hold_->definition().get_own_attribute(position)->get_known_name(), expected,
                          std::move(value));
  }
  /// The text has to be within its type's limit, and a zero byte to stand behind it.
  void add_own_text(unsigned position, unsigned expected, const char* text, std::size_t length) {
    next_attribute_ = expected + 1;
    add_filtered_text(*hold_->definition().get_own_attribute(position), text, length, true);
  }
  /// Pairs of name and value up to a null or empty name.
  void add_attributes(std::va_list arguments);

  /// The steps that all adds share: the definition of an attribute of exactly that type, and storing a value.
  const _qz_LOG_attribute_entry* _check_attribute(const char* name, qz_AttributeType type) const {
    return require_type(name, require_definition().get_attr_info_by_name(name), type);
  }
  /// Takes ownership of `value`, also when it throws.
  void _add_attribute(const char* name, _qz_LOG_type_base* value);

  /// Refuse a text that is too long, or cut it to `limit` bytes (characters) into `buffer`, as the setting says.
  void truncate_string(const char* name, const char* value, int limit, char* buffer, int capacity) const;
  void truncate_mbstring(const char* name, const char* value, int limit, char* buffer, int capacity) const;
  /// Copies `source` into `target` of `size` bytes, always terminated, escaping or unescaping line breaks. Escaping
  /// reads at most size - 1 characters and writes at most as many.
  static void filter_string(const char* source, char* target, int size, bool escape);

  // Reading attributes: the value, or a default (in operation mode 1 an exception) when it is not set.
  bool get_attrib_bool(const char* name) const;
  unsigned char get_attrib_1u(const char* name) const;
  char get_attrib_1(const char* name) const;
  unsigned short get_attrib_2u(const char* name) const;
  short get_attrib_2(const char* name) const;
  unsigned int get_attrib_4u(const char* name) const;
  int get_attrib_4(const char* name) const;
  double get_attrib_float8(const char* name) const;
  qz_Time get_attrib_time(const char* name) const;
  const char* get_attrib_str(const char* name) const;
  const char* get_attrib_mbstr(const char* name) const;
  // False, with `value` untouched, when it is not set.
  bool get_attrib_bool(const char* name, bool& value) const;
  bool get_attrib_1u(const char* name, unsigned char& value) const;
  bool get_attrib_1(const char* name, char& value) const;
  bool get_attrib_2u(const char* name, unsigned short& value) const;
  bool get_attrib_2(const char* name, short& value) const;
  bool get_attrib_4u(const char* name, unsigned int& value) const;
  bool get_attrib_4(const char* name, int& value) const;
  bool get_attrib_float8(const char* name, double& value) const;
  bool get_attrib_time(const char* name, qz_Time& value) const;
  bool get_attrib_str(const char* name, const char*& value) const;
  bool get_attrib_mbstr(const char* name, const char*& value) const;
  /// Any integer attribute widened to 32 bits; a Boolean reads as 0 whatever its value, which messages rely on.
  int get_attrib_as_4(const char* name) const;

  /// The stored value or null, with its type code, or that of the definition when it is not set.
  const _qz_LOG_type_base* _get_attribute_internal(const char* name, unsigned char& type) const;
  /// The same for exactly one type.
  const _qz_LOG_type_base* _get_attribute(const char* name, qz_AttributeType type) const;

  bool has_value(const char* name) const { return attributes_.find(qzlog::AttributeName(name)) != nullptr; }
  /// The stored value or null, whatever the definition says. It is looked for first where it stands if attributes were
  /// added in the order in which they are asked for.
  const _qz_LOG_type_base* find_value(const qzlog::KnownName* name, unsigned expected) const {
    return attributes_.find(name, expected);
  }
  bool remove_attrib(const char* name);
  void clear_attribs(bool full);
  int check_attribute(const char* name, qz_AttributeType& type) const;
  void visit_attributes(qz_LOG_AttributeVisitor& visitor) const;
  /// The same at once: calls visit(const qzlog::KnownName*, const _qz_LOG_type_base&) for each attribute that is set,
  /// in the order in which they were added; one under a new name takes the place of one that was removed.
  template <typename Visit>
  void for_each_value(Visit visit) const {
    attributes_.for_each(visit);
  }

  // The readable message.
  const char* get_readable_message(char* buffer, long size, bool use_default, unsigned int selector_index) const;
  const char* get_readable_message(bool use_default, unsigned int selector_index) const;
  std::string format_message(bool use_default, unsigned int selector_index) const;
  void format_message(std::string& text, bool use_default, unsigned int selector_index) const;

  // Process-wide, read and written atomically.
  static unsigned int log_major_version;
  static unsigned int log_minor_version;
  /// 1 makes reads of missing attributes throw.
  static unsigned int global_operation_mode;

 private:
  void _copy(const _qz_LOG_log_entry_imp& source);
  void _clear(bool full);
  void _clear_attribute_list();
  void take_from_definition();

  /// The checks that the attribute operations share, each with its own exception and text.
  [[noreturn]] static void throw_not_initialized();
  const _qz_LOG_attribute_entry* require_type(const char* name, const _qz_LOG_attribute_entry* attribute,
                                              qz_AttributeType type) const {
    if (attribute == nullptr || attribute->get_type() != type) refuse_attribute(name, attribute);
    return attribute;
  }
  /// The attribute of that name that the entry's ID or the globals define, or null, for a value that is added: the next
  /// one is looked for behind it first.
  const _qz_LOG_attribute_entry* proceed_to(const char* name) {
    const _qz_LOG_attribute_entry* const expected = require_definition().get_own_attribute(next_attribute_);
    if (expected == nullptr || QZ_strcmp(expected->get_name(), name) != 0) return proceed_anywhere(name);
    ++next_attribute_;
    return expected;
  }
  const _qz_LOG_attribute_entry* proceed_anywhere(const char* name);
  [[noreturn]] void refuse_attribute(const char* name, const _qz_LOG_attribute_entry* attribute) const;
  [[noreturn]] void throw_invalid_name(const char* name) const;
  /// A value as an attribute holds it. See qz_LOG_LogConfig::SetActionOutOfRange for one that does not fit.
  template <typename Value, typename Given>
  Value narrowed(const char* name, Given given) const {
    // `char` is 8 bits with a sign to the library, on every host.
    using Limits = std::conditional_t<std::is_same_v<Value, char>, signed char, Value>;
    if (!std::in_range<Limits>(given)) notice_out_of_range(name);
    return static_cast<Value>(given);
  }
  void notice_out_of_range(const char* name) const;
  template <typename Exception>
  [[noreturn]] void throw_with_id(const char* text_before_id) const;
  bool wants_truncation(const char* name, const char* value, const char* buffer) const;

  template <unsigned char code, typename T>
  void add_scalar(const char* name, T value);
  template <unsigned char code>
  void add_stored(const _qz_LOG_attribute_entry& attribute, typename qzlog::ValueOf<code>::type value);
  void add_argument(const char* name, qz_AttributeType type, std::va_list& arguments);
  void add_filtered_text(const _qz_LOG_attribute_entry& attribute, const char* value, std::size_t length, bool escape);
  void add_truncated_text(const _qz_LOG_attribute_entry& attribute, const char* value, bool escape);
  void add_truncated_mbtext(const _qz_LOG_attribute_entry& attribute, const char* value, bool escape);
  void store_text(const _qz_LOG_attribute_entry& attribute, const char* text, std::size_t length);
  static bool exceeds_limit_unescaped(unsigned char type, const char* text, std::size_t length);
  template <unsigned char code>
  void store_text_of(const qzlog::KnownName* name, const char* text, unsigned length);

  [[noreturn]] void throw_wrong_get_method() const;
  template <unsigned char code>
  bool read_scalar(const char* name, typename qzlog::ValueOf<code>::type& value) const;
  template <typename T>
  using OutParameterRead = bool (_qz_LOG_log_entry_imp::*)(const char* name, T& value) const;
  template <typename T>
  T value_or_default(const char* name, OutParameterRead<T> read, T value) const;

  struct NamedValue {
    const char* name;
    const _qz_LOG_type_base* value;
  };
  std::vector<NamedValue> values_in_definition_order() const;

  // The room for values lies last: what every operation touches stands together.
  _qz_LOG_entry_head head_ = {};
  int last_daylight_flag_ = -1;
  int last_zone_difference_ = -1;
  mutable unsigned int last_selector_index_ = 0;
  // Attributes are nearly always added in the order of the definition: where the next one is looked for first.
  unsigned next_attribute_ = 0;
  mutable bool message_stale_ = true;
  mutable bool last_use_default_ = true;
  const _qz_LOG_log_definition_tbl* definition_table_;
  qzlog::DefinitionHoldRef hold_;
  char version_text_[16] = {};
  qz_Time timestamp_;
  mutable _qz_LOG_ustring message_cache_;
  qzlog::AttributeStore attributes_;
};

#endif  // QZLOG_ENTRY_LOGENTRY_I_H
