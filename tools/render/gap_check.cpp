#include "tools/render/gap_check.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qzlog_tool {

namespace {

std::string counted(std::uint64_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

/// Numbers in files may be anything.
void add_up(std::uint64_t& sum, std::uint64_t count) {
  sum =
      count > std::numeric_limits<std::uint64_t>::max() - sum ? std::numeric_limits<std::uint64_t>::max() : sum + count;
}

}  // namespace

bool GapCheck::add(std::string_view name, std::uint64_t seq, const LinePlace& place) {
  ++lines_;
  bool is_new = false;
  Writer& writer = find(name, is_new);
  if (is_new) {
    if (seq > 0) writer.holes.emplace(0, hole_before(seq, place));
    writer.last = seq;
    return true;
  }
  if (seq <= writer.last) return fill(writer, seq, place);
  if (seq - writer.last > 1) writer.holes.emplace(writer.last + 1, hole_before(seq, place));
  writer.last = seq;
  return true;
}

GapCheck::Writer& GapCheck::find(std::string_view name, bool& is_new) {
  if (latest_ == nullptr || latest_->first != name) {
    const std::size_t known = writers_.size();
    auto& writer = *writers_.try_emplace(std::string(name)).first;
    latest_ = &writer;
    is_new = writers_.size() != known;
  }
  return latest_->second;
}

GapCheck::Hole GapCheck::hole_before(std::uint64_t seq, const LinePlace& place) {
  if (file_ == nullptr || *file_ != place.file) file_ = std::make_shared<const std::string>(place.file);
  return {seq - 1, lines_, file_, place.line};
}

/// A line below the writer's last one: it closes a part of a hole, or it is doubled.
bool GapCheck::fill(Writer& writer, std::uint64_t seq, const LinePlace& place) {
  auto hole = writer.holes.upper_bound(seq);
  if (hole == writer.holes.begin() || (--hole)->second.last < seq) {
    ++doubled_;
    return false;
  }
  if (seq < hole->second.last) writer.holes.emplace_hint(std::next(hole), seq + 1, hole->second);
  if (seq == hole->first) {
    writer.holes.erase(hole);
  } else {
    hole->second = hole_before(seq, place);
  }
  return true;
}

std::vector<GapCheck::Gap> GapCheck::gaps() const {
  std::vector<std::pair<std::uint64_t, Gap>> found;
  for (const auto& [name, writer] : writers_) {
    for (const auto& [first, hole] : writer.holes) {
      if (first != 0) found.push_back({hole.order, {name, first, hole.last, *hole.file, hole.line}});
    }
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Gap> gaps;
  gaps.reserve(found.size());
  for (auto& [order, gap] : found) gaps.push_back(std::move(gap));
  return gaps;
}

std::string GapCheck::summary() const {
  std::uint64_t missing = 0;
  std::uint64_t begun_above = 0;
  for (const auto& [name, writer] : writers_) {
    for (const auto& [first, hole] : writer.holes) {
      if (first != 0) {
        add_up(missing, hole.last - first + 1);
      } else if (hole.last > 0) {
        ++begun_above;
      }
    }
  }
  std::string text = "seq: " + counted(lines_, "line") + " of " + counted(writers_.size(), "writer") + ", " +
                     std::to_string(missing) + " missing, " + std::to_string(doubled_) + " doubled";
  if (begun_above != 0) text += "; " + counted(begun_above, "writer") + " whose first lines are in no file";
  if (unnumbered_ != 0) text += "; " + counted(unnumbered_, "line") + " without writer and seq";
  return text;
}

}  // namespace qzlog_tool
