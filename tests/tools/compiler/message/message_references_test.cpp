#include "tools/compiler/message/message_references.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

std::string outline(const MessageText& message) {
  std::string out;
  for (const WrittenReference& reference : written_references(message)) {
    out += std::to_string(reference.offset) + "<" + reference.name + ">";
  }
  return out;
}

TEST(WrittenReferences, Placeholders_AreFoundWhereTheyStand) {
  EXPECT_EQ(outline({"{A} {{x}} and {B:d}", false, "", {}}), "0<A>14<B>");
}

TEST(WrittenReferences, ReferencesOfATemplate_AreFoundWhereTheyStand) {
  EXPECT_EQ(outline({"x %d%A% {y} %s%B%", true, "", {}}), "2<A>12<B>");
}

TEST(WrittenReferences, PlainText_HasNone) { EXPECT_EQ(outline({"text", false, "", {}}), ""); }

}  // namespace
}  // namespace qzlog_compiler
