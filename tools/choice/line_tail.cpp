#include "tools/choice/line_tail.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace qzlog_tool {

void LineTail::add(const qz_LOG_EntryLine& line) {
  if (lines_.size() == count_) drop_first();
  Line kept;
  kept.text.reserve(line.GetSourceLength() + 1);
  kept.text.assign(line.GetSource(), line.GetSourceLength());
  kept.text += '\n';
  kept.place = {find_file(line.GetFile()), line.GetLine(), line.GetOffset()};
  bytes_ += bytes_of(kept);
  lines_.push_back(std::move(kept));
  ++added_;
  while (bytes_ > most_bytes_ && lines_.size() > 1) drop_first();
}

// Files are read one after the other, or a few by turns.
const std::string* LineTail::find_file(const char* name) {
  const auto found = std::find(files_.rbegin(), files_.rend(), name);
  return found != files_.rend() ? &*found : &files_.emplace_back(name);
}

void LineTail::drop_first() {
  bytes_ -= bytes_of(lines_.front());
  lines_.pop_front();
}

std::uint64_t LineTail::dropped() const { return std::min<std::uint64_t>(added_, count_) - lines_.size(); }

std::size_t LineTail::Read(char* buffer, std::size_t size) {
  if (read_lines_ == lines_.size()) return 0;
  const std::string_view rest = std::string_view(lines_[read_lines_].text).substr(read_bytes_);
  const std::size_t taken = std::min(size, rest.size());
  std::memcpy(buffer, rest.data(), taken);
  read_bytes_ += taken;
  if (taken == rest.size()) {
    ++read_lines_;
    read_bytes_ = 0;
  }
  return taken;
}

}  // namespace qzlog_tool
