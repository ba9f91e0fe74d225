#include "definitions/definition_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/definitions/table_test.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

/// Files and definitions without a table around them.
class DefinitionReader : public testing::Test {
 protected:
  DefinitionReader() { _qz_LOG_log_definition::clear_global_attr_info(); }
  ~DefinitionReader() override { _qz_LOG_log_definition::clear_global_attr_info(); }

  DefinitionStream file_of(const std::string& bytes) const {
    return qzlog::open_definition_file(folder_.write("a.ldf", bytes).c_str());
  }
  /// Reads the record of the only entry of a file.
  void read(const LdfEntry& entry, bool is_aux, _qz_LOG_log_definition& definition) const {
    const LdfImage image = LdfFile{.entries = {entry}}.image();
    const auto offset = static_cast<unsigned>(image.record_offsets[0]);
    qzlog::read_definition(file_of(image.bytes), offset, entry.id, is_aux, definition);
  }
  TempDir folder_;
};

const LdfEntry kEntry = {.id = 7,
                         .word = 0x80000001,
                         .mask = 2,
                         .message_id = "MSG_7",
                         .message_text = "seven",
                         .selector = "what",
                         .attributes = {{"user", TypeMBChar64, "account"}, {"what", TypeUInt4, ""}},
                         .selector_messages = {{1, 10, "MSG_7_1", "one"}}};

TEST_F(DefinitionReader, FileMissing_TextNamesThePath) {
  const std::string path = folder_.path("none.ldf");
  EXPECT_EQ(thrown_by([&] { qzlog::open_definition_file(path.c_str()); }),
            thrown<QZX_logging_invalid_definition>(
                "<QZX_logging_invalid_definition> Unable to access definition file \"" + path + "\"."));
}

TEST_F(DefinitionReader, Header_ReadFromTheBeginningWhereverTheStreamStands) {
  const DefinitionStream file = file_of(LdfFile{.tag = "1.25", .entries = {kEntry}}.bytes());
  qzlog::seek_in_definition_file(file.get(), 40);
  const _qz_LOG_ldf_header_struct header = qzlog::read_definition_header(file.get());
  EXPECT_EQ(header.magic, 0x2E4C4446U);
  EXPECT_EQ(std::string(header.version_tag), "1.25");
  EXPECT_EQ(header.entry_count, 1U);
}

TEST_F(DefinitionReader, HeaderCutShort_UnreadableAndRecorded) {
  const DefinitionStream file = file_of(truncated(LdfFile{.entries = {kEntry}}.bytes(), 127));
  const DebugLogFile log(1);
  EXPECT_EQ(thrown_by([&] { qzlog::read_definition_header(file.get()); }),
            thrown<QZX_logging_invalid_definition>(kUnreadable));
  EXPECT_EQ(log.unnumbered_records(), Texts({"ldf_load:# _throw_file_io_error()\n"}));
}

TEST_F(DefinitionReader, SeekBeforeTheBeginning_UnreadableAndRecorded) {
  const DefinitionStream file = file_of(LdfFile{}.bytes());
  const DebugLogFile log(1);
  EXPECT_EQ(thrown_by([&] { qzlog::seek_in_definition_file(file.get(), -1); }),
            thrown<QZX_logging_invalid_definition>(kUnreadable));
  EXPECT_EQ(log.unnumbered_records(), Texts({"ldf_load:# _throw_file_io_error()\n"}));
}

TEST_F(DefinitionReader, GlobalAttributes_AddedToThoseOfTheProcess) {
  _qz_LOG_log_definition::add_global_attr_info("first", TypeBool);
  const DefinitionStream file =
      file_of(LdfFile{.globals = {{"second", TypeDate, "column"}, {"third", TypeGUID}}}.bytes());
  qzlog::read_global_attributes(file, qzlog::read_definition_header(file.get()));
  EXPECT_EQ(global_attributes(), Texts({"first:1", "second:21", "third:24"}));
}

TEST_F(DefinitionReader, Record_EverythingThatItSays) {
  _qz_LOG_log_definition definition;
  read(kEntry, false, definition);
  EXPECT_EQ(definition.get_entry_id(), 7U);
  EXPECT_EQ(definition.get_entry_word(), 0x80000001U);
  EXPECT_EQ(definition.get_property_mask(), 2U);
  EXPECT_EQ(default_message(definition), "MSG_7|seven");
  EXPECT_EQ(selector_of(definition), "what");
  EXPECT_EQ(own_attributes(definition), Texts({"user:16>account", "what:6>"}));
  EXPECT_EQ(selector_messages(definition), Texts({"1=10 MSG_7_1|one"}));
}

TEST_F(DefinitionReader, RecordOfAnAuxiliaryFile_AddedToWhatTheDefinitionHas) {
  _qz_LOG_log_definition definition;
  read(kEntry, false, definition);
  read({.id = 7,
        .word = 3,
        .mask = 4,
        .message_text = "without an ID",
        .attributes = {{"more", TypeBool}},
        .selector_messages = {{2, 20, "MSG_7_2", "two"}}},
       true, definition);
  EXPECT_EQ(definition.get_entry_word(), 3U);
  EXPECT_EQ(definition.get_property_mask(), 2U);
  EXPECT_EQ(default_message(definition), "MSG_7|seven");
  EXPECT_EQ(selector_of(definition), "what");
  EXPECT_EQ(own_attributes(definition), Texts({"user:16>account", "what:6>", "more:1>"}));
  EXPECT_EQ(selector_messages(definition), Texts({"1=10 MSG_7_1|one", "2=20 MSG_7_2|two"}));
}

TEST_F(DefinitionReader, RecordThatContradicts_TextSaysWhat) {
  const std::pair<LdfEntry, std::string> contradictions[] = {
      {{.id = 7, .selector = "user"}, kSelectorNameConflict},
      {{.id = 7, .attributes = {{"user", TypeMBChar64}}}, already_exists("user")},
      {{.id = 7, .selector_messages = {{1, 11}}}, kSelectorMessageConflict},
      {{.id = 7, .selector_messages = {{2, 10}}}, kSelectorMessageConflict},
  };
  for (const auto& [entry, text] : contradictions) {
    _qz_LOG_log_definition definition;
    read(kEntry, false, definition);
    EXPECT_EQ(thrown_by([&, &record = entry] { read(record, true, definition); }),
              thrown<QZX_logging_invalid_definition>(text))
        << text;
  }
}

TEST_F(DefinitionReader, RecordOfAnotherId_Corrupted) {
  const LdfImage image = LdfFile{.entries = {kEntry}}.image();
  const DefinitionStream file = file_of(image.bytes);
  _qz_LOG_log_definition definition;
  const auto offset = static_cast<unsigned>(image.record_offsets[0]);
  EXPECT_EQ(thrown_by([&] { qzlog::read_definition(file, offset, 8, false, definition); }),
            thrown<QZX_logging_invalid_definition>(kCorrupted));
}

TEST_F(DefinitionReader, EveryPrefixOfARecord_Unreadable) {
  const LdfImage image = LdfFile{.entries = {kEntry}}.image();
  const std::size_t offset = image.record_offsets[0];
  for (std::size_t length = offset; length < image.bytes.size(); ++length) {
    const DefinitionStream file = file_of(truncated(image.bytes, length));
    _qz_LOG_log_definition definition;
    EXPECT_EQ(thrown_by([&] { qzlog::read_definition(file, static_cast<unsigned>(offset), 7, false, definition); }),
              thrown<QZX_logging_invalid_definition>(kUnreadable))
        << length;
  }
}

}  // namespace
