#include "ship/otlp/protobuf_wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

namespace qzlog_ship {
namespace {

std::string message() {
  std::string text;
  append_varint_field(1, 300, text);
  append_bytes_field(2, "abc", text);
  append_fixed64_field(3, 0x0102030405060708, text);
  append_varint_field(15, ~std::uint64_t{0}, text);
  return text;
}

TEST(ProtobufWire, Fields_AreWrittenAsTheFormatHasThem) {
  EXPECT_EQ(message(),
            std::string("\x08\xAC\x02\x12\x03"
                        "abc\x19\x08\x07\x06\x05\x04\x03\x02\x01\x78\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01"));
}

TEST(ProtobufWire, Varint_HasTheSizeThatIsSaid) {
  for (unsigned bit = 0; bit < 64; ++bit) {
    for (const std::uint64_t value : {(std::uint64_t{1} << bit) - 1, std::uint64_t{1} << bit}) {
      std::string text;
      append_varint(value, text);
      EXPECT_EQ(text.size(), varint_size(value)) << value;
    }
  }
}

TEST(ProtobufWire, EveryPrefix_IsReadToItsEndOrIsDamaged) {
  const std::string whole = message();
  const std::size_t ends[] = {0, 3, 8, 17, whole.size()};
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    WireReader reader(std::string_view(whole).substr(0, size));
    std::size_t count = 0;
    for (WireField field; reader.next(field);) ++count;
    const bool is_whole = std::count(std::begin(ends), std::end(ends), size) != 0;
    EXPECT_EQ(reader.is_damaged(), !is_whole) << size;
    EXPECT_EQ(count, static_cast<std::size_t>(std::upper_bound(std::begin(ends), std::end(ends), size) - ends) - 1);
  }
}

TEST(ProtobufWire, WhatNoMessageHas_IsDamaged) {
  for (const char* const text : {"\x0B", "\x0C", "\x0F", "\x02\x01x", "\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x01",
                                 "\x0A\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01x"}) {
    WireReader reader(text);
    WireField field;
    EXPECT_FALSE(reader.next(field));
    EXPECT_TRUE(reader.is_damaged());
  }
}

}  // namespace
}  // namespace qzlog_ship
