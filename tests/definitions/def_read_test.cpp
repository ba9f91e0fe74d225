#include "definitions/def_read.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "foundation/file_handle.h"
#include "tests/support/ldf_file.h"
#include "tests/support/resource_limit.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::AddressSpaceLimit;
using qz_test::AllocationFailure;
using qz_test::DebugLogFile;
using qz_test::int4;
using qz_test::ldf_string;
using qz_test::Texts;

constexpr const char* kNoLength = "def_read:# qz_be_read_int4\n";

/// The readers work on any stream that can be positioned: a file, and memory opened as one.
enum StreamKind { kFile, kMemory };

class DefRead : public testing::TestWithParam<StreamKind> {
 protected:
  std::FILE* open(const std::string& bytes) {
    bytes_ = bytes;
    if (GetParam() == kFile || bytes.empty()) {
      stream_.reset(std::fopen(log_.folder().write("stream", bytes).c_str(), "rb"));
    } else {
      stream_.reset(fmemopen(bytes_.data(), bytes_.size(), "rb"));
    }
    return stream_.get();
  }
  long position() const { return std::ftell(stream_.get()); }

  DebugLogFile log_{1};
  std::string bytes_;
  FileHandle stream_;
};

INSTANTIATE_TEST_SUITE_P(Streams, DefRead, testing::Values(kFile, kMemory),
                         [](const auto& kind) { return kind.param == kFile ? "File" : "Memory"; });

std::string text_of(const qz_String& text) { return std::string(text.c_str(), text.length()); }

// ---- header ----

/// A header whose int4 at each offset holds the offset, but for the magic number and the byte fields.
std::string header_bytes() {
  std::string bytes;
  for (unsigned offset = 0; offset < 128; offset += 4) bytes += int4(0xABCD0000 + offset);
  bytes.replace(0, 4, ".LDF");
  bytes.replace(4, 4, "\x81\x00\xFF\x7F", 4);
  bytes.replace(16, 8, "12345678");
  return bytes;
}

TEST_P(DefRead, Header_EveryFieldAtItsOffset) {
  _qz_LOG_ldf_header_struct header = {};
  ASSERT_TRUE(_qz_LOG_read_file_header(open(header_bytes() + "behind"), header));
  EXPECT_EQ(position(), 128);
  EXPECT_EQ(header.magic, 0x2E4C4446U);
  EXPECT_EQ(std::memcmp(header.format_bytes, "\x81\x00\xFF\x7F", 4), 0);
  EXPECT_EQ(header.reserved_at_8[0], 0xABCD0008U);
  EXPECT_EQ(header.reserved_at_8[1], 0xABCD000CU);
  EXPECT_EQ(std::memcmp(header.version_tag, "12345678", 8), 0);
  for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(header.reserved_at_24[i], 0xABCD0000 + 24 + 4 * i);
  EXPECT_EQ(header.global_attr_count, 0xABCD0000U + 40);
  EXPECT_EQ(header.global_attr_offset, 0xABCD0000U + 44);
  EXPECT_EQ(header.entry_count, 0xABCD0000U + 48);
  EXPECT_EQ(header.reserved_at_52, 0xABCD0000U + 52);
  EXPECT_EQ(header.entry_map_offset, 0xABCD0000U + 56);
  for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(header.reserved_at_60[i], 0xABCD0000 + 60 + 4 * i);
  for (unsigned i = 0; i < 13; ++i) EXPECT_EQ(header.reserved_at_76[i], 0xABCD0000 + 76 + 4 * i);
  EXPECT_FALSE(log_.exists());
}

TEST_P(DefRead, HeaderReadTwice_SecondStartsWhereFirstEnded) {
  std::FILE* const file = open(header_bytes() + header_bytes());
  _qz_LOG_ldf_header_struct header = {};
  EXPECT_TRUE(_qz_LOG_read_file_header(file, header));
  EXPECT_TRUE(_qz_LOG_read_file_header(file, header));
  EXPECT_FALSE(_qz_LOG_read_file_header(file, header));
}

TEST_P(DefRead, HeaderMagicReversed_RejectedBeforeReadingOn) {
  std::string bytes = header_bytes();
  bytes.replace(0, 4, "FDL.");
  _qz_LOG_ldf_header_struct header = {};
  EXPECT_FALSE(_qz_LOG_read_file_header(open(bytes), header));
  EXPECT_EQ(position(), 4);
  EXPECT_EQ(header.entry_count, 0U);
  EXPECT_FALSE(log_.exists());
}

TEST_P(DefRead, HeaderMagicWithAnyBitWrong_Rejected) {
  for (std::size_t byte = 0; byte < 4; ++byte) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      _qz_LOG_ldf_header_struct header = {};
      EXPECT_FALSE(_qz_LOG_read_file_header(open(qz_test::flipped_bit(header_bytes(), byte, bit)), header));
    }
  }
}

TEST_P(DefRead, HeaderPrefix_EveryOneRejected) {
  for (std::size_t length = 0; length < 128; ++length) {
    _qz_LOG_ldf_header_struct header = {};
    EXPECT_FALSE(_qz_LOG_read_file_header(open(qz_test::truncated(header_bytes(), length)), header)) << length;
  }
  EXPECT_FALSE(log_.exists());
}

// ---- strings ----

TEST_P(DefRead, StringLengthZero_ReadsEmptyAndConsumesFourBytes) {
  qz_String text("former");
  EXPECT_TRUE(_qz_LOG_read_string(open(int4(0) + "behind"), text));
  EXPECT_EQ(text_of(text), "");
  EXPECT_EQ(position(), 4);
}

TEST_P(DefRead, StringTerminated_ReadsTextAndConsumesAll) {
  qz_String text;
  EXPECT_TRUE(_qz_LOG_read_string(open(ldf_string("hello") + "behind"), text));
  EXPECT_EQ(text_of(text), "hello");
  EXPECT_EQ(position(), 10);
}

TEST_P(DefRead, StringWithEarlierZeroByte_CutThereButConsumesAll) {
  qz_String text;
  EXPECT_TRUE(_qz_LOG_read_string(open(int4(8) + std::string("ab\0cdef\0", 8) + "behind"), text));
  EXPECT_EQ(text_of(text), "ab");
  EXPECT_EQ(position(), 12);
}

TEST_P(DefRead, StringOfOneZeroByte_ReadsEmpty) {
  qz_String text("former");
  EXPECT_TRUE(_qz_LOG_read_string(open(int4(1) + std::string(1, '\0') + "behind"), text));
  EXPECT_EQ(text_of(text), "");
  EXPECT_EQ(position(), 5);
}

TEST_P(DefRead, StringWithoutZeroByte_AllItsBytes) {
  qz_String text;
  EXPECT_TRUE(_qz_LOG_read_string(open(int4(5) + "hello" + "behind"), text));
  EXPECT_EQ(text_of(text), "hello");
  EXPECT_EQ(position(), 9);
}

TEST_P(DefRead, StringOfAnyLength_ReadWhole) {
  for (const std::size_t length :
       {1U, 19U, 20U, 255U, 256U, 1022U, 1023U, 1024U, 1025U, 4095U, 4096U, 65535U, 200000U}) {
    const std::string stored(length, 'x');
    qz_String text;
    ASSERT_TRUE(_qz_LOG_read_string(open(ldf_string(stored) + ldf_string("next")), text)) << length;
    EXPECT_EQ(text_of(text), stored);
    ASSERT_TRUE(_qz_LOG_read_string(stream_.get(), text)) << length;
    EXPECT_EQ(text_of(text), "next");
    ASSERT_TRUE(_qz_LOG_read_string(open(int4(static_cast<unsigned>(length)) + stored), text)) << length;
    EXPECT_EQ(text_of(text), stored);
  }
}

TEST_P(DefRead, StringLengthCutShort_ReportedAndFalse) {
  for (std::size_t length = 0; length < 4; ++length) {
    log_.clear();
    qz_String text;
    EXPECT_FALSE(_qz_LOG_read_string(open(std::string(length, '\0')), text));
    EXPECT_EQ(log_.unnumbered_records(), Texts({kNoLength}));
  }
}

TEST_P(DefRead, StringBytesCutShort_FalseWithoutRecord) {
  for (const std::size_t length : {1U, 2U, 20U, 1024U, 1025U, 5000U}) {
    const std::string whole = ldf_string(std::string(length, 'x'));
    for (const std::size_t missing : {std::size_t{1}, length / 2 + 1, length + 1}) {
      qz_String text;
      EXPECT_FALSE(_qz_LOG_read_string(open(whole.substr(0, whole.size() - missing)), text)) << length << missing;
    }
  }
  EXPECT_FALSE(log_.exists());
}

TEST_P(DefRead, StringLengthAbsurd_FalseWithoutTakingMemory) {
  for (const unsigned length : {1U << 28, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
    const AddressSpaceLimit limit(64 << 20);
    qz_String text("former");
    EXPECT_FALSE(_qz_LOG_read_string(open(int4(length) + "some bytes"), text)) << length;
  }
  // A buffer that could not be had would have been reported.
  EXPECT_FALSE(log_.exists());
}

TEST_P(DefRead, StringWithoutMemory_ReportedAndFalseButNothingThrown) {
  for (const std::size_t length : {100U, 1000U, 1025U, 5000U}) {
    std::FILE* const file = open(ldf_string(std::string(length, 'x')));
    for (unsigned nth = 1;; ++nth) {
      log_.clear();
      std::rewind(file);
      qz_String text("former");
      bool read = false;
      bool happened = false;
      {
        const AllocationFailure failure(nth);
        read = _qz_LOG_read_string(file, text);
        happened = failure.happened();
      }
      if (!happened) {
        EXPECT_TRUE(read);
        EXPECT_GT(nth, 1U);
        break;
      }
      EXPECT_FALSE(read);
      EXPECT_EQ(log_.unnumbered_records(), Texts({"def_read:# new p_buffer\n"}));
    }
  }
}

TEST(DefReadDevices, FullDevice_ReadsAsZeroBytes) {
  const FileHandle file(std::fopen("/dev/full", "rb"));
  ASSERT_NE(file, nullptr);
  qz_String text("former");
  EXPECT_TRUE(_qz_LOG_read_string(file.get(), text));
  EXPECT_EQ(text_of(text), "");
  _qz_LOG_ldf_header_struct header = {};
  EXPECT_FALSE(_qz_LOG_read_file_header(file.get(), header));
}

TEST(DefReadDevices, StreamThatCannotBeRead_FalseAndReported) {
  const DebugLogFile log(1);
  const FileHandle file(std::fopen("/dev/full", "wb"));
  ASSERT_NE(file, nullptr);
  qz_String text;
  EXPECT_FALSE(_qz_LOG_read_string(file.get(), text));
  EXPECT_EQ(log.unnumbered_records(), Texts({kNoLength}));
}

TEST(DefReadDevices, DebugLevelZero_FailureLeavesNoRecord) {
  const DebugLogFile log(0);
  const FileHandle file(std::fopen("/dev/null", "rb"));
  qz_String text;
  EXPECT_FALSE(_qz_LOG_read_string(file.get(), text));
  EXPECT_FALSE(log.exists());
}

// ---- the other records ----

TEST_P(DefRead, PropertyFlag_NameAndNumber) {
  qz_String name;
  unsigned flag = 0;
  EXPECT_TRUE(_qz_LOG_read_property_flag(open(ldf_string("debug") + int4(0x84000001) + "behind"), name, flag));
  EXPECT_EQ(text_of(name), "debug");
  EXPECT_EQ(flag, 0x84000001U);
  EXPECT_EQ(position(), 14);
}

TEST_P(DefRead, Attribute_NameTypeAndRedirectionName) {
  qz_String name;
  qz_String redirection_name;
  qz_AttributeType type = TypeUnknown;
  const std::string bytes = ldf_string("user") + int4(TypeMBChar64) + ldf_string("account");
  EXPECT_TRUE(_qz_LOG_read_attribute(open(bytes + "behind"), name, type, redirection_name));
  EXPECT_EQ(text_of(name), "user");
  EXPECT_EQ(type, TypeMBChar64);
  EXPECT_EQ(text_of(redirection_name), "account");
  EXPECT_EQ(position(), static_cast<long>(bytes.size()));
}

TEST_P(DefRead, AttributeTypeAbove255_KeptModulo256) {
  const struct {
    unsigned stored;
    int kept;
  } cases[] = {{0, 0}, {24, 24}, {255, 255}, {256, 0}, {257, 1}, {0x118, 24}, {0xFFFFFF09, 9}, {0xFFFFFFFF, 255}};
  for (const auto& each : cases) {
    qz_String name;
    qz_String redirection_name;
    qz_AttributeType type = TypeUnknown;
    const std::string bytes = ldf_string("a") + int4(each.stored) + ldf_string("");
    EXPECT_TRUE(_qz_LOG_read_attribute(open(bytes), name, type, redirection_name));
    EXPECT_EQ(static_cast<int>(type), each.kept) << each.stored;
  }
}

struct EntryInfo {
  unsigned int entry_id = 0;
  unsigned int entry_word = 0;
  unsigned int property_mask = 0;
  qz_String message_id;
  qz_String message_text;
  qz_String selector;

  bool read(std::FILE* file) {
    return _qz_LOG_read_entry_info(file, entry_id, entry_word, property_mask, message_id, message_text, selector);
  }
};

TEST_P(DefRead, EntryInfo_SixFieldsUpToTheAttributeCount) {
  EntryInfo info;
  const std::string bytes = int4(0xFFFFFFFF) + int4(0x80000000) + int4(26) + ldf_string("MSG_1") +
                            ldf_string("text of %user%") + ldf_string("user");
  EXPECT_TRUE(info.read(open(bytes + int4(1))));
  EXPECT_EQ(info.entry_id, 0xFFFFFFFFU);
  EXPECT_EQ(info.entry_word, 0x80000000U);
  EXPECT_EQ(info.property_mask, 26U);
  EXPECT_EQ(text_of(info.message_id), "MSG_1");
  EXPECT_EQ(text_of(info.message_text), "text of %user%");
  EXPECT_EQ(text_of(info.selector), "user");
  EXPECT_EQ(position(), static_cast<long>(bytes.size()));
}

TEST_P(DefRead, EntryMapPair_IdAndOffset) {
  unsigned entry_id = 0;
  unsigned offset = 0;
  EXPECT_TRUE(_qz_LOG_read_entry_id_offset_mapping(open(int4(0x01020304) + int4(0xFFFFFFF0)), entry_id, offset));
  EXPECT_EQ(entry_id, 0x01020304U);
  EXPECT_EQ(offset, 0xFFFFFFF0U);
  EXPECT_EQ(position(), 8);
}

TEST_P(DefRead, SelectorMessage_TwoNumbersAndTwoTexts) {
  unsigned index = 0;
  unsigned value = 0;
  qz_String id;
  qz_String text;
  const std::string bytes = int4(5) + int4(0xFFFFFFFF) + ldf_string("MSG_5") + ldf_string("");
  EXPECT_TRUE(_qz_LOG_read_selector_msg(open(bytes + "behind"), index, value, id, text));
  EXPECT_EQ(index, 5U);
  EXPECT_EQ(value, 0xFFFFFFFFU);
  EXPECT_EQ(text_of(id), "MSG_5");
  EXPECT_EQ(text_of(text), "");
  EXPECT_EQ(position(), static_cast<long>(bytes.size()));
}

TEST_P(DefRead, SelectorMessageCutShort_RecordNamesTheField) {
  constexpr const char* kId = "def_read:# qz_be_read_string selector_msg_id error\n";
  constexpr const char* kText = "def_read:# qz_be_read_string selector_msg_text error\n";
  const std::string whole = int4(5) + int4(6) + ldf_string("ID") + ldf_string("text");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    log_.clear();
    unsigned index = 0;
    unsigned value = 0;
    qz_String id;
    qz_String text;
    EXPECT_FALSE(_qz_LOG_read_selector_msg(open(whole.substr(0, length)), index, value, id, text)) << length;
    Texts expected;
    if (length < 4) {
      expected = {"def_read:# qz_be_read_int4 selector_msg_index error\n"};
    } else if (length < 8) {
      expected = {"def_read:# qz_be_read_int4 selector_value error\n"};
    } else if (length < 12) {
      expected = {kNoLength, kId};
    } else if (length < 15) {
      expected = {kId};
    } else if (length < 19) {
      expected = {kNoLength, kText};
    } else {
      expected = {kText};
    }
    EXPECT_EQ(log_.unnumbered_records(), expected) << length;
  }
}

TEST_P(DefRead, RecordCutShortAnywhere_False) {
  const auto refuses_every_prefix = [this](const std::string& whole, const auto& read) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      EXPECT_FALSE(read(open(whole.substr(0, length)))) << length;
    }
    EXPECT_TRUE(read(open(whole)));
    EXPECT_EQ(position(), static_cast<long>(whole.size()));
  };
  qz_String first;
  qz_String second;
  unsigned number = 0;
  qz_AttributeType type = TypeUnknown;
  refuses_every_prefix(ldf_string("flag") + int4(1),
                       [&](std::FILE* file) { return _qz_LOG_read_property_flag(file, first, number); });
  refuses_every_prefix(ldf_string("name") + int4(1) + ldf_string("other"),
                       [&](std::FILE* file) { return _qz_LOG_read_attribute(file, first, type, second); });
  refuses_every_prefix(int4(1) + int4(2), [&](std::FILE* file) {
    unsigned offset = 0;
    return _qz_LOG_read_entry_id_offset_mapping(file, number, offset);
  });
  refuses_every_prefix(int4(1) + int4(2) + int4(3) + ldf_string("id") + ldf_string("text") + ldf_string("selector"),
                       [&](std::FILE* file) { return EntryInfo().read(file); });
}

TEST_P(DefRead, RecordsInARow_EachStartsBehindTheOneBefore) {
  std::FILE* const file = open(ldf_string("a") + int4(1) + ldf_string("") + ldf_string("") + int4(2) + ldf_string("r"));
  qz_String name;
  qz_String redirection_name;
  qz_AttributeType type = TypeUnknown;
  ASSERT_TRUE(_qz_LOG_read_attribute(file, name, type, redirection_name));
  EXPECT_EQ(text_of(name), "a");
  EXPECT_EQ(text_of(redirection_name), "");
  ASSERT_TRUE(_qz_LOG_read_attribute(file, name, type, redirection_name));
  EXPECT_EQ(text_of(name), "");
  EXPECT_EQ(type, TypeUInt1);
  EXPECT_EQ(text_of(redirection_name), "r");
  EXPECT_FALSE(_qz_LOG_read_attribute(file, name, type, redirection_name));
}

}  // namespace
