#include "tools/compiler/message/message_text.h"

#include <array>
#include <utility>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

std::string unknown_format_hint(std::string_view format) {
  std::array<std::string_view, kFormatCharacters.size()> formats;
  for (std::size_t i = 0; i < formats.size(); ++i) formats[i] = kFormatCharacters.substr(i, 1);
  return did_you_mean(format, formats, "formats are " + listed_formats(kFormatCharacters));
}

class MessageParser {
 public:
  MessageParser(std::string_view text, std::vector<MessageFinding>& findings) : text_(text), findings_(findings) {}

  MessageParts parse() {
    while (at_ < text_.size()) step();
    return std::move(result_);
  }

 private:
  void step() {
    const char first = text_[at_];
    const bool is_brace = first == '{' || first == '}';
    const bool doubled = is_brace && at_ + 1 < text_.size() && text_[at_ + 1] == first;
    if (!is_brace || doubled) {
      take_literal(first, doubled ? 2 : 1);
    } else if (first == '{') {
      take_placeholder();
    } else {
      refuse(at_, Rule::kUnbalancedBrace, "a closing brace without an opening one", "write '}}' for a literal brace");
      ++at_;
    }
  }

  void take_literal(char character, std::size_t written_size) {
    if (character == '%') note_percent();
    if (result_.parts.empty() || result_.parts.back().is_placeholder()) {
      result_.parts.push_back({MessagePart::Kind::kLiteral, "", '\0', at_});
    }
    result_.parts.back().text += character;
    at_ += written_size;
  }

  void note_percent() {
    if (at_ == result_.leading_percents) {
      ++result_.leading_percents;
    } else if (text_[at_ - 1] != '%') {
      result_.later_percents.push_back(at_);
    }
  }

  void take_placeholder() {
    const std::size_t end = text_.find_first_of("{}", at_ + 1);
    if (end == std::string_view::npos || text_[end] == '{') {
      refuse(at_, Rule::kUnbalancedBrace, "a placeholder without its closing brace", "write '{{' for a literal brace");
      ++at_;
      return;
    }
    const std::string_view inside = text_.substr(at_ + 1, end - at_ - 1);
    const std::size_t colon = inside.find(':');
    const std::string_view name = inside.substr(0, colon);
    const std::string_view format = colon == std::string_view::npos ? "" : inside.substr(colon + 1);
    add_placeholder(name, format, colon != std::string_view::npos);
    at_ = end + 1;
  }

  void add_placeholder(std::string_view name, std::string_view format, bool has_format) {
    if (name.empty()) {
      refuse(at_, Rule::kBadPlaceholder, "a placeholder without a name", "write {Name}, or '{{' for a literal brace");
      return;
    }
    if (has_format && (format.size() != 1 || !is_known_format(format[0]))) {
      refuse(at_, Rule::kUnknownFormat, "unknown format " + quoted(format), unknown_format_hint(format));
      format = "";
    }
    result_.parts.push_back(
        {MessagePart::Kind::kPlaceholder, std::string(name), format.empty() ? '\0' : format[0], at_});
  }

  void refuse(std::size_t offset, Rule rule, std::string text, std::string hint) {
    findings_.push_back({offset, Severity::kError, rule, std::move(text), std::move(hint)});
  }

  std::string_view text_;
  std::vector<MessageFinding>& findings_;
  MessageParts result_;
  std::size_t at_ = 0;
};

}  // namespace

MessageParts parse_message_text(std::string_view text, std::vector<MessageFinding>& findings) {
  return MessageParser(text, findings).parse();
}

}  // namespace qzlog_compiler
