#include "tools/explain/entry_search.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tools/check_fixture.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::DefinitionPair;
using qzlog_tool::parse_entry_id;

TEST(ParseEntryId, Numbers_DecimalAndHexadecimal) {
  EXPECT_EQ(parse_entry_id("0"), 0U);
  EXPECT_EQ(parse_entry_id("4294967295"), 4294967295U);
  EXPECT_EQ(parse_entry_id("0x3e9"), 1001U);
  EXPECT_EQ(parse_entry_id("0XFFFFFFFF"), 4294967295U);
}

TEST(ParseEntryId, AnythingElse_None) {
  for (const char* const text : {"", "0x", "-1", "+1", " 1", "1 ", "4294967296", "0x100000000", "1e3", "A"}) {
    EXPECT_EQ(parse_entry_id(text), std::nullopt) << text;
  }
}

class EntrySearch : public ::testing::Test {
 protected:
  std::string failure(const std::string& text) const {
    try {
      return "found " + std::to_string(find_entry_id(text, definitions_));
    } catch (const qzlog_tool::CommandError& error) {
      return error.what();
    }
  }

  const qzlog_compiler::DefinitionModel model_ = qzlog_compiler::compile_source(check_fixture::kSource, "", {}).model;
  const DefinitionPair definitions_{model_, nullptr};
};

TEST_F(EntrySearch, NameOrNumber_IsFound) {
  EXPECT_EQ(failure("GONE"), "found 2");
  EXPECT_EQ(failure("0x2"), "found 2");
}

TEST_F(EntrySearch, UnknownOnes_SayWhatIsNear) {
  EXPECT_EQ(failure("GON"), "the definitions have no entry 'GON'; near it are GONE [unknown-name]");
  EXPECT_EQ(failure("7"), "the definitions have no entry 7; near it are 1, 2 [unknown-id]");
  EXPECT_EQ(failure("SOMETHING"), "the definitions have no entry 'SOMETHING' [unknown-name]");
}

}  // namespace
