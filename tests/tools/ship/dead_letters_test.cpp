#include "tools/ship/dead_letters.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

TEST(DeadLetters, Lines_CanBeTakenOutAsTheyWere) {
  const qz_test::TempDir folder;
  DeadLetters letters(folder.path("dead"), "file:///x");
  letters.add({"too \"large\"", "h/1/2/3", "/l/s", 7, "{\"a\":\"\\n\"}"});
  letters.add({"no UTF-8", "h/1/2/4", "/l/s", 8, "a\xFF"});
  EXPECT_FALSE(folder.has("dead"));
  letters.sync();
  std::ifstream file(folder.path("dead"));
  std::string text;
  std::getline(file, text);
  auto letter = nlohmann::json::parse(text);
  EXPECT_EQ(letter["reason"], "too \"large\"");
  EXPECT_EQ(letter["identity"], "h/1/2/3");
  EXPECT_EQ(letter["line"], "{\"a\":\"\\n\"}");
  EXPECT_EQ(letter["offset"], 7);
  EXPECT_FALSE(letter.contains("bytes"));
  std::getline(file, text);
  EXPECT_EQ(nlohmann::json::parse(text)["bytes"], "Yf8=");
  EXPECT_EQ(letters.count(), 2U);
}

TEST(DeadLetters, TornLine_IsCutOff) {
  const qz_test::TempDir folder;
  folder.write("dead", "{\"whole\":1}\n{\"to");
  DeadLetters letters(folder.path("dead"), "x");
  letters.add({"r", "i", "f", 0, "l"});
  letters.sync();
  EXPECT_EQ(folder.read("dead").find("{\"whole\":1}\n{\"reason\":\"r\""), 0U);
}

TEST(DeadLetters, FileThatCannotBeWritten_IsAnError) {
  const qz_test::TempDir folder;
  DeadLetters letters(folder.path("none/dead"), "x");
  letters.sync();
  letters.add({"r", "i", "f", 0, "l"});
  EXPECT_THROW(letters.sync(), CommandError);
}

}  // namespace
}  // namespace qzlog_tool
