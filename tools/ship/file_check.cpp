#include "tools/ship/file_check.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/compiler/text/utf8_text.h"
#include "tools/logs/unreadable_input.h"
#include "tools/ship/line_parts.h"
#include "tools/ship/shipped_file.h"

namespace qzlog_tool {

namespace {

constexpr std::uint64_t kFirstPiece = std::uint64_t{64} << 10;
/// More than a line and what ends it may have.
constexpr std::uint64_t kLongestPiece = std::uint64_t{17} << 20;

/// Less where the file ends earlier.
std::string read_range(int descriptor, const std::string& path, std::uint64_t begin, std::uint64_t end) {
  std::string bytes(static_cast<std::size_t>(end - begin), ' ');
  std::size_t held = 0;
  while (held < bytes.size()) {
    const ssize_t count =
        ::pread(descriptor, bytes.data() + held, bytes.size() - held, static_cast<off_t>(begin + held));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw UnreadableInput("cannot read '" + path + "': " + std::strerror(errno));
    if (count == 0) break;
    held += static_cast<std::size_t>(count);
  }
  bytes.resize(held);
  return bytes;
}

std::size_t end_of_text(std::string_view bytes) { return bytes.find_last_not_of(" \t\r\n") + 1; }  // npos + 1 is 0

}  // namespace

std::string identity_before(int descriptor, const std::string& path, std::uint64_t offset,
                            const RecordIdentity& identities) {
  for (std::uint64_t size = kFirstPiece;; size *= 4) {
    const std::uint64_t begin = offset > size ? offset - size : 0;
    std::string bytes = read_range(descriptor, path, begin, offset);
    if (bytes.size() != offset - begin) return "";  // the file ends before that place
    // What ends the last line goes as it does when the line is delivered; blanks at its end are the line's.
    const std::size_t text_end = end_of_text(bytes);
    const std::size_t line_feed = bytes.find('\n', text_end);
    std::string_view text = std::string_view(bytes).substr(0, std::min(line_feed, bytes.size()));
    if (text.ends_with('\r')) text.remove_suffix(1);
    const std::size_t before = text_end == 0 ? std::string::npos : text.rfind('\n', text_end - 1);
    if (before == std::string::npos && begin > 0 && size < kLongestPiece) continue;
    const std::size_t at = before + 1;  // npos + 1 is 0
    std::string_view line = text.substr(at);
    if (text_end == 0 || line.size() > ShippedFile::kLongestLine) return "";
    if (begin + at == 0) line = qzlog_compiler::without_byte_order_mark(line);
    LineParts parts;
    LinePartsFinder finder;
    std::string identity;
    if (!finder.find(line, parts)) parts = LineParts();
    identities.write(line, parts, {path, begin + at}, identity);
    return identity;
  }
}

}  // namespace qzlog_tool
