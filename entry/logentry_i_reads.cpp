#include <algorithm>
#include <new>
#include <vector>

#include "definitions/definition_format.h"
#include "entry/logentry_i_failures.h"
#include "foundation/atomic_word.h"
#include "qzlog/logentry.h"

using namespace qzlog;

namespace {

constexpr unsigned kThrowWhenMissing = 1;

bool is_char_type(unsigned char type) { return type >= TypeChar32 && type <= TypeChar2K; }

void visit_value(qz_LOG_AttributeVisitor& visitor, const char* name, const _qz_LOG_type_base& stored) {
  const auto type = static_cast<qz_AttributeType>(stored.get_type());
  switch (type) {
    case TypeBool:
      return visitor.VisitBool(name, type, value_as<bool>(stored));
    case TypeUInt1:
      return visitor.VisitUnsigned(name, type, value_as<unsigned char>(stored));
    case TypeUInt2:
      return visitor.VisitUnsigned(name, type, value_as<unsigned short>(stored));
    case TypeUInt4:
      return visitor.VisitUnsigned(name, type, value_as<unsigned int>(stored));
    case TypeSInt1:
      return visitor.VisitSigned(name, type, static_cast<signed char>(value_as<char>(stored)));
    case TypeSInt2:
      return visitor.VisitSigned(name, type, value_as<short>(stored));
    case TypeSInt4:
      return visitor.VisitSigned(name, type, value_as<int>(stored));
    case TypeFloat:
      return visitor.VisitFloat(name, type, value_as<double>(stored));
    default:
      break;
  }
  if (is_time_attribute(type)) return visitor.VisitTime(name, type, value_as<qz_Time>(stored));
  if (is_unicode_string_attribute(type)) {
    const auto& text = value_as<_qz_LOG_ustring>(stored);
    return visitor.VisitText(name, type, text.text(), text.length);
  }
  const auto& text = value_as<qz_String>(stored);
  visitor.VisitText(name, type, text.c_str(), text.length());
}

// More than any position in a list.
constexpr unsigned kMaxAttributes = ldf::kMostElements + 1;

/// Where a name stands in the order of a definition: own attributes, global ones, then names that it does not know.
unsigned position_of(const _qz_LOG_log_definition* definition, const KnownName* name) {
  const AttributeName wanted(name->text());
  const unsigned own = definition != nullptr ? definition->find_own_position(wanted) : kMaxAttributes;
  if (own < kMaxAttributes) return own;
  const unsigned global = _qz_LOG_log_definition::find_global_position(wanted);
  return kMaxAttributes + (global < kMaxAttributes ? global : kMaxAttributes);
}

}  // namespace

const _qz_LOG_type_base* _qz_LOG_log_entry_imp::_get_attribute_internal(const char* name, unsigned char& type) const {
  reject_null_or_empty(name);
  const AttributeName wanted(name);
  if (const _qz_LOG_type_base* const stored = attributes_.find(wanted)) {
    type = stored->get_type();
    return stored;
  }
  const _qz_LOG_attribute_entry* const attribute = require_definition().find_attribute(wanted);
  if (attribute == nullptr) throw_invalid_name(name);
  type = attribute->get_type();
  return nullptr;
}

const _qz_LOG_type_base* _qz_LOG_log_entry_imp::_get_attribute(const char* name, qz_AttributeType type) const {
  unsigned char found_type = TypeUnknown;
  const _qz_LOG_type_base* const stored = _get_attribute_internal(name, found_type);
  if (found_type != type) throw_wrong_get_method();
  return stored;
}

void _qz_LOG_log_entry_imp::throw_wrong_get_method() const {
  throw_with_id<QZX_logging_attribute_type_mismatch>("Use the wrong get method under Entry ID ");
}

template <unsigned char code>
bool _qz_LOG_log_entry_imp::read_scalar(const char* name, typename ValueOf<code>::type& value) const {
  const _qz_LOG_type_base* const stored = _get_attribute(name, static_cast<qz_AttributeType>(code));
  if (stored == nullptr) return false;
  value = value_as<typename ValueOf<code>::type>(*stored);
  return true;
}

bool _qz_LOG_log_entry_imp::get_attrib_bool(const char* name, bool& value) const {
  return read_scalar<TypeBool>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_1u(const char* name, unsigned char& value) const {
  return read_scalar<TypeUInt1>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_1(const char* name, char& value) const {
  return read_scalar<TypeSInt1>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_2u(const char* name, unsigned short& value) const {
  return read_scalar<TypeUInt2>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_2(const char* name, short& value) const {
  return read_scalar<TypeSInt2>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_4u(const char* name, unsigned int& value) const {
  return read_scalar<TypeUInt4>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_4(const char* name, int& value) const {
  return read_scalar<TypeSInt4>(name, value);
}
bool _qz_LOG_log_entry_imp::get_attrib_float8(const char* name, double& value) const {
  return read_scalar<TypeFloat>(name, value);
}

bool _qz_LOG_log_entry_imp::get_attrib_time(const char* name, qz_Time& value) const {
  reject_null_or_empty(name);
  if (QZ_strcmp(name, "TIMESTAMP") == 0) {
    value = timestamp_;
    return true;
  }
  unsigned char type = TypeUnknown;
  const _qz_LOG_type_base* const stored = _get_attribute_internal(name, type);
  if (stored == nullptr) return false;
  if (!is_time_attribute(static_cast<qz_AttributeType>(type))) throw_wrong_get_method();
  value = value_as<qz_Time>(*stored);
  return true;
}

bool _qz_LOG_log_entry_imp::get_attrib_str(const char* name, const char*& value) const {
  unsigned char type = TypeUnknown;
  const _qz_LOG_type_base* const stored = _get_attribute_internal(name, type);
  if (!is_char_type(type)) throw_wrong_get_method();
  if (stored == nullptr) return false;
  value = value_as<qz_String>(*stored).c_str();
  return true;
}

bool _qz_LOG_log_entry_imp::get_attrib_mbstr(const char* name, const char*& value) const {
  unsigned char type = TypeUnknown;
  const _qz_LOG_type_base* const stored = _get_attribute_internal(name, type);
  if (!is_unicode_string_attribute(static_cast<qz_AttributeType>(type))) throw_wrong_get_method();
  if (stored == nullptr) return false;
  value = value_as<_qz_LOG_ustring>(*stored).text();
  return true;
}

/// What the reads that return a value share: a missing one is `value`, the default, or an exception.
template <typename T>
T _qz_LOG_log_entry_imp::value_or_default(const char* name, OutParameterRead<T> read, T value) const {
  if (!(this->*read)(name, value) && load_word(global_operation_mode) == kThrowWhenMissing) {
    qz_String text("<QZX_logging_attribute_not_found> Attribute ");
    text += name;
    text += " cannot be located.";
    throw QZX_logging_attribute_not_found(text.c_str(), 0);
  }
  return value;
}

bool _qz_LOG_log_entry_imp::get_attrib_bool(const char* name) const {
  return value_or_default<bool>(name, &_qz_LOG_log_entry_imp::get_attrib_bool, false);
}
unsigned char _qz_LOG_log_entry_imp::get_attrib_1u(const char* name) const {
  return value_or_default<unsigned char>(name, &_qz_LOG_log_entry_imp::get_attrib_1u, 0);
}
char _qz_LOG_log_entry_imp::get_attrib_1(const char* name) const {
  return value_or_default<char>(name, &_qz_LOG_log_entry_imp::get_attrib_1, 0);
}
unsigned short _qz_LOG_log_entry_imp::get_attrib_2u(const char* name) const {
  return value_or_default<unsigned short>(name, &_qz_LOG_log_entry_imp::get_attrib_2u, 0);
}
short _qz_LOG_log_entry_imp::get_attrib_2(const char* name) const {
  return value_or_default<short>(name, &_qz_LOG_log_entry_imp::get_attrib_2, 0);
}
unsigned int _qz_LOG_log_entry_imp::get_attrib_4u(const char* name) const {
  return value_or_default<unsigned int>(name, &_qz_LOG_log_entry_imp::get_attrib_4u, 0);
}
int _qz_LOG_log_entry_imp::get_attrib_4(const char* name) const {
  return value_or_default<int>(name, &_qz_LOG_log_entry_imp::get_attrib_4, 0);
}
double _qz_LOG_log_entry_imp::get_attrib_float8(const char* name) const {
  return value_or_default<double>(name, &_qz_LOG_log_entry_imp::get_attrib_float8, 0.0);
}
qz_Time _qz_LOG_log_entry_imp::get_attrib_time(const char* name) const {
  return value_or_default<qz_Time>(name, &_qz_LOG_log_entry_imp::get_attrib_time, qz_Time());
}
const char* _qz_LOG_log_entry_imp::get_attrib_str(const char* name) const {
  return value_or_default<const char*>(name, &_qz_LOG_log_entry_imp::get_attrib_str, "");
}
const char* _qz_LOG_log_entry_imp::get_attrib_mbstr(const char* name) const {
  return value_or_default<const char*>(name, &_qz_LOG_log_entry_imp::get_attrib_mbstr, "");
}

int _qz_LOG_log_entry_imp::get_attrib_as_4(const char* name) const {
  unsigned char type = TypeUnknown;
  _get_attribute_internal(name, type);
  switch (type) {
    case TypeBool:
      return 0;
    case TypeUInt1:
      return get_attrib_1u(name);
    case TypeSInt1:
      return static_cast<signed char>(get_attrib_1(name));
    case TypeUInt2:
      return get_attrib_2u(name);
    case TypeSInt2:
      return get_attrib_2(name);
    case TypeUInt4:
      return static_cast<int>(get_attrib_4u(name));
    case TypeSInt4:
      return get_attrib_4(name);
    default:
      throw_wrong_get_method();
  }
}

void _qz_LOG_log_entry_imp::visit_attributes(qz_LOG_AttributeVisitor& visitor) const {
  for (const NamedValue& named : values_in_definition_order()) visit_value(visitor, named.name, *named.value);
}

std::vector<_qz_LOG_log_entry_imp::NamedValue> _qz_LOG_log_entry_imp::values_in_definition_order() const try {
  std::vector<std::pair<unsigned, NamedValue>> placed;
  attributes_.for_each([&](const KnownName* name, const _qz_LOG_type_base& value) {
    placed.emplace_back(position_of(get_definition(), name), NamedValue{name->text(), &value});
  });
  std::sort(placed.begin(), placed.end(), [](const auto& left, const auto& right) {
    if (left.first != right.first) return left.first < right.first;
    return QZ_strcmp(left.second.name, right.second.name) < 0;
  });
  std::vector<NamedValue> values(placed.size());
  std::transform(placed.begin(), placed.end(), values.begin(), [](const auto& place) { return place.second; });
  return values;
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}
