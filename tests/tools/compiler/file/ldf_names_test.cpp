#include "tools/compiler/file/ldf_names.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "definitions/event_names.h"
#include "tests/support/ldf_file.h"
#include "tests/support/names_section.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"
#include "tests/tools/compiler/example_model.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/file/ldf_writer.h"
#include "tools/compiler/model/sensitivity.h"

namespace qzlog_compiler {
namespace {

using qz_test::NamesSection;
using qz_test::SeededRandom;
using qz_test::with_names;
using qz_test::with_section;
using qzlog::Sensitivity;

const NamesSection kNames{.events = {{7, {"FULL", "No room."}}, {9, {"READY", ""}}},
                          .marks = {{{0, 0, "HOST"}, 1}, {{1, 7, "Name"}, 2}}};

/// What the names of kNames are of.
DefinitionModel model() {
  DefinitionModel made;
  made.version = "1.0";
  made.has_names = true;
  made.globals = {{"HOST", TypeMBChar64, "", {}, Sensitivity::kHash}, {"USER", TypeMBChar64, "", {}}};
  made.entries.resize(2);
  made.entries[0].id = 9;
  made.entries[0].name = "READY";
  made.entries[1].id = 7;
  made.entries[1].name = "FULL";
  made.entries[1].summary = "No room.";
  made.entries[1].attributes = {{"Name", TypeChar32, "", {}, Sensitivity::kDrop}, {"N", TypeUInt4, "", {}}};
  return made;
}

std::string named_file() {
  std::string file = write_ldf(model());
  append_names(model(), file);
  return file;
}

TEST(NamesWriter, Model_GivesTheStatedBytes) { EXPECT_EQ(named_file(), with_names(write_ldf(model()), kNames)); }

TEST(NamesWriter, NothingToSay_AppendsNothing) {
  DefinitionModel nameless = model();
  nameless.globals.clear();
  nameless.entries.clear();
  std::string file = "records";
  append_names(nameless, file);
  EXPECT_EQ(file, "records");
}

TEST(NamesWriter, MoreThanASectionHolds_Thrown) {
  DefinitionModel large = model();
  large.entries[0].summary.assign(qzlog::ldf::kLargestNames, 'x');
  std::string file;
  EXPECT_THROW(append_names(large, file), std::length_error);
}

TEST(NamesReader, WholeFile_GivesTheModelItsNamesAndMarks) {
  const LdfFile file = read_ldf(named_file());
  EXPECT_FALSE(file.damage || file.names_damage);
  EXPECT_TRUE(file.model.has_names);
  EXPECT_EQ(file.model.entries.at(0).name, "FULL");
  EXPECT_EQ(file.model.entries.at(0).summary, "No room.");
  EXPECT_EQ(file.model.entries.at(0).attributes.at(0).sensitivity, Sensitivity::kDrop);
  EXPECT_EQ(file.model.entries.at(0).attributes.at(1).sensitivity, Sensitivity::kKeep);
  EXPECT_EQ(file.model.entries.at(1).name, "READY");
  EXPECT_EQ(file.model.globals.at(0).sensitivity, Sensitivity::kHash);
  EXPECT_EQ(file.model.globals.at(1).sensitivity, Sensitivity::kKeep);
}

TEST(NamesReader, FileWithoutSection_HasNoNamesAndNoDamage) {
  const LdfFile file = read_ldf(write_ldf(model()));
  EXPECT_FALSE(file.damage || file.names_damage || file.model.has_names);
  const LdfFile other = read_ldf(write_ldf(model()) + "bytes of somebody else behind the last record");
  EXPECT_FALSE(other.damage || other.names_damage || other.model.has_names);
}

TEST(NamesReader, EveryByteFlipped_IsDamageOfTheNamesAlone) {
  const std::string whole = named_file();
  for (std::size_t at = write_ldf(model()).size(); at < whole.size(); ++at) {
    const LdfFile file = read_ldf(qz_test::flipped_byte(whole, at));
    ASSERT_FALSE(file.damage) << at;
    ASSERT_TRUE(file.names_damage) << at;
    ASSERT_FALSE(file.model.has_names) << at;
    ASSERT_EQ(file.model.entries.at(0).name, "") << at;
  }
}

TEST(NamesReader, CutAnywhere_IsDamageOfTheNamesAlone) {
  const std::string whole = named_file();
  for (std::size_t size = write_ldf(model()).size() + 1; size < whole.size(); ++size) {
    const LdfFile file = read_ldf(whole.substr(0, size));
    ASSERT_FALSE(file.damage) << size;
    ASSERT_TRUE(file.names_damage) << size;
    ASSERT_FALSE(file.model.has_names) << size;
  }
}

TEST(NamesReader, AnotherVersion_IsDamage) {
  const LdfFile file = read_ldf(with_section(write_ldf(model()), kNames.bytes(), 2));
  ASSERT_TRUE(file.names_damage);
  EXPECT_EQ(file.names_damage->reason, "the names section has the version 2");
}

TEST(NamesReader, UnknownParts_CountedAndPassedOver) {
  NamesSection names = kNames;
  names.further_parts = {{3, "levels"}, {9, ""}};
  const std::string file = with_names(write_ldf(model()), names);
  const auto read = read_ldf_names(file, write_ldf(model()).size());
  ASSERT_TRUE(read);
  EXPECT_FALSE(read->damage);
  EXPECT_EQ(read->unknown_part_count, 2U);
  EXPECT_EQ(read->events.size(), 2U);
}

TEST(NamesReader, NamesOfUnknownEntries_ChangeNothing) {
  NamesSection names = kNames;
  names.events[8] = {"NOBODY", ""};
  names.marks[{1, 8, "Name"}] = 2;
  names.marks[{0, 0, "NOTHING"}] = 2;
  const LdfFile file = read_ldf(with_names(write_ldf(model()), names));
  EXPECT_TRUE(file.model.has_names);
  EXPECT_EQ(file.model.entries.size(), 2U);
}

// ---- the library's reader beside this one ----

std::unique_ptr<const qzlog::EventNames> read_by_library(const std::string& section) {
  std::unique_ptr<char[]> bytes(new char[section.size()]);
  std::memcpy(bytes.get(), section.data(), section.size());
  return qzlog::EventNames::parse(std::move(bytes), section.size());
}

void expect_same(const std::string& section) {
  const std::string file = with_section(std::string(qzlog::ldf::kHeaderSize, '\0'), section);
  const auto names = read_ldf_names(file, file.size());
  ASSERT_TRUE(names);
  const auto by_library = read_by_library(section);
  ASSERT_EQ(by_library == nullptr, names->damage.has_value());
  if (by_library == nullptr) return;
  for (const LdfNamedEvent& event : names->events) {
    ASSERT_EQ(by_library->find_name(event.id), event.name);
    ASSERT_EQ(by_library->find_summary(event.id), event.summary);
  }
  for (const LdfMarkedAttribute& mark : names->marks) {
    ASSERT_EQ(mark.is_global() ? by_library->global_sensitivity(mark.name)
                               : by_library->sensitivity(mark.entry_id, mark.name),
              sensitivity_of_mark(mark.mark));
  }
}

NamesSection random_section(SeededRandom& random) {
  NamesSection section;
  for (std::size_t i = random.below(4); i > 0; --i) {
    section.events[static_cast<unsigned>(random.below(10))] = {random.text(1 + random.below(4)),
                                                               random.text(random.below(6))};
  }
  for (std::size_t i = random.below(4); i > 0; --i) {
    const auto owner = static_cast<unsigned>(random.below(2));
    section.marks[{owner, owner * static_cast<unsigned>(random.below(5)), random.text(1 + random.below(3))}] =
        static_cast<unsigned>(random.between(1, 4));
  }
  for (std::size_t i = random.below(2); i > 0; --i) {
    section.further_parts.push_back({static_cast<unsigned>(random.between(3, 6)), random.text(random.below(9))});
  }
  return section;
}

TEST(NamesReaders, RandomSections_ReadAlike) {
  SeededRandom random;
  for (int round = 0; round < qz_test::rounds(5000); ++round) {
    const std::string section = random_section(random).bytes();
    expect_same(section);
    if (HasFatalFailure()) return;
  }
}

TEST(NamesReaders, DamagedSectionsWithRightChecksums_ReadOrRefusedAlike) {
  SeededRandom random;
  for (int round = 0; round < qz_test::rounds(50'000); ++round) {
    std::string section = random_section(random).bytes();
    for (std::size_t i = 1 + random.below(2); i > 0; --i) {
      section[random.below(section.size())] = static_cast<char>(random.one_in(2) ? random.below(5) : random.below(256));
    }
    if (random.one_in(8)) section.resize(4 + random.below(section.size() - 3));
    expect_same(section);
    if (HasFatalFailure()) return;
  }
}

/// As the library's reader refuses them, see event_names_test.cpp.
TEST(NamesReaders, EveryPrefixWithARightChecksum_ReadOrRefusedAlike) {
  const std::string section = kNames.bytes();
  for (std::size_t size = 4; size <= section.size(); ++size) expect_same(section.substr(0, size));
}

}  // namespace
}  // namespace qzlog_compiler
