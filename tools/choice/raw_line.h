#ifndef QZLOG_TOOLS_CHOICE_RAW_LINE_H
#define QZLOG_TOOLS_CHOICE_RAW_LINE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_tool {

/// An attribute's name as it is looked for in a line.
class RawKey {
 public:
  explicit RawKey(std::string_view name);

  /// False for names that may be written in several ways, that lines have for something else, or whose attributes an
  /// entry may have without the line's saying so: nothing is then known of them.
  bool is_plain() const { return is_plain_; }
  /// With its quotes.
  std::string_view text() const { return text_; }

 private:
  std::string text_;
  bool is_plain_;
};

/// What a line says of an attribute.
struct RawValue {
  enum class Kind {
    kUnknown,  ///< only reading the line tells
    kAbsent,
    kInteger,
    kBool,
    kText,
  };

  Kind kind = Kind::kUnknown;
  long long integer = 0;
  bool truth = false;
  std::string_view text = {};  ///< between its quotes; without escapes
};

/// A line of which its beginning was read, as writers of lines write it: the members up to the attributes in one order,
/// without blanks and escapes. Everything that it says holds if the line is an entry; whether it is one is not asked.
/// What it does not say may be anything.
class RawLine {
 public:
  explicit RawLine(std::string_view line);

  bool has_id() const { return has_id_; }
  std::uint32_t id() const { return id_; }
  bool has_level() const { return has_level_; }
  unsigned level() const { return level_; }
  /// YYYY-MM-DDTHH:MM:SSZ, which sorts as the moments do; empty where nothing is known of it.
  std::string_view time() const { return time_; }
  bool has_writer() const { return has_writer_; }
  std::string_view writer() const { return writer_; }
  bool has_seq() const { return has_seq_; }
  std::uint64_t seq() const { return seq_; }
  bool has_definitions() const { return has_definitions_; }
  /// What tells the definitions apart that its writer had.
  std::string_view definitions() const { return definitions_; }

  /// `key` has to be plain.
  RawValue find(const RawKey& key) const;
  /// Whether a text may be another one than it says: "bytes" may stand in the line.
  bool may_give_bytes() const;

 private:
  class Reader;

  RawValue value_at(std::size_t place) const;
  RawValue text_at(std::size_t place) const;
  RawValue bool_at(bool truth, std::size_t end) const;
  RawValue integer_at(std::size_t place) const;
  bool ends_value(std::size_t place) const;
  bool has_escaped_characters() const;

  std::string_view line_;
  std::string_view time_ = {};
  std::string_view writer_ = {};
  std::string_view definitions_ = {};
  std::uint64_t seq_ = 0;
  std::size_t attributes_ = 0;  // behind their brace; 0: not known
  std::uint32_t id_ = 0;
  unsigned level_ = 0;
  bool has_id_ = false;
  bool has_level_ = false;
  bool has_writer_ = false;
  bool has_seq_ = false;
  bool has_definitions_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_RAW_LINE_H
