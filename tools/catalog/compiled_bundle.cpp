#include "tools/catalog/compiled_bundle.h"

#include <unicode/udata.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>

namespace qzlog_catalog {
namespace {

/// The header's first four bytes, which ICU's headers do not describe, and UDataInfo behind them.
constexpr std::size_t kInfoOffset = 4;
constexpr unsigned char kMagic[] = {0xDA, 0x27};
constexpr unsigned char kDataFormat[] = {'R', 'e', 's', 'B'};

/// Behind the header stand words of four bytes: the root resource, then indexes, whose first tells their number.
constexpr std::size_t kWordBytes = 4;
constexpr std::size_t kIndexLength = 1;
constexpr std::size_t kBundleTop = 1 + 3;  ///< the index that has the bundle's length, in words

template <class Value>
std::optional<Value> value_at(std::string_view bytes, std::size_t offset) {
  Value value;
  if (offset > bytes.size() || bytes.size() - offset < sizeof value) return std::nullopt;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

bool is_bundle_info(const UDataInfo& info) {
  return info.isBigEndian == (std::endian::native == std::endian::big ? 1 : 0) &&
         std::memcmp(info.dataFormat, kDataFormat, sizeof kDataFormat) == 0;
}

}  // namespace

bool is_whole_bundle(std::string_view bundle) {
  const auto header_bytes = value_at<std::uint16_t>(bundle, 0);
  const auto info = value_at<UDataInfo>(bundle, kInfoOffset);
  if (!header_bytes || !info || std::memcmp(bundle.data() + 2, kMagic, sizeof kMagic) != 0) return false;
  if (*header_bytes < kInfoOffset + sizeof(UDataInfo) || !is_bundle_info(*info)) return false;
  const auto indexes = value_at<std::uint32_t>(bundle, *header_bytes + kIndexLength * kWordBytes);
  const auto words = value_at<std::uint32_t>(bundle, *header_bytes + kBundleTop * kWordBytes);
  // The number of indexes stands in the lowest byte.
  return indexes && words && (*indexes & 0xFFU) >= kBundleTop && bundle.size() == *header_bytes + kWordBytes * *words;
}

}  // namespace qzlog_catalog
