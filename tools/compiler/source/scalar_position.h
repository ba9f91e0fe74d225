#ifndef QZLOG_TOOLS_COMPILER_SOURCE_SCALAR_POSITION_H
#define QZLOG_TOOLS_COMPILER_SOURCE_SCALAR_POSITION_H

#include <string_view>

#include "tools/compiler/source/yaml_tree.h"

namespace qzlog_compiler {

/// Finds places in the source of a scalar's text, seen through quotes and escapes. Asked in ascending order it reads
/// the scalar once, however many places are asked for.
class ScalarPositions {
 public:
  /// The source and the tree of the scalar have to outlive this object.
  ScalarPositions(std::string_view source, const YamlNode& scalar);

  /// The place of the byte `offset` of the text; the beginning of the scalar where the text runs over more than one
  /// line or stands in a block.
  SourcePosition find(std::size_t offset);

 private:
  void restart();

  std::string_view source_;
  YamlNode scalar_;
  std::size_t at_ = 0;      // in the source
  std::size_t passed_ = 0;  // in the text
  SourcePosition position_;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_SOURCE_SCALAR_POSITION_H
