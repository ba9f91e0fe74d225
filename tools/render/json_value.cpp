#include "tools/render/json_value.h"

#include <cstring>

#include "tools/compiler/text/utf8_text.h"
#include "tools/render/entry_error.h"

namespace qzlog_tool {

using simdjson::dom::element;
using simdjson::dom::element_type;

JsonKind kind_of(element value) {
  switch (value.type()) {
    case element_type::ARRAY:
      return JsonKind::kArray;
    case element_type::OBJECT:
      return JsonKind::kObject;
    case element_type::INT64:
      return JsonKind::kInteger;
    case element_type::UINT64:
      return JsonKind::kLargeInteger;
    case element_type::DOUBLE:
      return JsonKind::kFloat;
    case element_type::STRING:
      return JsonKind::kText;
    case element_type::BOOL:
      return JsonKind::kBool;
    case element_type::NULL_VALUE:
      break;
  }
  return JsonKind::kNull;
}

std::string_view kind_name(JsonKind kind) {
  switch (kind) {
    case JsonKind::kNull:
      return "null";
    case JsonKind::kBool:
      return "true or false";
    case JsonKind::kInteger:
    case JsonKind::kLargeInteger:
      return "an integer";
    case JsonKind::kFloat:
      return "a floating point number";
    case JsonKind::kText:
      return "a text";
    case JsonKind::kArray:
      return "an array";
    case JsonKind::kObject:
      return "an object";
  }
  return "something else";
}

// The getters cannot fail where they are called.
JsonAttribute JsonAttributes::attribute_of(simdjson::dom::key_value_pair field) {
  JsonAttribute attribute{field.key, {}, true};
  JsonValue& value = attribute.value;
  value.kind = kind_of(field.value);
  if (value.kind == JsonKind::kText) value.text = field.value.get_string().value_unsafe();
  if (value.kind == JsonKind::kBool) value.truth = field.value.get_bool().value_unsafe();
  if (value.kind == JsonKind::kInteger) value.integer = field.value.get_int64().value_unsafe();
  if (value.kind == JsonKind::kLargeInteger) value.large_integer = field.value.get_uint64().value_unsafe();
  if (value.kind == JsonKind::kFloat) value.number = field.value.get_double().value_unsafe();
  return attribute;
}

const char* c_text(std::string_view text) {
  if (!text.empty() && std::memchr(text.data(), '\0', text.size()) != nullptr) {
    throw EntryError{EntryRule::kNulCharacter,
                     "the text " + qzlog_compiler::quoted(text) + " holds U+0000, which no text can"};
  }
  return text.data();
}

}  // namespace qzlog_tool
