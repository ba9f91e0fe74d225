#include "tools/logs/journal_export.h"

#include <algorithm>

#include "sinks/journal_names.h"

namespace qzlog_tool {
namespace {

constexpr unsigned kLengthBytes = 8;

void append_one_line(std::string_view value, std::string& out) {
  const std::size_t begin = out.size();
  out += value;
  std::replace(out.begin() + static_cast<std::ptrdiff_t>(begin), out.end(), '\n', ' ');
}

}  // namespace

void JournalExport::take(std::string_view bytes, std::string& out) {
  while (!bytes.empty()) {
    std::size_t taken = 0;
    switch (part_) {
      case Part::kName:
        taken = take_name(bytes);
        break;
      case Part::kText:
        taken = take_text(bytes, out);
        break;
      case Part::kLength:
        taken = take_length(bytes);
        break;
      case Part::kBinary:
        taken = take_binary(bytes, out);
        break;
    }
    bytes.remove_prefix(taken);
  }
}

std::size_t JournalExport::take_name(std::string_view bytes) {
  const std::size_t end = bytes.find_first_of("=\n");
  const std::string_view name = bytes.substr(0, end);
  const std::size_t room = name_.size() - name_bytes_;
  name_bytes_ += name.copy(name_.data() + name_bytes_, room);
  if (end == std::string_view::npos) return bytes.size();
  if (bytes[end] == '=') {
    begin_value(Part::kText);
  } else if (name_bytes_ != 0) {
    begin_value(Part::kLength);
  }
  return end + 1;
}

void JournalExport::begin_value(Part part) {
  is_wanted_ = std::string_view(name_.data(), name_bytes_) == qzlog::kJournalEntryField;
  name_bytes_ = 0;
  length_ = 0;
  length_bytes_ = 0;
  part_ = part;
}

std::size_t JournalExport::take_text(std::string_view bytes, std::string& out) {
  const std::size_t end = bytes.find('\n');
  const std::size_t taken = end == std::string_view::npos ? bytes.size() : end + 1;
  if (is_wanted_) out += bytes.substr(0, taken);
  if (end != std::string_view::npos) part_ = Part::kName;
  return taken;
}

std::size_t JournalExport::take_length(std::string_view bytes) {
  length_ |= std::uint64_t{static_cast<unsigned char>(bytes.front())} << (8 * length_bytes_);
  if (++length_bytes_ == kLengthBytes) part_ = Part::kBinary;
  return 1;
}

/// The line feed may come later than the value.
std::size_t JournalExport::take_binary(std::string_view bytes, std::string& out) {
  const auto taken = static_cast<std::size_t>(std::min<std::uint64_t>(length_, bytes.size()));
  if (is_wanted_) append_one_line(bytes.substr(0, taken), out);
  length_ -= taken;
  if (length_ != 0 || taken == bytes.size()) return taken;
  if (is_wanted_) out += '\n';
  part_ = Part::kName;
  return taken + 1;
}

}  // namespace qzlog_tool
