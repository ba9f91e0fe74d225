#ifndef QZLOG_TOOLS_CHOICE_EXPRESSION_H
#define QZLOG_TOOLS_CHOICE_EXPRESSION_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/choice/choice_rules.h"

namespace qzlog_tool {

// An expression as it is written, before anything is known of the types in it.

/// Thrown for what is wrong with an expression, at a byte of it.
struct ExpressionFault {
  ChoiceRule rule;
  std::size_t offset;
  std::string text;
  std::string hint = {};  ///< may be empty
};

/// A value as it is written.
struct Literal {
  enum class Kind { kInteger, kFloat, kText, kTime, kBool };

  Kind kind = Kind::kText;
  std::size_t offset = 0;
  std::string text;                    ///< of a text without quotes and escapes, else as it is written
  std::vector<std::size_t> wildcards;  ///< places in a text of the `*` and `?` that no backslash stands before
  bool negative = false;               ///< an integer
  bool too_large = false;              ///< an integer of more than 64 bits
  std::uint64_t magnitude = 0;
  double number = 0;  ///< of an integer and a floating point number; infinite for one that is too large
  bool truth = false;
};

enum class Relation {
  kEqual,
  kNotEqual,
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kMatches,
  kMatchesNot,
  kIn,
  kNotIn,
  kExists,
};

/// What a comparison asks for: an attribute, or a field of the line.
struct Operand {
  std::string name;
  bool is_field = false;
  std::size_t offset = 0;
};

struct WrittenComparison {
  Operand operand;
  Relation relation = Relation::kExists;
  std::size_t relation_offset = 0;
  std::vector<Literal> values;  ///< none for kExists, any number for kIn and kNotIn, else one
};

/// A node of the tree: a comparison, or what joins nodes.
struct ExpressionNode {
  enum class Kind { kComparison, kAnd, kOr, kNot };

  Kind kind = Kind::kComparison;
  std::size_t comparison = 0;      ///< its place among the expression's comparisons
  std::vector<std::size_t> parts;  ///< places of nodes
};

struct Expression {
  std::vector<WrittenComparison> comparisons;
  std::vector<ExpressionNode> nodes;
  std::size_t root = 0;
};

inline constexpr std::size_t kMostExpressionBytes = 65536;
/// How deep parentheses may stand in others. The tree is at most twice as deep and one for each `not`.
inline constexpr unsigned kMostExpressionDepth = 200;

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_EXPRESSION_H
