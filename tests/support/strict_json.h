#ifndef QZLOG_TESTS_SUPPORT_STRICT_JSON_H
#define QZLOG_TESTS_SUPPORT_STRICT_JSON_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qz_test {

struct JsonMember;

/// A value of JSON as it stands in a text.
struct JsonNode {
  enum Kind { kNull, kBool, kNumber, kText, kArray, kObject };

  Kind kind = kNull;
  std::string text;  ///< of a number as written, of a text what it means, "true" or "false"
  std::vector<JsonMember> members;
  std::vector<JsonNode> elements;

  JsonNode();
  explicit JsonNode(Kind own_kind, std::string own_text = "");
  ~JsonNode();
  JsonNode(JsonNode&& other) noexcept;
  JsonNode& operator=(JsonNode&& other) noexcept;

  /// Null when there is none.
  const JsonNode* find(std::string_view name) const;
  /// The names of an object's members in their order, a blank before each.
  std::string names() const;
};

struct JsonMember {
  std::string name;
  JsonNode value;
};

// Where a member is complete.
inline JsonNode::JsonNode() = default;
inline JsonNode::JsonNode(Kind own_kind, std::string own_text) : kind(own_kind), text(std::move(own_text)) {}
inline JsonNode::~JsonNode() = default;
inline JsonNode::JsonNode(JsonNode&& other) noexcept = default;
inline JsonNode& JsonNode::operator=(JsonNode&& other) noexcept = default;

inline const JsonNode* JsonNode::find(std::string_view name) const {
  for (const JsonMember& member : members) {
    if (member.name == name) return &member.value;
  }
  return nullptr;
}

inline std::string JsonNode::names() const {
  std::string all;
  for (const JsonMember& member : members) all += ' ' + member.name;
  return all;
}

/// Reads one value of RFC 8259 and nothing else: no blanks, UTF-8 alone, no name twice. Anything else throws
/// std::runtime_error. Plain and slow.
class StrictJson {
 public:
  static JsonNode parse(std::string_view text) {
    StrictJson parser(text);
    JsonNode node = parser.value();
    if (!parser.rest_.empty()) fail("something follows the value");
    return node;
  }
  static bool is_value(std::string_view text) {
    try {
      parse(text);
      return true;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

 private:
  explicit StrictJson(std::string_view text) : rest_(text) {}

  [[noreturn]] static void fail(const std::string& what) { throw std::runtime_error(what); }
  unsigned char next() const { return rest_.empty() ? 0 : static_cast<unsigned char>(rest_[0]); }
  unsigned char take() {
    if (rest_.empty()) fail("the text ends");
    const unsigned char byte = next();
    rest_.remove_prefix(1);
    return byte;
  }
  bool take_if(std::string_view word) {
    if (!rest_.starts_with(word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }
  void expect(std::string_view word) {
    if (!take_if(word)) fail("expected " + std::string(word) + " before " + std::string(rest_.substr(0, 20)));
  }

  JsonNode value() {
    if (next() == '{') return object();
    if (next() == '[') return array();
    if (next() == '"') return JsonNode(JsonNode::kText, text());
    if (take_if("true")) return JsonNode(JsonNode::kBool, "true");
    if (take_if("false")) return JsonNode(JsonNode::kBool, "false");
    if (take_if("null")) return {};
    return number();
  }

  JsonNode object() {
    JsonNode node(JsonNode::kObject);
    expect("{");
    if (take_if("}")) return node;
    do {
      std::string name = text();
      if (node.find(name) != nullptr) fail("the name " + name + " is there twice");
      expect(":");
      node.members.push_back({std::move(name), value()});
    } while (take_if(","));
    expect("}");
    return node;
  }

  JsonNode array() {
    JsonNode node(JsonNode::kArray);
    expect("[");
    if (take_if("]")) return node;
    do {
      node.elements.push_back(value());
    } while (take_if(","));
    expect("]");
    return node;
  }

  void digits(std::string& number) {
    if (next() < '0' || next() > '9') fail("expected a digit");
    while (next() >= '0' && next() <= '9') number += static_cast<char>(take());
  }

  JsonNode number() {
    JsonNode node(JsonNode::kNumber);
    if (take_if("-")) node.text += '-';
    if (take_if("0")) {
      node.text += '0';
    } else {
      digits(node.text);
    }
    if (take_if(".")) {
      node.text += '.';
      digits(node.text);
    }
    if (next() == 'e' || next() == 'E') {
      node.text += static_cast<char>(take());
      if (next() == '+' || next() == '-') node.text += static_cast<char>(take());
      digits(node.text);
    }
    return node;
  }

  std::string text() {
    std::string result;
    expect("\"");
    while (next() != '"') {
      const unsigned char byte = take();
      if (byte < 0x20) fail("a control character");
      if (byte == '\\') {
        escape(result);
      } else if (byte < 0x80) {
        result += static_cast<char>(byte);
      } else {
        character(byte, result);
      }
    }
    take();
    return result;
  }

  void escape(std::string& result) {
    static constexpr std::string_view kLetters = "\"\\/bfnrt";
    static constexpr std::string_view kMeant = "\"\\/\b\f\n\r\t";
    const auto letter = static_cast<char>(take());
    if (letter == 'u') {
      unsigned code = 0;
      for (int i = 0; i < 4; ++i) {
        const std::size_t digit = std::string_view("0123456789abcdef").find(static_cast<char>(take()));
        if (digit == std::string_view::npos) fail("no digit");
        code = code * 16 + static_cast<unsigned>(digit);
      }
      if (code >= 0x80) fail("an escape of what needs none");
      result += static_cast<char>(code);
      return;
    }
    const std::size_t at = kLetters.find(letter);
    if (at == std::string_view::npos) fail("no escape");
    result += kMeant[at];
  }

  /// By code points, so that what is overlong, half a surrogate pair or too large is seen.
  void character(unsigned char lead, std::string& result) {
    const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC0 || lead > 0xF7) fail("no UTF-8");
    unsigned code = lead & (0x3FU >> following);
    result += static_cast<char>(lead);
    for (int i = 0; i < following; ++i) {
      const unsigned char byte = take();
      if ((byte & 0xC0U) != 0x80) fail("no UTF-8");
      code = code << 6 | (byte & 0x3FU);
      result += static_cast<char>(byte);
    }
    static constexpr unsigned kLeast[] = {0, 0x80, 0x800, 0x10000};
    if (code < kLeast[following] || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF) fail("no UTF-8");
  }

  std::string_view rest_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_STRICT_JSON_H
