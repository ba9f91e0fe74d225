#include "lines/kept_entry.h"

namespace qzlog {

void EntryShape::begin(std::uint32_t id, bool has_time) {
  forget();
  id_ = id;
  has_time_ = has_time;
  count_ = 0;
}

void EntryShape::add(std::string_view name, const EntryAttribute& attribute) {
  if (count_ == names_.size()) names_.emplace_back();
  if (count_ == attributes_.size()) attributes_.emplace_back();
  names_[count_] = name;
  attributes_[count_] = attribute;
  ++count_;
}

}  // namespace qzlog
