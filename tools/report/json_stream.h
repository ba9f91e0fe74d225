#ifndef QZLOG_TOOLS_REPORT_JSON_STREAM_H
#define QZLOG_TOOLS_REPORT_JSON_STREAM_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace qzlog_compiler {

/// Writes a text of any bytes as a JSON string; what is not UTF-8 becomes replacement characters. It is converted in
/// pieces of at most `piece_size_bytes`, at least 4, which is all the memory that it takes.
void write_json_text(std::string_view text, std::ostream& out, std::size_t piece_size_bytes = std::size_t{1} << 16);

/// Writes a JSON object in one line, member by member, so that memory holds none of it. Keys are written as they stand.
class JsonObjectStream {
 public:
  /// `out` has to outlive this object.
  explicit JsonObjectStream(std::ostream& out);

  void number(std::string_view key, std::uint64_t value);
  void text(std::string_view key, std::string_view text);
  /// A string of two digits for each byte.
  void hexadecimal(std::string_view key, std::string_view bytes);
  /// For a value that the caller writes.
  std::ostream& member(std::string_view key);
  void end();

 private:
  std::ostream& out_;
  char separator_ = '{';
};

/// Writes a JSON list item by item.
class JsonListStream {
 public:
  /// `before_item` stands before each item, behind the comma; all of them have to outlive this object.
  explicit JsonListStream(std::ostream& out, const char* before_item = "");

  /// For the next item, which the caller writes.
  std::ostream& item();
  /// `before_end` stands before the closing bracket of a list that is not empty.
  void end(const char* before_end = "");

 private:
  std::ostream& out_;
  const char* before_item_;
  bool empty_ = true;
};

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_JSON_STREAM_H
