#include "tools/templates/icu_pattern.h"

#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/messagepattern.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <new>

#include "message/icu_memory.h"
#include "message/pattern_nesting.h"
#include "tools/compiler/message/template_failure.h"
#include "tools/compiler/model/attribute_type.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::StoredTemplate;
using qzlog_compiler::TemplatePart;

struct BuiltPattern {
  icu::UnicodeString text;
  std::vector<int> reference_offsets;
  std::vector<icu::Formattable> values;  // one that fits each reference's format
};

const char* style_of(char format) {
  switch (format) {
    case 'C':
      return ",number,currency";
    case 'P':
      return ",number,percent";
    case 'D':
      return ",date";
    case 'T':
      return ",time";
    case 'f':
      return ",number";
    case 'd':
    case 'u':
      return ",number,##########";
    default:
      return "";
  }
}

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
  for (const TemplatePart& part : cut.parts) {
    if (!part.is_reference()) {
      built.text += icu::UnicodeString::fromUTF8(part.text);
    } else if (qzlog_compiler::is_known_format(part.format)) {
      built.reference_offsets.push_back(built.text.length());
      const std::string piece = "{" + std::to_string(built.values.size()) + style_of(part.format) + "}";
      built.text += icu::UnicodeString(piece.c_str(), -1, US_INV);
      add_value(built.values, part.format);
    }
  }
  return built;
}

std::string utf8_of(const icu::UnicodeString& text) {
  std::string converted;
  return text.toUTF8String(converted);
}

/// Walks the pattern as MessageFormat does when it formats.
class PatternWalk {
 public:
  PatternWalk(const icu::MessagePattern& parsed, const BuiltPattern& built) : parsed_(parsed), built_(built) {}

  PatternReading walk() {
    int begin = parsed_.getPart(0).getLimit();
    for (int i = 1; i < parsed_.countParts(); ++i) {
      const icu::MessagePattern::Part& part = parsed_.getPart(i);
      add_text(begin, part.getIndex());
      begin = part.getLimit();
      if (part.getType() != UMSGPAT_PART_TYPE_ARG_START) continue;
      i = parsed_.getLimitPartIndex(i);
      begin = parsed_.getPart(i).getLimit();
      add_argument(part.getIndex(), begin);
    }
    find_hidden();
    return std::move(reading_);
  }

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
  void add_argument(int begin, int end) {
    const auto& offsets = built_.reference_offsets;
    const auto found = std::lower_bound(offsets.begin(), offsets.end(), begin);
    if (found != offsets.end() && *found == begin) {
      reading_.parts.push_back({PatternPart::Kind::kReference, "", static_cast<std::size_t>(found - offsets.begin())});
    } else {
      reading_.parts.push_back({PatternPart::Kind::kArgument, utf8_of(built_.text.tempSubStringBetween(begin, end))});
    }
  }

  void find_hidden() {
    std::vector<bool> found(built_.reference_offsets.size());
    for (const PatternPart& part : reading_.parts) {
      if (part.kind == PatternPart::Kind::kReference) found[part.reference] = true;
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
      if (!found[i]) reading_.hidden.push_back(i);
    }
  }

  const icu::MessagePattern& parsed_;
  const BuiltPattern& built_;
  PatternReading reading_;
};

/// The library ends the process where ICU takes a pattern and then cannot apply it.
std::string find_failure_to_apply(const BuiltPattern& built, const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat format(built.text, icu::Locale(locale.c_str()), status);
  if (U_FAILURE(status)) return std::string("ICU refuses the pattern with ") + u_errorName(status);
  icu::UnicodeString message;
  icu::FieldPosition position;
  format.format(built.values.data(), static_cast<int>(built.values.size()), message, position, status);
  if (U_SUCCESS(status)) return "";
  return std::string("ICU takes the pattern but cannot apply it (") + u_errorName(status) +
         "), and the library then ends the process";
}

PatternReading read_pattern(const BuiltPattern& built, const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  icu::MessagePattern parsed(status);
  if (!qzlog::parse_pattern(built.text, parsed, status)) return {{}, {}, qzlog_compiler::nesting_failure()};
  if (U_FAILURE(status)) return {{}, {}, std::string("ICU refuses the pattern with ") + u_errorName(status)};
  PatternReading reading = PatternWalk(parsed, built).walk();
  reading.refusal = find_failure_to_apply(built, locale);
  return reading;
}

}  // namespace

std::vector<const TemplatePart*> shown_references(const StoredTemplate& cut) {
  std::vector<const TemplatePart*> references;
  for (const TemplatePart& part : cut.parts) {
    if (part.is_reference() && qzlog_compiler::is_known_format(part.format)) references.push_back(&part);
  }
  return references;
}

PatternReading read_icu_pattern(const StoredTemplate& cut, const std::string& locale) {
  const qzlog::IcuMemory memory;
  const BuiltPattern built = build_pattern(cut);
  if (memory.ran_out()) throw std::bad_alloc();
  PatternReading reading = read_pattern(built, locale);
  // cppcheck-suppress identicalConditionAfterEarlyExit
  if (memory.ran_out()) throw std::bad_alloc();
  return reading;
}

}  // namespace qzlog_tool
