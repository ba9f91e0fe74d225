#include "tools/manual/environment_rows.h"

#include <gtest/gtest.h>

namespace {

using qzlog_tool::EnvironmentRow;

constexpr const char* kPage = R"(# Environment

| variable | read by | when | what it does |
|---|---|---|---|
| `A` | the library; `qzlog count` | once | Much. |

| name | other |
|---|---|
| `B` | no variable |

| variable | read by | when |
|---|---|---|
| `C`, `D` | `qzlog` | always |
)";

TEST(EnvironmentRows, TablesOfVariables_AreRead) {
  const auto rows = qzlog_tool::read_environment(qzlog_tool::parse_markdown(kPage));
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].variables, "`A`");
  EXPECT_EQ(rows[0].when, "once");
  EXPECT_EQ(rows[0].effect, "Much.");
  EXPECT_EQ(rows[1].variables, "`C`, `D`");
  EXPECT_EQ(rows[1].effect, "");
}

TEST(EnvironmentRows, Readers_AreCommandsAndWhatBelongsToThem) {
  const EnvironmentRow row{"`A`", "the library; `qzlog count`, `qzlog render`", "", ""};
  EXPECT_TRUE(row.is_read_by_library());
  for (const char* const command : {"qzlog count", "qzlog count show", "qzlog render"}) {
    EXPECT_TRUE(row.is_read_by(command)) << command;
  }
  for (const char* const command : {"qzlog", "qzlog counts", "qzlog ship", "the library"}) {
    EXPECT_FALSE(row.is_read_by(command)) << command;
  }
  const EnvironmentRow all{"`A`", "`qzlog`", "", ""};
  EXPECT_TRUE(all.is_read_by("qzlog"));
  EXPECT_TRUE(all.is_read_by("qzlog ship"));
  EXPECT_FALSE(all.is_read_by_library());
}

}  // namespace
