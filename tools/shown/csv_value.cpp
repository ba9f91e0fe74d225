#include "tools/shown/csv_value.h"

namespace qzlog_tool {

void append_csv(std::string_view value, std::string& out) {
  if (value.find_first_of("\",\r\n") == std::string_view::npos) {
    out += value;
    return;
  }
  out += '"';
  for (const char character : value) {
    if (character == '"') out += '"';
    out += character;
  }
  out += '"';
}

}  // namespace qzlog_tool
