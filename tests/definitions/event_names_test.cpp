#include "definitions/event_names.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "definitions/names_trailer.h"
#include "tests/support/ldf_file.h"
#include "tests/support/names_section.h"
#include "tests/support/rounds.h"
#include "tests/support/support.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of the fixtures
using qzlog::EventNames;
using qzlog::Sensitivity;

std::unique_ptr<const EventNames> parsed(const std::string& bytes) {
  // Exactly as large as the section, so that the sanitizer sees what is read behind it.
  std::unique_ptr<char[]> copy(new char[bytes.size()]);
  std::memcpy(copy.get(), bytes.data(), bytes.size());
  return EventNames::parse(std::move(copy), bytes.size());
}

const NamesSection kExample{.events = {{7, {"FULL", "No room."}}, {9, {"READY", ""}}},
                            .marks = {{{0, 0, "USER"}, 1}, {{1, 7, "Secret"}, 2}}};

std::string text_of(const char* text) { return text == nullptr ? "(null)" : text; }

TEST(EventNames, Example_KnowsNamesSummariesAndIds) {
  const auto names = parsed(kExample.bytes());
  ASSERT_NE(names, nullptr);
  EXPECT_STREQ(names->find_name(7), "FULL");
  EXPECT_STREQ(names->find_summary(7), "No room.");
  EXPECT_STREQ(names->find_name(9), "READY");
  EXPECT_STREQ(names->find_summary(9), "");
  EXPECT_EQ(names->find_name(8), nullptr);
  EXPECT_EQ(names->find_summary(10), nullptr);
  unsigned id = 1;
  EXPECT_TRUE(names->find_id("READY", id));
  EXPECT_EQ(id, 9U);
  EXPECT_FALSE(names->find_id("READ", id));
  EXPECT_FALSE(names->find_id("", id));
  EXPECT_EQ(id, 9U);
}

TEST(EventNames, Example_KnowsMarks) {
  const auto names = parsed(kExample.bytes());
  ASSERT_NE(names, nullptr);
  EXPECT_TRUE(names->has_marks());
  EXPECT_EQ(names->global_sensitivity("USER"), Sensitivity::kHash);
  EXPECT_EQ(names->sensitivity(7, "USER"), Sensitivity::kKeep);
  EXPECT_EQ(names->sensitivity(7, "Secret"), Sensitivity::kDrop);
  EXPECT_EQ(names->sensitivity(9, "Secret"), Sensitivity::kKeep);
  EXPECT_EQ(names->global_sensitivity("Secret"), Sensitivity::kKeep);
  EXPECT_EQ(names->strictest("Secret"), Sensitivity::kDrop);
  EXPECT_EQ(names->strictest("Other"), Sensitivity::kKeep);
}

TEST(EventNames, NoneAndUnreadable_KnowNothingAndDropEverything) {
  unsigned id = 0;
  for (const EventNames* const names : {&EventNames::none(), &EventNames::unreadable()}) {
    EXPECT_EQ(names->find_name(0), nullptr);
    EXPECT_FALSE(names->find_id("A", id));
  }
  EXPECT_FALSE(EventNames::none().has_marks());
  EXPECT_EQ(EventNames::none().sensitivity(1, "a"), Sensitivity::kKeep);
  EXPECT_TRUE(EventNames::unreadable().has_marks());
  EXPECT_EQ(EventNames::unreadable().sensitivity(1, "a"), Sensitivity::kDrop);
  EXPECT_EQ(EventNames::unreadable().strictest("a"), Sensitivity::kDrop);
}

TEST(EventNames, SectionWithoutParts_HasNothing) {
  const auto names = parsed("QNAM");
  ASSERT_NE(names, nullptr);
  EXPECT_EQ(names->find_name(7), nullptr);
  EXPECT_FALSE(names->has_marks());
}

TEST(EventNames, NameTwice_LowestIdCounts) {
  const auto names = parsed(NamesSection{.events = {{9, {"A", ""}}, {4, {"A", ""}}, {12, {"A", ""}}}}.bytes());
  unsigned id = 0;
  ASSERT_TRUE(names->find_id("A", id));
  EXPECT_EQ(id, 4U);
  EXPECT_STREQ(names->find_name(12), "A");
}

TEST(EventNames, UnknownParts_PassedOver) {
  NamesSection section = kExample;
  section.further_parts = {{3, "levels"}, {0xFFFFFFFF, ""}, {0, std::string(5000, '\xFF')}, {3, "again"}};
  const auto names = parsed(section.bytes() + part(77, "behind"));
  ASSERT_NE(names, nullptr);
  EXPECT_STREQ(names->find_name(9), "READY");
  EXPECT_EQ(names->sensitivity(7, "Secret"), Sensitivity::kDrop);
}

TEST(EventNames, UnknownMark_CountsAsDrop) {
  const auto names = parsed(NamesSection{.marks = {{{1, 7, "a"}, 3}, {{1, 7, "b"}, 0xFFFFFFFF}}}.bytes());
  ASSERT_NE(names, nullptr);
  EXPECT_EQ(names->sensitivity(7, "a"), Sensitivity::kDrop);
  EXPECT_EQ(names->sensitivity(7, "b"), Sensitivity::kDrop);
}

struct Malformed {
  const char* what;
  std::string bytes;
};

std::string event(unsigned id, const std::string& name, const std::string& summary = int4(0)) {
  return int4(id) + name + summary;
}

std::vector<Malformed> malformed_sections() {
  const std::string a = ldf_string("A");
  const std::string magic = "QNAM";
  return {
      {"empty", ""},
      {"another magic", "QNAX"},
      {"half a part header", magic + int4(1)},
      {"a part beyond the end", magic + int4(3) + int4(1)},
      {"a huge part", magic + int4(3) + int4(0xFFFFFFFF)},
      {"an empty events part", magic + part(1, "")},
      {"a huge count", magic + part(1, int4(0xFFFFFFFF) + event(1, a))},
      {"a count too large", magic + part(1, int4(2) + event(1, a))},
      {"a count too small", magic + part(1, int4(0) + event(1, a))},
      {"a name with a huge length", magic + part(1, int4(1) + event(1, int4(0xFFFFFFFF) + "AAAA"))},
      {"a name beyond its part", magic + part(1, int4(1) + event(1, int4(9) + "A")) + part(3, "long enough for it")},
      {"an empty name", magic + part(1, int4(1) + event(1, int4(0)) + "")},
      {"a name of one zero byte", magic + part(1, int4(1) + event(1, int4(1) + '\0'))},
      {"a name without a zero byte", magic + part(1, int4(1) + event(1, int4(2) + "AB"))},
      {"a zero byte within a name", magic + part(1, int4(1) + event(1, int4(4) + std::string("A\0B\0", 4)))},
      {"a summary without a zero byte", magic + part(1, int4(1) + event(1, a, int4(1) + "x"))},
      {"an ID twice", magic + part(1, int4(2) + event(1, a) + event(1, a))},
      {"IDs that fall", magic + part(1, int4(2) + event(2, a) + event(1, a))},
      {"events twice", magic + part(1, int4(0)) + part(1, int4(0))},
      {"marks twice", magic + part(2, int4(0)) + part(2, int4(0))},
      {"a huge count of marks", magic + part(2, int4(0x10000000))},
      {"an unknown owner", magic + part(2, int4(1) + int4(2) + int4(0) + a + int4(1))},
      {"a global mark with an ID", magic + part(2, int4(1) + int4(0) + int4(7) + a + int4(1))},
      {"a mark to keep", magic + part(2, int4(1) + int4(1) + int4(7) + a + int4(0))},
      {"a mark twice", magic + part(2, int4(2) + int4(1) + int4(7) + a + int4(1) + int4(1) + int4(7) + a + int4(1))},
      {"marks that fall",
       magic + part(2, int4(2) + int4(1) + int4(7) + ldf_string("B") + int4(1) + int4(1) + int4(7) + a + int4(1))},
  };
}

TEST(EventNames, MalformedSection_RefusedAsAWhole) {
  for (const Malformed& section : malformed_sections()) EXPECT_EQ(parsed(section.bytes), nullptr) << section.what;
}

TEST(EventNames, EveryPrefix_RefusedUnlessItEndsBetweenParts) {
  const std::string whole = kExample.bytes();
  unsigned accepted = 0;
  for (std::size_t size = 0; size < whole.size(); ++size) accepted += parsed(whole.substr(0, size)) != nullptr;
  EXPECT_EQ(accepted, 2U);  // the magic number alone, and what ends with the events
}

void expect_same(const EventNames& names, const NamesSection& plain, RandomNumbers& random) {
  for (unsigned id = 0; id < 45; ++id) {
    const auto found = plain.events.find(id);
    const bool known = found != plain.events.end();
    ASSERT_EQ(text_of(names.find_name(id)), known ? found->second.first : "(null)");
    ASSERT_EQ(text_of(names.find_summary(id)), known ? found->second.second : "(null)");
  }
  for (const auto& event : plain.events) {
    const std::string& name = event.second.first;
    const auto lowest = std::find_if(plain.events.begin(), plain.events.end(),
                                     [&name](const auto& other) { return other.second.first == name; });
    unsigned found = 0;
    ASSERT_TRUE(names.find_id(name, found));
    ASSERT_EQ(found, lowest->first);
  }
  for (int i = 0; i < 20; ++i) {
    const NamesSection::MarkedAttribute wanted{static_cast<unsigned>(random.below(2)), 0, random.text(1)};
    for (unsigned id = 0; id < (wanted.owner == 0 ? 1U : 4U); ++id) {
      const auto found = plain.marks.find({wanted.owner, id, wanted.name});
      const unsigned mark = found == plain.marks.end() ? 0 : found->second;
      const Sensitivity sensitivity =
          wanted.owner == 0 ? names.global_sensitivity(wanted.name) : names.sensitivity(id, wanted.name);
      ASSERT_EQ(static_cast<unsigned>(sensitivity), mark);
    }
  }
}

TEST(EventNames, RandomSections_SayWhatAPlainModelSays) {
  SeededRandom random;
  for (int round = 0; round < rounds(2000); ++round) {
    NamesSection plain;
    for (std::size_t i = random.below(30); i > 0; --i) {
      plain.events[static_cast<unsigned>(random.below(40))] = {random.text(1 + random.below(3)),
                                                               random.text(random.below(20))};
    }
    for (std::size_t i = random.below(30); i > 0; --i) {
      const auto owner = static_cast<unsigned>(random.below(2));
      plain.marks[{owner, owner == 0 ? 0 : static_cast<unsigned>(random.below(4)), random.text(1)}] =
          static_cast<unsigned>(random.between(1, 2));
    }
    for (std::size_t i = random.below(3); i > 0; --i) {
      plain.further_parts.push_back({static_cast<unsigned>(random.between(3, 9)), random.text(random.below(40))});
    }
    const auto names = parsed(plain.bytes());
    ASSERT_NE(names, nullptr);
    expect_same(*names, plain, random);
  }
}

TEST(EventNames, DamagedSections_RefusedOrReadInBounds) {
  SeededRandom random;
  const std::string whole = kExample.bytes();
  for (int round = 0; round < rounds(50'000); ++round) {
    std::string bytes = whole;
    for (std::size_t i = 1 + random.below(3); i > 0; --i) {
      bytes[random.below(bytes.size())] = static_cast<char>(random.one_in(2) ? random.below(6) : random.below(256));
    }
    const auto names = parsed(bytes);
    unsigned id = 0;
    if (names == nullptr || names->find_name(7) == nullptr) continue;
    EXPECT_TRUE(names->find_id(names->find_name(7), id));
  }
}

TEST(EventNames, NoMemory_Thrown) {
  const std::string bytes = kExample.bytes();
  EXPECT_GT(FailEveryAllocation([&] {
              std::unique_ptr<char[]> copy(new (std::nothrow) char[bytes.size()]);
              if (copy == nullptr) throw QZX_memory_alloc();
              std::memcpy(copy.get(), bytes.data(), bytes.size());
              EventNames::parse(std::move(copy), bytes.size());
            }),
            3U);
}

// ---- the checksum and the trailer ----

TEST(Crc32, Standard_CheckValue) {
  EXPECT_EQ(qzlog::crc32("123456789"), 0xCBF43926U);
  EXPECT_EQ(qzlog::crc32(""), 0U);
}

TEST(Crc32, RandomTexts_AsBitByBit) {
  SeededRandom random;
  for (int round = 0; round < 200; ++round) {
    const std::string text = random.text(random.below(100));
    EXPECT_EQ(qzlog::crc32(text), plain_crc32(text));
  }
}

std::optional<qzlog::NamesTrailer> trailer_of(const std::string& file) {
  const std::size_t size = std::min<std::size_t>(file.size(), qzlog::ldf::kTrailerSize);
  return qzlog::read_names_trailer(std::string_view(file).substr(file.size() - size), file.size());
}

TEST(NamesTrailer, WholeFile_SaysWhereTheRecordsEnd) {
  const std::string file = with_names(std::string(200, 'r'), kExample);
  const auto trailer = trailer_of(file);
  ASSERT_TRUE(trailer);
  EXPECT_EQ(trailer->version, 1U);
  EXPECT_EQ(trailer->offset, 200U);
  EXPECT_EQ(trailer->size, kExample.bytes().size());
}

TEST(NamesTrailer, EveryFlippedBitAndEveryOtherFileSize_Refused) {
  const std::string file = with_names(std::string(200, 'r'), kExample);
  for (std::size_t position = file.size() - qzlog::ldf::kTrailerSize; position < file.size(); ++position) {
    for (unsigned bit = 0; bit < 8; ++bit) EXPECT_FALSE(trailer_of(flipped_bit(file, position, bit))) << position;
  }
  for (std::size_t size = 0; size < file.size(); ++size) EXPECT_FALSE(trailer_of(file.substr(0, size))) << size;
  EXPECT_FALSE(trailer_of(file + '\0'));
}

std::string trailer(unsigned offset, unsigned size) {
  std::string bytes = "QNAM" + int4(1) + int4(offset) + int4(size) + int4(0);
  return bytes + int4(plain_crc32(bytes));
}

TEST(NamesTrailer, HostileNumbers_Refused) {
  constexpr std::uint64_t kSize = 1000;
  EXPECT_TRUE(qzlog::read_names_trailer(trailer(200, 776), kSize));
  EXPECT_FALSE(qzlog::read_names_trailer(trailer(201, 776), kSize));
  EXPECT_FALSE(qzlog::read_names_trailer(trailer(100, 876), kSize)) << "within the header";
  EXPECT_FALSE(qzlog::read_names_trailer(trailer(973, 3), kSize)) << "too small for its magic number";
  EXPECT_FALSE(qzlog::read_names_trailer(trailer(0xFFFFFFFF, 977), kSize)) << "the sum wraps";
  EXPECT_FALSE(qzlog::read_names_trailer(trailer(200, 0xFFFFFFFF), 200ULL + 0xFFFFFFFF + 24)) << "too large";
}

}  // namespace
