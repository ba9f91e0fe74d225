#include "tools/transport/received_source.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace qzlog_tool {

void ReceivedSource::give(std::span<const qzlog_received> records) {
  records_ = records;
  given_ = 0;
}

std::size_t ReceivedSource::Read(char* buffer, std::size_t size) {
  if (taken_ == line_.size()) {
    if (given_ == records_.size()) throw NoMore();
    make_line(records_[given_++]);
    taken_ = 0;
  }
  const std::size_t count = std::min(size, line_.size() - taken_);
  std::memcpy(buffer, line_.data() + taken_, count);
  taken_ += count;
  return count;
}

// A line feed within a record, which no sender of ours would send, would be two lines.
void ReceivedSource::make_line(const qzlog_received& record) {
  const auto text_of = [](const qzlog_text& text) {
    return text.size == 0 ? std::string_view() : std::string_view(text.bytes, text.size);
  };
  const bool is_wanted = !seen_ || seen_->add(text_of(record.identity));
  line_.assign(is_wanted ? text_of(record.line) : std::string_view());
  std::replace(line_.begin(), line_.end(), '\n', ' ');
  line_ += '\n';
}

}  // namespace qzlog_tool
