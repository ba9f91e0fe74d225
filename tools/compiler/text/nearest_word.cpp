#include "tools/compiler/text/nearest_word.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kMaximumSize = 64;  // bytes; longer words are not compared

std::string lower_case(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return out;
}

/// How many changes make a misspelling of a word of this size.
std::size_t tolerated_changes(std::size_t size) {
  if (size < 3) return 0;
  if (size < 6) return 1;
  return size < 12 ? 2 : 3;
}

/// The changes that make one word the other.
std::size_t edit_distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> before_last;
  std::vector<std::size_t> last(to.size() + 1);
  for (std::size_t j = 0; j <= to.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::vector<std::size_t> row(to.size() + 1, i);
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
    }
    before_last = std::exchange(last, std::move(row));
  }
  return last[to.size()];
}

}  // namespace

std::string_view nearest_word(std::string_view word, std::span<const std::string_view> candidates) {
  if (word.size() > kMaximumSize) return "";
  const std::string wanted = lower_case(word);
  std::size_t limit = tolerated_changes(word.size()) + 1;
  std::string_view nearest;
  for (const std::string_view candidate : candidates) {
    const std::size_t longer = std::max(candidate.size(), word.size());
    const std::size_t shorter = std::min(candidate.size(), word.size());
    if (longer - shorter >= limit) continue;
    const std::size_t distance = edit_distance(wanted, lower_case(candidate));
    if (distance >= limit) continue;
    limit = distance;
    nearest = candidate;
  }
  return nearest;
}

std::string did_you_mean(std::string_view word, std::span<const std::string_view> candidates) {
  const std::string_view nearest = nearest_word(word, candidates);
  return nearest.empty() ? "" : "did you mean " + quoted(nearest) + "?";
}

std::string did_you_mean(std::string_view word, std::span<const std::string_view> candidates, std::string allowed) {
  const std::string question = did_you_mean(word, candidates);
  return question.empty() ? std::move(allowed) : question + " " + allowed;
}

}  // namespace qzlog_compiler
