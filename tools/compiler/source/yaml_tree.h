#ifndef QZLOG_TOOLS_COMPILER_SOURCE_YAML_TREE_H
#define QZLOG_TOOLS_COMPILER_SOURCE_YAML_TREE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_compiler {

enum class YamlKind : std::uint8_t { kScalar, kSequence, kMapping };
enum class ScalarStyle : std::uint8_t { kPlain, kSingleQuoted, kDoubleQuoted, kBlock };

class YamlNode;

/// A YAML document as it stands in the source: scalars are texts, not yet typed; keys may repeat.
/// Nodes stand in one array and texts in one buffer, so that a source of a million entries stays affordable.
class YamlTree {
 public:
  YamlTree() = default;
  YamlTree(YamlTree&&) = default;
  YamlTree& operator=(YamlTree&&) = default;

  YamlNode root() const;

 private:
  friend class YamlNode;
  friend class YamlTreeBuilder;

  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  struct Node {
    YamlKind kind = YamlKind::kScalar;
    ScalarStyle style = ScalarStyle::kPlain;
    SourcePosition position;
    SourcePosition end = {};
    std::uint32_t source_offset = 0;
    std::uint32_t text_offset = 0;
    std::uint32_t text_size = 0;
    std::uint32_t first_child = kNone;
    std::uint32_t next_sibling = kNone;
  };

  std::vector<Node> nodes_;
  std::string text_;
};

/// A handle to one node, valid as long as its tree stands unmoved.
class YamlNode {
 public:
  YamlKind kind() const { return node().kind; }
  ScalarStyle style() const { return node().style; }
  SourcePosition position() const { return node().position; }
  /// Of a sequence or a mapping: where it has ended, at the latest where the next node begins.
  SourcePosition end_position() const { return node().end; }

  /// Where the node begins in the source, in bytes.
  std::size_t source_offset() const { return node().source_offset; }

  /// The text of a scalar, quoting and folding undone.
  std::string_view text() const { return std::string_view(tree_->text_).substr(node().text_offset, node().text_size); }

  /// Calls `visit(item)` for each item of a sequence.
  template <typename Visitor>
  void for_each_item(Visitor&& visit) const {
    for (std::uint32_t child = node().first_child; child != YamlTree::kNone;
         child = tree_->nodes_[child].next_sibling) {
      visit(YamlNode(*tree_, child));
    }
  }

  /// Calls `visit(key, value)` for each pair of a mapping, in the order of the source.
  template <typename Visitor>
  void for_each_pair(Visitor&& visit) const {
    std::uint32_t key = node().first_child;
    while (key != YamlTree::kNone) {
      const std::uint32_t value = tree_->nodes_[key].next_sibling;
      visit(YamlNode(*tree_, key), YamlNode(*tree_, value));
      key = tree_->nodes_[value].next_sibling;
    }
  }

 private:
  friend class YamlTree;

  YamlNode(const YamlTree& tree, std::uint32_t index) : tree_(&tree), index_(index) {}
  const YamlTree::Node& node() const { return tree_->nodes_[index_]; }

  const YamlTree* tree_;
  std::uint32_t index_;
};

/// Parses one document. An empty source gives an empty plain scalar. None after an error; what YAML itself can find
/// wrong is in `diagnostics` then, and nothing else is worth looking at. `source` has no byte order mark.
std::optional<YamlTree> parse_yaml(std::string_view source, Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_YAML_TREE_H
