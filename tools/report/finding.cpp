#include "tools/report/finding.h"

#include <algorithm>
#include <unordered_map>

namespace qzlog_compiler {

std::string_view severity_name(Severity severity) { return severity == Severity::kError ? "error" : "warning"; }

Finding& Finding::with_note(TextPlace where, std::string what) {
  if (where.known()) notes.push_back({file, where, std::move(what)});
  return *this;
}

Finding& Finding::with_hint(std::string advice) {
  hint = std::move(advice);
  return *this;
}

Finding& Findings::error(TextPlace place, AnyRule rule, std::string text) {
  return add(place, Severity::kError, rule, std::move(text));
}

Finding& Findings::warning(TextPlace place, AnyRule rule, std::string text) {
  return add(place, Severity::kWarning, rule, std::move(text));
}

Finding& Findings::error(std::string file, TextPlace place, AnyRule rule, std::string text) {
  return add({std::move(file), place, Severity::kError, rule, std::move(text)});
}

Finding& Findings::warning(std::string file, TextPlace place, AnyRule rule, std::string text) {
  return add({std::move(file), place, Severity::kWarning, rule, std::move(text)});
}

Finding& Findings::add(TextPlace place, Severity severity, AnyRule rule, std::string text) {
  return add({file_, place, severity, rule, std::move(text)});
}

Finding& Findings::add(Finding finding) {
  if (is_error(finding)) ++error_count_;
  return found_.emplace_back(std::move(finding));
}

void Findings::remove_warnings(const std::function<bool(const Finding&)>& unwanted) {
  std::erase_if(found_, [&unwanted](const Finding& finding) { return !is_error(finding) && unwanted(finding); });
}

std::vector<Finding> Findings::take_sorted() {
  std::unordered_map<std::string, std::size_t> order;
  for (const Finding& finding : found_) order.try_emplace(finding.file, order.size());
  const auto place = [&order](const Finding& finding) { return std::pair(order.at(finding.file), finding.place); };
  std::stable_sort(found_.begin(), found_.end(),
                   [&](const Finding& a, const Finding& b) { return place(a) < place(b); });
  error_count_ = 0;
  return std::exchange(found_, {});
}

bool is_error(const Finding& finding) { return finding.severity == Severity::kError; }

bool has_errors(std::span<const Finding> findings) { return std::any_of(findings.begin(), findings.end(), is_error); }

}  // namespace qzlog_compiler
