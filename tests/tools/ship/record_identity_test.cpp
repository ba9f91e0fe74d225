#include "tools/ship/record_identity.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

std::string identity_of(std::string_view line, const LineStart& start) {
  LineParts parts;
  LinePartsFinder().find(line, parts);
  std::string identity = "former";
  RecordIdentity("web1").write(line, parts, start, identity);
  return identity;
}

TEST(RecordIdentity, WriterAndNumber_AreItWhereverTheLineStands) {
  constexpr std::string_view kLine = R"({"writer":"h/1/2","seq":3,"id":7,"level":9,"attributes":{}})";
  EXPECT_EQ(identity_of(kLine, {"/l/s.20261121.0001", 0}), "h/1/2/3");
  EXPECT_EQ(identity_of(kLine, {"/other", 12}), "h/1/2/3");
}

TEST(RecordIdentity, OtherLines_HaveTheirPlaceAndDigest) {
  EXPECT_EQ(identity_of("{}", {"/l/s.20261121.0001", 12}), "web1/l/s.20261121.0001@12#44136fa355b3678a");
  EXPECT_NE(identity_of("{}", {"/l/s", 12}), identity_of("{}", {"/l/s", 13}));
  EXPECT_NE(identity_of("{}", {"/l/s", 12}), identity_of("{} ", {"/l/s", 12}));
}

TEST(RecordIdentity, OddCharacters_AreEscaped) {
  EXPECT_EQ(identity_of("{\"writer\":\"a b%\xC3\xA4\",\"seq\":3,\"id\":7,\"level\":9,\"attributes\":{}}", {"/l", 0}),
            "a%20b%25%C3%A4/3");
}

}  // namespace
}  // namespace qzlog_tool
