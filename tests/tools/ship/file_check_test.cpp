#include "tools/ship/file_check.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/temp_dir.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {
namespace {

std::string identity(const std::string& content, std::uint64_t offset) {
  const qz_test::TempDir folder;
  const FileDescriptor file(open_path(folder.write("f", content), O_RDONLY | O_CLOEXEC));
  return identity_before(file.get(), "/f", offset, RecordIdentity("h"));
}

std::string line(int seq) { return R"({"writer":"w","seq":)" + std::to_string(seq) + R"(,"id":1})"; }

TEST(FileCheck, LastLineBeforeThePlace_IsFound) {
  const std::string text = line(1) + "\r\n" + line(2) + "\n\n \n" + line(3);
  const std::size_t second = line(1).size() + 2;
  EXPECT_EQ(identity(text, 0), "");
  EXPECT_EQ(identity(text, second), "w/1");
  EXPECT_EQ(identity(text, second + line(2).size() + 1), "w/2");
  EXPECT_EQ(identity(text, second + line(2).size() + 4), "w/2");
  EXPECT_EQ(identity(text, text.size()), "w/3");
  EXPECT_EQ(identity(text, text.size() + 1), "");
  EXPECT_EQ(identity("\n\n", 2), "");
  EXPECT_EQ(identity("\xEF\xBB\xBF" + line(4) + "\n", line(4).size() + 4), "w/4");
}

TEST(FileCheck, LongLines_AreReadWhole) {
  const std::string text = line(1) + "\n" + R"({"writer":"w","seq":2,"x":")" + std::string(300000, 'x') + "\"}\n";
  EXPECT_EQ(identity(text, text.size()), "w/2");
  const std::string alone = text.substr(line(1).size() + 1);
  EXPECT_EQ(identity(alone, alone.size()), "w/2");
}

TEST(FileCheck, LineThatIsTooLong_HasNone) {
  const std::string text = line(1) + "\n" + std::string((std::size_t{16} << 20) + 1, 'x') + "\n";
  EXPECT_EQ(identity(text, text.size()), "");
}

}  // namespace
}  // namespace qzlog_tool
