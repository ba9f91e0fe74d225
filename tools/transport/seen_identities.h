#ifndef QZLOG_TOOLS_TRANSPORT_SEEN_IDENTITIES_H
#define QZLOG_TOOLS_TRANSPORT_SEEN_IDENTITIES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <set>
#include <string_view>

namespace qzlog_tool {

/// Which records without writer and number came before: by the identity HOST/FILE@OFFSET#DIGEST that `qzlog ship` gives
/// their lines. Those with a writer and a number are told apart by these.
class SeenIdentities {
 public:
  /// Takes about 100 bytes for each.
  static constexpr std::size_t kMost = 200'000;

  explicit SeenIdentities(std::size_t most = kMost) : most_(most) {}

  /// False for an identity of this form that came before, among the latest so many.
  bool add(std::string_view identity);
  /// How many were forgotten.
  std::uint64_t forgotten() const noexcept { return forgotten_; }

 private:
  using Digest = std::array<unsigned char, 16>;

  std::size_t most_;
  std::set<Digest> seen_;
  std::deque<std::set<Digest>::iterator> order_;
  std::uint64_t forgotten_ = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_SEEN_IDENTITIES_H
