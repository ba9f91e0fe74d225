#include "entry/logentry_i_failures.h"
#include "qzlog/logentry.h"

using namespace qzlog;

const _qz_LOG_attribute_entry* _qz_LOG_log_entry_imp::proceed_anywhere(const char* name) {
  const AttributeName wanted(name);
  const _qz_LOG_log_definition& definition = require_definition();
  const unsigned position = definition.find_own_position(wanted);
  const _qz_LOG_attribute_entry* const own = definition.get_own_attribute(position);
  if (own == nullptr) return _qz_LOG_log_definition::find_global_attribute(wanted);
  next_attribute_ = position + 1;
  return own;
}

/// For a scalar that is not defined (null), or defined with another type.
void _qz_LOG_log_entry_imp::refuse_attribute(const char* name, const _qz_LOG_attribute_entry* attribute) const {
  if (attribute == nullptr) {
    QZ_DEBUG_RECORD(1, kEntrySource,
                    "%s:%d _qz_LOG_log_entry_imp::_check_attribute, %s is an invalid attribute under Entry ID\n", name);
    throw_invalid_name(name);
  }
  QZ_DEBUG_RECORD(1, kEntrySource,
                  "%s:%d _qz_LOG_log_entry_imp::_check_attribute, attribute type is not sample as provide\n");
  throw_with_id<QZX_logging_attribute_type_mismatch>("Used the wrong add method under Entry ID ");
}

void _qz_LOG_log_entry_imp::_add_attribute(const char* name, _qz_LOG_type_base* value) {
  const std::unique_ptr<_qz_LOG_type_base> added(value);
  if (name == nullptr || name[0] == '\0') {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::_add_attribute, name=NULL\n");
    throw QZX_logging_illegal_argument("invalid argument", 0);
  }
  message_stale_ = true;
  attributes_.put_copy(KnownName::of(name), *added);
}

template <unsigned char code>
void _qz_LOG_log_entry_imp::add_stored(const _qz_LOG_attribute_entry& attribute, typename ValueOf<code>::type value) {
  message_stale_ = true;
  attributes_.put<code>(attribute.get_known_name(), next_attribute_ - 1, std::move(value));
}

template <unsigned char code, typename T>
void _qz_LOG_log_entry_imp::add_scalar(const char* name, T value) {
  reject_null_or_empty(name);
  add_stored<code>(*require_type(name, proceed_to(name), static_cast<qz_AttributeType>(code)), value);
}

void _qz_LOG_log_entry_imp::add_attrib_bool(const char* name, bool value) { add_scalar<TypeBool>(name, value); }
void _qz_LOG_log_entry_imp::add_attrib_1u(const char* name, unsigned char value) { add_scalar<TypeUInt1>(name, value); }
void _qz_LOG_log_entry_imp::add_attrib_1(const char* name, char value) { add_scalar<TypeSInt1>(name, value); }
void _qz_LOG_log_entry_imp::add_attrib_2u(const char* name, unsigned short value) {
  add_scalar<TypeUInt2>(name, value);
}
void _qz_LOG_log_entry_imp::add_attrib_2(const char* name, short value) { add_scalar<TypeSInt2>(name, value); }
void _qz_LOG_log_entry_imp::add_attrib_4u(const char* name, unsigned int value) { add_scalar<TypeUInt4>(name, value); }
void _qz_LOG_log_entry_imp::add_attrib_4(const char* name, int value) { add_scalar<TypeSInt4>(name, value); }
void _qz_LOG_log_entry_imp::add_attrib_float8(const char* name, double value) { add_scalar<TypeFloat>(name, value); }

void _qz_LOG_log_entry_imp::add_attrib_time(const char* name, const qz_Time& value) {
  reject_null_or_empty(name);
  const _qz_LOG_attribute_entry* const attribute = proceed_to(name);
  if (attribute == nullptr) throw_invalid_name(name);
  switch (attribute->get_type()) {
    case TypeDate:
      return add_stored<TypeDate>(*attribute, value);
    case TypeTime:
      return add_stored<TypeTime>(*attribute, value);
    case TypeTimestamp:
      return add_stored<TypeTimestamp>(*attribute, value);
    default:
      throw_with_id<QZX_logging_attribute_type_mismatch>("Use the wrong add method under Entry ID ");
  }
}

void _qz_LOG_log_entry_imp::add_attributes(std::va_list arguments) {
  // A copy of this function's own: a va_list parameter may be an array, which could not be handed on by reference.
  std::va_list rest;
  va_copy(rest, arguments);
  try {
    for (;;) {
      const char* const name = va_arg(rest, const char*);
      if (name == nullptr || name[0] == '\0') break;
      const _qz_LOG_attribute_entry* const attribute = require_definition().get_attr_info_by_name(name);
      if (attribute == nullptr) {
        QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::add_attributes, attribute_name is invalid\n");
        throw_invalid_name(name);
      }
      add_argument(name, static_cast<qz_AttributeType>(attribute->get_type()), rest);
    }
  } catch (...) {
    va_end(rest);
    throw;
  }
  va_end(rest);
}

/// Takes one value of the attribute's type and adds it. A type without values takes none, so the next argument is read
/// as a name.
void _qz_LOG_log_entry_imp::add_argument(const char* name, qz_AttributeType type, std::va_list& arguments) {
  if (is_string_attribute(type)) return add_attrib_str(name, va_arg(arguments, const char*), true);
  if (is_unicode_string_attribute(type)) return add_attrib_mbstr(name, va_arg(arguments, const char*), true);
  if (is_time_attribute(type)) {
    qz_Time time;
    time.set_to_string_value(va_arg(arguments, const char*));
    return add_attrib_time(name, time);
  }
  switch (type) {
    case TypeUInt1:
      return add_attrib_1u(name, narrowed<unsigned char>(name, va_arg(arguments, unsigned int)));
    case TypeUInt2:
      return add_attrib_2u(name, narrowed<unsigned short>(name, va_arg(arguments, unsigned int)));
    case TypeUInt4:
      return add_attrib_4u(name, va_arg(arguments, unsigned int));
    case TypeBool:
      return add_attrib_bool(name, va_arg(arguments, int) != 0);
    case TypeSInt1:
      return add_attrib_1(name, narrowed<char>(name, va_arg(arguments, int)));
    case TypeSInt2:
      return add_attrib_2(name, narrowed<short>(name, va_arg(arguments, int)));
    case TypeSInt4:
      return add_attrib_4(name, va_arg(arguments, int));
    case TypeFloat:
      return add_attrib_float8(name, va_arg(arguments, double));
    default:
      return;
  }
}

bool _qz_LOG_log_entry_imp::remove_attrib(const char* name) {
  if (name == nullptr || name[0] == '\0') {
    QZ_DEBUG_RECORD(1, kEntrySource, "%s:%d _qz_LOG_log_entry_imp::remove_attrib, name==NULL");
    throw QZX_logging_illegal_argument("invalid argument", 0);
  }
  if (!attributes_.remove(AttributeName(name))) return false;
  message_stale_ = true;
  return true;
}

int _qz_LOG_log_entry_imp::check_attribute(const char* name, qz_AttributeType& type) const {
  if (name == nullptr || name[0] == '\0') return -1;
  const AttributeName wanted(name);
  if (const _qz_LOG_type_base* const value = attributes_.find(wanted)) {
    type = static_cast<qz_AttributeType>(value->get_type());
    return 0;
  }
  const _qz_LOG_attribute_entry* const defined =
      hold_ ? hold_->definition().find_attribute(wanted) : _qz_LOG_log_definition::find_global_attribute(wanted);
  type = defined != nullptr ? static_cast<qz_AttributeType>(defined->get_type()) : TypeUnknown;
  return defined != nullptr ? 1 : -1;
}
