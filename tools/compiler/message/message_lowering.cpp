#include "tools/compiler/message/message_lowering.h"

#include <algorithm>
#include <utility>

#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

/// Without a percent sign behind it, literal text is lost on the ICU path. An unknown format renders as nothing on both
/// paths, and this name is always known.
constexpr std::string_view kClosingReference = "%_%TIMESTAMP%";

constexpr std::string_view kPercentHint = "the format P shows a number with a percent sign";

enum PathSet : unsigned { kNoPath = 0, kIcuPath = 1, kNarrowPath = 2, kAllPaths = 3 };

/// Something that keeps a text from being shown.
struct Obstacle {
  PathSet blocked;
  MessageFinding finding;
};

/// A part with the formats of its placeholder; empty for literal text.
struct ResolvedPart {
  const MessagePart* part;
  std::string formats;
};

void append_references(std::string& out, const ResolvedPart& resolved) {
  for (std::size_t i = 0; i < resolved.formats.size(); ++i) {
    if (i != 0) out += ' ';
    out += '%';
    out += resolved.formats[i];
    out += '%';
    out += resolved.part->text;
    out += '%';
  }
}

/// Literal text for an ICU message pattern. An apostrophe is special there only before a brace, which a reference
/// begins with as well, and before another apostrophe.
class PatternQuoter {
 public:
  PatternQuoter(std::string_view text, bool reference_follows) : text_(text), reference_follows_(reference_follows) {}

  std::string quote() {
    while (at_ < text_.size()) {
      const std::size_t end = std::min(text_.find_first_not_of("{}'", at_), text_.size());
      take_syntax(text_.substr(at_, end - at_), end);
      const std::size_t plain_end = std::min(text_.find_first_of("{}'", end), text_.size());
      out_ += text_.substr(end, plain_end - end);
      at_ = plain_end;
    }
    return std::move(out_);
  }

 private:
  /// A run of braces and apostrophes.
  void take_syntax(std::string_view run, std::size_t end) {
    if (run.find('{') != std::string_view::npos) {
      take_quoted(run);
      return;
    }
    for (std::size_t i = 0; i < run.size(); ++i) {
      out_ += run[i];
      const bool before_syntax = i + 1 < run.size() || (end == text_.size() && reference_follows_);
      if (run[i] == '\'' && before_syntax) out_ += '\'';
    }
  }

  /// One pair of quotes from the first brace to the end of the run: closing and reopening them in between would put
  /// apostrophes beside each other that then count as literal ones.
  void take_quoted(std::string_view run) {
    const std::size_t first_brace = run.find_first_of("{}");
    append_doubled(run.substr(0, first_brace));
    out_ += '\'';
    append_doubled(run.substr(first_brace));
    out_ += '\'';
  }

  void append_doubled(std::string_view run) {
    for (const char character : run) {
      out_ += character;
      if (character == '\'') out_ += '\'';
    }
  }

  std::string_view text_;
  bool reference_follows_;
  std::size_t at_ = 0;
  std::string out_;
};

class MessageLowering {
 public:
  MessageLowering(std::string_view text, RenderingPaths path) : text_(text), path_(path) {}

  LoweredMessage lower(const AttributeLookup& lookup) {
    parsed_ = parse_message_text(text_, result_.findings);
    check_neighbours();
    resolve(lookup);
    if (has_errors()) return std::move(result_);
    find_obstacles();
    const unsigned blocked = report_obstacles();
    if (!has_errors()) result_.stored = choose_template(blocked);
    return std::move(result_);
  }

 private:
  bool has_errors() const {
    return std::any_of(result_.findings.begin(), result_.findings.end(),
                       [](const MessageFinding& finding) { return finding.severity == Severity::kError; });
  }

  /// The percent signs of two references side by side would read as an escape.
  void check_neighbours() {
    const std::vector<MessagePart>& parts = parsed_.parts;
    for (std::size_t i = 1; i < parts.size(); ++i) {
      if (!parts[i - 1].is_placeholder() || !parts[i].is_placeholder()) continue;
      result_.findings.push_back({parts[i].offset, Severity::kError, Rule::kAdjacentPlaceholders,
                                  "no path can show two placeholders side by side", "put a character between them"});
    }
  }

  void resolve(const AttributeLookup& lookup) {
    for (const MessagePart& part : parsed_.parts) {
      ResolvedPart resolved{&part, ""};
      if (part.is_placeholder()) resolved.formats = resolve_formats(part, lookup, result_.findings);
      resolved_.push_back(std::move(resolved));
    }
  }

  void find_obstacles() {
    if (parsed_.leading_percents != 0) {
      add_obstacle(kNarrowPath, 0, Rule::kLiteralPercent, "the narrow path cannot show a percent sign", kPercentHint);
    }
    for (const std::size_t offset : parsed_.later_percents) {
      add_obstacle(kAllPaths, offset, Rule::kLiteralPercent,
                   "no path can show a percent sign here, and only the ICU path one at the very start of a message",
                   kPercentHint);
    }
    find_reference_obstacles();
  }

  void find_reference_obstacles() {
    std::size_t references = 0;
    for (const ResolvedPart& resolved : resolved_) {
      if (!resolved.part->is_placeholder()) continue;
      const bool within = references <= kMaximumIcuReferences;
      references += resolved.formats.size();
      if (within && references > kMaximumIcuReferences) {
        add_obstacle(kIcuPath, resolved.part->offset, Rule::kTooManyReferences,
                     "the ICU path shows at most ten references in a message",
                     "a time stamp without a format counts as two");
      }
      check_name(*resolved.part);
    }
  }

  /// The ICU path converts a name of n UTF-16 units into a buffer of 2 * (n + 1) bytes.
  void check_name(const MessagePart& part) {
    const std::size_t room = 2 * (utf16_length(part.text) + 1);
    if (part.text.size() <= room) return;
    add_obstacle(kIcuPath, part.offset, Rule::kLongReferenceName,
                 "the ICU path cannot refer to " + quoted(part.text) + ": the name takes " +
                     std::to_string(part.text.size()) + " bytes where it has room for " + std::to_string(room),
                 "give the attribute a shorter name, or one in ASCII");
  }

  void add_obstacle(PathSet blocked, std::size_t offset, Rule rule, std::string text, std::string_view hint) {
    obstacles_.push_back({blocked, {offset, Severity::kError, rule, std::move(text), std::string(hint)}});
  }

  PathSet asked_paths() const {
    switch (path_) {
      case RenderingPaths::kIcu:
        return kIcuPath;
      case RenderingPaths::kNarrow:
        return kNarrowPath;
      default:
        return kAllPaths;
    }
  }

  /// Returns the paths that cannot show the text.
  unsigned report_obstacles() {
    unsigned blocked = kNoPath;
    for (const Obstacle& obstacle : obstacles_) blocked |= obstacle.blocked;
    const unsigned asked = asked_paths();
    const Severity severity = (asked & ~blocked) == 0 ? Severity::kError : Severity::kWarning;
    for (Obstacle& obstacle : obstacles_) {
      if ((obstacle.blocked & asked) == 0) continue;
      obstacle.finding.severity = severity;
      result_.findings.push_back(std::move(obstacle.finding));
    }
    return blocked;
  }

  std::string choose_template(unsigned blocked) {
    std::string narrow = narrow_template();
    if (path_ == RenderingPaths::kNarrow || (blocked & kIcuPath) != 0) return narrow;
    std::string icu = icu_template();
    if (path_ == RenderingPaths::kBoth && blocked == kNoPath && icu != narrow) report_conflict();
    return icu;
  }

  void report_conflict() {
    result_.findings.push_back(
        {first_quoted_offset(), Severity::kWarning, Rule::kPathConflict,
         "no single stored text shows " + quoted(text_) +
             " on both paths: what is quoted here for the ICU path, the narrow path shows with its quotes",
         "--path icu or --path narrow says which path counts"});
  }

  /// Where the ICU template first differs from the text, as an offset into the text as it was written.
  std::size_t first_quoted_offset() const {
    for (std::size_t i = 0; i < resolved_.size(); ++i) {
      const MessagePart& part = *resolved_[i].part;
      if (part.is_placeholder()) continue;
      const std::string icu = PatternQuoter(part.text, i + 1 < resolved_.size()).quote();
      const auto [plain, ignored] = std::mismatch(part.text.begin(), part.text.end(), icu.begin(), icu.end());
      if (icu.size() == part.text.size()) continue;
      return part.offset +
             static_cast<std::size_t>(plain - part.text.begin() + std::count(part.text.begin(), plain, '}'));
    }
    return 0;
  }

  /// The closing reference changes nothing on the narrow path, and saves the text should the ICU path meet it.
  std::string narrow_template() const {
    std::string out;
    for (const ResolvedPart& resolved : resolved_) {
      if (resolved.part->is_placeholder()) {
        append_references(out, resolved);
      } else {
        out += resolved.part->text;
      }
    }
    return out += ends_in_literal() ? kClosingReference : "";
  }

  std::string icu_template() const {
    std::string out;
    for (std::size_t i = 0; i < resolved_.size(); ++i) {
      const MessagePart& part = *resolved_[i].part;
      if (part.is_placeholder()) {
        append_references(out, resolved_[i]);
        continue;
      }
      std::string_view literal = part.text;
      if (i == 0) {
        for (std::size_t count = 0; count < parsed_.leading_percents; ++count) out += "%%";
        literal.remove_prefix(parsed_.leading_percents);
      }
      out += PatternQuoter(literal, i + 1 < resolved_.size()).quote();
    }
    return out += ends_in_literal() ? kClosingReference : "";
  }

  /// A percent sign at the start is emitted where it stands and needs no closing.
  bool ends_in_literal() const {
    if (resolved_.empty() || resolved_.back().part->is_placeholder()) return false;
    return resolved_.size() > 1 || resolved_.back().part->text.size() > parsed_.leading_percents;
  }

  std::string_view text_;
  RenderingPaths path_;
  MessageParts parsed_;
  std::vector<ResolvedPart> resolved_;
  std::vector<Obstacle> obstacles_;
  LoweredMessage result_;
};

}  // namespace

LoweredMessage lower_message(std::string_view text, const AttributeLookup& lookup, RenderingPaths path) {
  return MessageLowering(text, path).lower(lookup);
}

}  // namespace qzlog_compiler
