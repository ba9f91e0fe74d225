#include "tests/tools/compiler/random_message.h"

#include <array>
#include <cstddef>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"

namespace random_model {
namespace {

constexpr int kMaximumPieces = 13;
constexpr std::size_t kMaximumIcuReferences = 10;

// "\uFEFF" is what a byte order mark is inside a text; "#" and "|" mean something in ICU's plural patterns.
const std::array<std::string, 16> kCharacters = {"{", "}",  "'", "{",  "'", "}", "a",      " ",
                                                 "é", "漢", "😀", "\n", "#", "|", "\uFEFF", "_"};

class MessageMaker {
 public:
  MessageMaker(qz_test::SeededRandom& random, const std::vector<Referable>& referables, MessageKind kind)
      : random_(random), kind_(kind) {
    for (const Referable& referable : referables) {
      if (qzlog_compiler::accepted_formats(referable.type).empty()) continue;
      if (wild() || fits_icu(referable.name)) referables_.push_back(referable);
    }
  }

  MessagePieces make() {
    for (long long left = random_.between(0, kMaximumPieces); left > 0; --left) {
      if (!referables_.empty() && random_.one_in(2)) {
        add_reference();
      } else {
        add_text();
      }
    }
    return std::move(pieces_);
  }

 private:
  // The room that the ICU path has for a name.
  static bool fits_icu(const std::string& name) { return name.size() <= 2 * (qzlog_compiler::utf16_length(name) + 1); }

  bool wild() const { return kind_ == MessageKind::kAnything; }

  void add_reference() {
    const auto last = static_cast<long long>(referables_.size()) - 1;
    const Referable& referable = referables_[static_cast<std::size_t>(random_.between(0, last))];
    const std::string_view formats = qzlog_compiler::accepted_formats(referable.type);
    char format = '\0';
    if (random_.one_in(3)) format = formats[static_cast<std::size_t>(random_.between(0, std::ssize(formats) - 1))];
    const std::size_t count = format == '\0' ? qzlog_compiler::default_formats(referable.type).size() : 1;
    if (!wild() && references_ + count > kMaximumIcuReferences) return;
    if (!wild() && !pieces_.empty() && pieces_.back().is_reference) pieces_.push_back({false, "-", '\0'});
    references_ += count;
    pieces_.push_back({true, referable.name, format});
  }

  void add_text() {
    MessagePiece piece;
    for (long long left = random_.between(0, 4); left > 0; --left) piece.text += character(piece.text);
    if (piece.text.empty()) return;
    if (pieces_.empty() || pieces_.back().is_reference) {
      pieces_.push_back(std::move(piece));
    } else {
      pieces_.back().text += piece.text;
    }
  }

  std::string character(const std::string& before) {
    const bool at_start = pieces_.empty() && before.empty();
    const bool percent =
        at_start ? kind_ != MessageKind::kEverywhere && random_.one_in(8) : wild() && random_.one_in(60);
    return percent ? "%" : kCharacters[static_cast<std::size_t>(random_.between(0, std::ssize(kCharacters) - 1))];
  }

  qz_test::SeededRandom& random_;
  MessageKind kind_;
  std::vector<Referable> referables_;
  MessagePieces pieces_;
  std::size_t references_ = 0;
};

std::string with_doubled_braces(const std::string& text) {
  std::string result;
  for (const char byte : text) result.append(byte == '{' || byte == '}' ? 2 : 1, byte);
  return result;
}

std::string placeholder(const MessagePiece& reference) {
  return "{" + reference.text + (reference.format == '\0' ? "" : std::string(":") + reference.format) + "}";
}

}  // namespace

MessagePieces random_message(qz_test::SeededRandom& random, const std::vector<Referable>& referables,
                             MessageKind kind) {
  return MessageMaker(random, referables, kind).make();
}

std::string written(const MessagePieces& pieces) {
  std::string result;
  for (const MessagePiece& piece : pieces) {
    result += piece.is_reference ? placeholder(piece) : with_doubled_braces(piece.text);
  }
  return result;
}

std::string shown(const MessagePieces& pieces,
                  const std::function<std::string(const std::string& name, char format)>& value) {
  std::string result;
  for (const MessagePiece& piece : pieces) {
    result += piece.is_reference ? value(piece.text, piece.format) : piece.text;
  }
  return result;
}

}  // namespace random_model
