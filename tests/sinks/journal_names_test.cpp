#include "sinks/journal_names.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog {
namespace {

std::string message_id(std::string_view product, unsigned id) {
  std::string digits(kJournalMessageIdDigits + 1, 'x');
  write_journal_message_id(product, id, digits.data());
  EXPECT_EQ(digits.back(), 'x');
  digits.pop_back();
  return digits;
}

/// By sha256sum.
TEST(JournalMessageId, IsTheBeginningOfTheDigestOfProductAndId) {
  EXPECT_EQ(message_id("storage", 1001), "46ee974fa546c9c87e48e44566b63df1");
  EXPECT_EQ(message_id("", 0), "06c901ba18e7c2418ebcfc5e2ed24023");
  EXPECT_EQ(message_id("Gr\xC3\xBC\xC3\x9F"
                       "e",
                       4294967295U),
            "9e2ad67a4242b115db431bf6410cb69f");
  EXPECT_NE(message_id("storage", 100), message_id("storage/10", 0));
}

TEST(JournalNamespace, IsWhatJournaldTakes) {
  for (const char* const name : {"a", "storage-2.x_@:Z9"}) EXPECT_TRUE(is_journal_namespace(name)) << name;
  for (const char* const name : {"", "a/b", "a b", "\xC3\xA4", "a\n"}) EXPECT_FALSE(is_journal_namespace(name)) << name;
  EXPECT_TRUE(is_journal_namespace(std::string(64, 'a')));
  EXPECT_FALSE(is_journal_namespace(std::string(65, 'a')));
}

std::string field_name(std::string_view attribute) {
  std::string name = "a";
  append_journal_field_name(attribute, name);
  return name.substr(1);
}

TEST(JournalFieldName, IsWhatJournaldTakes) {
  EXPECT_EQ(field_name("Name"), "QZ_NAME");
  EXPECT_EQ(field_name("COMPUTER_NAME"), "QZ_COMPUTER_NAME");
  EXPECT_EQ(field_name("9lives"), "QZ_9LIVES");
  EXPECT_EQ(field_name("a-b.c d=e\n"), "QZ_A_B_C_D_E_");
  EXPECT_EQ(field_name("\xC3\xA4zA{"), "QZ___ZA_");
  EXPECT_EQ(field_name(""), "QZ_");
  EXPECT_EQ(field_name(std::string(61, 'a')), "QZ_" + std::string(61, 'A'));
  EXPECT_EQ(field_name(std::string(62, 'a')), "QZ_" + std::string(61, 'A'));
}

}  // namespace
}  // namespace qzlog
