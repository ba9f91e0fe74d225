#ifndef QZLOG_TOOLS_OPTIONS_VALUE_KIND_H
#define QZLOG_TOOLS_OPTIONS_VALUE_KIND_H

#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// What can stand in the place of an option's value, as far as its name on the help page tells.
struct ValueKind {
  enum class Type { kText, kChoice, kFile, kFolder, kEvent, kExplained, kExpression };

  Type type = Type::kText;
  /// The choices, or the suffixes of the files ("." included; none: any file).
  std::vector<std::string> items;
};

/// Reads names such as "icu|narrow|both", "{icu,narrow}", "0-9", "ll_CC" and "ZONE" (choices), "STD.ldf|STD.yaml",
/// "SRC", "FILE" and "DIR/NAME" (files), "DIR" (folders), "EVENT" (events' names), "ID|NAME|RULE" (events' or rules'
/// names), "EXPRESSION" (with attributes' names) and "ATTRIBUTE". Everything else is a text of which nothing is known.
ValueKind value_kind(std::string_view name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_VALUE_KIND_H
