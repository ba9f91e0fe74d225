#include "tools/compiler/file/entry_map.h"

#include <algorithm>

#include "definitions/definition_format.h"

namespace qzlog_compiler {
namespace {

std::uint32_t int4_at(std::string_view bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (const char byte : bytes.substr(offset, 4)) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

void put_int4(std::string& bytes, std::size_t offset, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(value >> (24 - 8 * i) & 0xFFU);
}

}  // namespace

std::vector<EntryMapPair> read_entry_map(std::string_view bytes) {
  std::vector<EntryMapPair> pairs;
  if (bytes.size() < qzlog::ldf::kHeaderSize) return pairs;
  const std::size_t begin = int4_at(bytes, qzlog::ldf::kEntryMapOffsetOffset);
  if (begin > bytes.size()) return pairs;
  const std::size_t count = std::min<std::size_t>(int4_at(bytes, qzlog::ldf::kEntryCountOffset),
                                                  (bytes.size() - begin) / qzlog::ldf::kMapPairSize);
  pairs.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t offset = begin + i * qzlog::ldf::kMapPairSize;
    pairs.push_back({int4_at(bytes, offset), int4_at(bytes, offset + 4)});
  }
  return pairs;
}

std::size_t append_map_pairs(std::string& bytes, const std::vector<EntryMapPair>& pairs) {
  const std::size_t begin = bytes.size();
  bytes.resize(begin + pairs.size() * qzlog::ldf::kMapPairSize);
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    put_int4(bytes, begin + i * qzlog::ldf::kMapPairSize, pairs[i].id);
    put_int4(bytes, begin + i * qzlog::ldf::kMapPairSize + 4, pairs[i].record_offset);
  }
  return begin;
}

void set_entry_map(std::string& bytes, std::size_t offset, std::size_t count) {
  put_int4(bytes, qzlog::ldf::kEntryCountOffset, static_cast<std::uint32_t>(count));
  put_int4(bytes, qzlog::ldf::kEntryMapOffsetOffset, static_cast<std::uint32_t>(offset));
}

void leave_out_globals(std::string& bytes) { put_int4(bytes, qzlog::ldf::kGlobalCountOffset, 0); }

}  // namespace qzlog_compiler
