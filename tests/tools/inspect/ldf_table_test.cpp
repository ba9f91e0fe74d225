#include "tools/inspect/ldf_table.h"

#include <gtest/gtest.h>

#include "tests/support/ldf_file.h"
#include "tests/tools/compiler/example_model.h"
#include "tests/tools/compiler/random_stored_model.h"
#include "tests/tools/inspect/ldf_forms.h"
#include "tools/compiler/file/ldf_writer.h"

namespace qzlog_compiler {
namespace {

TEST(WriteTable, ExampleFile_IsShownWithItsOffsets) {
  EXPECT_EQ(table_of(example_bytes()), R"(header
  file size           272 bytes
  version             "2.5"
  globals             1 at offset 128 (0x80)
  entries             2, map at offset 145 (0x91)

global attributes
  offset   hex  name  type      redirect
     128  0x80  HOST  MBChar64  -

entry map
  offset   hex        ID        hex  record   hex  bytes  message ID  note
     145  0x91         7        0x7     161  0xA1     79  m
     153  0x99  16909060  0x1020304     240  0xF0     32  -

entry 7 (0x7), record at offset 161 (0xA1), 79 bytes
  mask                0x00000005
  word                9
  message ID          m
  message             %d%R%
  selector attribute  R
  attributes          1
    offset   hex  name  type   redirect
       199  0xC7  R     UInt2  r
  selector messages   1
    offset   hex  index  value  ID  text
       219  0xDB      1     16  s   é

entry 16909060 (0x1020304), record at offset 240 (0xF0), 32 bytes
  mask                0x00000000
  word                0
  message ID          -
  message             -
  selector attribute  -
  attributes          0
  selector messages   0
)");
}

TEST(WriteTable, DamagedRecord_SaysWhere) {
  const std::string text = table_of(qz_test::with_int4(example_bytes(), 0xA1 + 12, 0xFFFFFFFF));
  EXPECT_NE(text.find(R"(
entry 7 (0x7), record at offset 161 (0xA1), 16 bytes
  mask                0x00000005
  word                9
  !! offset 177 (0xB1): the file ends within an entry record

entry 16909060)"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("     16              damaged\n"), std::string::npos) << text;
}

TEST(WriteTable, ControlCharactersAndOtherBytes_AreMadeVisible) {
  const qz_test::LdfFile file{.entries = {{.id = 3, .message_id = "a\nb\x1B", .message_text = "\xFF"}}};
  const std::string text = table_of(file.bytes());
  EXPECT_NE(text.find("a\\nb\\u001B\n"), std::string::npos) << text;
  EXPECT_NE(text.find("message             \uFFFD\n"), std::string::npos) << text;
}

TEST(WriteTable, LongText_IsCutToTheColumnsAndWidensNoOtherRow) {
  const qz_test::LdfFile file{.globals = {{std::string(500, 'n'), TypeBool}, {"short", TypeBool}}};
  const std::string text = table_of(file.bytes());
  EXPECT_NE(text.find(std::string(500, 'n') + "  Bool  -\n"), std::string::npos) << text;
  EXPECT_NE(text.find("  short  Bool  -\n"), std::string::npos) << text;
  std::istringstream lines(table_of(file.bytes(), 60));
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 62U) << line;
}

TEST(WriteTable, AnyDamage_IsShownWithoutHarm) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < 2000; ++round) {
    const std::string text = table_of(damaged(random_file(maker, random), random), 80);
    ASSERT_TRUE(text.starts_with("header\n")) << text;
  }
  const std::string bytes = example_bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    ASSERT_TRUE(table_of(bytes.substr(0, size)).starts_with("header\n")) << size;
  }
}

}  // namespace
}  // namespace qzlog_compiler
