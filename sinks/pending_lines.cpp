#include "sinks/pending_lines.h"

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

#include "lines/json_text.h"

namespace qzlog {

namespace {

constexpr std::size_t kBlock = 256U << 10;

ssize_t read_block(int file, char* target, std::uint64_t position) {
  ssize_t count = 0;
  do {
    count = pread(file, target, kBlock, static_cast<off_t>(position));
  } while (count < 0 && errno == EINTR);
  return count;
}

}  // namespace

WriterLines::WriterLines(std::string_view writer) : beginning_("{\"writer\":") {
  append_json_text(writer, beginning_);
  beginning_ += ",\"seq\":";
}

std::uint64_t WriterLines::seq_of(std::string_view line) const {
  if (!line.starts_with(beginning_)) return 0;
  const std::string_view rest = line.substr(beginning_.size());
  std::uint64_t seq = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), seq);
  return error == std::errc() && end != rest.data() + rest.size() && *end == ',' ? seq : 0;
}

std::vector<NumberedLine> find_lines(std::string_view text, const WriterLines& writer, unsigned long long& others) {
  std::vector<NumberedLine> lines;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = text.substr(0, length);
    const std::uint64_t seq = writer.seq_of(line);
    if (seq != 0 && line.ends_with("}\n") && line.find('\0') == std::string_view::npos) {
      lines.push_back({seq, line});
    } else {
      others += length;
    }
    text.remove_prefix(length);
  }
  return lines;
}

/// Block by block; what a block ends with of a line is looked at with the next one. A line that is longer than a block
/// needs only its beginning and its end.
std::uint64_t last_seq_in_file(int file, std::uint64_t begin, const WriterLines& writer) {
  std::string block(kBlock, ' ');
  std::uint64_t last = 0;
  std::uint64_t seq_of_rest = 0;
  bool in_line = false;
  std::string rest;
  for (ssize_t count = 0; (count = read_block(file, block.data(), begin)) > 0;
       begin += static_cast<std::uint64_t>(count)) {
    std::string_view text(block.data(), static_cast<std::size_t>(count));
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      if (!in_line) rest.clear(), in_line = true;
      if (rest.size() < 512) rest.append(text.substr(0, std::min<std::size_t>(end, 512)));
      if (end == std::string_view::npos) break;
      seq_of_rest = writer.seq_of(rest);
      last = std::max(last, seq_of_rest);
      in_line = false;
      text.remove_prefix(end + 1);
    }
  }
  return last;
}

}  // namespace qzlog
