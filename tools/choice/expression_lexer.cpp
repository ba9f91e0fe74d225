#include "tools/choice/expression_lexer.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <system_error>
#include <utility>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;
using Kind = ExpressionToken::Kind;

constexpr std::string_view kBlanks = " \t\r\n";

bool is_digit(char character) { return character >= '0' && character <= '9'; }

bool begins_word(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') || character == '_' ||
         static_cast<unsigned char>(character) >= 0x80;
}

bool is_in_word(char character) {
  return begins_word(character) || is_digit(character) || character == '.' || character == '-';
}

bool is_in_number(char character) { return is_in_word(character) || character == '+' || character == ':'; }

/// A zero of the form stands for any digit.
bool begins_like(std::string_view form, std::string_view text) {
  return text.size() >= form.size() && std::equal(form.begin(), form.end(), text.begin(), [](char wanted, char own) {
           return wanted == '0' ? is_digit(own) : own == wanted;
         });
}

ExpressionFault bad_value(std::size_t offset, std::string text, std::string hint = "") {
  return {ChoiceRule::kBadValue, offset, std::move(text), std::move(hint)};
}

bool read_magnitude(std::string_view digits, int base, Literal& literal) {
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, literal.magnitude, base);
  if (digits.empty() || stop != end || error == std::errc::invalid_argument) return false;
  literal.too_large = error == std::errc::result_out_of_range;
  literal.number = literal.too_large ? std::numeric_limits<double>::infinity() : static_cast<double>(literal.magnitude);
  if (literal.negative) literal.number = -literal.number;
  return true;
}

bool read_integer(std::string_view text, Literal& literal) {
  literal.kind = Literal::Kind::kInteger;
  literal.negative = text.starts_with('-');
  if (literal.negative) text.remove_prefix(1);
  const bool is_hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  return read_magnitude(text.substr(is_hexadecimal ? 2 : 0), is_hexadecimal ? 16 : 10, literal);
}

// Words such as `inf`, which the standard library takes too, do not begin with a digit.
bool read_float(std::string_view text, Literal& literal) {
  literal.kind = Literal::Kind::kFloat;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, literal.number);
  if (stop != end || error == std::errc::invalid_argument) return false;
  if (error == std::errc::result_out_of_range) literal.number = std::numeric_limits<double>::infinity();
  return true;
}

struct Sign {
  std::string_view text;
  Relation relation;
};
// Longer ones first.
constexpr Sign kSigns[] = {{"!=", Relation::kNotEqual},    {"!~", Relation::kMatchesNot},
                           {"<=", Relation::kLessOrEqual}, {">=", Relation::kGreaterOrEqual},
                           {"=", Relation::kEqual},        {"<", Relation::kLess},
                           {">", Relation::kGreater},      {"~", Relation::kMatches}};

struct ForeignSign {
  std::string_view text;
  std::string_view hint;
};
// What other languages write.
constexpr ForeignSign kForeignSigns[] = {{"==", "write '='"},  {"=~", "write '~'"},
                                         {"<>", "write '!='"}, {"&&", "write 'and'"},
                                         {"||", "write 'or'"}, {"!", "write 'not', '!=' or '!~'"}};

}  // namespace

ExpressionToken ExpressionLexer::next() {
  at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
  if (at_ == text_.size()) return {Kind::kEnd, at_, {}, {}, {}};
  const char first = text_[at_];
  if (begins_word(first)) return read_word();
  if (first == '@') return read_field();
  if (first == '`') return read_quoted_name();
  if (first == '"' || first == '\'') return read_text();
  if (is_digit(first) || first == '-' || first == '+' || first == '.') return read_number();
  return read_sign();
}

std::string_view ExpressionLexer::take_word() {
  const std::size_t begin = at_;
  while (at_ < text_.size() && is_in_word(text_[at_])) ++at_;
  return text_.substr(begin, at_ - begin);
}

ExpressionToken ExpressionLexer::read_word() {
  ExpressionToken token{Kind::kWord, at_, {}, {}, {}};
  token.text = take_word();
  if (token.text == "true" || token.text == "false") {
    token.kind = Kind::kValue;
    token.value.kind = Literal::Kind::kBool;
    token.value.offset = token.offset;
    token.value.text = token.text;
    token.value.truth = token.text == "true";
  }
  return token;
}

ExpressionToken ExpressionLexer::read_field() {
  ExpressionToken token{Kind::kField, at_++, {}, {}, {}};
  token.text = take_word();
  return token;
}

ExpressionToken ExpressionLexer::read_quoted_name() {
  ExpressionToken token{Kind::kQuotedName, at_, {}, {}, {}};
  const std::size_t end = text_.find('`', at_ + 1);
  if (end == std::string_view::npos) throw bad_value(at_, "the name has no closing backquote");
  token.text = text_.substr(at_ + 1, end - at_ - 1);
  at_ = end + 1;
  return token;
}

ExpressionToken ExpressionLexer::read_text() {
  ExpressionToken token{Kind::kValue, at_, {}, {}, {}};
  Literal& literal = token.value;
  literal.offset = at_;
  const char quote = text_[at_++];
  for (; at_ < text_.size() && text_[at_] != quote; ++at_) {
    const char character = text_[at_];
    if (character == '\\') {
      read_escape(literal);
      continue;
    }
    if (character == '*' || character == '?') literal.wildcards.push_back(literal.text.size());
    literal.text += character;
  }
  if (at_ == text_.size()) throw bad_value(token.offset, "the text has no closing quote");
  ++at_;
  if (!qzlog_compiler::is_utf8(literal.text)) throw bad_value(token.offset, "the text is not UTF-8");
  return token;
}

void ExpressionLexer::read_escape(Literal& literal) {
  constexpr std::string_view kEscapes = "\\\"'*?nrt";
  constexpr std::string_view kMeant = "\\\"'*?\n\r\t";
  ++at_;
  const std::size_t escape = at_ < text_.size() ? kEscapes.find(text_[at_]) : std::string_view::npos;
  if (escape == std::string_view::npos) {
    throw bad_value(at_ - 1, "unknown escape in a text", R"(known are \\ \" \' \* \? \n \r and \t)");
  }
  literal.text += kMeant[escape];
}

ExpressionToken ExpressionLexer::read_number() {
  ExpressionToken token{Kind::kValue, at_, {}, {}, {}};
  Literal& literal = token.value;
  literal.offset = at_;
  const std::size_t begin = at_++;
  while (at_ < text_.size() && is_in_number(text_[at_])) ++at_;
  literal.text = text_.substr(begin, at_ - begin);
  if (begins_like("0000-00-00", literal.text) || begins_like("00:00", literal.text)) {
    literal.kind = Literal::Kind::kTime;
    return token;
  }
  if (read_integer(literal.text, literal) || read_float(literal.text, literal)) return token;
  throw bad_value(begin, quoted(literal.text) + " is neither a number nor a time",
                  "other values stand in quotes: \"text\", \"-2h\", \"2026-11-21 08:15\"");
}

ExpressionToken ExpressionLexer::read_sign() {
  const std::string_view rest = text_.substr(at_);
  const std::size_t offset = at_;
  constexpr std::string_view kBrackets = "(),";
  constexpr Kind kBracketKinds[] = {Kind::kOpen, Kind::kClose, Kind::kComma};
  const std::size_t bracket = kBrackets.find(rest.front());
  if (bracket != std::string_view::npos) {
    ++at_;
    return {kBracketKinds[bracket], offset, {}, {}, {}};
  }
  const auto stands_here = [rest](const auto& sign) { return rest.starts_with(sign.text); };
  const auto* const sign = std::find_if(std::begin(kSigns), std::end(kSigns), stands_here);
  const auto* const foreign = std::find_if(std::begin(kForeignSigns), std::end(kForeignSigns), stands_here);
  if (foreign != std::end(kForeignSigns) && (sign == std::end(kSigns) || foreign->text.size() > sign->text.size())) {
    throw ExpressionFault{ChoiceRule::kBadExpression, offset, "unknown sign " + quoted(foreign->text),
                          std::string(foreign->hint)};
  }
  if (sign == std::end(kSigns)) {
    const std::size_t size = std::max<std::size_t>(qzlog_compiler::decode_utf8(rest, 0).size, 1);
    throw ExpressionFault{ChoiceRule::kBadExpression, offset, "unknown sign " + quoted(rest.substr(0, size)),
                          "comparisons are = != < <= > >= ~ !~ and in (...)"};
  }
  at_ += sign->text.size();
  return {Kind::kRelation, offset, {}, {}, sign->relation};
}

}  // namespace qzlog_tool
