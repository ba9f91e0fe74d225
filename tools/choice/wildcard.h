#ifndef QZLOG_TOOLS_CHOICE_WILDCARD_H
#define QZLOG_TOOLS_CHOICE_WILDCARD_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// A pattern that whole texts match: `*` stands for any characters or none, `?` for one character, everything else for
/// itself, a backslash for the character behind it. Texts and patterns are UTF-8.
class Wildcard {
 public:
  /// As --name and --writer take it.
  explicit Wildcard(std::string_view pattern);
  /// A text whose escapes are gone. `wildcards`: the places of the bytes in it that are `*` and `?`, in their order.
  Wildcard(std::string_view text, const std::vector<std::size_t>& wildcards);

  /// Takes no memory, and at most so many steps as text and pattern have bytes, multiplied.
  bool matches(std::string_view text) const;
  bool has_wildcards() const { return has_wildcards_; }

 private:
  // Bytes, and what no byte is.
  using Unit = unsigned short;
  static constexpr Unit kOneCharacter = 256;
  static constexpr Unit kAnyText = 257;

  void add(Unit unit);

  std::vector<Unit> units_;
  std::size_t least_bytes_ = 0;  // that a matching text has
  bool has_wildcards_ = false;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_WILDCARD_H
