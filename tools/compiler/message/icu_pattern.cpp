#include "tools/compiler/message/icu_pattern.h"

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/messagepattern.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

#include "message/format_types.h"
#include "message/icu_memory.h"
#include "message/pattern_nesting.h"
#include "tools/compiler/model/attribute_type.h"

namespace qzlog_compiler {
namespace {

struct BuiltPattern {
  icu::UnicodeString text;
  std::vector<int> reference_offsets;
  std::vector<icu::Formattable> values;  // one that fits each reference's format, then those that stay unset
};

const char* style_of(char format) { return qzlog::argument_style(qzlog::message_format_kind(format)); }

/// In its place: a text that ICU had no memory for cannot be copied.
void add_value(std::vector<icu::Formattable>& values, char format) {
  if (format == 's') {
    values.emplace_back(icu::UnicodeString("x"));
  } else if (format == 'D' || format == 'T') {
    values.emplace_back(UDate{0}, icu::Formattable::kIsDate);
  } else {
    values.emplace_back(1.0);
  }
}

BuiltPattern build_pattern(const StoredTemplate& cut) {
  BuiltPattern built;
  built.values.reserve(cut.parts.size());
  std::size_t unset = 0;
  for (const TemplatePart& part : cut.parts) {
    if (!part.is_reference()) {
      built.text += icu::UnicodeString::fromUTF8(part.text);
    } else if (is_known_format(part.format)) {
      built.reference_offsets.push_back(built.text.length());
      const std::string piece = "{" + std::to_string(built.values.size()) + style_of(part.format) + "}";
      built.text += icu::UnicodeString(piece.c_str(), -1, US_INV);
      add_value(built.values, part.format);
    } else {
      ++unset;
    }
  }
  built.values.resize(built.values.size() + unset);
  return built;
}

std::string utf8_of(const icu::UnicodeString& text) {
  std::string converted;
  return text.toUTF8String(converted);
}

/// The message of a pattern for the values, and what comes of it.
icu::UnicodeString apply(const icu::UnicodeString& pattern, const BuiltPattern& built, const icu::Locale& locale,
                         PatternOutcome& outcome, UErrorCode& status) {
  const icu::MessageFormat format(pattern, locale, status);
  outcome = U_FAILURE(status) ? PatternOutcome::kRefused : PatternOutcome::kApplies;
  if (U_FAILURE(status)) return {};
  icu::UnicodeString message;
  icu::FieldPosition position;
  format.format(built.values.data(), static_cast<int>(built.values.size()), message, position, status);
  if (U_FAILURE(status)) outcome = PatternOutcome::kInapplicable;
  return message;
}

/// `take(begin, end)`: the places where the messages of an argument begin and end, without those within them.
template <typename Take>
void for_each_message(const icu::MessagePattern& parsed, int argument, Take take) {
  for (int place = argument + 1; place < parsed.getLimitPartIndex(argument); ++place) {
    if (parsed.getPartType(place) != UMSGPAT_PART_TYPE_MSG_START) continue;
    const int end = parsed.getLimitPartIndex(place);
    take(place, end);
    place = end;
  }
}

/// An argument that stays unset selects one message, always. Asks ICU which, with the places of the messages in their
/// stead; none when ICU fails.
std::optional<int> select_message(const BuiltPattern& built, const icu::Locale& locale,
                                  const icu::MessagePattern& parsed, int argument) {
  icu::UnicodeString pattern;
  int copied = parsed.getPart(argument).getIndex();
  for_each_message(parsed, argument, [&](int begin, int end) {
    pattern += built.text.tempSubStringBetween(copied, parsed.getPart(begin).getLimit());
    pattern += icu::UnicodeString(std::to_string(begin).c_str(), -1, US_INV);
    copied = parsed.getPart(end).getIndex();
  });
  pattern += built.text.tempSubStringBetween(copied, parsed.getPart(parsed.getLimitPartIndex(argument)).getLimit());
  UErrorCode status = U_ZERO_ERROR;
  PatternOutcome outcome = PatternOutcome::kApplies;
  const std::string place = utf8_of(apply(pattern, built, locale, outcome, status));
  return U_SUCCESS(status) ? std::optional(std::atoi(place.c_str())) : std::nullopt;
}

/// Walks the pattern as MessageFormat does when it formats.
class PatternWalk {
 public:
  PatternWalk(const icu::MessagePattern& parsed, const BuiltPattern& built, const icu::Locale& locale)
      : parsed_(parsed), built_(built), locale_(locale), is_found_(built.reference_offsets.size()) {}

  PatternReading walk() {
    int begin = parsed_.getPart(0).getLimit();
    for (int i = 1; i < parsed_.countParts(); ++i) {
      const icu::MessagePattern::Part& part = parsed_.getPart(i);
      add_text(begin, part.getIndex());
      begin = part.getLimit();
      if (part.getType() != UMSGPAT_PART_TYPE_ARG_START) continue;
      const int limit = parsed_.getLimitPartIndex(i);
      begin = parsed_.getPart(limit).getLimit();
      add_argument(part.getIndex(), begin);
      note_argument(i);
      i = limit;
    }
    find_hidden();
    return std::move(reading_);
  }

  /// The places of the text's own arguments, wherever they can be seen.
  const std::vector<int>& own_arguments() const { return own_arguments_; }

 private:
  void add_text(int begin, int end) {
    if (begin >= end) return;
    const std::string text = utf8_of(built_.text.tempSubStringBetween(begin, end));
    if (reading_.parts.empty() || reading_.parts.back().kind != PatternPart::Kind::kText) {
      reading_.parts.push_back({PatternPart::Kind::kText, text});
    } else {
      reading_.parts.back().text += text;
    }
  }

  /// A reference's piece is told from the same characters in the text by where it stands.
  std::size_t reference_at(int begin) const {
    const auto& offsets = built_.reference_offsets;
    const auto found = std::lower_bound(offsets.begin(), offsets.end(), begin);
    const bool is_there = found != offsets.end() && *found == begin;
    return is_there ? static_cast<std::size_t>(found - offsets.begin()) : offsets.size();
  }

  void add_argument(int begin, int end) {
    const std::size_t reference = reference_at(begin);
    if (reference != is_found_.size()) {
      reading_.parts.push_back({PatternPart::Kind::kReference, "", reference});
    } else {
      reading_.parts.push_back({PatternPart::Kind::kArgument, utf8_of(built_.text.tempSubStringBetween(begin, end))});
    }
  }

  /// With the arguments in its messages.
  void note_argument(int argument) {
    const icu::MessagePattern::Part& start = parsed_.getPart(argument);
    const std::size_t reference = reference_at(start.getIndex());
    if (reference != is_found_.size()) {
      is_found_[reference] = true;
      return;
    }
    own_arguments_.push_back(argument);
    if (start.getArgType() == UMSGPAT_ARG_TYPE_SIMPLE || number_of(argument) >= built_.values.size()) {
      // ICU shows the number in braces in place of an argument that nobody gives.
      add_opaque(argument);
    } else if (start.getArgType() != UMSGPAT_ARG_TYPE_NONE) {
      note_messages(argument);
    }
  }

  void note_messages(int argument) {
    const bool is_unset = number_of(argument) >= is_found_.size();
    const std::optional<int> selected = is_unset ? select_message(built_, locale_, parsed_, argument) : std::nullopt;
    for_each_message(parsed_, argument, [&](int begin, int end) {
      if (selected && *selected != begin) return add_opaque(begin);
      for (int place = begin; place < end; ++place) {
        if (parsed_.getPartType(place) != UMSGPAT_PART_TYPE_ARG_START) continue;
        note_argument(place);
        place = parsed_.getLimitPartIndex(place);
      }
    });
  }

  /// A name is a zero to ICU where arguments are given by number.
  std::size_t number_of(int argument) const {
    return static_cast<std::size_t>(parsed_.getPart(argument + 1).getValue());
  }

  void add_opaque(int start) {
    opaque_.emplace_back(parsed_.getPart(start).getIndex(),
                         parsed_.getPart(parsed_.getLimitPartIndex(start)).getLimit());
  }

  void find_hidden() {
    for (std::size_t i = 0; i < is_found_.size(); ++i) {
      if (is_found_[i]) continue;
      const int offset = built_.reference_offsets[i];
      const bool in_argument = std::any_of(opaque_.begin(), opaque_.end(), [offset](const auto& range) {
        return range.first < offset && offset < range.second;
      });
      reading_.hidden.push_back({i, in_argument});
    }
  }

  const icu::MessagePattern& parsed_;
  const BuiltPattern& built_;
  const icu::Locale& locale_;
  PatternReading reading_;
  std::vector<bool> is_found_;               // of the references
  std::vector<std::pair<int, int>> opaque_;  // of the text: from where to where no argument is ever seen
  std::vector<int> own_arguments_;
};

/// Gives ICU values for a pattern.
class PatternTrial {
 public:
  PatternTrial(const BuiltPattern& built, const icu::Locale& locale) : built_(built), locale_(locale) {}

  /// The values select one message of each argument, so each is tried alone as well.
  void run(const icu::MessagePattern& parsed, const std::vector<int>& arguments, PatternReading& reading) const {
    try_pattern(built_.text, reading);
    for (const int place : arguments) {
      if (reading.outcome != PatternOutcome::kApplies) return;
      if (parsed.getPart(place).getArgType() != UMSGPAT_ARG_TYPE_NONE) try_pattern(alone(parsed, place), reading);
    }
  }

 private:
  void try_pattern(const icu::UnicodeString& pattern, PatternReading& reading) const {
    UErrorCode status = U_ZERO_ERROR;
    apply(pattern, built_, locale_, reading.outcome, status);
    if (U_FAILURE(status)) reading.error = u_errorName(status);
    if (reading.outcome != PatternOutcome::kRefused) return;
    reading.parts.clear();
    reading.hidden.clear();
  }

  /// A pattern of one argument, without the messages that it may have: those have places of their own.
  static icu::UnicodeString alone(const icu::MessagePattern& parsed, int place) {
    const icu::UnicodeString& text = parsed.getPatternString();
    const icu::MessagePattern::Part& start = parsed.getPart(place);
    const icu::UnicodeString begin = text.tempSubStringBetween(start.getIndex(), parsed.getPart(place + 1).getLimit());
    switch (start.getArgType()) {
      case UMSGPAT_ARG_TYPE_CHOICE:
        return begin + u",choice,0#}";
      case UMSGPAT_ARG_TYPE_PLURAL:
      case UMSGPAT_ARG_TYPE_SELECTORDINAL:
        return begin + u",plural,other{}}";
      case UMSGPAT_ARG_TYPE_SELECT:
        return begin + u",select,other{}}";
      default:
        return text.tempSubStringBetween(start.getIndex(), parsed.getPart(parsed.getLimitPartIndex(place)).getLimit());
    }
  }

  const BuiltPattern& built_;
  const icu::Locale& locale_;
};

PatternReading read_pattern(const BuiltPattern& built, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(status);
  if (!qzlog::parse_pattern(built.text, parsed, status)) return {{}, {}, PatternOutcome::kTooDeep};
  if (U_FAILURE(status)) return {{}, {}, PatternOutcome::kRefused, u_errorName(status)};
  PatternWalk walk(parsed, built, locale);
  PatternReading reading = walk.walk();
  // The arguments of references suit their values.
  if (!walk.own_arguments().empty()) PatternTrial(built, locale).run(parsed, walk.own_arguments(), reading);
  return reading;
}

}  // namespace

std::vector<const TemplatePart*> shown_references(const StoredTemplate& cut) {
  std::vector<const TemplatePart*> references;
  for (const TemplatePart& part : cut.parts) {
    if (part.is_reference() && is_known_format(part.format)) references.push_back(&part);
  }
  return references;
}

PatternReading read_icu_pattern(const StoredTemplate& cut, const std::string& locale) {
  return qzlog::with_icu_memory<std::bad_alloc>([&] {
    const qzlog::IcuMemory memory;
    const BuiltPattern built = build_pattern(cut);
    memory.check();
    PatternReading reading = read_pattern(built, icu::Locale(locale.c_str()));
    memory.check();
    return reading;
  });
}

}  // namespace qzlog_compiler
