#include "tools/transport/seen_identities.h"

#include <algorithm>

#include "foundation/sha256.h"

namespace qzlog_tool {

namespace {

bool is_digit(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
}

/// WRITER/SEQ has no such end: its slash would stand in it.
bool ends_with_digest(std::string_view identity) {
  if (identity.size() <= qzlog::kShortDigestDigits) return false;
  const std::string_view end = identity.substr(identity.size() - qzlog::kShortDigestDigits - 1);
  return end.front() == '#' && std::all_of(end.begin() + 1, end.end(), is_digit);
}

}  // namespace

bool SeenIdentities::add(std::string_view identity) {
  if (!ends_with_digest(identity)) return true;
  qzlog::Sha256 sha;
  sha.add(identity.data(), identity.size());
  const qzlog::Sha256::Digest whole = sha.digest();
  Digest digest = {};
  std::copy_n(whole.begin(), digest.size(), digest.begin());
  const auto [at, is_new] = seen_.insert(digest);
  if (!is_new) return false;
  order_.push_back(at);
  if (order_.size() > most_) {
    // cppcheck-suppress mismatchingContainerIterator
    seen_.erase(order_.front());  // which is an iterator into it
    order_.pop_front();
    ++forgotten_;
  }
  return true;
}

}  // namespace qzlog_tool
