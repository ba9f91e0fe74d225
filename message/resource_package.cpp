#include "message/resource_package.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "message/resource_data.h"

namespace qzlog {

namespace {

constexpr std::string_view kPackageFormat = "CmnD\x01";  // with the version behind it
constexpr std::size_t kWord = sizeof(std::uint32_t);
constexpr std::size_t kEntrySize = 2 * kWord;  // where the name stands and where the file
constexpr std::size_t kLongestName = 1024;

std::size_t word_at(std::string_view bytes, std::size_t offset) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes.data() + offset, sizeof(word));
  return word;
}

}  // namespace

ResourcePackage::State ResourcePackage::read(std::string bytes) {
  bytes_ = std::move(bytes);
  files_.clear();
  if (bytes_.size() < ResourceData::kSmallestHeader) return State::kDamaged;
  if (!ResourceData::has_header(bytes_, kPackageFormat)) return State::kForeign;
  const std::size_t begin = ResourceData::header_size(bytes_);
  const bool has_contents = begin >= ResourceData::kSmallestHeader && begin + kWord <= bytes_.size();
  return has_contents && read_contents(std::string_view(bytes_).substr(begin)) ? State::kGood : State::kDamaged;
}

/// A file ends where the next one begins; names and files are in the order of the names.
bool ResourcePackage::read_contents(std::string_view contents) {
  const std::size_t count = word_at(contents, 0);
  if (count > (contents.size() - kWord) / kEntrySize) return false;
  files_.reserve(count);
  std::size_t end = contents.size();
  for (std::size_t i = count; i-- > 0;) {
    const std::size_t name = word_at(contents, kWord + i * kEntrySize);
    const std::size_t begin = word_at(contents, kWord + i * kEntrySize + kWord);
    if (name > contents.size() || begin > end) return false;
    const std::string_view named = contents.substr(name, kLongestName);
    const std::size_t length = named.find('\0');
    if (length == std::string_view::npos) return false;
    files_.push_back({named.substr(0, length), contents.substr(begin, end - begin)});
    if (files_.size() > 1 && files_.back().name >= files_[files_.size() - 2].name) return false;
    end = begin;
  }
  std::reverse(files_.begin(), files_.end());
  return true;
}

const std::string_view* ResourcePackage::find(std::string_view name) const {
  const auto found = std::lower_bound(files_.begin(), files_.end(), name,
                                      [](const File& file, std::string_view wanted) { return file.name < wanted; });
  return found != files_.end() && found->name == name ? &found->bytes : nullptr;
}

}  // namespace qzlog
