#include "counter/record_format.h"

#include "foundation/qz_libc.h"

namespace qzlog {

namespace {

constexpr int kFieldCount = 6;  // before the reserved bytes

}  // namespace

RecordBytes encode_record(const CounterRecord& record) {
  const int fields[kFieldCount] = {record.record_size, record.year,      record.month,
                                   record.day,         record.entry_key, record.count};
  RecordBytes bytes;
  unsigned char* byte = bytes.data();
  for (const int field : fields) {
    const auto value = static_cast<unsigned>(field);
    for (int shift = 24; shift >= 0; shift -= 8) *byte++ = static_cast<unsigned char>(value >> shift & 0xFF);
  }
  QZ_memcpy(byte, record.reserved, sizeof(record.reserved));
  return bytes;
}

CounterRecord decode_record(const unsigned char* bytes) {
  int fields[kFieldCount];
  for (int& field : fields) {
    unsigned value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | *bytes++;
    field = static_cast<int>(value);
  }
  CounterRecord record = {fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], {0, 0}};
  QZ_memcpy(record.reserved, bytes, sizeof(record.reserved));
  return record;
}

}  // namespace qzlog
