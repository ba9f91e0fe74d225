#ifndef QZLOG_TOOLS_CHOICE_COMPARISON_H
#define QZLOG_TOOLS_CHOICE_COMPARISON_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/entry_lines.h"
#include "tools/choice/compared_value.h"
#include "tools/choice/expression.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/raw_line.h"
#include "tools/choice/reader_moment.h"
#include "tools/choice/stored_text.h"
#include "tools/logs/attribute_value.h"

namespace qzlog_tool {

/// What the fields of a line are, in the order of their names' table.
enum class LineField { kId, kLevel, kMask, kName, kSeq, kTime, kWriter };

/// One comparison, ready to be made.
///
/// An attribute that an entry does not have, or that its definition does not know, makes every comparison false, != and
/// !~ too; so does a field that a line does not have. A value of a kind that the entry's type cannot have is another
/// value: = is false then and != true.
class Comparison {
 public:
  /// Throws ExpressionFault. `known` has to outlive this object; `clock`: the reader's.
  static Comparison compile(const WrittenComparison& written, const KnownDefinitions& known, const ReaderClock& clock);

  /// Takes no memory. The line has to be one of an entry.
  bool holds(const qz_LOG_EntryLine& line, StoredTexts& texts) const;
  /// False where the line's bytes tell that `holds` gives the opposite of `wanted`, whatever else is in the line.
  bool may_be(bool wanted, const RawLine& line, const StoredTexts& texts) const;

 private:
  explicit Comparison(const KnownDefinitions& known) : known_(&known) {}

  /// Of the value that was read last: throws ExpressionFault where no event is the one that it asks for.
  void check_event(const Literal& literal) const;
  bool holds_attribute(const qz_LOG_LogEntry& entry, StoredTexts& texts) const;
  bool holds_field(const qz_LOG_EntryLine& line) const;
  bool holds_name(const qz_LOG_EntryLine& line) const;
  std::optional<bool> attribute_known_from(const RawLine& line, const StoredTexts& texts) const;
  std::optional<bool> text_known_from(std::string_view text, const RawLine& line, const StoredTexts& texts) const;
  std::optional<bool> field_known_from(const RawLine& line) const;
  std::optional<bool> event_known_from(const RawLine& line) const;

  template <class OrderOf>
  bool compare_by(OrderOf&& order_of) const;
  template <class Own, class Member>
  bool compare(const Own& own, Member&& member) const;
  bool compare_integer(long long own) const { return compare(own, &ComparedValue::integer); }
  bool compare_moment(long long own) const { return compare(own, &ComparedValue::moment); }
  bool compare_stored_moment(const StoredMoment& own) const;
  bool compare_text(std::string_view own) const;
  bool compare_line_time(std::string_view own) const;

  const KnownDefinitions* known_;
  Relation relation_ = Relation::kExists;
  bool is_field_ = false;
  LineField field_ = LineField::kId;
  std::string name_;  // of an attribute
  TypeSet types_;     // of an attribute
  RawKey key_{""};
  std::vector<ComparedValue> values_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_COMPARISON_H
