#ifndef QZLOG_TOOLS_STATS_ENTRY_SCAN_H
#define QZLOG_TOOLS_STATS_ENTRY_SCAN_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qzlog/logattrib.h"
#include "tools/compiler/model/definition_model.h"

namespace qzlog_tool {

/// The value of an attribute as a line has it.
struct ScannedValue {
  enum class Kind { kAbsent, kInteger, kBool, kText };

  Kind kind = Kind::kAbsent;
  bool is_float = false;  ///< an integer that stands for a floating-point number
  bool truth = false;
  long long integer = 0;
  std::string_view text = {};
};

/// What a line says of its entry. Texts are valid as long as the line.
struct ScannedEntry {
  static constexpr std::size_t kMostValues = 2;

  std::uint32_t id = 0;
  unsigned level = 0;
  bool has_time = false;
  long long moment = 0;          ///< in seconds since 1970-01-01 00:00:00 GMT
  std::string_view writer = {};  ///< empty: none
  ScannedValue values[kMostValues];
};

/// Reads lines by their bytes alone, where these leave no doubt that the library would read an entry, and which: lines
/// as its writers write them, with attributes, types, ranges and lengths of the definitions. Says nothing about other
/// lines, right or wrong. Texts count as the library stores them in UTF-8.
class EntryScan {
 public:
  /// `wanted`: the attributes whose values are asked for, at most ScannedEntry::kMostValues; an empty name is none.
  explicit EntryScan(std::vector<std::string> wanted = {}) : wanted_(std::move(wanted)) {}

  /// What entries may be. With two files nothing is ever known: how they add up is the library's to say.
  void add(const qzlog_compiler::DefinitionModel& model);

  /// False where only the library can tell; `entry` is undefined then. `line` is without its line feed.
  bool scan(std::string_view line, ScannedEntry& entry);

 private:
  class Cursor;

  /// An attribute that values can be scanned of.
  struct Attribute {
    std::string key;  // "NAME":
    qz_AttributeType type;
    int wanted;  // index, -1: not asked for
  };
  struct Event {
    std::vector<Attribute> attributes;
    bool may_have_time = false;
  };

  Event make_event(const qzlog_compiler::EntryDefinition& entry, const qzlog_compiler::DefinitionModel& model) const;
  const Event* find_event(std::uint32_t id);
  bool scan_envelope(Cursor& line, ScannedEntry& entry);
  bool scan_time(Cursor& line, long long& moment);
  static bool scan_attributes(Cursor& line, const Event& event, ScannedEntry& entry);

  std::vector<std::string> wanted_;
  std::unordered_map<std::uint32_t, Event> events_;
  std::size_t models_ = 0;

  // What lines repeat is not looked at again.
  std::uint32_t last_id_ = 0;
  const Event* last_event_ = nullptr;
  std::string last_writer_;
  std::string last_definitions_;
  char last_date_[10] = {};            // YYYY-MM-DD
  std::optional<long long> last_day_;  // its first second
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_ENTRY_SCAN_H
