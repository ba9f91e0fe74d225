#include "tools/compiler/text/nearest_word.h"

#include <gtest/gtest.h>

#include <array>

namespace qzlog_compiler {
namespace {

constexpr std::array<std::string_view, 6> kWords = {"id", "name", "message", "message_id", "Char32", "MBChar32"};

struct NearestCase {
  const char* word;
  const char* nearest;
};

TEST(NearestWord, Misspellings_FindTheWord) {
  const NearestCase cases[] = {
      {"massage", "message"}, {"mesage", "message"},    {"emssage", "message"}, {"MESSAGE", "message"},
      {"nmae", "name"},       {"naem", "name"},         {"names", "name"},      {"messageid", "message_id"},
      {"Char33", "Char32"},   {"MBchar32", "MBChar32"}, {"ID", "id"},           {"message", "message"},
  };
  for (const NearestCase& entry : cases) EXPECT_EQ(nearest_word(entry.word, kWords), entry.nearest) << entry.word;
}

TEST(NearestWord, OtherWords_FindNothing) {
  for (const char* const word : {"", "x", "ix", "text", "Text", "colour", "nnnn", "masks"}) {
    EXPECT_EQ(nearest_word(word, kWords), "") << word;
  }
  EXPECT_EQ(nearest_word("name", {}), "");
  EXPECT_EQ(nearest_word(std::string(100000, 'n'), kWords), "");
}

TEST(NearestWord, OfTwoAsNear_TheFirstIsTaken) {
  constexpr std::array<std::string_view, 3> kTypes = {"UInt4", "SInt4", "Int44"};
  EXPECT_EQ(nearest_word("Int4", kTypes), "UInt4");
}

TEST(DidYouMean, NearWord_IsAskedForBeforeWhatIsAllowed) {
  EXPECT_EQ(did_you_mean("nmae", kWords), "did you mean 'name'?");
  EXPECT_EQ(did_you_mean("nmae", kWords, "allowed is name"), "did you mean 'name'? allowed is name");
  EXPECT_EQ(did_you_mean("colour", kWords), "");
  EXPECT_EQ(did_you_mean("colour", kWords, "allowed is name"), "allowed is name");
}

}  // namespace
}  // namespace qzlog_compiler
