#include "tools/render/kept_entry.h"

namespace qzlog_tool {

void EntryShape::begin(std::uint32_t id, bool has_time) {
  forget();
  id_ = id;
  has_time_ = has_time;
  count_ = 0;
}

void EntryShape::add(std::string_view name, qz_AttributeType type) {
  if (count_ == attributes_.size()) attributes_.emplace_back();
  attributes_[count_].name = name;
  attributes_[count_].type = type;
  ++count_;
}

}  // namespace qzlog_tool
