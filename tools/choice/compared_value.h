#ifndef QZLOG_TOOLS_CHOICE_COMPARED_VALUE_H
#define QZLOG_TOOLS_CHOICE_COMPARED_VALUE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/choice/expression.h"
#include "tools/choice/known_definitions.h"
#include "tools/choice/reader_moment.h"
#include "tools/choice/wildcard.h"

namespace qzlog_tool {

/// A value of an expression, as what each kind of attributes and fields can take it for.
struct ComparedValue {
  std::optional<long long> integer;  ///< one of more than 64 bits is the last of its sign
  std::optional<std::uint64_t> natural;
  std::optional<double> number;
  std::optional<bool> truth;
  std::optional<long long> moment;       ///< in seconds since 1970-01-01 00:00:00 GMT
  std::optional<long long> day;          ///< of a time without a time of day: days since 1970-01-01
  std::optional<long long> time_of_day;  ///< of one without a day: seconds since midnight
  std::string moment_text = {};          ///< the same as lines have it
  std::optional<Wildcard> text;          ///< without wildcards where the relation does not know them
};

/// What values are compared with.
struct ComparedThing {
  std::string name;  ///< for findings: "'Free'"
  TypeSet types;
  std::string type_text;       ///< "UInt2 or UInt4"; empty for a field
  std::uint64_t most = 0;      ///< of integers
  long long least = 0;         ///< of integers
  bool stores_breaks = false;  ///< texts hold line breaks as attributes store them
};

/// The attribute of a comparison; throws ExpressionFault where one of its types does not have the relation.
ComparedThing compared_attribute(const WrittenComparison& written, const KnownAttribute& known);
/// A field of the line, with the type that its values have; `most` bounds numbers.
ComparedThing compared_field(const WrittenComparison& written, qz_AttributeType type, std::uint64_t most);

/// Throws ExpressionFault for a value that none of the types has. `clock`: the reader's.
ComparedValue compared_value(const Literal& literal, Relation relation, const ComparedThing& thing,
                             const ReaderClock& clock);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_COMPARED_VALUE_H
