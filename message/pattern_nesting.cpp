#include "message/pattern_nesting.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace qzlog {

namespace {

constexpr UChar kApostrophe = u'\'';
constexpr UChar kLessOrEqual = 0x2264;  // separates number and message of a choice, as '#' and '<' do

/// What a message belongs to, which decides how it ends and what an apostrophe quotes in it.
enum class Parent { kNone, kChoice, kPlural, kSelect, kSimple };

Parent parent_of_type(std::string_view type) {
  if (type == "choice") return Parent::kChoice;
  if (type == "plural" || type == "selectordinal") return Parent::kPlural;
  if (type == "select") return Parent::kSelect;
  return Parent::kSimple;
}

/// Reads a pattern as ICU's parser does, with the messages that are open in a list instead of on the stack. It goes on
/// where ICU would refuse the pattern, and so asks for no more of it than is needed to find the messages.
class NestingWalk {
 public:
  NestingWalk(const icu::UnicodeString& pattern, UMessagePatternApostropheMode mode)
      : text_(pattern.getBuffer(), static_cast<std::size_t>(std::max(pattern.length(), 0))),
        quotes_always_(mode == UMSGPAT_APOS_DOUBLE_REQUIRED) {}

  int walk(int limit) {
    while (at_ < text_.size() && deepest_ <= limit) step();
    return deepest_;
  }

 private:
  Parent parent() const { return open_.empty() ? Parent::kNone : open_.back(); }

  void step() {
    const UChar unit = text_[at_++];
    if (unit == kApostrophe) {
      pass_apostrophe();
    } else if (unit == u'{') {
      begin_argument();
    } else if (unit == u'}' && !open_.empty()) {
      end_message();
    } else if (unit == u'|' && parent() == Parent::kChoice) {
      pass_choice_separator();
    }
  }

  void enter() { deepest_ = std::max(deepest_, ++depth_); }
  void leave() { --depth_; }

  /// Past the next of these units; the end of the text, and 0, when there is none.
  UChar pass_next_of(std::u16string_view units) {
    const std::size_t found = text_.find_first_of(units, at_);
    at_ = found == std::u16string_view::npos ? text_.size() : found + 1;
    return found == std::u16string_view::npos ? UChar{0} : text_[found];
  }

  bool begins_quote(UChar next) const {
    return quotes_always_ || next == u'{' || next == u'}' || (next == u'|' && parent() == Parent::kChoice) ||
           (next == u'#' && parent() == Parent::kPlural);
  }

  void pass_apostrophe() {
    if (at_ == text_.size()) return;
    const UChar next = text_[at_];
    if (next == kApostrophe) {
      ++at_;
    } else if (begins_quote(next)) {
      ++at_;
      pass_quoted_text();
    }
  }

  /// A doubled apostrophe does not end it.
  void pass_quoted_text() {
    while (pass_next_of(u"'") != 0 && at_ < text_.size() && text_[at_] == kApostrophe) ++at_;
  }

  void begin_argument() {
    enter();
    const UChar behind_name = pass_next_of(u",}");
    const std::size_t type_begin = at_;
    const UChar behind_type = behind_name == u',' ? pass_next_of(u",}") : behind_name;
    if (behind_type == u'}') {
      leave();
    } else if (behind_type == u',') {
      begin_style(text_.substr(type_begin, at_ - 1 - type_begin));
    }
  }

  void begin_style(std::u16string_view type) {
    switch (const Parent found = parent_of_type(letters_of(type).view())) {
      case Parent::kChoice:
        open_message(found);
        return pass_choice_separator();
      case Parent::kPlural:
      case Parent::kSelect:
        return begin_message(found);
      case Parent::kSimple:
      case Parent::kNone:
        return pass_simple_style();
    }
  }

  /// The letters of an argument's type in lower case, if they are few enough for one that takes messages.
  struct Letters {
    static constexpr std::size_t kMost = std::string_view("selectordinal").size();
    std::string_view view() const { return {text, count <= kMost ? count : 0}; }
    char text[kMost] = {};
    std::size_t count = 0;
  };
  static Letters letters_of(std::u16string_view type) {
    Letters letters;
    for (const UChar unit : type) {
      const auto lower = static_cast<UChar>(unit | 0x20);
      if (lower < u'a' || lower > u'z') continue;
      if (letters.count < Letters::kMost) letters.text[letters.count] = static_cast<char>(lower);
      ++letters.count;
    }
    return letters;
  }

  void open_message(Parent of) {
    enter();
    open_.push_back(of);
  }

  /// The next message of a plural or select argument, or the argument's end.
  void begin_message(Parent of) {
    const UChar found = pass_next_of(u"{}");
    if (found == u'{') {
      open_message(of);
    } else if (found == u'}') {
      leave();
    }
  }

  /// Behind the number that begins each message of a choice.
  void pass_choice_separator() {
    constexpr UChar kSeparators[] = {u'#', u'<', kLessOrEqual};
    pass_next_of({kSeparators, std::size(kSeparators)});
  }

  void end_message() {
    const Parent ended = parent();
    open_.pop_back();
    leave();
    // The brace that ends the last message of a choice ends the argument as well.
    if (ended == Parent::kChoice) return leave();
    begin_message(ended);
  }

  void pass_simple_style() {
    int inner = 1;
    while (inner != 0) {
      const UChar found = pass_next_of(u"'{}");
      if (found == 0) return;
      if (found == kApostrophe) {
        pass_next_of(u"'");
      } else {
        inner += found == u'{' ? 1 : -1;
      }
    }
    leave();
  }

  std::u16string_view text_;
  bool quotes_always_;
  std::size_t at_ = 0;
  std::vector<Parent> open_;
  int depth_ = 0;
  int deepest_ = 0;
};

}  // namespace

int bound_pattern_nesting(const icu::UnicodeString& pattern, UMessagePatternApostropheMode mode, int limit) {
  return NestingWalk(pattern, mode).walk(limit);
}

int pattern_nesting(const icu::MessagePattern& parsed) {
  int depth = -1;  // the whole pattern is a message too
  int deepest = 0;
  for (int i = 0; i < parsed.countParts(); ++i) {
    const UMessagePatternPartType type = parsed.getPartType(i);
    if (type == UMSGPAT_PART_TYPE_ARG_START || type == UMSGPAT_PART_TYPE_MSG_START) {
      deepest = std::max(deepest, ++depth);
    } else if (type == UMSGPAT_PART_TYPE_ARG_LIMIT || type == UMSGPAT_PART_TYPE_MSG_LIMIT) {
      --depth;
    }
  }
  return deepest;
}

bool parse_pattern(const icu::UnicodeString& pattern, icu::MessagePattern& parsed, UErrorCode& status) {
  if (bound_pattern_nesting(pattern, parsed.getApostropheMode(), kMostPatternNesting) > kMostPatternNesting) {
    return false;
  }
  parsed.parse(pattern, nullptr, status);
  return U_FAILURE(status) || pattern_nesting(parsed) <= kMostPatternNesting;
}

}  // namespace qzlog
