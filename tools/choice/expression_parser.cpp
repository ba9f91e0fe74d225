#include "tools/choice/expression_parser.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "tools/choice/expression_lexer.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::quoted;
using Kind = ExpressionToken::Kind;
using NodeKind = ExpressionNode::Kind;

/// In nothing else than the case of letters, of which `word` has small ones.
bool differs_in_case(std::string_view word, std::string_view written) {
  return std::equal(word.begin(), word.end(), written.begin(), written.end(), [](char small, char own) {
    return small == own || (own >= 'A' && own <= 'Z' && small == own - 'A' + 'a');
  });
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text), lexer_(text) {}

  Expression parse() {
    advance();
    if (token_.kind == Kind::kEnd) throw fault("the expression is empty", "such as 'Free < 10 and exists(Pool)'");
    expression_.root = parse_or();
    if (token_.kind == Kind::kClose) throw fault("no parenthesis is open here");
    if (token_.kind != Kind::kEnd) throw expected("'and', 'or' or the end", kJoining);
    return std::move(expression_);
  }

 private:
  static constexpr std::array<std::string_view, 2> kJoining = {"and", "or"};
  static constexpr std::array<std::string_view, 2> kRelationWords = {"in", "not"};
  static constexpr std::array<std::string_view, 3> kBeginnings = {"not", "exists", "missing"};
  static constexpr std::array<std::string_view, 2> kTruths = {"true", "false"};

  void advance() { token_ = lexer_.next(); }
  bool is_word(std::string_view word) const { return token_.kind == Kind::kWord && token_.text == word; }

  ExpressionFault fault(std::string text, std::string hint = "") const {
    return {ChoiceRule::kBadExpression, token_.offset, std::move(text), std::move(hint)};
  }
  template <std::size_t size>
  ExpressionFault expected(const std::string& what, const std::array<std::string_view, size>& words) const {
    return fault("expected " + what + ", not " + shown_token(),
                 token_.kind == Kind::kWord ? qzlog_compiler::did_you_mean(token_.text, words) : "");
  }
  ExpressionFault expected(const std::string& what) const { return expected(what, std::array<std::string_view, 0>()); }

  std::string shown_token() const {
    if (token_.kind == Kind::kEnd) return "the end";
    if (token_.kind == Kind::kWord || token_.kind == Kind::kQuotedName) return quoted(token_.text);
    if (token_.kind == Kind::kField) return quoted("@" + token_.text);
    if (token_.kind == Kind::kValue) return "the value " + quoted(token_.value.text);
    return quoted(text_.substr(token_.offset, 1));
  }

  std::size_t add_node(ExpressionNode node) {
    expression_.nodes.push_back(std::move(node));
    return expression_.nodes.size() - 1;
  }

  template <class ParsePart>
  std::size_t parse_joined(std::string_view word, NodeKind kind, ParsePart&& parse_part) {
    ExpressionNode node{kind, 0, {parse_part()}};
    while (is_word(word)) {
      advance();
      node.parts.push_back(parse_part());
    }
    return node.parts.size() == 1 ? node.parts.front() : add_node(std::move(node));
  }

  std::size_t parse_or() {
    return parse_joined("or", NodeKind::kOr, [this] { return parse_and(); });
  }
  std::size_t parse_and() {
    return parse_joined("and", NodeKind::kAnd, [this] { return parse_factor(); });
  }

  std::size_t parse_factor() {
    bool is_negated = false;
    for (; is_word("not"); advance()) is_negated = !is_negated;
    const std::size_t node = parse_plain_factor();
    return is_negated ? add_node({NodeKind::kNot, 0, {node}}) : node;
  }

  std::size_t parse_plain_factor() {
    if (token_.kind == Kind::kOpen) return parse_parentheses();
    if (is_word("exists") || is_word("missing")) return parse_existence();
    return parse_comparison();
  }

  std::size_t parse_parentheses() {
    if (++depth_ > kMostExpressionDepth) {
      throw ExpressionFault{ChoiceRule::kLargeExpression, token_.offset, "more than 200 parentheses are open here"};
    }
    const std::size_t opening = token_.offset;
    advance();
    const std::size_t node = parse_or();
    close(opening);
    --depth_;
    return node;
  }

  void close(std::size_t opening) {
    if (token_.kind == Kind::kEnd) {
      throw ExpressionFault{ChoiceRule::kBadExpression, opening, "the parenthesis is not closed"};
    }
    if (token_.kind != Kind::kClose) throw expected("'and', 'or' or ')'", kJoining);
    advance();
  }

  std::size_t parse_existence() {
    const bool is_missing = token_.text == "missing";
    WrittenComparison comparison;
    comparison.relation_offset = token_.offset;
    const std::string word = token_.text;
    advance();
    if (token_.kind != Kind::kOpen) {
      throw fault("expected '(' behind '" + word + "', not " + shown_token(),
                  "an attribute that is called '" + word + "' stands in backquotes");
    }
    const std::size_t opening = token_.offset;
    advance();
    comparison.operand = parse_operand();
    if (token_.kind == Kind::kEnd) close(opening);
    if (token_.kind != Kind::kClose) throw expected("')'");
    advance();
    const std::size_t node = add_comparison(std::move(comparison));
    return is_missing ? add_node({NodeKind::kNot, 0, {node}}) : node;
  }

  Operand parse_operand() {
    const bool is_keyword = is_word("and") || is_word("or") || is_word("in");
    const bool is_name = token_.kind == Kind::kWord || token_.kind == Kind::kQuotedName || token_.kind == Kind::kField;
    if (!is_name || is_keyword) {
      throw fault("expected a comparison, not " + shown_token(),
                  token_.kind == Kind::kValue ? "the attribute stands before the value, as in 'Free < 10'" : "");
    }
    Operand operand{token_.text, token_.kind == Kind::kField, token_.offset};
    advance();
    return operand;
  }

  std::size_t parse_comparison() {
    WrittenComparison comparison;
    comparison.operand = parse_operand();
    comparison.relation_offset = token_.offset;
    if (token_.kind == Kind::kRelation) {
      comparison.relation = token_.relation;
      advance();
      comparison.values.push_back(parse_value());
    } else if (is_word("in") || is_word("not")) {
      parse_list(comparison);
    } else {
      throw no_comparison(comparison.operand);
    }
    return add_comparison(std::move(comparison));
  }

  // What stands before may be meant for a word of the language, or for the first half of a name.
  ExpressionFault no_comparison(const Operand& operand) const {
    ExpressionFault found =
        expected("a comparison (= != < <= > >= ~ !~ in) behind " + quoted(operand.name), kRelationWords);
    if (found.hint.empty()) found.hint = qzlog_compiler::did_you_mean(operand.name, kBeginnings);
    if (found.hint.empty() && token_.kind == Kind::kWord) {
      found.hint = "a name with a blank stands in backquotes: `" + operand.name + ' ' + token_.text + '`';
    }
    return found;
  }

  void parse_list(WrittenComparison& comparison) {
    comparison.relation = is_word("not") ? Relation::kNotIn : Relation::kIn;
    if (comparison.relation == Relation::kNotIn) advance();
    if (!is_word("in")) throw expected("'in'", kRelationWords);
    advance();
    if (token_.kind != Kind::kOpen) throw expected("'(' and a list of values");
    const std::size_t opening = token_.offset;
    do {
      advance();
      comparison.values.push_back(parse_value());
    } while (token_.kind == Kind::kComma);
    if (token_.kind == Kind::kEnd) close(opening);
    if (token_.kind != Kind::kClose) throw expected("',' or ')'");
    advance();
  }

  Literal parse_value() {
    if (token_.kind == Kind::kValue) {
      Literal value = std::move(token_.value);
      advance();
      return value;
    }
    throw fault("expected a value, not " + shown_token(), value_hint());
  }

  std::string value_hint() const {
    if (token_.kind != Kind::kWord && token_.kind != Kind::kQuotedName) return "";
    const std::string_view truth = qzlog_compiler::nearest_word(token_.text, kTruths);
    if (differs_in_case(truth, token_.text)) return qzlog_compiler::did_you_mean(token_.text, kTruths);
    return qzlog_compiler::did_you_mean(token_.text, kTruths, "a text stands in quotes: \"" + token_.text + "\"");
  }

  std::size_t add_comparison(WrittenComparison comparison) {
    expression_.comparisons.push_back(std::move(comparison));
    return add_node({NodeKind::kComparison, expression_.comparisons.size() - 1, {}});
  }

  std::string_view text_;
  ExpressionLexer lexer_;
  ExpressionToken token_;
  Expression expression_;
  unsigned depth_ = 0;
};

}  // namespace

Expression parse_expression(std::string_view text) {
  if (text.size() > kMostExpressionBytes) {
    throw ExpressionFault{ChoiceRule::kLargeExpression, 0, "the expression has more than 65536 bytes"};
  }
  return Parser(text).parse();
}

}  // namespace qzlog_tool
