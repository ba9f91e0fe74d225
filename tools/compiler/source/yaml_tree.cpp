#include "tools/compiler/source/yaml_tree.h"

#include <yaml.h>

#include <algorithm>
#include <limits>
#include <new>

#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kMaximumDepth = 16;  // a definition source needs seven levels
constexpr std::size_t kMaximumSize = std::numeric_limits<std::uint32_t>::max() - 1;

class Parser {
 public:
  explicit Parser(std::string_view source) {
    if (yaml_parser_initialize(&parser_) == 0) throw std::bad_alloc();
    // Named, so that a byte order mark of UTF-16 is not followed: the source was checked as UTF-8.
    yaml_parser_set_encoding(&parser_, YAML_UTF8_ENCODING);
    if (source.data() == nullptr) source = "";  // libyaml ends the process over a null pointer
    yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(source.data()), source.size());
  }
  ~Parser() { yaml_parser_delete(&parser_); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  yaml_parser_t* get() { return &parser_; }

 private:
  yaml_parser_t parser_ = {};
};

class Event {
 public:
  explicit Event(Parser& parser) : parsed_(yaml_parser_parse(parser.get(), &event_) != 0) {}
  ~Event() { yaml_event_delete(&event_); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  bool parsed() const { return parsed_; }
  const yaml_event_t& operator*() const { return event_; }
  const yaml_event_t* operator->() const { return &event_; }

 private:
  yaml_event_t event_ = {};
  bool parsed_;
};

SourcePosition position_of(const yaml_mark_t& mark) {
  return {static_cast<std::uint32_t>(mark.line + 1), static_cast<std::uint32_t>(mark.column + 1)};
}

ScalarStyle style_of(yaml_scalar_style_t style) {
  switch (style) {
    case YAML_SINGLE_QUOTED_SCALAR_STYLE:
      return ScalarStyle::kSingleQuoted;
    case YAML_DOUBLE_QUOTED_SCALAR_STYLE:
      return ScalarStyle::kDoubleQuoted;
    case YAML_LITERAL_SCALAR_STYLE:
    case YAML_FOLDED_SCALAR_STYLE:
      return ScalarStyle::kBlock;
    default:
      return ScalarStyle::kPlain;
  }
}

/// The characters that YAML allows in a source.
bool is_yaml_character(char32_t code) {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  if (code < 0xA0) return code < 0x7F || code == 0x85;
  return code != 0xFEFF && code != 0xFFFE && code != 0xFFFF;
}

/// Reads the whole source once, so that what the parser would report without a place gets one. Returns where the source
/// ends, nothing after an error.
std::optional<SourcePosition> check_characters(std::string_view source, Findings& diagnostics) {
  SourcePosition position{1, 1};
  bool clean = true;
  for (std::size_t offset = 0; offset < source.size();) {
    const Utf8Character character = decode_utf8(source, offset);
    if (character.size == 0) {
      diagnostics.error(position, Rule::kInvalidUtf8, "the source is not UTF-8 from here on")
          .with_hint("save it as UTF-8");
      return std::nullopt;
    }
    if (!is_yaml_character(character.code)) {
      diagnostics
          .error(position, Rule::kControlCharacter,
                 "the character U+" + hexadecimal(character.code, 4) + " cannot stand in a source")
          .with_hint("write it as an escape in a double-quoted text");
      clean = false;
    }
    offset += character.size;
    const bool before_line_feed = character.code == '\r' && offset < source.size() && source[offset] == '\n';
    if (is_line_break(character.code) && !before_line_feed) {
      ++position.line;
      position.column = 1;
    } else {
      ++position.column;
    }
  }
  return clean ? std::optional(position) : std::nullopt;
}

}  // namespace

/// Turns the parser's events into the tree.
class YamlTreeBuilder {
 public:
  /// `end` is where the source ends.
  YamlTreeBuilder(std::string_view source, SourcePosition end, Findings& diagnostics)
      : source_(source), end_(end), diagnostics_(diagnostics), parser_(source) {}

  std::optional<YamlTree> build() {
    while (true) {
      const Event event(parser_);
      if (!event.parsed()) {
        report_syntax_error();
        return std::nullopt;
      }
      if (event->type == YAML_STREAM_END_EVENT) break;
      if (!take(*event)) return std::nullopt;
    }
    if (tree_.nodes_.empty()) tree_.nodes_.push_back({.position = {1, 1}});
    if (!usable_) return std::nullopt;
    return std::move(tree_);
  }

 private:
  struct OpenNode {
    std::uint32_t index;
    std::uint32_t last_child;
  };

  /// False when reading on makes no sense.
  bool take(const yaml_event_t& event) {
    switch (event.type) {
      case YAML_DOCUMENT_START_EVENT:
        return take_document(event);
      case YAML_ALIAS_EVENT:
        refuse(event, "an alias");
        return true;
      case YAML_SCALAR_EVENT:
        return take_scalar(event);
      case YAML_SEQUENCE_START_EVENT:
        check_properties(event, event.data.sequence_start.anchor, event.data.sequence_start.tag);
        return open(event, YamlKind::kSequence);
      case YAML_MAPPING_START_EVENT:
        check_properties(event, event.data.mapping_start.anchor, event.data.mapping_start.tag);
        return open(event, YamlKind::kMapping);
      case YAML_SEQUENCE_END_EVENT:
      case YAML_MAPPING_END_EVENT:
        tree_.nodes_[open_nodes_.back().index].end = position_of(event.end_mark);
        open_nodes_.pop_back();
        return true;
      default:
        return true;
    }
  }

  bool take_document(const yaml_event_t& event) {
    if (tree_.nodes_.empty()) return true;
    refuse(event, "a second document");
    return false;
  }

  bool take_scalar(const yaml_event_t& event) {
    const auto& scalar = event.data.scalar;
    check_properties(event, scalar.anchor, scalar.tag);
    YamlTree::Node node = start_node(event, YamlKind::kScalar);
    node.style = style_of(scalar.style);
    node.text_offset = static_cast<std::uint32_t>(tree_.text_.size());
    node.text_size = static_cast<std::uint32_t>(scalar.length);
    tree_.text_.append(reinterpret_cast<const char*>(scalar.value), scalar.length);
    attach(node);
    return true;
  }

  bool open(const yaml_event_t& event, YamlKind kind) {
    if (open_nodes_.size() == kMaximumDepth) {
      diagnostics_.error(position_of(event.start_mark), Rule::kYamlDepth,
                         "nested deeper than " + std::to_string(kMaximumDepth) + " levels");
      return false;
    }
    const std::uint32_t index = attach(start_node(event, kind));
    open_nodes_.push_back({index, YamlTree::kNone});
    return true;
  }

  YamlTree::Node start_node(const yaml_event_t& event, YamlKind kind) {
    YamlTree::Node node;
    node.kind = kind;
    node.position = position_of(event.start_mark);
    node.source_offset = byte_offset(event.start_mark.index);
    return node;
  }

  std::uint32_t attach(const YamlTree::Node& node) {
    const auto index = static_cast<std::uint32_t>(tree_.nodes_.size());
    tree_.nodes_.push_back(node);
    if (!open_nodes_.empty()) {
      OpenNode& parent = open_nodes_.back();
      std::uint32_t& link = parent.last_child == YamlTree::kNone ? tree_.nodes_[parent.index].first_child
                                                                 : tree_.nodes_[parent.last_child].next_sibling;
      link = index;
      parent.last_child = index;
    }
    return index;
  }

  /// The parser counts characters. Events come in the order of the source, so one walk over it serves them all.
  std::uint32_t byte_offset(std::size_t character_index) {
    while (passed_characters_ < character_index && passed_bytes_ < source_.size()) {
      passed_bytes_ += decode_utf8(source_, passed_bytes_).size;
      ++passed_characters_;
    }
    return static_cast<std::uint32_t>(passed_bytes_);
  }

  void check_properties(const yaml_event_t& event, const unsigned char* anchor, const unsigned char* tag) {
    if (anchor != nullptr) refuse(event, "an anchor");
    if (tag != nullptr) refuse(event, "a tag");
  }

  void refuse(const yaml_event_t& event, const std::string& what) {
    diagnostics_.error(position_of(event.start_mark), Rule::kYamlFeature, what + " has no place in a definition source")
        .with_hint("write the value out");
    usable_ = false;
  }

  void report_syntax_error() {
    const yaml_parser_t& parser = *parser_.get();
    if (parser.error == YAML_MEMORY_ERROR) throw std::bad_alloc();
    std::string text = parser.problem == nullptr ? "not well-formed" : parser.problem;
    if (parser.context != nullptr) text = text + " " + parser.context;
    // Where a last line has no line break, the parser adds one.
    const SourcePosition place = std::min(position_of(parser.problem_mark), end_);
    const SourcePosition begin = std::min(position_of(parser.context_mark), end_);
    Finding& error = diagnostics_.error(place, Rule::kYamlSyntax, std::move(text));
    if (parser.context != nullptr && begin != place) error.with_note(begin, "it begins here");
  }

  std::string_view source_;
  SourcePosition end_;
  Findings& diagnostics_;
  Parser parser_;
  YamlTree tree_;
  std::vector<OpenNode> open_nodes_;
  std::size_t passed_characters_ = 0;
  std::size_t passed_bytes_ = 0;
  bool usable_ = true;
};

YamlNode YamlTree::root() const { return YamlNode(*this, 0); }

std::optional<YamlTree> parse_yaml(std::string_view source, Findings& diagnostics) {
  if (source.size() > kMaximumSize) {
    diagnostics.error({1, 1}, Rule::kYamlSyntax, "a source holds at most " + std::to_string(kMaximumSize) + " bytes");
    return std::nullopt;
  }
  const std::optional<SourcePosition> end = check_characters(source, diagnostics);
  if (!end) return std::nullopt;
  return YamlTreeBuilder(source, *end, diagnostics).build();
}

}  // namespace qzlog_compiler
