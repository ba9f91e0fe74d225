#include "tools/inspect/ldf_survey.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/ldf_file.h"
#include "tests/tools/compiler/example_model.h"
#include "tests/tools/inspect/ldf_forms.h"
#include "tools/compiler/file/ldf_reader.h"

namespace qzlog_compiler {
namespace {

using qz_test::int4;
using qz_test::with_int4;

/// "OFFSET REASON (DETAIL)" of each damage.
std::vector<std::string> damages_of(const std::string& bytes) {
  const LdfSurvey survey(bytes);
  std::vector<std::string> texts;
  for (const LdfDamage& damage : survey.damages()) {
    texts.push_back(std::to_string(damage.offset) + " " + damage.reason +
                    (damage.detail.empty() ? "" : " (" + damage.detail + ")"));
  }
  EXPECT_GE(survey.damage_count(), texts.size());
  return texts;
}

using Texts = std::vector<std::string>;

TEST(LdfSurvey, WholeFile_HasNoDamageAndEveryRegion) {
  const std::string bytes = example_bytes();
  const LdfSurvey survey(bytes);
  EXPECT_EQ(survey.damage_count(), 0U);
  EXPECT_EQ(survey.globals().size(), 1U);
  ASSERT_EQ(survey.pairs().size(), 2U);
  EXPECT_EQ(survey.pair_offset(1), 0x99U);
  const LdfEntryRecord entry = survey.entry(survey.pairs()[0]);
  EXPECT_EQ(entry.message.text(), "%d%R%");
  EXPECT_EQ(entry.size, 0x4FU);
  const std::vector<LdfRegion> regions = survey.regions();
  ASSERT_EQ(regions.size(), 5U);
  EXPECT_EQ(survey.region_name(regions[2]), "the entry map");
  EXPECT_EQ(regions[4].begin, 0xF0U);
  EXPECT_EQ(regions[4].end, bytes.size());
}

TEST(LdfSurvey, Globals_AreThoseThatAreWhole) {
  const std::string bytes = example_bytes();
  std::string names;
  LdfSurvey(bytes).read_globals([&](const LdfAttributeRecord& global) { names += global.name.text(); });
  EXPECT_EQ(names, "HOST");
  const LdfSurvey cut(std::string_view(bytes).substr(0, 140));
  EXPECT_TRUE(cut.globals().empty());
  const LdfSurvey without_whole_header(std::string_view(bytes).substr(0, 100));
  EXPECT_TRUE(without_whole_header.globals().empty());
}

TEST(LdfSurvey, EveryPrefix_IsDamagedWhereItEnds) {
  const std::string bytes = example_bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const LdfSurvey survey(std::string_view(bytes).substr(0, size));
    ASSERT_FALSE(survey.damages().empty()) << size;
    for (const LdfDamage& damage : survey.damages()) {
      // A record that begins behind the end is named by where it should begin.
      ASSERT_LE(damage.offset, std::max<std::size_t>(size, 0xF0)) << size;
      ASSERT_FALSE(damage.reason.empty());
    }
  }
}

TEST(LdfSurvey, WrongMagic_IsDamageAndTheRestIsRead) {
  const std::string bytes = with_int4(example_bytes(), 0, 0x46444C2E);
  EXPECT_EQ(damages_of(bytes), Texts{"0 the file does not begin with \".LDF\""});
  EXPECT_EQ(LdfSurvey(bytes).pairs().size(), 2U);
}

TEST(LdfSurvey, TooManyGlobals_LeaveTheEntries) {
  const std::string bytes = with_int4(example_bytes(), 40, 2);
  const Texts damages = damages_of(bytes);
  ASSERT_EQ(damages.size(), 1U);
  EXPECT_EQ(damages[0],
            "164 the file ends within the global attributes (globals[1].redirect takes 4026531840 bytes from here, and "
            "the file has 108)");
  EXPECT_EQ(LdfSurvey(bytes).globals().size(), 1U);
  EXPECT_EQ(LdfSurvey(bytes).pairs().size(), 2U);
}

TEST(LdfSurvey, OneBadRecord_LeavesTheOthers) {
  const std::string bytes = with_int4(example_bytes(), 0xA1 + 12, 0xFFFFFFFF);
  EXPECT_EQ(damages_of(bytes),
            Texts{"177 the file ends within an entry record (entry 7: message ID takes 4294967295 bytes from here, and "
                  "the file has 95)"});
  const LdfSurvey survey(bytes);
  EXPECT_TRUE(survey.pairs()[0].cut);
  EXPECT_FALSE(survey.pairs()[1].cut);
  const LdfEntryRecord cut = survey.entry(survey.pairs()[0]);
  EXPECT_EQ(cut.mask, 5U);
  EXPECT_FALSE(cut.message_id.whole);
  EXPECT_FALSE(cut.attribute_count);
}

TEST(LdfSurvey, RecordOfAnotherEntry_IsNamed) {
  const std::string bytes = with_int4(example_bytes(), 0x91, 8);
  EXPECT_EQ(damages_of(bytes), Texts{"161 the record of entry 8 has another ID (it is 7)"});
  EXPECT_TRUE(LdfSurvey(bytes).pairs()[0].wrong_id);
}

TEST(LdfSurvey, IdListedTwice_ReplacesTheEarlierPair) {
  const qz_test::LdfFile file{.entries = {{.id = 3, .word = 1}, {.id = 3, .word = 2}}};
  const std::string bytes = file.bytes();
  const LdfSurvey survey(bytes);
  EXPECT_TRUE(survey.pairs()[0].replaced);
  EXPECT_FALSE(survey.pairs()[1].replaced);
  EXPECT_EQ(survey.damage_count(), 0U);
}

TEST(LdfSurvey, RecordOfSeveralPairs_BelongsToTheOneOfItsIdThatCounts) {
  const qz_test::LdfFile file{.entries = {{.id = 3}}, .map = {{{9, 0}, {3, 0}, {3, 0}}}};
  const std::string bytes = file.bytes();
  const LdfSurvey survey(bytes);
  EXPECT_TRUE(survey.pairs()[0].shared);
  EXPECT_TRUE(survey.pairs()[1].shared);
  EXPECT_FALSE(survey.pairs()[2].shared);
  EXPECT_EQ(survey.regions().back().pair, 2U);
}

TEST(LdfSurvey, MapInTheHeader_Overlaps) {
  const std::string bytes = with_int4(example_bytes(), 56, 56);
  const Texts damages = damages_of(bytes);
  EXPECT_NE(
      std::find(damages.begin(), damages.end(), "56 the entry map overlaps the header (which begins at offset 0)"),
      damages.end());
}

TEST(LdfSurvey, OverlappingRecords_AreReadAsOftenAsTheFileIsLarge) {
  // Every second word begins a record whose message ID reaches to the end, where the records share their rest.
  constexpr unsigned kCount = 20000;
  std::string map;
  std::string records;
  const unsigned base = 128 + kCount * 8;
  const unsigned text_end = base + kCount * 16 + 16;
  for (unsigned i = 0; i < kCount; ++i) {
    const unsigned at = base + i * 16;
    map += int4(i) + int4(at);
    records += int4(i) + int4(0) + int4(0) + int4(text_end - at - 16);
  }
  std::string bytes = with_int4(with_int4(std::string(128, '\0'), 48, kCount), 56, 128) + map + records;
  bytes = with_int4(bytes, 0, 0x2E4C4446) + std::string(16 + 16, '\0');
  const LdfSurvey survey(bytes);
  EXPECT_FALSE(survey.pairs().front().unread);
  EXPECT_TRUE(survey.pairs().back().unread);
  const Texts damages = damages_of(bytes);
  EXPECT_NE(std::find_if(damages.begin(), damages.end(),
                         [](const std::string& text) { return text.find("of them are not read") != text.npos; }),
            damages.end());
  EXPECT_FALSE(annotation_of(bytes).empty());
  EXPECT_FALSE(json_of(bytes).empty());
}

TEST(LdfSurvey, ManyDamages_AreCountedAndTheFirstAreKept) {
  qz_test::LdfFile file{.entries = qz_test::numbered_entries(1, 300)};
  const qz_test::LdfImage image = file.image();
  std::string bytes = image.bytes;
  for (const std::size_t offset : image.record_offsets) bytes = with_int4(bytes, offset, 999);
  const LdfSurvey survey(bytes);
  EXPECT_EQ(survey.damages().size(), LdfSurvey::kKeptDamages);
  EXPECT_EQ(survey.damage_count(), 300U);
}

TEST(LdfSurvey, HugeCounts_EndWithTheFile) {
  std::string bytes = example_bytes();
  for (const std::size_t at : {40U, 48U}) bytes = with_int4(bytes, at, 0xFFFFFFFF);
  EXPECT_LE(LdfSurvey(bytes).pairs().size(), bytes.size() / 8);
}

TEST(LdfSurvey, AgreesWithTheStrictReader_OnWhetherAFileIsWhole) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 20000; ++round) {
    const std::string bytes = damaged(example_bytes(), random);
    const LdfSurvey survey(bytes);
    if (read_ldf(bytes).damage) {
      // Of an ID that is listed twice the strict reader reads the later record only; the survey reads both.
      ASSERT_NE(survey.damage_count(), 0U);
    } else if (survey.damage_count() == 0) {
      ASSERT_EQ(survey.globals().size(), read_ldf(bytes).model.globals.size());
    }
  }
}

}  // namespace
}  // namespace qzlog_compiler
