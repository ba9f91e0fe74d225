#include "tools/templates/readable_template.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/templates/random_template.h"
#include "tools/compiler/message/message_lowering.h"
#include "tools/compiler/message/template_judge.h"

namespace {

using qzlog_compiler::RenderingPath;
using qzlog_compiler::RenderingPaths;

std::optional<qz_AttributeType> type_of(std::string_view name) {
  if (name == "Name") return TypeChar32;
  if (name == "Count") return TypeUInt2;
  if (name == "When") return TypeTimestamp;
  return std::nullopt;
}

std::optional<std::string> readable_template(std::string_view stored, RenderingPath form,
                                             const qzlog_compiler::AttributeLookup& lookup) {
  return qzlog_tool::readable_template(qzlog_compiler::judge_template(stored, form, lookup), lookup);
}

TEST(ReadableTemplate, References_AreNamesInBraces) {
  EXPECT_EQ(readable_template("a %s%Name% b %d%Count%", RenderingPath::kIcu, type_of), "a {Name} b {Count}");
  EXPECT_EQ(readable_template("a %s%Name% b", RenderingPath::kNarrow, type_of), "a {Name} b");
}

TEST(ReadableTemplate, FormatThatIsNotTheTypes_IsShown) {
  EXPECT_EQ(readable_template("%C%Count% %D%When%", RenderingPath::kIcu, type_of), "{Count:C} {When:D}");
}

TEST(ReadableTemplate, DateAndTimeOfATimeStamp_AreOnePlaceholder) {
  EXPECT_EQ(readable_template("%D%When% %T%When%", RenderingPath::kIcu, type_of), "{When}");
  EXPECT_EQ(readable_template("%D%When%, %T%When%", RenderingPath::kNarrow, type_of), "{When:D}, {When:T}");
}

TEST(ReadableTemplate, QuotesForIcu_AreUndoneThereOnly) {
  EXPECT_EQ(readable_template("''%s%Name%'' '{}'%_%TIMESTAMP%", RenderingPath::kIcu, type_of), "'{Name}' {}");
  EXPECT_EQ(readable_template("''%s%Name%'' '{}'", RenderingPath::kNarrow, type_of), "''{Name}'' '{}'");
}

TEST(ReadableTemplate, WhatIsNotShown_IsLeftOut) {
  EXPECT_EQ(readable_template("%x%Name%%_%TIMESTAMP%", RenderingPath::kIcu, type_of), std::nullopt);
  EXPECT_EQ(readable_template("%x%Name% %_%TIMESTAMP%", RenderingPath::kIcu, type_of), " ");
  EXPECT_EQ(readable_template("lost", RenderingPath::kIcu, type_of), "");
}

TEST(ReadableTemplate, NoMessage_None) {
  EXPECT_EQ(readable_template("%s%Name", RenderingPath::kNarrow, type_of), std::nullopt);
  EXPECT_EQ(readable_template("{%s%Name%", RenderingPath::kIcu, type_of), std::nullopt);
}

/// A reader's view of the braces that a source doubles.
std::string without_doubled_braces(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    const bool doubled = i + 1 < text.size() && text[i] == text[i + 1] && (text[i] == '{' || text[i] == '}');
    if (doubled) ++i;
  }
  return out;
}

TEST(ReadableTemplate, RandomTextsLoweredForEitherPath_ReadAsTheyWereWritten) {
  qz_test::SeededRandom random;
  int read = 0;
  for (int i = 0; i < 3000; ++i) {
    const std::string text = qz_test::random_template(random);
    for (const auto& [path, form] : {std::pair(RenderingPaths::kIcu, RenderingPath::kIcu),
                                     std::pair(RenderingPaths::kNarrow, RenderingPath::kNarrow)}) {
      const auto lowered = qzlog_compiler::lower_message(text, type_of, path);
      if (!lowered.findings.empty()) continue;
      ++read;
      EXPECT_EQ(readable_template(lowered.stored, form, type_of), without_doubled_braces(text)) << text;
    }
  }
  EXPECT_GT(read, 1000);
}

}  // namespace
