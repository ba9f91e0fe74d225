#ifndef QZLOG_TOOLS_CHOICE_EXPRESSION_PARSER_H
#define QZLOG_TOOLS_CHOICE_EXPRESSION_PARSER_H

#include <string_view>

#include "tools/choice/expression.h"

namespace qzlog_tool {

/// Reads an expression:
///
///   EXPRESSION   TERM, or several with `or` between them
///   TERM         FACTOR, or several with `and` between them
///   FACTOR       `not` FACTOR; ( EXPRESSION ); exists(NAME); missing(NAME); or COMPARISON
///   COMPARISON   NAME RELATION VALUE; NAME in (VALUE, ...); NAME not in (VALUE, ...)
///
/// Throws ExpressionFault for what is none, and for one that is too large.
Expression parse_expression(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_EXPRESSION_PARSER_H
