#include "tools/choice/where.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "tools/choice/expression_parser.h"
#include "tools/compiler/text/line_cut.h"

namespace qzlog_tool {

namespace {

// An expression of thousands of wrong names is not worth looking through.
constexpr std::size_t kMostErrors = 20;

qzlog_compiler::TextPlace place_of(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto line = static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n')) + 1;
  const std::string_view beginning = before.substr(before.rfind('\n') + 1);  // npos + 1 is 0
  return {line, static_cast<std::uint32_t>(qzlog_compiler::character_count(beginning)) + 1};
}

void add(const ExpressionFault& fault, std::string_view text, qzlog_compiler::Findings& findings) {
  qzlog_compiler::Finding& finding = findings.error(place_of(text, fault.offset), fault.rule, fault.text);
  if (!fault.hint.empty()) finding.with_hint(fault.hint);
}

}  // namespace

std::optional<Where> Where::compile(const std::string& text, const KnownDefinitions& known, const ReaderClock& clock,
                                    qzlog_compiler::Findings& findings) {
  Expression expression;
  try {
    expression = parse_expression(text);
  } catch (const ExpressionFault& fault) {
    add(fault, text, findings);
    return std::nullopt;
  }
  Where where;
  std::size_t errors = 0;
  for (const WrittenComparison& written : expression.comparisons) {
    try {
      where.comparisons_.push_back(Comparison::compile(written, known, clock));
    } catch (const ExpressionFault& fault) {
      add(fault, text, findings);
      if (++errors == kMostErrors) return std::nullopt;
    }
  }
  if (errors != 0) return std::nullopt;
  where.first_ = where.add_steps(expression, expression.root, false, kTaken, kRefused);
  return where;
}

// From the end to the beginning, so that each step is known to which another leads. A `not` goes down to the
// comparisons: what stands above them then asks for truth alone, and an answer "it may be" leads nowhere else than the
// true one. The depth of the tree is bounded.
std::size_t Where::add_steps(const Expression& expression, std::size_t node, bool is_negated, std::size_t if_true,
                             std::size_t if_false) {
  const ExpressionNode& at = expression.nodes[node];
  if (at.kind == ExpressionNode::Kind::kNot) {
    return add_steps(expression, at.parts.front(), !is_negated, if_true, if_false);
  }
  if (at.kind == ExpressionNode::Kind::kComparison) {
    steps_.push_back({at.comparison, is_negated, if_true, if_false});
    return steps_.size() - 1;
  }
  const bool needs_all = (at.kind == ExpressionNode::Kind::kAnd) != is_negated;
  std::size_t first = needs_all ? if_true : if_false;
  for (auto part = at.parts.rbegin(); part != at.parts.rend(); ++part) {
    first = needs_all ? add_steps(expression, *part, is_negated, first, if_false)
                      : add_steps(expression, *part, is_negated, if_true, first);
  }
  return first;
}

template <class Test>
bool Where::run(Test&& test) const {
  std::size_t at = first_;
  while (at < steps_.size()) {
    const Step& step = steps_[at];
    at = test(comparisons_[step.comparison], step.is_negated) ? step.if_true : step.if_false;
  }
  return at == kTaken;
}

bool Where::holds(const qz_LOG_EntryLine& line) {
  return run(
      [&](const Comparison& comparison, bool is_negated) { return comparison.holds(line, texts_) != is_negated; });
}

bool Where::may_hold(const RawLine& line) const {
  return run(
      [&](const Comparison& comparison, bool is_negated) { return comparison.may_be(!is_negated, line, texts_); });
}

}  // namespace qzlog_tool
