#ifndef QZLOG_TOOLS_REPORT_JSON_STREAM_H
#define QZLOG_TOOLS_REPORT_JSON_STREAM_H

#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace qzlog_compiler {

/// What stands between the parts of an object or a list. All texts have to outlive what is written with it.
struct JsonLayout {
  const char* between = ",";     ///< the members or items
  const char* before_each = "";  ///< behind the bracket or what stands between
  const char* before_end = "";   ///< before the closing bracket of what is not empty
  const char* after_colon = "";
};

/// Of what a command prints: a member in each line; lists with an item in each line.
inline constexpr JsonLayout kResultLayout = {",", "\n  ", "\n", " "};
inline constexpr JsonLayout kResultListLayout = {",", "\n    ", "\n  "};

/// Writes a JSON object member by member, so that memory holds none of it.
class JsonObjectStream {
 public:
  /// `out` has to outlive this object.
  explicit JsonObjectStream(std::ostream& out, const JsonLayout& layout = {});

  void number(std::string_view key, std::uint64_t value);
  void signed_number(std::string_view key, std::int64_t value);
  void boolean(std::string_view key, bool value);
  void null(std::string_view key);
  /// Of any bytes; what is not UTF-8 becomes replacement characters.
  void text(std::string_view key, std::string_view text);
  /// For a value that the caller writes.
  std::ostream& member(std::string_view key);
  /// Has to be called once, behind the last member.
  void end();

 private:
  std::ostream& out_;
  JsonLayout layout_;
  bool empty_ = true;
};

/// Writes a JSON list item by item.
class JsonListStream {
 public:
  /// `out` has to outlive this object.
  explicit JsonListStream(std::ostream& out, const JsonLayout& layout = {});

  /// For the next item, which the caller writes.
  std::ostream& item();
  /// Has to be called once, behind the last item.
  void end();

 private:
  std::ostream& out_;
  JsonLayout layout_;
  bool empty_ = true;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_JSON_STREAM_H
