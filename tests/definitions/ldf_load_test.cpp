#include "definitions/ldf_load.h"

#include <algorithm>

#include "qzlog/debug_log.h"
#include "tests/definitions/table_test.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

using LdfLoad = TableTest;

constexpr const char* kLoads = "ldf_load:# _qz_LOG_log_definition_tbl::_set_definition_file_path\n";
constexpr const char* kClears = "ldf_load:# _qz_LOG_log_definition_tbl::clear() \n";
constexpr const char* kNotIndexed = "ldf_load:# _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false\n";
constexpr const char* kNoStream =
    "ldf_load:# _qz_LOG_log_definition_tbl::_retrieve_entry_definition return false pfile=0\n";
constexpr const char* kRetrieved = "ldf_load:# _qz_LOG_log_definition_tbl::_retrieve_entry_definition return true\n";
constexpr const char* kIoError = "ldf_load:# _throw_file_io_error()\n";

std::string looks_up(int cached) {
  return "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const n_entry_definitions_cached:" +
         std::to_string(cached) + "\n";
}
std::string finds_nothing(int cached) {
  return "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const return 0 " + std::to_string(cached) + "\n";
}
std::string reads(int cached) {
  return "ldf_load:# _qz_LOG_log_definition_tbl::_find_entry_non_const return p_entry_definition " +
         std::to_string(cached) + "\n";
}

LdfEntry full_entry() {
  return {.id = 7,
          .word = 0x80000001,
          .mask = 0x04000002,
          .message_id = "MSG_7",
          .message_text = "%user% did %what%",
          .selector = "what",
          .attributes = {{"user", TypeMBChar64, "account"}, {"what", TypeUInt4, ""}},
          .selector_messages = {{1, 10, "MSG_7_1", "one"}, {5, 50, "", "five"}}};
}

void expect_full_entry(const _qz_LOG_log_definition& definition, const char* tag) {
  EXPECT_EQ(definition.get_entry_id(), 7U);
  EXPECT_EQ(definition.get_entry_word(), 0x80000001U);
  EXPECT_EQ(definition.get_property_mask(), 0x04000002U);
  EXPECT_STREQ(definition.get_version_tag(), tag);
  EXPECT_EQ(default_message(definition), "MSG_7|%user% did %what%");
  EXPECT_EQ(selector_of(definition), "what");
  EXPECT_EQ(own_attributes(definition), Texts({"user:16>account", "what:6>"}));
  EXPECT_EQ(selector_messages(definition), Texts({"1=10 MSG_7_1|one", "5=50 |five"}));
}

// ---- a file as it should be ----

TEST_F(LdfLoad, FileWrittenByHand_Read) {
  std::string bytes = ".LDF" + std::string(12, '\0') + "1.25" + std::string(4, '\0') + std::string(16, '\0');
  bytes += int4(1) + int4(128) + int4(1) + int4(0) + int4(147) + std::string(68, '\0');
  ASSERT_EQ(bytes.size(), 128U);
  bytes += std::string("\0\0\0\2g\0\0\0\0\1\0\0\0\5away\0", 19);       // global attribute
  bytes += std::string("\0\0\1\2\0\0\0\x9B", 8);                       // entry map
  bytes += std::string("\0\0\1\2\0\0\0\3\0\0\0\4", 12);                // ID, word, mask
  bytes += std::string("\0\0\0\2I\0\0\0\0\2T\0\0\0\0\0\0\0\0\1", 20);  // message, no selector, one attribute
  bytes += std::string("\0\0\0\2a\0\0\0\0\x9\0\0\0\0", 14) + int4(0);  // attribute, no selector messages
  set_std_bytes(bytes);
  const auto& definition = at(258);
  EXPECT_EQ(definition.get_entry_word(), 3U);
  EXPECT_EQ(definition.get_property_mask(), 4U);
  EXPECT_STREQ(definition.get_version_tag(), "1.25");
  EXPECT_EQ(default_message(definition), "I|T");
  EXPECT_EQ(own_attributes(definition), Texts({"a:9>"}));
  EXPECT_EQ(global_attributes(), Texts({"g:1"}));
}

TEST_F(LdfLoad, FullEntry_EveryFieldRead) {
  set_std({.tag = "2.05", .entries = {full_entry()}});
  expect_full_entry(at(7), "2.05");
}

TEST_F(LdfLoad, RegionsInAnyOrderWithGaps_ReadAlike) {
  std::string order = "gmr";
  do {
    SCOPED_TRACE(order);
    set_std({.tag = "2.05",
             .globals = {{"g", 3}},
             .entries = {{.id = 1}, full_entry(), {.id = 2}},
             .region_order = order,
             .gap = "\xFF\xFF\xFF"});
    expect_full_entry(at(7), "2.05");
    at(1);
    at(2);
    EXPECT_EQ(global_attributes(), Texts({"g:3"}));
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(LdfLoad, VersionTag_EightCharactersOrUpToTheFirstZeroByte) {
  for (const char* tag : {"", "1", "1.25", "1234567", "12345678"}) {
    set_std({.tag = tag, .entries = {{.id = 1}}});
    EXPECT_STREQ(at(1).get_version_tag(), tag);
  }
  set_std({.tag = std::string("1.2\0zzz", 7), .entries = {{.id = 1}}});
  EXPECT_STREQ(at(1).get_version_tag(), "1.2");
}

TEST_F(LdfLoad, ShorterTagAfterLongerOne_NothingOfTheFormerLeft) {
  set_std({.tag = "12345678", .entries = {{.id = 1}}});
  set_std({.tag = "9", .entries = {{.id = 1}}});
  EXPECT_STREQ(at(1).get_version_tag(), "9");
}

TEST_F(LdfLoad, ExtremeIds_Found) {
  set_std({.entries = {{.id = 0, .word = 10}, {.id = 0xFFFFFFFF, .word = 11}, {.id = 0x80000000, .word = 12}}});
  EXPECT_EQ(at(0).get_entry_word(), 10U);
  EXPECT_EQ(at(0xFFFFFFFF).get_entry_word(), 11U);
  EXPECT_EQ(at(0x80000000).get_entry_word(), 12U);
}

TEST_F(LdfLoad, EntryMapWithSameIdTwice_LaterPair) {
  set_std({.entries = {{.id = 1, .word = 10}, {.id = 1, .word = 20}, {.id = 2}}});
  EXPECT_EQ(at(1).get_entry_word(), 20U);
  set_std({.entries = {{.id = 1, .word = 10}, {.id = 1, .word = 20}}, .map = {{{1, 1}, {1, 0}}}});
  EXPECT_EQ(at(1).get_entry_word(), 10U);
}

TEST_F(LdfLoad, EntryMapPairRepeated_AsOnce) {
  const LdfImage image = LdfFile{.entries = {full_entry()}, .region_order = "grm"}.image();
  set_std_bytes(with_int4(repeated(image.bytes, image.map_offset, 8), 48, 2));
  expect_full_entry(at(7), "");
}

TEST_F(LdfLoad, TwoIdsAtOneRecord_TheOtherIdIsCorrupted) {
  set_std({.entries = {{.id = 1}}, .map = {{{1, 0}, {2, 0}}}});
  at(1);
  EXPECT_EQ(thrown_by([&] { table_.find_entry(2); }), invalid_definition(kCorrupted));
}

TEST_F(LdfLoad, GlobalAttributes_NameAndTypeKeptRedirectionDropped) {
  set_std({.globals = {{"a", TypeUInt1, "away"}, {"b", 0x1FF}, {"a", TypeUInt2}}, .entries = {{.id = 1}}});
  EXPECT_EQ(global_attributes(), Texts({"b:255", "a:4"}));
  unsigned char type = 0;
  const char* redirection_name = "former";
  EXPECT_TRUE(at(1).get_attr_info_by_name("a", type, redirection_name));
  EXPECT_EQ(redirection_name, nullptr);
}

TEST_F(LdfLoad, GlobalAttributes255Or257_KeptOrWrapped) {
  const auto globals = [](int count) {
    std::vector<LdfAttribute> attributes;
    for (int i = 1; i <= count; ++i) attributes.push_back({"g" + std::to_string(i), 1});
    return attributes;
  };
  set_std({.globals = globals(255)});
  EXPECT_EQ(global_attributes().size(), 255U);
  _qz_LOG_log_definition::clear_global_attr_info();
  set_std({.globals = globals(256)});
  EXPECT_EQ(global_attributes().size(), 0U);
  set_std({.globals = globals(257)});
  EXPECT_EQ(global_attributes(), Texts({"g257:1"}));
}

TEST_F(LdfLoad, OwnAttributes255To257_KeptOrWrapped) {
  const auto entry = [](unsigned id, int count) {
    LdfEntry result{.id = id, .selector = "a1"};
    for (int i = 1; i <= count; ++i) result.attributes.push_back({"a" + std::to_string(i), 1});
    return result;
  };
  set_std({.entries = {entry(255, 255), entry(256, 256), entry(257, 257)}});
  EXPECT_EQ(at(255).get_attr_count(), 255);
  EXPECT_EQ(selector_of(at(255)), "a1");
  EXPECT_EQ(at(256).get_attr_count(), 0);
  EXPECT_EQ(selector_of(at(256)), "(none)");
  EXPECT_EQ(own_attributes(at(257)), Texts({"a257:1>"}));
}

TEST_F(LdfLoad, SelectorMessages255To257_KeptOrWrapped) {
  const auto entry = [](unsigned count) {
    LdfEntry result{.id = count};
    for (unsigned i = 1; i <= count; ++i) result.selector_messages.push_back({i, i, "ID", "text"});
    return result;
  };
  set_std({.entries = {entry(255), entry(256), entry(257)}});
  EXPECT_EQ(at(255).get_selector_msg_count(), 255);
  EXPECT_EQ(at(256).get_selector_msg_count(), 0);
  EXPECT_EQ(selector_messages(at(257)), Texts({"257=257 ID|text"}));
}

// ---- records ----

TEST_F(LdfLoad, SelectorNameWithoutItsAttribute_NoSelector) {
  set_std({.entries = {{.id = 1, .selector = "missing", .attributes = {{"a", 1}}}}});
  EXPECT_EQ(selector_of(at(1)), "(none)");
}

TEST_F(LdfLoad, EmptySelectorNameAndAttributeWithEmptyName_NoSelector) {
  set_std({.entries = {{.id = 1, .attributes = {{"", 1}, {"a", 2}}}}});
  EXPECT_EQ(selector_of(at(1)), "(none)");
  EXPECT_EQ(own_attributes(at(1)), Texts({":1>", "a:2>"}));
}

TEST_F(LdfLoad, AttributeTwiceInARecord_Refused) {
  set_std({.entries = {{.id = 1, .attributes = {{"user", 1}, {"b", 2}, {"user", 3}}},
                       {.id = 2, .attributes = {{"", 1}, {"", 1}}}}});
  EXPECT_EQ(thrown_by([&] { table_.find_entry(1); }), invalid_definition(already_exists("user")));
  EXPECT_EQ(thrown_by([&] { table_.find_entry(2); }), invalid_definition(already_exists("")));
}

TEST_F(LdfLoad, SelectorAttributeTwiceInARecord_LaterOneReplaces) {
  set_std({.entries = {{.id = 1, .selector = "s", .attributes = {{"s", 1, "first"}, {"b", 2}, {"s", 3, "later"}}}}});
  EXPECT_EQ(own_attributes(at(1)), Texts({"b:2>", "s:3>later"}));
  EXPECT_EQ(selector_of(at(1)), "s");
}

TEST_F(LdfLoad, SelectorMessagesAlikeInAnStdRecord_BothKept) {
  set_std({.entries = {{.id = 1, .selector_messages = {{1, 1, "A", "a"}, {1, 1, "B", "b"}}}}});
  EXPECT_EQ(selector_messages(at(1)), Texts({"1=1 A|a", "1=1 B|b"}));
}

TEST_F(LdfLoad, StoredIdDiffers_CorruptedAtEveryLookupButNotWhenSet) {
  const DebugLogFile log(0);
  set_std({.entries = {{.id = 1, .word = 5}, {.id = 2}}, .map = {{{9, 0}, {2, 1}}}});
  EnableDebugLog(3);
  EXPECT_EQ(thrown_by([&] { table_.find_entry(9); }), invalid_definition(kCorrupted));
  EXPECT_EQ(thrown_by([&] { table_.find_entry(9); }), invalid_definition(kCorrupted));
  EXPECT_EQ(log.unnumbered_records(), Texts({looks_up(0), looks_up(0)}));
  EXPECT_EQ(table_.find_entry(1), nullptr);
  at(2);
}

TEST_F(LdfLoad, StoredIdDiffersAndCountMissing_UnreadableComesFirst) {
  const LdfImage image = LdfFile{.entries = {{.id = 1}}, .map = {{{9, 0}}}}.image();
  const std::size_t count_position = image.record_offsets[0] + 24;
  set_std_bytes(truncated(image.bytes, count_position + 3));
  EXPECT_EQ(thrown_by([&] { table_.find_entry(9); }), invalid_definition(kUnreadable));
  set_std_bytes(truncated(image.bytes, count_position + 4));
  EXPECT_EQ(thrown_by([&] { table_.find_entry(9); }), invalid_definition(kCorrupted));
}

TEST_F(LdfLoad, RecordFailing_NotCachedAndReadAgain) {
  const LdfFile file{.entries = {full_entry()}};
  set_std_bytes(truncated(file.bytes(), file.bytes().size() - 1));
  EXPECT_EQ(thrown_by([&] { table_.find_entry(7); }), invalid_definition(kUnreadable));
  // The file is kept open, so mending it is seen.
  folder_.write("std.ldf", file.bytes());
  expect_full_entry(at(7), "");
}

// ---- failures of setting a file ----

TEST_F(LdfLoad, AuxFileOnNewTable_Refused) {
  EXPECT_EQ(thrown_by([&] { set_aux({.entries = {{.id = 1}}}); }), invalid_definition(kAuxBeforeStd));
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_aux_definition_file_path("/no/such/file"); }),
            invalid_definition(kAuxBeforeStd));
}

TEST_F(LdfLoad, AuxFileAfterClear_Refused) {
  set_std({.entries = {{.id = 1}}});
  table_.clear();
  EXPECT_EQ(thrown_by([&] { set_aux({.entries = {{.id = 2}}}); }), invalid_definition(kAuxBeforeStd));
}

TEST_F(LdfLoad, FileMissing_TextNamesThePath) {
  const std::string path = folder_.path("missing 100% \"file\"");
  const std::string text = "<QZX_logging_invalid_definition> Unable to access definition file \"" + path + "\".";
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_definition_file_path(path.c_str()); }), invalid_definition(text));
  // The table counts as loaded all the same, so that an auxiliary file is tried.
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_aux_definition_file_path(path.c_str()); }),
            invalid_definition(text));
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_definition_file_path(""); }),
            invalid_definition("<QZX_logging_invalid_definition> Unable to access definition file \"\"."));
}

TEST_F(LdfLoad, MagicNumberReversed_LikeATruncatedFile) {
  const DebugLogFile log(1);
  std::string bytes = LdfFile{.entries = {{.id = 1}}}.bytes();
  bytes.replace(0, 4, "FDL.");
  EXPECT_EQ(thrown_by([&] { set_std_bytes(bytes); }), invalid_definition(kUnreadable));
  EXPECT_EQ(thrown_by([&] { set_std_bytes(truncated(bytes, 3)); }), invalid_definition(kUnreadable));
  EXPECT_EQ(log.unnumbered_records(), Texts({kIoError, kIoError}));
}

TEST_F(LdfLoad, FilesThatCannotBeRead_Refused) {
  EXPECT_EQ(thrown_by([&] { table_.set_precompiled_definition_file_path(folder_.path().c_str()); }),
            invalid_definition(kUnreadable));
  for (const char* path : {"/dev/null", "/dev/full", "/dev/zero"}) {
    EXPECT_EQ(thrown_by([&] { table_.set_precompiled_definition_file_path(path); }), invalid_definition(kUnreadable))
        << path;
    EXPECT_EQ(thrown_by([&] { table_.set_precompiled_aux_definition_file_path(path); }),
              invalid_definition(kUnreadable))
        << path;
  }
}

TEST_F(LdfLoad, FileEndsInTheReservedWords_Refused) {
  const std::string header = LdfFile{}.bytes();
  ASSERT_EQ(header.size(), 128U);
  for (const std::size_t length : {76U, 127U}) {
    EXPECT_EQ(thrown_by([&] { set_std_bytes(truncated(header, length)); }), invalid_definition(kUnreadable)) << length;
  }
  set_std_bytes(header);
  EXPECT_EQ(table_.find_entry(1), nullptr);
}

TEST_F(LdfLoad, RegionOffsetsBehindTheEndWithoutElements_Accepted) {
  const std::string header = with_int4(with_int4(LdfFile{}.bytes(), 44, 0xFFFFFFFF), 56, 0xFFFFFFFF);
  set_std_bytes(header);
  EXPECT_EQ(table_.find_entry(1), nullptr);
}

TEST_F(LdfLoad, StdLoadFailing_TableClearedAndAuxFileStillPossible) {
  set_std({.entries = {{.id = 1}, {.id = 2}}});
  at(1);
  const LdfImage broken = LdfFile{.tag = "bad", .entries = {{.id = 1}, {.id = 3}}}.image();
  EXPECT_EQ(thrown_by([&] { set_std_bytes(truncated(broken.bytes, broken.map_offset + 12)); }),
            invalid_definition(kUnreadable));

  const DebugLogFile log(3);
  EXPECT_EQ(table_.find_entry(1), nullptr);  // read into the index before the failure
  EXPECT_EQ(table_.find_entry(2), nullptr);
  EXPECT_EQ(log.unnumbered_records(),
            Texts({looks_up(0), kNoStream, finds_nothing(0), looks_up(0), kNotIndexed, finds_nothing(0)}));
  EnableDebugLog(0);

  set_aux({.tag = "aux", .entries = {{.id = 1, .word = 10}, {.id = 4, .word = 40}}});
  EXPECT_EQ(at(1).get_entry_word(), 10U);
  EXPECT_EQ(at(4).get_entry_word(), 40U);
  EXPECT_STREQ(at(1).get_version_tag(), "aux");
}

TEST_F(LdfLoad, StdLoadFailing_GlobalAttributesReadBeforeStay) {
  const LdfImage broken = LdfFile{.globals = {{"a", 1}, {"b", 2}}}.image();
  EXPECT_EQ(thrown_by([&] { set_std_bytes(truncated(broken.bytes, broken.bytes.size() - 1)); }),
            invalid_definition(kUnreadable));
  EXPECT_EQ(global_attributes(), Texts({"a:1"}));
}

TEST_F(LdfLoad, StdLoadFailing_TableWorksAfterTheNext) {
  EXPECT_EQ(thrown_by([&] { set_std_bytes("no such thing"); }), invalid_definition(kUnreadable));
  set_std({.tag = "2", .entries = {full_entry()}});
  expect_full_entry(at(7), "2");
}

// ---- setting, setting again, clearing ----

TEST_F(LdfLoad, SetAgain_DefinitionsAndAuxFileDiscardedButGlobalAttributesStay) {
  set_std({.globals = {{"a", 1}, {"b", 2}}, .entries = {{.id = 1, .word = 10}, {.id = 2}}});
  set_aux({.globals = {{"c", 3}}, .entries = {{.id = 3}}});
  at(1);
  at(3);
  set_std({.globals = {{"a", 4}}, .entries = {{.id = 1, .word = 11}}});
  EXPECT_EQ(at(1).get_entry_word(), 11U);
  EXPECT_EQ(table_.find_entry(2), nullptr);
  EXPECT_EQ(table_.find_entry(3), nullptr);
  EXPECT_EQ(global_attributes(), Texts({"b:2", "c:3", "a:4"}));
}

TEST_F(LdfLoad, Clear_NothingFoundButGlobalAttributesStay) {
  set_std({.globals = {{"a", 1}}, .entries = {{.id = 1}}});
  at(1);
  table_.clear();
  EXPECT_EQ(table_.find_entry(1), nullptr);
  EXPECT_EQ(global_attributes(), Texts({"a:1"}));
  table_.clear();
  set_std({.entries = {{.id = 1}}});
  at(1);
}

TEST_F(LdfLoad, SetAndClear_FilesKeptOpenUntilThen) {
  const auto before = open_file_count();
  set_std({.entries = {{.id = 1}}});
  EXPECT_EQ(open_file_count(), before + 1);
  set_aux({.entries = {{.id = 2}}});
  EXPECT_EQ(open_file_count(), before + 2);
  std::filesystem::remove(folder_.path("std.ldf"));
  std::filesystem::remove(folder_.path("aux.ldf"));
  at(1);
  at(2);
  table_.clear();
  EXPECT_EQ(open_file_count(), before);
  set_std({.entries = {{.id = 1}}});
  set_std({.entries = {{.id = 1}}});
  EXPECT_EQ(open_file_count(), before + 1);
}

TEST_F(LdfLoad, DestroyedTable_FilesClosed) {
  const auto before = open_file_count();
  const std::string path = folder_.write("std.ldf", LdfFile{.entries = {{.id = 1}}}.bytes());
  {
    _qz_LOG_log_definition_tbl other;
    other.set_precompiled_definition_file_path(path.c_str());
    other.set_precompiled_aux_definition_file_path(path.c_str());
    EXPECT_NE(other.find_entry(1), nullptr);
  }
  EXPECT_EQ(open_file_count(), before);
}

TEST_F(LdfLoad, TwoTables_Independent) {
  _qz_LOG_log_definition_tbl other;
  set_std({.entries = {{.id = 1}}});
  EXPECT_EQ(other.find_entry(1), nullptr);
  other.clear();
  at(1);
}

// ---- lookups ----

TEST_F(LdfLoad, SameIdAgain_SameDefinitionFromTheCache) {
  set_std({.entries = {{.id = 1}}});
  const auto* const first = table_.find_entry(1);
  const auto held = table_.acquire_entry(1);
  EXPECT_EQ(table_.find_entry(1), first);
  EXPECT_EQ(held.get(), first);
}

TEST_F(LdfLoad, UnknownId_NullEachTimeAndNothingCached) {
  set_std({.entries = {{.id = 1}}});
  const DebugLogFile log(3);
  EXPECT_EQ(table_.find_entry(2), nullptr);
  EXPECT_FALSE(table_.acquire_entry(2));
  EXPECT_EQ(log.unnumbered_records(),
            Texts({looks_up(0), kNotIndexed, finds_nothing(0), looks_up(0), kNotIndexed, finds_nothing(0)}));
}

TEST_F(LdfLoad, NewTable_NothingFound) {
  const DebugLogFile log(3);
  EXPECT_EQ(table_.find_entry(0), nullptr);
  EXPECT_EQ(log.unnumbered_records(), Texts({looks_up(0), kNotIndexed, finds_nothing(0)}));
}

TEST_F(LdfLoad, DebugLevel3_LoadingAndLookupsTraced) {
  const DebugLogFile log(3);
  set_std({.entries = {{.id = 1}, {.id = 2}, {.id = 2}}});
  EXPECT_EQ(log.unnumbered_records(), Texts({kLoads, kClears, looks_up(0), kNotIndexed, finds_nothing(0), looks_up(0),
                                             kNotIndexed, finds_nothing(0), looks_up(0), kNoStream, finds_nothing(0)}));
  log.clear();
  at(2);
  at(1);
  at(2);
  EXPECT_EQ(log.unnumbered_records(),
            Texts({looks_up(0), kRetrieved, reads(1), looks_up(1), kRetrieved, reads(2), looks_up(2)}));
  log.clear();
  table_.clear();
  EXPECT_EQ(log.unnumbered_records(), Texts({kClears}));
}

TEST_F(LdfLoad, DebugLevel3_AuxLoadTracesTheMerge) {
  set_std({.entries = {{.id = 1}, {.id = 2}}});
  at(2);
  const DebugLogFile log(3);
  set_aux({.entries = {{.id = 1}, {.id = 2}, {.id = 3}}});
  EXPECT_EQ(log.unnumbered_records(), Texts({kLoads, looks_up(1), kRetrieved, reads(2), kRetrieved, looks_up(2),
                                             kRetrieved, looks_up(2), kNotIndexed, finds_nothing(2)}));
}

TEST_F(LdfLoad, DebugLevel3_AuxFileBeforeStdTracedWithoutClearing) {
  const DebugLogFile log(3);
  EXPECT_EQ(thrown_by([&] { set_aux({}); }), invalid_definition(kAuxBeforeStd));
  EXPECT_EQ(log.unnumbered_records(), Texts({kLoads}));
}

TEST_F(LdfLoad, DebugLevel1_OnlyFailures) {
  const DebugLogFile log(1);
  const LdfFile file{.entries = {full_entry()}};
  set_std_bytes(truncated(file.bytes(), file.bytes().size() - 1));
  EXPECT_FALSE(log.exists());
  EXPECT_EQ(thrown_by([&] { table_.find_entry(7); }), invalid_definition(kUnreadable));
  EXPECT_EQ(log.unnumbered_records(), Texts({"def_read:# qz_be_read_string selector_msg_text error\n", kIoError}));
}

}  // namespace
