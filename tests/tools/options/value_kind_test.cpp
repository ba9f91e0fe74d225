#include "tools/options/value_kind.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tools/options/locale_names.h"
#include "tools/options/reader_zone.h"

namespace {

using qzlog_tool::value_kind;
using qzlog_tool::ValueKind;
using Type = ValueKind::Type;

TEST(ValueKind, NamesOfValues_TellWhatTheyAre) {
  const struct {
    const char* name;
    Type type;
    std::vector<std::string> items;
  } rows[] = {
      {"icu|narrow|both", Type::kChoice, {"icu", "narrow", "both"}},
      {"{text,json}", Type::kChoice, {"text", "json"}},
      {"0-3", Type::kChoice, {"0", "1", "2", "3"}},
      {"ll_CC", Type::kChoice, qzlog_tool::locale_names()},
      {"ZONE", Type::kChoice, qzlog_tool::offered_zones()},
      {"OUT.ldf", Type::kFile, {".ldf"}},
      {"STD.ldf|STD.yaml", Type::kFile, {".ldf", ".yaml"}},
      {"OUT.h|-", Type::kFile, {".h"}},
      {"SRC.yaml [AUX.yaml ...]", Type::kFile, {".yaml"}},
      {"FILE.po ...", Type::kFile, {".po"}},
      {"DIR|FILE ...", Type::kFile, {}},
      {"PATH", Type::kFile, {}},
      {"ll[_CC]", Type::kText, {}},
      {"SRC", Type::kFile, {".yaml"}},
      {"STD", Type::kFile, {".ldf", ".yaml"}},
      {"FILE", Type::kFile, {}},
      {"DIR/NAME", Type::kFile, {}},
      {"DIR", Type::kFolder, {}},
      {"EVENT", Type::kEvent, {}},
      {"ID|NAME|RULE", Type::kExplained, {}},
      {"EXPRESSION", Type::kExpression, {}},
      {"N", Type::kText, {}},
      {"N|NAME", Type::kText, {}},
      {"YYYY-MM-DD", Type::kText, {}},
      {"TEXT ...", Type::kText, {}},
      {"word", Type::kText, {}},
      {"", Type::kText, {}},
      {"{}", Type::kText, {}},
  };
  for (const auto& row : rows) {
    const ValueKind kind = value_kind(row.name);
    EXPECT_EQ(kind.type, row.type) << row.name;
    EXPECT_EQ(kind.items, row.items) << row.name;
  }
}

TEST(ValueKind, ZonesThatAreOffered_AreThoseOfPlaces) {
  const std::vector<std::string> zones = qzlog_tool::offered_zones();
  const auto has = [&](const char* name) { return std::find(zones.begin(), zones.end(), name) != zones.end(); };
  EXPECT_TRUE(has("Europe/Berlin"));
  EXPECT_TRUE(has("UTC"));
  EXPECT_FALSE(has("US/Pacific"));
  EXPECT_FALSE(has("EST"));
}

}  // namespace
