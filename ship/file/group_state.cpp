#include "ship/file/group_state.h"

#include <charconv>

namespace qzlog_ship {

namespace {

constexpr std::string_view kHeading = "qzlog group 1\n";
constexpr std::string_view kEnd = "end\n";
constexpr std::size_t kMostClaims = 100'000;

/// Takes what it reads from the front of a text.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}

  bool take(std::string_view word) {
    if (!text_.starts_with(word)) return false;
    text_.remove_prefix(word.size());
    return true;
  }
  template <class Number>
  bool take_number(char before, Number& number) {
    if (text_.empty() || text_.front() != before) return false;
    const auto [stopped, error] = std::from_chars(text_.data() + 1, text_.data() + text_.size(), number);
    if (error != std::errc()) return false;
    text_.remove_prefix(static_cast<std::size_t>(stopped - text_.data()));
    return true;
  }
  bool is_at_end() const { return text_.empty(); }

 private:
  std::string_view text_;
};

void append(std::string& text, std::initializer_list<std::uint64_t> numbers) {
  for (const std::uint64_t number : numbers) text.append(" ").append(std::to_string(number));
  text += '\n';
}

}  // namespace

std::string GroupState::text() const {
  std::string text(kHeading);
  append(text.append("next"), {next, first});
  for (const GroupClaim& claim : claims)
    append(text.append("claim"), {claim.reader, claim.begin, claim.end, claim.first});
  return text.append(kEnd);
}

std::optional<GroupState> GroupState::parse(std::string_view text) {
  Words words(text);
  GroupState state;
  if (!words.take(kHeading) || !words.take("next") || !words.take_number(' ', state.next) ||
      !words.take_number(' ', state.first) || !words.take("\n")) {
    return std::nullopt;
  }
  while (words.take("claim")) {
    GroupClaim claim;
    const bool is_claim = words.take_number(' ', claim.reader) && words.take_number(' ', claim.begin) &&
                          words.take_number(' ', claim.end) && words.take_number(' ', claim.first) && words.take("\n");
    const bool is_right = is_claim && claim.begin < claim.end && claim.end <= state.next && claim.first < state.first;
    if (!is_right || state.claims.size() == kMostClaims) return std::nullopt;
    state.claims.push_back(claim);
  }
  if (!words.take(kEnd) || !words.is_at_end()) return std::nullopt;
  return state;
}

}  // namespace qzlog_ship
