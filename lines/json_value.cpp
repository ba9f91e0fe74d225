#include "lines/json_value.h"

namespace qzlog {

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

}  // namespace qzlog
