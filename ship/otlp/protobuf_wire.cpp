#include "ship/otlp/protobuf_wire.h"

namespace qzlog_ship {

bool WireReader::read_varint(std::uint64_t& value) {
  value = 0;
  for (unsigned shift = 0; shift < 64 && !left_.empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(left_.front());
    left_.remove_prefix(1);
    value |= std::uint64_t{byte & 0x7FU} << shift;
    if (byte < 0x80) return true;
  }
  return false;
}

bool WireReader::read_value(WireField& field) {
  std::uint64_t size = 0;
  switch (field.type) {
    case WireType::kVarint:
      return read_varint(field.integer);
    case WireType::kFixed64:
      size = 8;
      break;
    case WireType::kFixed32:
      size = 4;
      break;
    case WireType::kBytes:
      if (!read_varint(size)) return false;
      break;
    default:
      return false;
  }
  if (size > left_.size()) return false;
  field.bytes = left_.substr(0, size);
  left_.remove_prefix(size);
  return true;
}

bool WireReader::next(WireField& field) {
  if (left_.empty() || is_damaged_) return false;
  std::uint64_t tag = 0;
  if (read_varint(tag)) {
    field = {tag >> 3U, static_cast<WireType>(tag & 7U), 0, {}};
    if (field.number != 0 && read_value(field)) return true;
  }
  is_damaged_ = true;
  return false;
}

}  // namespace qzlog_ship
