#include "qzlog/file_io.h"

namespace {

/// Reads `Size` bytes as one big-endian number. The value is built from the single bytes, so the host's order is
/// irrelevant.
template <unsigned Size, typename Integer>
bool read_big_endian(std::FILE* file, Integer* out) {
  unsigned char bytes[Size] = {};
  if (std::fread(bytes, Size, 1, file) != 1) return false;
  unsigned value = 0;
  for (const unsigned char byte : bytes) value = value << 8 | byte;
  *out = static_cast<Integer>(value);
  return true;
}

template <unsigned Size, typename Integer>
bool write_big_endian(std::FILE* file, const Integer* in) {
  unsigned char bytes[Size];
  unsigned value = *in;
  for (unsigned i = Size; i-- > 0; value >>= 8) bytes[i] = static_cast<unsigned char>(value & 0xFF);
  return std::fwrite(bytes, Size, 1, file) == 1;
}

}  // namespace

bool qz_be_read_int1(std::FILE* file, unsigned char* out) { return read_big_endian<1>(file, out); }

bool qz_be_read_int2(std::FILE* file, unsigned short* out) { return read_big_endian<2>(file, out); }

bool qz_be_read_int4(std::FILE* file, unsigned* out) { return read_big_endian<4>(file, out); }

bool qz_read_data_chunk(std::FILE* file, void* buffer, unsigned size_bytes) {
  return size_bytes == 0 || std::fread(buffer, size_bytes, 1, file) == 1;
}

bool qz_be_write_int1(std::FILE* file, unsigned char* in) { return write_big_endian<1>(file, in); }

bool qz_be_write_int2(std::FILE* file, unsigned short* in) { return write_big_endian<2>(file, in); }

bool qz_be_write_int4(std::FILE* file, unsigned* in) { return write_big_endian<4>(file, in); }

bool qz_write_data_chunk(std::FILE* file, void* buffer, unsigned size_bytes) {
  return size_bytes == 0 || std::fwrite(buffer, size_bytes, 1, file) == 1;
}
