#ifndef QZLOG_SHIP_OTLP_PROTOBUF_WIRE_H
#define QZLOG_SHIP_OTLP_PROTOBUF_WIRE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qzlog_ship {

/// How protobuf writes a field's value.
enum class WireType : unsigned { kVarint = 0, kFixed64 = 1, kBytes = 2, kFixed32 = 5 };

inline std::size_t varint_size(std::uint64_t value) noexcept {
  std::size_t size = 1;
  for (; value >= 0x80; value >>= 7U) ++size;
  return size;
}

inline void append_varint(std::uint64_t value, std::string& out) {
  for (; value >= 0x80; value >>= 7U) out += static_cast<char>(value | 0x80U);
  out += static_cast<char>(value);
}

inline void append_tag(unsigned field, WireType type, std::string& out) {
  append_varint(field << 3U | static_cast<unsigned>(type), out);
}

inline void append_varint_field(unsigned field, std::uint64_t value, std::string& out) {
  append_tag(field, WireType::kVarint, out);
  append_varint(value, out);
}

inline void append_fixed64_field(unsigned field, std::uint64_t value, std::string& out) {
  append_tag(field, WireType::kFixed64, out);
  char bytes[8];
  for (unsigned place = 0; place < 8; ++place) bytes[place] = static_cast<char>(value >> 8U * place);
  out.append(bytes, sizeof bytes);
}

inline void append_bytes_field(unsigned field, std::string_view bytes, std::string& out) {
  append_tag(field, WireType::kBytes, out);
  append_varint(bytes.size(), out);
  out += bytes;
}

/// Of a field with a number below 16, with its tag and size.
inline std::size_t bytes_field_size(std::size_t size) noexcept { return 1 + varint_size(size) + size; }

/// A field of a message that came from outside.
struct WireField {
  std::uint64_t number = 0;
  WireType type = WireType::kVarint;
  std::uint64_t integer = 0;  // kVarint
  std::string_view bytes;     // kBytes
};

/// Reads the fields of a message one by one.
class WireReader {
 public:
  explicit WireReader(std::string_view message) : left_(message) {}

  /// False at the end, and where something is wrong.
  bool next(WireField& field);
  bool is_damaged() const noexcept { return is_damaged_; }

 private:
  bool read_varint(std::uint64_t& value);
  bool read_value(WireField& field);

  std::string_view left_;
  bool is_damaged_ = false;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_PROTOBUF_WIRE_H
