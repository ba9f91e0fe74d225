#include "tools/inspect/ldf_annotation.h"

#include <gtest/gtest.h>

#include "tests/support/ldf_file.h"
#include "tests/support/rounds.h"
#include "tests/tools/compiler/example_model.h"
#include "tests/tools/compiler/random_stored_model.h"
#include "tests/tools/inspect/ldf_forms.h"
#include "tools/compiler/file/ldf_writer.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kBytesColumn = 10;
constexpr std::size_t kNameColumn = 35;

/// The bytes that the lines show. Fails where a line does not go on at the offset where the one before it ended.
std::string shown_bytes(const std::string& annotation) {
  std::string shown;
  std::istringstream lines(annotation);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line.substr(0, 6), "offset");
  while (std::getline(lines, line)) {
    if (line.front() == ' ') continue;
    EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), shown.size()) << line;
    std::istringstream bytes(line.substr(kBytesColumn, kNameColumn - kBytesColumn));
    for (std::string byte; bytes >> byte;) shown += static_cast<char>(std::stoi(byte, nullptr, 16));
  }
  return shown;
}

TEST(WriteAnnotation, ExampleFile_NamesEveryField) {
  const std::string text = annotation_of(example_bytes());
  EXPECT_EQ(shown_bytes(text), example_bytes());
  for (const char* const line : {
           "00000000  2E 4C 44 46              magic                             \".LDF\"\n",
           "00000010  32 2E 35 00 00 00 00 00  version tag                       \"2.5\"\n",
           "00000038  00 00 00 91              offset of the entry map           145 (0x91)\n",
           "                                   -- list of global attributes\n",
           "00000084  48 4F 53 54 00           globals[0].name                   \"HOST\"\n",
           "00000089  00 00 00 10              globals[0].type                   16 MBChar64\n",
           "00000099  01 02 03 04              pairs[1].entry ID                 16909060\n",
           "                                   -- record of entry 7\n",
           "000000A9  00 00 00 05              mask                              0x00000005\n",
           "000000ED  C3 A9 00                 selector messages[0].text         \"é\"\n",
       }) {
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
}

TEST(WriteAnnotation, GapsAndTheRest_AreNamed) {
  const qz_test::LdfFile file{.entries = {{.id = 3}}, .gap = "xyz"};
  const std::string bytes = file.bytes() + "rest";
  const std::string text = annotation_of(bytes);
  EXPECT_EQ(shown_bytes(text), bytes);
  EXPECT_NE(text.find("78 79 7A                 gap\n"), std::string::npos) << text;
  EXPECT_NE(text.find("72 65 73 74              gap\n"), std::string::npos) << text;
}

TEST(WriteAnnotation, RecordThatRunsOverAnother_EndsWhereThatBegins) {
  const std::string bytes = qz_test::with_int4(example_bytes(), 0xA1 + 12, 0x50);
  const std::string text = annotation_of(bytes);
  EXPECT_EQ(shown_bytes(text), bytes);
  EXPECT_NE(text.find("message ID                        the first of 80 bytes\n"), std::string::npos) << text;
  EXPECT_NE(text.find("000000F0  01 02 03 04              entry ID                          16909060\n"),
            std::string::npos)
      << text;
}

TEST(WriteAnnotation, MapInTheHeader_LeavesItWhole) {
  const std::string bytes = qz_test::with_int4(example_bytes(), 56, 56);
  const std::string text = annotation_of(bytes);
  EXPECT_EQ(shown_bytes(text), bytes);
  EXPECT_NE(text.find("00000038  00 00 00 38              offset of the entry map"), std::string::npos) << text;
}

TEST(WriteAnnotation, Columns_CutLongLines) {
  EXPECT_NE(annotation_of(example_bytes(), 70)
                .find("00000010  32 2E 35 00 00 00 00 00  version tag                       …\n"),
            std::string::npos);
}

TEST(WriteAnnotation, EveryPrefix_IsCoveredOnce) {
  const std::string bytes = example_bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    ASSERT_EQ(shown_bytes(annotation_of(bytes.substr(0, size))), bytes.substr(0, size)) << size;
  }
}

TEST(WriteAnnotation, DamagedFiles_AreCoveredOnce) {
  qz_test::SeededRandom random;
  RandomStoredModel maker(random);
  for (int round = 0; round < qz_test::rounds(3000); ++round) {
    const std::string bytes = damaged(random_file(maker, random), random);
    ASSERT_EQ(shown_bytes(annotation_of(bytes)), bytes);
  }
}

}  // namespace
}  // namespace qzlog_compiler
