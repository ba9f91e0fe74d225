#include "tools/ship/line_parts.h"

#include "tools/choice/raw_line.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kName = ",\"name\":\"";
constexpr std::string_view kAttributes = ",\"attributes\":{";

/// Of a line whose beginning was read. The keys with their quotes stand in no text, whose quotes are escaped, so that
/// the first ones found are members.
std::string_view event_of(std::string_view line) {
  const std::string_view members = line.substr(0, line.find(kAttributes));
  const std::size_t key = members.find(kName);
  if (key == std::string_view::npos) return {};
  const std::size_t begin = key + kName.size();
  const std::size_t end = members.find('"', begin);
  if (end == std::string_view::npos) return {};
  const std::string_view name = members.substr(begin, end - begin);
  return name.find('\\') == std::string_view::npos ? name : std::string_view();
}

}  // namespace

bool LinePartsFinder::find(std::string_view line, LineParts& parts) {
  parts = LineParts();
  const RawLine raw(line);
  if (!raw.has_level() || raw.has_writer() != raw.has_seq() || !line.ends_with('}')) return read(line, parts);
  parts.has_identity = raw.has_seq();
  parts.writer = raw.writer();
  parts.seq = raw.seq();
  parts.id = raw.id();
  parts.level = static_cast<int>(raw.level());
  parts.event = event_of(line);
  return true;
}

bool LinePartsFinder::read(std::string_view line, LineParts& parts) {
  members_ = read_line_members(line);
  if (!members_) return false;
  parts.has_identity = !members_->writer.empty() && members_->seq.has_value();
  parts.writer = members_->writer;
  parts.seq = members_->seq.value_or(0);
  parts.id = members_->id.value_or(0);
  parts.event = members_->name.empty() ? members_->symbolic_id : members_->name;
  const bool is_entry = members_->id || !members_->symbolic_id.empty();
  if (is_entry) parts.level = static_cast<int>(members_->level.value_or(0));
  return true;
}

}  // namespace qzlog_tool
