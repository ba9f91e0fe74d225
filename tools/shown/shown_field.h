#ifndef QZLOG_TOOLS_SHOWN_SHOWN_FIELD_H
#define QZLOG_TOOLS_SHOWN_SHOWN_FIELD_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/shown/shown_events.h"

namespace qzlog_tool {

/// What of a line is shown, or of its event.
enum class ShownField {
  kMessage,
  kTime,
  kLocalTime,
  kWritten,
  kLevel,
  kLevelName,
  kId,
  kName,
  kSummary,
  kMask,
  kWriter,
  kHost,
  kPid,
  kSeq,
  kDefinitions,
  kFile,
  kLine,
  kAttribute,
};

struct FieldChoice {
  ShownField field = ShownField::kMessage;
  std::string name;            ///< as it was asked for
  std::string attribute = {};  ///< an attribute's own
  /// The events have an attribute of this name too, which is not meant.
  bool hides_attribute = false;
};

/// Reads a field's name: those of kFields below, "attribute:Free", and "Free" where an attribute of the events has that
/// name and no field has. None for another.
std::optional<FieldChoice> find_field(std::string_view name, const ShownEvents& events);

/// The names of all fields, without attributes.
std::vector<std::string_view> field_names();

/// What to say of fields that hide attributes, unless these are among the choices too: "'time' is the field; the
/// attribute of that name is 'attribute:time'".
std::vector<std::string> remarks_of_hidden(const std::vector<FieldChoice>& choices);

/// "unknown field 'mesage'", and "did you mean 'message'?" or what there is.
struct UnknownField {
  std::string reason;
  std::string hint;
};
UnknownField describe_unknown_field(std::string_view name, const ShownEvents& events);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_SHOWN_FIELD_H
