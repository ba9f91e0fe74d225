#include "lines/lost_entries.h"

#include <string_view>

#include "lines/envelope_form.h"
#include "lines/line_fault.h"
#include "lines/line_fields.h"
#include "lines/utf8_text.h"

namespace qzlog {
namespace {

/// One element of the list.
class RowReader {
 public:
  RowReader(JsonPlace row, const char* line, const char* member) : row_(row), line_(line), member_(member) {}

  LostEntries read() {
    if (row_.kind() != JsonKind::kObject) throw wrong_row(row_);
    std::string key;
    row_.for_each_member(key, [this](std::string_view name, JsonPlace value) { read_member(name, value); });
    if (seen_[kId] && seen_[kLevel] && seen_[kCount]) return entries_;
    throw wrong_row(row_);
  }

 private:
  enum Field { kId, kLevel, kCount, kSince, kFields };

  LineFault fault(JsonPlace at, std::string text) const {
    return {LineRule::kBadLost, std::move(text), static_cast<std::size_t>(at.address() - line_)};
  }

  LineFault key_fault(JsonPlace value, std::string text) const {
    LineFault of_key = fault(value, std::move(text));
    of_key.is_of_key = true;
    return of_key;
  }

  LineFault wrong_row(JsonPlace at) const {
    return fault(at, std::string("an element of '") + member_ +
                         "' has to be an object with 'id', 'level' and 'count', which are integers, and maybe "
                         "'since', which is a date and time with its zone");
  }

  void read_member(std::string_view name, JsonPlace value) {
    if (name == "id") {
      entries_.id = static_cast<std::uint32_t>(read_number(kId, value, kMaximumId));
    } else if (name == "level") {
      entries_.level = static_cast<std::uint32_t>(read_number(kLevel, value, kMaximumLevel));
    } else if (name == "count") {
      entries_.count = read_number(kCount, value, UINT64_MAX);
    } else if (name == "since") {
      read_since(value);
    } else {
      throw key_fault(value, "unknown key " + quoted(name) + " in '" + member_ +
                                 "'; an element has 'id', 'level', 'count' and 'since'");
    }
  }

  void see(Field field, JsonPlace value) {
    if (seen_[field]) throw key_fault(value, std::string("a key of an element of '") + member_ + "' is given twice");
    seen_[field] = true;
  }

  std::uint64_t read_number(Field field, JsonPlace place, std::uint64_t maximum) {
    see(field, place);
    std::string unused;
    const JsonValue value = place.value(unused);
    if (value.kind == JsonKind::kLargeInteger && value.large_integer <= maximum) return value.large_integer;
    const bool is_number = value.kind == JsonKind::kInteger && value.integer >= 0;
    if (!is_number || static_cast<std::uint64_t>(value.integer) > maximum) throw wrong_row(place);
    return static_cast<std::uint64_t>(value.integer);
  }

  void read_since(JsonPlace place) {
    see(kSince, place);
    if (place.value(entries_.since).kind != JsonKind::kText || !is_moment_form(entries_.since)) {
      throw wrong_row(place);
    }
  }

  JsonPlace row_;
  const char* line_;
  const char* member_;
  LostEntries entries_;
  bool seen_[kFields] = {};
};

}  // namespace

void read_lost_entries(JsonPlace list, const char* line, const char* member, std::vector<LostEntries>& rows) {
  rows.clear();
  if (list.kind() != JsonKind::kArray) {
    throw LineFault{LineRule::kBadLost,
                    std::string("'") + member + "' has to be an array, not " + std::string(kind_name(list.kind())),
                    static_cast<std::size_t>(list.address() - line)};
  }
  list.for_each_element([&](JsonPlace row) { rows.push_back(RowReader(row, line, member).read()); });
}

}  // namespace qzlog
