#include <cerrno>
#include <string>

#include "tests/definitions/table_test.h"
#include "tests/support/call_failure.h"
#include "tests/support/names_section.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h
using qzlog::KnownName;
using qzlog::Sensitivity;

const LdfFile kFile{
    .tag = "1.0",
    .globals = {{"USER", TypeChar32}, {"HOST", TypeChar32}},
    .entries = {{.id = 7, .message_text = "m", .attributes = {{"Secret", TypeChar32}, {"N", TypeUInt4}}},
                {.id = 9, .message_text = "m", .attributes = {{"HOST", TypeChar32}}}}};
const NamesSection kNames{.events = {{7, {"FULL", "No room."}}, {9, {"READY", ""}}},
                          .marks = {{{0, 0, "HOST"}, 2}, {{0, 0, "USER"}, 1}, {{1, 7, "Secret"}, 2}}};

std::string text_of(const char* text) { return text == nullptr ? "(null)" : text; }

/// "keep", "hash" or "drop" for an attribute of a definition.
std::string mark(const _qz_LOG_log_definition& definition, const char* name) {
  constexpr const char* kTexts[] = {"keep", "hash", "drop"};
  return kTexts[static_cast<int>(definition.find_sensitivity(KnownName::of(name)))];
}

class LdfNames : public TableTest {
 protected:
  std::string name(unsigned id) const { return text_of(table_.find_event_name(id)); }
  std::string id_of(const char* wanted) const {
    unsigned id = 0;
    return table_.find_event_id(wanted, id) ? std::to_string(id) : "(none)";
  }
};

TEST_F(LdfNames, NoFile_KnowsNothing) {
  EXPECT_EQ(name(7), "(null)");
  EXPECT_EQ(id_of("FULL"), "(none)");
}

TEST_F(LdfNames, FileWithoutSection_KnowsNothingAndKeepsAll) {
  set_std(kFile);
  EXPECT_EQ(name(7), "(null)");
  EXPECT_EQ(id_of("FULL"), "(none)");
  EXPECT_EQ(at(7).get_event_name(), nullptr);
  EXPECT_FALSE(at(7).may_have_marks());
  EXPECT_EQ(mark(at(7), "Secret"), "keep");
}

TEST_F(LdfNames, FileWithSection_KnowsNamesAndMarks) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  EXPECT_EQ(name(7), "FULL");
  EXPECT_EQ(name(8), "(null)");
  EXPECT_EQ(id_of("READY"), "9");
  EXPECT_STREQ(at(7).get_event_name()->text(), "FULL");
  EXPECT_EQ(mark(at(7), "Secret"), "drop");
  EXPECT_EQ(mark(at(7), "N"), "keep");
  EXPECT_EQ(mark(at(7), "USER"), "hash");
  EXPECT_EQ(mark(at(7), "HOST"), "drop");
}

TEST_F(LdfNames, OwnAttribute_HidesTheGlobalOnesMark) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  EXPECT_EQ(mark(at(9), "HOST"), "keep");
}

TEST_F(LdfNames, AttributeThatTheDefinitionLacks_HasTheStrictestMarkOfItsName) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  EXPECT_EQ(mark(at(9), "Secret"), "drop");
  EXPECT_EQ(mark(at(9), "Unheard"), "keep");
}

TEST_F(LdfNames, RecordsAreReadAsWithoutSection) {
  set_std(kFile);
  const Texts without = own_attributes(at(7));
  set_std_bytes(with_names(kFile.bytes(), kNames));
  EXPECT_EQ(own_attributes(at(7)), without);
  EXPECT_EQ(global_attributes(), Texts({"USER:9", "HOST:9"}));
}

TEST_F(LdfNames, LoadingAndLookups_LeaveTheRecordsThatTheyLeftBefore) {
  const auto records_of = [&](const std::string& bytes) {
    const DebugLogFile log(3);
    set_std_bytes(bytes);
    at(7);
    return log.unnumbered_records();
  };
  const Texts without = records_of(kFile.bytes());
  EXPECT_EQ(records_of(with_names(kFile.bytes(), kNames)), without);
}

TEST_F(LdfNames, TwoFiles_StandardNameFirst) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const auto before = table_.acquire_entry(7);
  EXPECT_STREQ(before->get_event_name()->text(), "FULL");
  const LdfFile aux{.entries = {{.id = 7, .attributes = {{"Pool", TypeChar32}}},
                                {.id = 11, .message_text = "m", .attributes = {{"Key", TypeChar32}}}}};
  set_aux_bytes(with_names(aux.bytes(), {.events = {{7, {"OTHER", ""}}, {11, {"MORE", ""}}},
                                         .marks = {{{1, 7, "Pool"}, 1}, {{1, 11, "Key"}, 2}}}));
  EXPECT_EQ(name(7), "FULL");
  EXPECT_EQ(name(11), "MORE");
  EXPECT_EQ(id_of("OTHER"), "7");
  EXPECT_STREQ(at(7).get_event_name()->text(), "FULL");
  EXPECT_EQ(mark(at(7), "Secret"), "drop");
  EXPECT_EQ(mark(at(7), "Pool"), "hash");
  EXPECT_EQ(mark(at(11), "Key"), "drop");
}

TEST_F(LdfNames, GlobalOfAuxiliaryFile_MarkedOnceItIsLoaded) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  EXPECT_EQ(mark(at(7), "TOKEN"), "keep");
  const LdfFile aux{.globals = {{"TOKEN", TypeChar32}, {"USER", TypeChar32}}};
  set_aux_bytes(with_names(aux.bytes(), {.marks = {{{0, 0, "TOKEN"}, 2}}}));
  EXPECT_EQ(mark(at(7), "TOKEN"), "drop");
  EXPECT_EQ(mark(at(7), "USER"), "keep") << "the auxiliary file's global attribute replaced the marked one";
}

// ---- what outlives the file ----

TEST_F(LdfNames, DefinitionThatOutlivesItsFile_KnowsItsNameAndMarks) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const auto held = table_.acquire_entry(7);
  const auto files = open_file_count();
  table_.clear();
  EXPECT_EQ(open_file_count(), files - 1);
  EXPECT_EQ(name(7), "(null)");
  EXPECT_STREQ(held->get_event_name()->text(), "FULL");
  EXPECT_EQ(mark(*held.get(), "Secret"), "drop");
}

TEST_F(LdfNames, GlobalThatOutlivesItsFile_KeepsItsMark) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  set_std(LdfFile{.entries = {{.id = 7, .message_text = "m"}}});
  EXPECT_EQ(mark(at(7), "USER"), "hash");
  _qz_LOG_log_definition::clear_global_attr_info();
  EXPECT_EQ(mark(at(7), "USER"), "keep");
}

TEST_F(LdfNames, FileThatCannotBeReadAtTheEnd_LeavesEverythingMarked) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const auto held = table_.acquire_entry(7);
  {
    const CallFailure failure(FileCall::kRead, EIO);
    table_.clear();
  }
  EXPECT_EQ(held->get_event_name(), nullptr);
  EXPECT_EQ(mark(*held.get(), "Secret"), "drop");
  EXPECT_EQ(mark(*held.get(), "N"), "drop");
}

TEST_F(LdfNames, NoMemoryAtTheEnd_LeavesEverythingMarked) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const auto held = table_.acquire_entry(7);
  {
    const AllocationFailure failure(1, AllocationFailure::kFromThenOn);
    table_.clear();
  }
  EXPECT_EQ(mark(*held.get(), "Secret"), "drop");
}

TEST_F(LdfNames, EvictedDefinition_ReadAgainWithItsName) {
  LdfFile file{.entries = numbered_entries(1, 200)};
  set_std_bytes(with_names(file.bytes(), {.events = {{1, {"ONE", ""}}, {200, {"LAST", ""}}}}));
  const auto held = table_.acquire_entry(1);
  for (unsigned id = 1; id <= 200; ++id) at(id);
  EXPECT_STREQ(held->get_event_name()->text(), "ONE");
  EXPECT_STREQ(at(1).get_event_name()->text(), "ONE");
  EXPECT_STREQ(at(200).get_event_name()->text(), "LAST");
}

// ---- damage ----

TEST_F(LdfNames, EveryByteFlipped_SectionIgnoredAndRecordsReadAsBefore) {
  const std::string records = kFile.bytes();
  const std::string whole = with_names(records, kNames);
  for (std::size_t position = records.size(); position < whole.size(); ++position) {
    set_std_bytes(flipped_byte(whole, position));
    ASSERT_EQ(name(7), "(null)") << position;
    ASSERT_EQ(mark(at(7), "Secret"), "keep") << position;
    ASSERT_EQ(own_attributes(at(7)), Texts({"Secret:9>", "N:6>"})) << position;
  }
}

TEST_F(LdfNames, CutAnywhereBehindTheRecords_SectionIgnored) {
  const std::string records = kFile.bytes();
  const std::string whole = with_names(records, kNames);
  for (std::size_t size = records.size(); size < whole.size(); ++size) {
    set_std_bytes(whole.substr(0, size));
    ASSERT_EQ(name(7), "(null)") << size;
    ASSERT_EQ(own_attributes(at(7)), Texts({"Secret:9>", "N:6>"})) << size;
  }
}

TEST_F(LdfNames, AnotherVersion_Ignored) {
  set_std_bytes(with_section(kFile.bytes(), kNames.bytes(), 2));
  EXPECT_EQ(name(7), "(null)");
  EXPECT_EQ(mark(at(7), "Secret"), "keep");
}

TEST_F(LdfNames, MalformedSectionWithRightChecksum_Ignored) {
  set_std_bytes(with_section(kFile.bytes(), "QNAM" + int4(1) + int4(0xFFFFFFFF)));
  EXPECT_EQ(name(7), "(null)");
}

TEST_F(LdfNames, FileThatCannotBeRead_AskedAgain) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const auto held = table_.acquire_entry(7);
  for (const FileCall call : {FileCall::kRead, FileCall::kStatus}) {
    const CallFailure failure(call, EIO);
    EXPECT_EQ(held->get_event_name(), nullptr);
    EXPECT_EQ(mark(*held.get(), "N"), "drop") << "what may be marked must not be written";
  }
  EXPECT_STREQ(held->get_event_name()->text(), "FULL");
  EXPECT_EQ(mark(*held.get(), "N"), "keep");
}

TEST_F(LdfNames, ShortReads_PutTogether) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const ShortTransfers transfers;
  EXPECT_EQ(name(9), "READY");
}

TEST_F(LdfNames, NoMemory_ThrownAndAskedAgain) {
  set_std_bytes(with_names(kFile.bytes(), kNames));
  const auto held = table_.acquire_entry(7);
  EXPECT_GT(FailEveryAllocation([&] { held->get_event_name(); }), 3U);
  EXPECT_STREQ(held->get_event_name()->text(), "FULL");
}

TEST_F(LdfNames, FileCutAfterItWasLoaded_SectionUnknown) {
  const std::string path = write("std.ldf", with_names(kFile.bytes(), kNames));
  table_.set_precompiled_definition_file_path(path.c_str());
  std::filesystem::resize_file(path, 10);
  EXPECT_EQ(name(7), "(null)");
}

}  // namespace
