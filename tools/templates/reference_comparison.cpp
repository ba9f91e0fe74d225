#include "tools/templates/reference_comparison.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/check_rules.h"

namespace qzlog_tool {

namespace {

using Kind = ReferenceDifference::Kind;
using Elsewhere = ReferenceDifference::Elsewhere;
using References = std::vector<Reference>;

bool comes_before(const Reference& a, const Reference& b) {
  const char a_format = qzlog_compiler::canonical_format(a.format);
  const char b_format = qzlog_compiler::canonical_format(b.format);
  return std::tie(a.name, a_format) < std::tie(b.name, b_format);
}

References sorted(References references) {
  std::stable_sort(references.begin(), references.end(), comes_before);
  return references;
}

/// What one sorted list has beyond the other.
References beyond(const References& list, const References& other) {
  References result;
  std::set_difference(list.begin(), list.end(), other.begin(), other.end(), std::back_inserter(result), comes_before);
  return result;
}

Elsewhere find_in(const References& other, const Reference& reference) {
  if (std::binary_search(other.begin(), other.end(), reference, comes_before)) return Elsewhere::kSameFormat;
  const bool has_name = std::any_of(other.begin(), other.end(),
                                    [&reference](const Reference& found) { return found.name == reference.name; });
  return has_name ? Elsewhere::kOtherFormat : Elsewhere::kNothing;
}

/// Takes the pairs of one attribute out of both lists.
void pair_formats(References& lost, References& added, std::vector<ReferenceDifference>& differences) {
  for (auto reference = lost.begin(); reference != lost.end();) {
    const auto other = std::find_if(added.begin(), added.end(),
                                    [&](const Reference& candidate) { return candidate.name == reference->name; });
    if (other == added.end()) {
      ++reference;
      continue;
    }
    differences.push_back({Kind::kFormat, reference->name, reference->format, other->format, Elsewhere::kOtherFormat});
    added.erase(other);
    reference = lost.erase(reference);
  }
}

std::string written(const std::string& name, char format, ReferenceNotation notation) {
  const bool is_placeholder = notation == ReferenceNotation::kPlaceholder;
  return qzlog_compiler::quoted(is_placeholder ? '{' + name + ':' + format + '}'
                                               : std::string{'%', format, '%'} + name + '%');
}

}  // namespace

std::vector<Reference> references_in(std::string_view stored, qzlog_compiler::RenderingPath form) {
  std::vector<Reference> references;
  for (qzlog_compiler::TemplatePart& part : qzlog_compiler::find_references(stored, form)) {
    if (qzlog_compiler::is_known_format(part.format)) references.push_back({std::move(part.text), part.format});
  }
  return references;
}

std::vector<ReferenceDifference> compare_references(const std::vector<Reference>& expected,
                                                    const std::vector<Reference>& found) {
  const References all_expected = sorted(expected);
  const References all_found = sorted(found);
  References lost = beyond(all_expected, all_found);
  References added = beyond(all_found, all_expected);
  std::vector<ReferenceDifference> differences;
  pair_formats(lost, added, differences);
  for (Reference& reference : lost) {
    const Elsewhere elsewhere = find_in(all_found, reference);
    differences.push_back({Kind::kLost, std::move(reference.name), reference.format, '\0', elsewhere});
  }
  for (Reference& reference : added) {
    const Elsewhere elsewhere = find_in(all_expected, reference);
    differences.push_back({Kind::kAdded, std::move(reference.name), '\0', reference.format, elsewhere});
  }
  differences.erase(std::unique(differences.begin(), differences.end()), differences.end());
  return differences;
}

qzlog_compiler::AnyRule rule_of(const ReferenceDifference& difference) {
  switch (difference.kind) {
    case Kind::kFormat:
      return CheckRule::kReferenceFormat;
    case Kind::kLost:
      return CheckRule::kReferenceLost;
    case Kind::kAdded:
      break;
  }
  return CheckRule::kReferenceAdded;
}

std::string text_of(const ReferenceDifference& difference, ReferenceNotation notation) {
  const std::string expected = written(difference.name, difference.expected, notation);
  const std::string found = written(difference.name, difference.found, notation);
  switch (difference.kind) {
    case Kind::kFormat:
      return "the translation has " + found + " where the source text has " + expected + ", another format";
    case Kind::kLost:
      return "the translation lacks " + expected + ", which the source text has";
    case Kind::kAdded:
      break;
  }
  return "the translation has " + found + ", which the source text has not, or not as often";
}

}  // namespace qzlog_tool
