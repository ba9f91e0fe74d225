#include "tools/choice/byte_search.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "tests/support/support.h"

namespace {

using qzlog_tool::ByteSearch;

TEST(ByteSearch, RandomTexts_FoundWhereTheStandardLibraryFindsThem) {
  qz_test::SeededRandom random;
  int found = 0;
  for (int round = 0; round < qz_test::rounds(20000); ++round) {
    std::string text(random.below(90), ' ');
    for (char& character : text) character = "\"ab"[random.below(3)];
    std::string wanted(2 + random.below(6), ' ');
    for (char& character : wanted) character = "\"ab"[random.below(3)];
    const std::size_t from = random.below(text.size() + 2);
    // In memory of exactly its size, so that the sanitizers see what reads behind the end.
    const auto bytes = std::make_unique<char[]>(text.size());
    text.copy(bytes.get(), text.size());
    const std::string_view exact(bytes.get(), text.size());
    const std::size_t expected = text.find(wanted, from);
    found += expected != std::string::npos;
    ASSERT_EQ(ByteSearch(wanted).find_in(exact, from), expected) << text << " " << wanted << " " << from;
  }
  EXPECT_GT(found, qz_test::rounds(20000) / 10);
}

}  // namespace
