#include "tools/compiler/message/stored_template.h"

#include <optional>
#include <utility>

#include "message/template_walk.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_compiler {
namespace {

struct Token {
  enum class Kind { kText, kFormat, kName };

  Kind kind = Kind::kText;
  std::string_view text;  // of a text or a name
  char format = '\0';
  std::size_t offset = 0;
};

struct TokenList {
  std::vector<Token> tokens;
  std::string failure;
};

/// Cuts a template as the library does, and tells where each token stands. Nothing is cut behind a failure.
class Tokenizer {
 public:
  Tokenizer(std::string_view stored, RenderingPath form) : stored_(stored), form_(form) {}

  TokenList run() {
    const auto end = qzlog::walk_template<std::size_t>(*this);
    // The ICU path looks no further than to the last percent sign.
    take_text(end.start, is_icu() ? end.position : stored_.size());
    return std::move(list_);
  }

  std::optional<std::size_t> find_percent(std::size_t from) const {
    const std::size_t percent = stored_.find('%', from);
    const bool is_over = percent == std::string_view::npos || !list_.failure.empty();
    return is_over ? std::nullopt : std::optional<std::size_t>(percent);
  }
  bool is_percent(std::size_t at) const { return at < stored_.size() && stored_[at] == '%'; }

  void take_text(std::size_t begin, std::size_t end) {
    if (begin < end) list_.tokens.push_back({Token::Kind::kText, stored_.substr(begin, end - begin), '\0', begin});
  }
  /// On the narrow path it shows nothing.
  void take_escape(std::size_t percent) {
    list_.tokens.push_back({Token::Kind::kText, stored_.substr(percent, is_icu() ? 1 : 0), '\0', percent});
  }
  void take_format(std::size_t percent) {
    if (percent + 1 == stored_.size() && !is_icu()) list_.failure = "a percent sign ends the text";
    list_.tokens.push_back({Token::Kind::kFormat, {}, format_at(percent + 1), percent});
  }
  void take_name(std::size_t begin, std::size_t end) {
    const std::string_view name = stored_.substr(begin, end - begin);
    if (is_icu() && name.size() > 2 * (utf16_length(name) + 1)) {
      list_.failure = "the ICU path has no room for the name " + quoted(name);
    }
    list_.tokens.push_back({Token::Kind::kName, name, '\0', begin});
  }

 private:
  bool is_icu() const { return form_ == RenderingPath::kIcu; }

  /// The low eight bits of the UTF-16 unit on the ICU path, which reads the unit behind the text as 0xFFFF.
  char format_at(std::size_t offset) const {
    if (offset == stored_.size()) return '\xFF';
    if (!is_icu()) return stored_[offset];
    const char32_t code = decode_utf8(stored_, offset).code;
    constexpr char32_t kFirstOfPairs = 0x10000;
    const char32_t unit = code < kFirstOfPairs ? code : 0xD800 + ((code - kFirstOfPairs) >> 10);
    return static_cast<char>(unit & 0xFF);
  }

  std::string_view stored_;
  RenderingPath form_;
  TokenList list_;
};

/// Of a format without a name: `offset` is that of its percent sign.
std::string failure_of_format(std::string_view stored, std::size_t offset) {
  if (offset + 1 == stored.size()) return "a percent sign ends the text";
  std::string format;
  append_printable(format, stored, offset + 1);
  return "the format '" + format + "' has no attribute behind it";
}

}  // namespace

StoredTemplate cut_template(std::string_view stored, RenderingPath form) {
  TokenList list = Tokenizer(stored, form).run();
  StoredTemplate result{{}, std::move(list.failure)};
  const std::vector<Token>& tokens = list.tokens;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    if (token.kind == Token::Kind::kText && !token.text.empty()) {
      result.parts.push_back({TemplatePart::Kind::kText, std::string(token.text), '\0', token.offset});
    }
    // A name without a format, which an open reference leaves behind, shows nothing.
    if (token.kind != Token::Kind::kFormat) continue;
    const bool has_name = i + 1 < tokens.size() && tokens[i + 1].kind == Token::Kind::kName;
    if (has_name) {
      ++i;
      result.parts.push_back({TemplatePart::Kind::kReference, std::string(tokens[i].text), token.format, token.offset});
    } else if (result.failure.empty()) {
      result.failure = failure_of_format(stored, token.offset);
    }
  }
  return result;
}

bool ends_in_open_percent(std::string_view stored) {
  return !Tokenizer(stored, RenderingPath::kNarrow).run().failure.empty();
}

std::vector<TemplatePart> find_references(std::string_view stored, RenderingPath form) {
  std::vector<TemplatePart> parts = cut_template(stored, form).parts;
  std::erase_if(parts, [](const TemplatePart& part) { return !part.is_reference(); });
  return parts;
}

}  // namespace qzlog_compiler
