#ifndef QZLOG_TOOLS_CHOICE_EXPRESSION_LEXER_H
#define QZLOG_TOOLS_CHOICE_EXPRESSION_LEXER_H

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/choice/expression.h"

namespace qzlog_tool {

/// A word of an expression.
struct ExpressionToken {
  enum class Kind { kEnd, kWord, kQuotedName, kField, kValue, kRelation, kOpen, kClose, kComma };

  Kind kind = Kind::kEnd;
  std::size_t offset = 0;
  std::string text;                      ///< of a word, a name and a field, without their signs
  Literal value;                         ///< of kValue
  Relation relation = Relation::kEqual;  ///< of kRelation
};

/// Cuts an expression into words:
///
///   Free  and  in  true        words: letters, digits, `_`, and inside also `.` and `-`; true and false are values
///   `any name`                 a name of anything but a backquote
///   @level                     a field of the line
///   12  -3  0x1F  1.5e3        numbers; 010 is ten
///   "text"  'text'             texts, with \\ \" \' \n \r \t \* \?
///   2026-11-21  2026-11-21T08:15:30Z      times
///   = != < <= > >= ~ !~ ( ) ,
class ExpressionLexer {
 public:
  /// `text` has to outlive this object.
  explicit ExpressionLexer(std::string_view text) : text_(text) {}

  /// The next word; kEnd behind the last one. Throws ExpressionFault for what is none.
  ExpressionToken next();

 private:
  ExpressionToken read_word();
  ExpressionToken read_field();
  ExpressionToken read_quoted_name();
  ExpressionToken read_text();
  ExpressionToken read_number();
  ExpressionToken read_sign();
  void read_escape(Literal& literal);
  std::string_view take_word();

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_EXPRESSION_LEXER_H
