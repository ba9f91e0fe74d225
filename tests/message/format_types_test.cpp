#include "message/format_types.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <string>

using namespace qzlog;

namespace {

const struct {
  MessageFormatKind kind;
  std::string characters;
  std::set<int> types;  // empty when every type is accepted
} kFormats[] = {
    {MessageFormatKind::kText, "s", {9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 24}},
    {MessageFormatKind::kCurrency, "C", {1, 2, 3, 4, 5, 6, 7, 8}},
    {MessageFormatKind::kPercent, "P", {1, 2, 3, 4, 5, 6, 7, 8}},
    {MessageFormatKind::kDate, "D", {21, 22, 23}},
    {MessageFormatKind::kTime, "T", {21, 22, 23}},
    {MessageFormatKind::kFloat, "f", {8}},
    {MessageFormatKind::kInteger, "du", {1, 2, 3, 4, 5, 6, 7}},
    {MessageFormatKind::kUnknown, "", {}},
};

TEST(FormatTypes, EveryCharacter_ItsKind) {
  for (int character = 0; character < 256; ++character) {
    const char format = static_cast<char>(character);
    MessageFormatKind expected = MessageFormatKind::kUnknown;
    for (const auto& row : kFormats) {
      if (row.characters.find(format) != std::string::npos) expected = row.kind;
    }
    EXPECT_EQ(message_format_kind(format), expected) << character;
  }
}

TEST(FormatTypes, EveryTypeCodeOfEightBits_AcceptedAsListed) {
  for (const auto& row : kFormats) {
    for (int type = 0; type < 256; ++type) {
      const bool expected = row.types.empty() || row.types.count(type) != 0;
      EXPECT_EQ(accepts_type(row.kind, static_cast<qz_AttributeType>(type)), expected) << row.characters << " " << type;
    }
  }
}

}  // namespace
