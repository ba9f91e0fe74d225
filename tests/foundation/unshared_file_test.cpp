#include "foundation/unshared_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/call_failure.h"
#include "tests/support/child_process.h"
#include "tests/support/resource_limit.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

constexpr long long kLongOffset = 1LL << 40;

std::string numbered_bytes(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; bytes.size() < count; ++i) bytes += std::to_string(i) + ";";
  bytes.resize(count);
  return bytes;
}

std::string read_some(std::FILE* file, std::size_t count) {
  std::string bytes(count, '\0');
  bytes.resize(std::fread(bytes.data(), 1, count, file));
  return bytes;
}

/// What the caller of a stream sees of one step.
struct Seen {
  long long result;
  std::string bytes;
  bool at_end;
  bool failed;
  long long position;
  bool operator==(const Seen&) const = default;
};

Seen look_at(std::FILE* file, long long result, const std::string& bytes = "") {
  return {result, bytes, std::feof(file) != 0, std::ferror(file) != 0, QZ_ftell(file)};
}

Seen seek(std::FILE* file, long long offset, int origin) { return look_at(file, QZ_fseek(file, offset, origin)); }

Seen read(std::FILE* file, std::size_t count) {
  const std::string bytes = read_some(file, count);
  return look_at(file, static_cast<long long>(bytes.size()), bytes);
}

int next_descriptor() {
  const int next = dup(STDERR_FILENO);
  close(next);
  return next;
}

class UnsharedFile : public testing::Test {
 protected:
  std::string write(std::size_t size) const { return folder_.write("file", numbered_bytes(size)); }

  TempDir folder_;
};

TEST_F(UnsharedFile, ReadsAndSeeksAtRandom_AsAnOrdinaryStream) {
  constexpr long long kSize = 20000;
  const std::string path = write(kSize);
  const FileHandle ordinary(QZ_fopen(path.c_str(), "rb"));
  const FileHandle unshared = open_unshared(path.c_str());
  SeededRandom random;
  for (int i = 0; i < rounds(4000); ++i) {
    if (random.one_in(2)) {
      const long long offset = random.between(-2000, kSize + 3000);
      const int origin = static_cast<int>(random.between(SEEK_SET, SEEK_END));
      const long long from_origin = origin == SEEK_END ? offset - kSize : offset;
      ASSERT_EQ(seek(unshared.get(), from_origin, origin), seek(ordinary.get(), from_origin, origin)) << i;
    } else {
      const auto count = static_cast<std::size_t>(random.between(0, random.one_in(8) ? 10000 : 40));
      ASSERT_EQ(read(unshared.get(), count), read(ordinary.get(), count)) << i;
    }
  }
}

TEST_F(UnsharedFile, OffsetsWithoutAPlace_AsOfAnOrdinaryStream) {
  const std::string path = write(10);
  const FileHandle ordinary(QZ_fopen(path.c_str(), "rb"));
  const FileHandle unshared = open_unshared(path.c_str());
  const struct {
    long long offset;
    int origin;
  } steps[] = {{-1, SEEK_SET},          {7, SEEK_SET},   {-8, SEEK_CUR}, {kLongOffset, SEEK_SET},
               {kLongOffset, SEEK_END}, {-11, SEEK_END}, {-10, SEEK_END}};
  for (const auto& step : steps) {
    EXPECT_EQ(seek(unshared.get(), step.offset, step.origin), seek(ordinary.get(), step.offset, step.origin))
        << step.offset;
    EXPECT_EQ(read(unshared.get(), 3), read(ordinary.get(), 3)) << step.offset;
  }
}

TEST_F(UnsharedFile, GrownAndCutWhileOpen_EndAsItIsNow) {
  const std::string path = write(10);
  const FileHandle file = open_unshared(path.c_str());
  EXPECT_EQ(seek(file.get(), 0, SEEK_END).position, 10);
  folder_.write("file", numbered_bytes(9000));
  EXPECT_EQ(seek(file.get(), 0, SEEK_END).position, 9000);
  EXPECT_EQ(seek(file.get(), 8000, SEEK_SET).result, 0);
  EXPECT_EQ(read_some(file.get(), 5000), numbered_bytes(9000).substr(8000));
  ASSERT_EQ(truncate(path.c_str(), 5), 0);
  EXPECT_EQ(seek(file.get(), 0, SEEK_SET).result, 0);
  EXPECT_EQ(read_some(file.get(), 50), numbered_bytes(5));
}

TEST_F(UnsharedFile, ReadInPieces_EveryByte) {
  constexpr std::size_t kSize = 20000;
  const std::string path = write(kSize);
  for (const std::size_t at_once : {1U, 4U, 100U, 5000U, 20000U}) {
    const FileHandle file = open_unshared(path.c_str());
    const ShortTransfers pieces;
    std::string bytes;
    for (std::string part = read_some(file.get(), at_once); !part.empty(); part = read_some(file.get(), at_once)) {
      bytes += part;
    }
    EXPECT_EQ(bytes, numbered_bytes(kSize)) << at_once;
    EXPECT_TRUE(std::feof(file.get()));
    EXPECT_FALSE(std::ferror(file.get()));
  }
}

TEST_F(UnsharedFile, ErrorBehindAPiece_ReadFails) {
  const FileHandle file = open_unshared(write(20000).c_str());
  const ShortTransfers pieces(0, 1, EIO);
  EXPECT_LT(read_some(file.get(), 20000).size(), 20000U);
  EXPECT_TRUE(std::ferror(file.get()));
}

TEST_F(UnsharedFile, EmptyFile_AtItsEnd) {
  const FileHandle file = open_unshared(write(0).c_str());
  EXPECT_EQ(read(file.get(), 1), (Seen{0, "", true, false, 0}));
}

TEST_F(UnsharedFile, MissingFileAndOneNotAllowed_NullAndTheReason) {
  errno = 0;
  EXPECT_EQ(open_unshared(folder_.path("none").c_str()), nullptr);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(open_unshared((write(1) + "/below").c_str()), nullptr);
  EXPECT_EQ(errno, ENOTDIR);
}

TEST_F(UnsharedFile, Directory_OpensAndCannotBeRead) {
  const FileHandle ordinary(QZ_fopen(folder_.path().c_str(), "rb"));
  const FileHandle unshared = open_unshared(folder_.path().c_str());
  ASSERT_NE(unshared, nullptr);
  EXPECT_EQ(seek(unshared.get(), 0, SEEK_SET), seek(ordinary.get(), 0, SEEK_SET));
  EXPECT_EQ(read(unshared.get(), 4), read(ordinary.get(), 4));
  EXPECT_TRUE(std::ferror(unshared.get()));
}

TEST_F(UnsharedFile, Pipe_CannotBePositioned) {
  const std::string path = folder_.path("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int writer = open(path.c_str(), O_RDWR);
  ASSERT_GE(writer, 0);
  const FileHandle file = open_unshared(path.c_str());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(QZ_fseek(file.get(), 0, SEEK_SET), -1);
  EXPECT_EQ(errno, ESPIPE);
  EXPECT_EQ(QZ_ftell(file.get()), -1);
  close(writer);
}

TEST_F(UnsharedFile, NoDescriptorLeft_Null) {
  const std::string path = write(1);
  expect_child_succeeds([&] {
    const ResourceLimit none(RLIMIT_NOFILE, 0);
    return open_unshared(path.c_str()) == nullptr && errno == EMFILE ? 0 : 1;
  });
}

TEST_F(UnsharedFile, NoMemory_MemoryAllocAndNothingOpenLeft) {
  const std::string path = write(1);
  const int before = next_descriptor();
  EXPECT_EQ(FailEveryAllocation([&] { open_unshared(path.c_str()); }), 1U);
  EXPECT_EQ(next_descriptor(), before);
}

TEST_F(UnsharedFile, Descriptor_ClosedByExec) {
  const int next = next_descriptor();
  const FileHandle file = open_unshared(write(1).c_str());
  EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}

TEST_F(UnsharedFile, Forked_EachReadsOnWhereItStands) {
  constexpr std::size_t kSize = 30000;
  const std::string bytes = numbered_bytes(kSize);
  const FileHandle file = open_unshared(write(kSize).c_str());
  EXPECT_EQ(read_some(file.get(), 100), bytes.substr(0, 100));
  expect_child_succeeds([&] {
    const bool right = read_some(file.get(), 12000) == bytes.substr(100, 12000);
    QZ_fseek(file.get(), 0, SEEK_END);
    return right ? 0 : 1;
  });
  EXPECT_EQ(QZ_ftell(file.get()), 100);
  EXPECT_EQ(read_some(file.get(), kSize), bytes.substr(100));
}

}  // namespace
