// Reads the input as messages of syslog, at once and byte by byte, which has to give the same lines; and as the line of
// an entry, which a message has to give back.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "tools/syslog/syslog_entry.h"
#include "tools/syslog/syslog_source.h"

namespace {

class PiecesSource : public qz_LOG_ByteSource {
 public:
  PiecesSource(std::string_view bytes, std::size_t piece) : bytes_(bytes), piece_(piece) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    const std::string_view piece = bytes_.substr(0, std::min(size, piece_));
    std::memcpy(buffer, piece.data(), piece.size());
    bytes_.remove_prefix(piece.size());
    return piece.size();
  }

 private:
  std::string_view bytes_;
  std::size_t piece_;
};

std::string lines_of(std::string_view bytes, std::size_t piece) {
  PiecesSource messages(bytes, piece);
  qzlog_tool::SyslogSource source(messages);
  std::string lines;
  char buffer[256];
  for (std::size_t count = 0; (count = source.Read(buffer, sizeof buffer)) != 0;) lines.append(buffer, count);
  const auto breaks = static_cast<std::uint64_t>(std::count(lines.begin(), lines.end(), '\n'));
  const qzlog_tool::SyslogCounts& counts = source.counts();
  if (breaks != counts.entries + counts.omitted + counts.broken + counts.others) __builtin_trap();
  return lines;
}

void check_line_comes_back(std::string line) {
  std::erase(line, '\n');
  std::string escaped;
  for (const char character : line) {
    if (character == '"' || character == '\\' || character == ']') escaped += '\\';
    escaped += character;
  }
  // Texts in front may be anything but the beginning of a parameter that swallows this one.
  for (const char* const front : {"<14>1 t h a p m ", "Nov 21 08:15:30 shop[7]: [qzlog@1 entry=\"x "}) {
    std::string found;
    const std::string message = front + std::string("[qzlog@32473 entry=\"{") + escaped + "}\" Name=\"x\"]";
    if (qzlog_tool::find_syslog_entry(message, found) != qzlog_tool::SyslogFound::kLine) __builtin_trap();
    if (found != '{' + line + '}') __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  if (lines_of(input, 1U << 16) != lines_of(input, 1)) __builtin_trap();
  check_line_comes_back(std::string(input));
  return 0;
}
