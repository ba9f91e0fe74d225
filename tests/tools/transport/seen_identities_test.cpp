#include "tools/transport/seen_identities.h"

#include <gtest/gtest.h>

namespace qzlog_tool {
namespace {

TEST(SeenIdentities, LinesWithoutNumbers_AreToldApart) {
  SeenIdentities seen;
  EXPECT_TRUE(seen.add("h/var/log/a.1@0#0123456789abcdef"));
  EXPECT_TRUE(seen.add("h/var/log/a.1@9#0123456789abcdef"));
  EXPECT_FALSE(seen.add("h/var/log/a.1@0#0123456789abcdef"));
}

TEST(SeenIdentities, OtherIdentities_AreAllTaken) {
  SeenIdentities seen;
  for (const char* const identity : {"", "h/1/2/7", "#0123456789abcde", "w#/0123456789012345", "x#0123456789ABCDEF"}) {
    EXPECT_TRUE(seen.add(identity)) << identity;
    EXPECT_TRUE(seen.add(identity)) << identity;
  }
}

TEST(SeenIdentities, TheOldest_AreForgotten) {
  SeenIdentities seen(2);
  seen.add("a@0#0000000000000000");
  seen.add("b@0#0000000000000000");
  EXPECT_EQ(seen.forgotten(), 0U);
  seen.add("c@0#0000000000000000");
  EXPECT_EQ(seen.forgotten(), 1U);
  EXPECT_FALSE(seen.add("b@0#0000000000000000"));
  EXPECT_TRUE(seen.add("a@0#0000000000000000"));
}

}  // namespace
}  // namespace qzlog_tool
