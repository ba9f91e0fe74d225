#ifndef QZLOG_ENTRY_LOGATTRIB_H
#define QZLOG_ENTRY_LOGATTRIB_H

#include <sys/types.h>

#include <unicode/uversion.h>
#include <cstdio>
#include <type_traits>
#include <utility>

#include "entry/ustring.h"
#include "foundation/allocate.h"
#include "qzlog/logattrib.h"
#include "qzlog/qz_string.h"
#include "qzlog/qz_time.h"

U_NAMESPACE_BEGIN
class UnicodeString;
U_NAMESPACE_END

// Type predicates. TypeBool counts as a signed integer and as an integer: rendering relies on it.
constexpr bool is_string_attribute(qz_AttributeType type) {
  return (type >= TypeChar32 && type <= TypeChar2K) || type == TypeGUID;
}
constexpr bool is_unicode_string_attribute(qz_AttributeType type) {
  return type >= TypeMBChar32 && type <= TypeMBChar2K;
}
constexpr bool is_unsigned_integer_attribute(qz_AttributeType type) {
  return type == TypeUInt1 || type == TypeUInt2 || type == TypeUInt4;
}
constexpr bool is_signed_integer_attribute(qz_AttributeType type) {
  return type == TypeBool || type == TypeSInt1 || type == TypeSInt2 || type == TypeSInt4;
}
constexpr bool is_integer_attribute(qz_AttributeType type) { return type >= TypeBool && type <= TypeSInt4; }
constexpr bool is_float_attribute(qz_AttributeType type) { return type == TypeFloat; }
constexpr bool is_time_attribute(qz_AttributeType type) { return type >= TypeDate && type <= TypeTimestamp; }

/// Recognises the standard names that messages may use without a definition ("PRODUCT_ID", "COMPONENT_ID",
/// "VERSION_ID", "COMPONENT_VERSION_ID", "TIMESTAMP") and gives their type; otherwise false with `type` untouched.
bool is_default_info_fields(const char* name, qz_AttributeType& type);

/// Append the text form of a value to the zero-terminated text in `buffer`, in which the caller guarantees room, and
/// return `buffer`. Single bytes print as numbers; times print in GMT.
char* printf_out_attribute_value(char* buffer, const char* value);
char* printf_out_attribute_value(char* buffer, bool value);
char* printf_out_attribute_value(char* buffer, unsigned char value);
char* printf_out_attribute_value(char* buffer, char value);
char* printf_out_attribute_value(char* buffer, unsigned short value);
char* printf_out_attribute_value(char* buffer, short value);
char* printf_out_attribute_value(char* buffer, unsigned int value);
char* printf_out_attribute_value(char* buffer, int value);
char* printf_out_attribute_value(char* buffer, double value);
char* printf_out_attribute_value(char* buffer, const qz_String& value);
char* printf_out_attribute_value(char* buffer, const _qz_LOG_ustring& value);
char* printf_out_attribute_value(char* buffer, const qz_Time& value);
char* printf_out_attribute_value(char* buffer, const icu::UnicodeString& value);  // appends nothing

/// Write the same texts at the end of a stream's file, past its buffer, in one write, and return what the write
/// returned: -1 when the stream has no descriptor, 0 when it is null or cannot be positioned. Doubles alone go through
/// the stream's buffer; callers rely on the difference.
ssize_t printf_attribute_value(std::FILE* stream, const char* value);
ssize_t printf_attribute_value(std::FILE* stream, bool value);
ssize_t printf_attribute_value(std::FILE* stream, unsigned char value);
ssize_t printf_attribute_value(std::FILE* stream, char value);
ssize_t printf_attribute_value(std::FILE* stream, unsigned short value);
ssize_t printf_attribute_value(std::FILE* stream, short value);
ssize_t printf_attribute_value(std::FILE* stream, unsigned int value);
ssize_t printf_attribute_value(std::FILE* stream, int value);
ssize_t printf_attribute_value(std::FILE* stream, double value);
ssize_t printf_attribute_value(std::FILE* stream, const qz_String& value);
ssize_t printf_attribute_value(std::FILE* stream, const _qz_LOG_ustring& value);
ssize_t printf_attribute_value(std::FILE* stream, const qz_Time& value);
ssize_t printf_attribute_value(std::FILE* stream, const icu::UnicodeString& value);  // writes nothing

/// A stored attribute value, owned by its entry.
class _qz_LOG_type_base {
 public:
  virtual ~_qz_LOG_type_base() = default;
  virtual void print_type(std::FILE* stream) const = 0;
  virtual void print_out(char* buffer) const = 0;
  /// Copies the value of `other`, which must be of the same instantiation: nothing checks it.
  virtual void get_and_set(_qz_LOG_type_base* other) = 0;

  unsigned char get_type() const { return type_; }

 protected:
  explicit _qz_LOG_type_base(unsigned char type) : type_(type) {}

 private:
  unsigned char type_;
};

namespace qzlog {

/// A value of type T, whatever its type code.
template <typename T>
class TypedValue : public _qz_LOG_type_base {
 public:
  void print_type(std::FILE* stream) const override { printf_attribute_value(stream, value); }
  void print_out(char* buffer) const override { printf_out_attribute_value(buffer, value); }
  void get_and_set(_qz_LOG_type_base* other) override { value = static_cast<TypedValue*>(other)->value; }

  T value;

 protected:
  explicit TypedValue(unsigned char type) : _qz_LOG_type_base(type), value() {}
  TypedValue(unsigned char type, T initial) : _qz_LOG_type_base(type), value(std::move(initial)) {}
};

}  // namespace qzlog

/// A value of one type code.
template <typename T, unsigned char code>
class _qz_LOG_datatype : public qzlog::TypedValue<T> {
 public:
  _qz_LOG_datatype() : qzlog::TypedValue<T>(code) {}
  explicit _qz_LOG_datatype(T initial) : qzlog::TypedValue<T>(code, std::move(initial)) {}
};

namespace qzlog {

/// The value type that belongs to a type code from 1 to 24.
template <unsigned char code>
struct ValueOf {
  static_assert(code >= TypeBool && code <= TypeGUID);
  template <unsigned char low, unsigned char high, typename T, typename Else>
  using Between = std::conditional_t<(code >= low && code <= high), std::type_identity<T>, Else>;
  // clang-format off
  using type = typename Between<
      TypeBool, TypeBool, bool,
      Between<TypeUInt1, TypeUInt1, unsigned char,
      Between<TypeSInt1, TypeSInt1, char,
      Between<TypeUInt2, TypeUInt2, unsigned short,
      Between<TypeSInt2, TypeSInt2, short,
      Between<TypeUInt4, TypeUInt4, unsigned int,
      Between<TypeSInt4, TypeSInt4, int,
      Between<TypeFloat, TypeFloat, double,
      Between<TypeMBChar32, TypeMBChar2K, _qz_LOG_ustring,
      Between<TypeDate, TypeTimestamp, qz_Time, std::type_identity<qz_String>>>>>>>>>>>::type;
  // clang-format on
};

/// The stored form of the values of one type code.
template <unsigned char code>
using StoredValue = _qz_LOG_datatype<typename ValueOf<code>::type, code>;

/// The value of a stored attribute that holds a T.
template <typename T>
const T& value_as(const _qz_LOG_type_base& stored) {
  return static_cast<const TypedValue<T>&>(stored).value;
}

/// Room for the stored form of any type code, aligned as that of any.
constexpr std::size_t kStoredSize = sizeof(StoredValue<TypeChar32>);

/// Build in `storage` a value of the same type code with a copy of the value, or with the value itself, which is left
/// empty. Without memory for a copy QZX_memory_alloc is thrown and nothing is built; moving never throws.
void copy_value(const _qz_LOG_type_base& value, void* storage);
void move_value(_qz_LOG_type_base& value, void* storage) noexcept;

}  // namespace qzlog

#endif  // QZLOG_ENTRY_LOGATTRIB_H
