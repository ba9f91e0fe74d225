#include "tools/templates/source_digest.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/seeded_random.h"
#include "tests/tools/templates/random_template.h"
#include "tools/compiler/message/message_lowering.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::RenderingPaths;

std::optional<qz_AttributeType> type_of(std::string_view name) {
  if (name == "Name") return TypeChar32;
  if (name == "Count") return TypeUInt2;
  if (name == "When") return TypeTimestamp;
  return std::nullopt;
}

// Catalogs that were built before compare with what this gives.
TEST(SourceDigest, KnownTemplates_KeepTheirDigests) {
  EXPECT_EQ(source_digest(""), "84222325");
  EXPECT_EQ(source_digest("Disk %s%Name% is full%_%TIMESTAMP%"), "6abf600f");
  EXPECT_EQ(source_digest("'{'%d%Count%'}' of %P%Share%"), "f7afe8b0");
}

TEST(SourceDigest, WhatReadersSeeAlike_HasOneDigest) {
  EXPECT_EQ(source_digest("it''s '{'%s%Name%'}'%_%TIMESTAMP%"), source_digest("it's '{'%s%Name%'}'%_%Other%"));
  EXPECT_EQ(source_digest("a'{'b'}' %s%Name%"), source_digest("a'{b}' %s%Name%"));
}

TEST(SourceDigest, WhatReadersCanTellApart_HasDigestsOfItsOwn) {
  const std::set<std::string> digests = {source_digest("%s%Name%"),        source_digest("%d%Name%"),
                                         source_digest("%s%Nam%"),         source_digest("'{Name:s}'%_%T%"),
                                         source_digest("'{Name}'%_%T%"),   source_digest("sName%_%T%"),
                                         source_digest("%s%Name% %_%T%"),  source_digest(" %s%Name%"),
                                         source_digest("%_%T%"),           source_digest("lost"),
                                         source_digest("lost otherwise"),  source_digest("{%s%Name%"),
                                         source_digest("%s%Name%%s%Name%")};
  EXPECT_EQ(digests.size(), 13U);
}

TEST(IsSourceDigestOf, RandomTexts_WhicheverPathTheyWereCompiledFor) {
  qz_test::SeededRandom random;
  int compared = 0;
  for (int i = 0; i < 3000; ++i) {
    const std::string text = qz_test::random_template(random);
    const auto icu = qzlog_compiler::lower_message(text, type_of, RenderingPaths::kIcu);
    const auto narrow = qzlog_compiler::lower_message(text, type_of, RenderingPaths::kNarrow);
    if (!icu.findings.empty() || !narrow.findings.empty()) continue;
    ++compared;
    EXPECT_TRUE(is_source_digest_of(source_digest(icu.stored), icu.stored)) << text;
    EXPECT_TRUE(is_source_digest_of(source_digest(icu.stored), narrow.stored)) << text;
    const auto longer = qzlog_compiler::lower_message(text + " more", type_of, RenderingPaths::kNarrow);
    EXPECT_FALSE(is_source_digest_of(source_digest(icu.stored), longer.stored)) << text;
  }
  EXPECT_GT(compared, 500);
}

}  // namespace
}  // namespace qzlog_tool
