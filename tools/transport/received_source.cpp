#include "tools/transport/received_source.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace qzlog_tool {

void ReceivedSource::give(std::span<const qzlog_received> records) {
  records_ = records;
  given_ = 0;
}

// A line feed within a record, which no sender of ours would send, would be two lines.
std::size_t ReceivedSource::Read(char* buffer, std::size_t size) {
  if (taken_ == line_.size()) {
    if (given_ == records_.size()) throw NoMore();
    const qzlog_text& text = records_[given_++].line;
    line_.assign(text.size == 0 ? std::string_view() : std::string_view(text.bytes, text.size));
    std::replace(line_.begin(), line_.end(), '\n', ' ');
    line_ += '\n';
    taken_ = 0;
  }
  const std::size_t count = std::min(size, line_.size() - taken_);
  std::memcpy(buffer, line_.data() + taken_, count);
  taken_ += count;
  return count;
}

}  // namespace qzlog_tool
