#include "tests/tools/compiler/rendering_oracle.h"

#include <gtest/gtest.h>

namespace rendering_oracle {
namespace {

const Values kValues = {{"Name", {{'s', "vol1"}}}, {"TIMESTAMP", {{'D', "today"}, {'T', "now"}}}};

struct OracleCase {
  const char* stored;
  std::optional<std::string> icu;
  std::optional<std::string> narrow;
};

class RenderingOracle : public ::testing::TestWithParam<OracleCase> {};

TEST_P(RenderingOracle, StoredTemplate_RendersAsEachPathDoes) {
  EXPECT_EQ(render_icu(GetParam().stored, kValues), GetParam().icu);
  EXPECT_EQ(render_narrow(GetParam().stored, kValues), GetParam().narrow);
}

INSTANTIATE_TEST_SUITE_P(Templates, RenderingOracle,
                         ::testing::Values(OracleCase{"", "", ""}, OracleCase{"Hello", "", "Hello"},
                                           OracleCase{"Disk %s%Name% is full", "Disk vol1", "Disk vol1 is full"},
                                           OracleCase{"Hello%_%TIMESTAMP%", "Hello", "Hello"},
                                           OracleCase{"100%% done", "%", " done"},
                                           OracleCase{"%%%s%Name%", "%vol1", "vol1"},
                                           OracleCase{"%s%Nobody%", std::nullopt, std::nullopt},
                                           OracleCase{"%s%TIMESTAMP%", std::nullopt, std::nullopt},
                                           OracleCase{"%s%Name%%s%Name%", std::nullopt, std::nullopt},
                                           OracleCase{"it''s '{x}'%_%TIMESTAMP%", "it's {x}", "it''s '{x}'"},
                                           OracleCase{"{%_%TIMESTAMP%", std::nullopt, "{"}));

}  // namespace
}  // namespace rendering_oracle
