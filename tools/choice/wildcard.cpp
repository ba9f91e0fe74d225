#include "tools/choice/wildcard.h"

namespace qzlog_tool {

namespace {

/// Where the character at `place` ends. Bytes that continue none count as one each at a text's beginning.
std::size_t behind_character(std::string_view text, std::size_t place) {
  constexpr unsigned kContinuationBits = 0xC0;
  constexpr unsigned kContinuation = 0x80;
  ++place;
  while (place < text.size() && (static_cast<unsigned char>(text[place]) & kContinuationBits) == kContinuation) ++place;
  return place;
}

}  // namespace

Wildcard::Wildcard(std::string_view pattern) {
  for (std::size_t place = 0; place < pattern.size(); ++place) {
    const bool is_escape = pattern[place] == '\\' && place + 1 < pattern.size();
    if (is_escape) ++place;
    const char character = pattern[place];
    if (!is_escape && (character == '*' || character == '?')) {
      add(character == '*' ? kAnyText : kOneCharacter);
    } else {
      add(static_cast<unsigned char>(character));
    }
  }
}

Wildcard::Wildcard(std::string_view text, const std::vector<std::size_t>& wildcards) {
  auto wildcard = wildcards.begin();
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (wildcard != wildcards.end() && *wildcard == place) {
      ++wildcard;
      add(text[place] == '*' ? kAnyText : kOneCharacter);
    } else {
      add(static_cast<unsigned char>(text[place]));
    }
  }
}

void Wildcard::add(Unit unit) {
  if (unit >= kOneCharacter) has_wildcards_ = true;
  if (unit == kAnyText && !units_.empty() && units_.back() == kAnyText) return;
  if (unit != kAnyText) ++least_bytes_;
  units_.push_back(unit);
}

// Behind a `*` only the last one is tried anew, with one character more: what an earlier one could take besides, the
// last one can take too.
bool Wildcard::matches(std::string_view text) const {
  constexpr auto kNone = static_cast<std::size_t>(-1);
  if (text.size() < least_bytes_) return false;
  std::size_t unit = 0;
  std::size_t place = 0;
  std::size_t unit_behind_any = kNone;
  std::size_t place_behind_any = 0;
  while (place < text.size() || unit < units_.size()) {
    if (unit < units_.size() && units_[unit] == kAnyText) {
      unit_behind_any = ++unit;
      place_behind_any = place;
    } else if (unit < units_.size() && place < text.size() && units_[unit] == kOneCharacter) {
      ++unit;
      place = behind_character(text, place);
    } else if (unit < units_.size() && place < text.size() && units_[unit] == static_cast<unsigned char>(text[place])) {
      ++unit;
      ++place;
    } else if (unit_behind_any != kNone && place_behind_any < text.size()) {
      if (unit_behind_any == units_.size()) return true;
      place_behind_any = behind_character(text, place_behind_any);
      place = place_behind_any;
      unit = unit_behind_any;
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace qzlog_tool
