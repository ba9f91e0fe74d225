// `qzlog render --follow` over files that grow, are renamed, cut and deleted by others.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/render/render_follow_fixture.h"

namespace qzlog_test {
namespace {

TEST_F(RenderFollow, FileThatGrows_IsRenderedLineByLine) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  append("a.jsonl", entry(2) + entry(3) + R"({"id":1,)");
  EXPECT_EQ(following.hear(2), "2\n3\n");
  append("a.jsonl", R"("attributes":{"N":4}})");
  EXPECT_EQ(following.overhear(), "");  // its line feed is not there yet
  append("a.jsonl", "\n");
  EXPECT_EQ(following.hear(1), "4\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, SignalsAndShortForm_EndItAsTheyEndTail) {
  append("a.jsonl", entry(1));
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Following following(folder_.path(), {"-f", "a.jsonl", "--level-low", "0", "--check-gaps"});
    EXPECT_EQ(following.hear(1), "1\n");
    following.send(signal);
    EXPECT_EQ(following.wait(), -signal);
    EXPECT_EQ(following.hear_rest(), "");
    EXPECT_EQ(read("said"),
              "entries: 1 read, 1 passed, 0 refused\n"
              "seq: 0 lines of 0 writers, 0 missing, 0 doubled; 1 line without writer and seq\n");
    std::filesystem::remove(folder_.path("said"));
  }
}

TEST_F(RenderFollow, CountsAreKept) {
  append("a.jsonl", entry(1));
  Following following = follow({"--count", "events", "a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  append("a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  EXPECT_NE(run("$QZLOG count show events").out.find(" 2"), std::string::npos);
  EXPECT_EQ(following.end(), -SIGTERM);
}

TEST_F(RenderFollow, ReaderThatLeaves_EndsIt) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  following.close_output();
  EXPECT_EQ(following.wait(), -SIGPIPE);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, ReaderThatLeavesWithSigpipeIgnored_EndsItQuietly) {
  append("a.jsonl", entry(1));
  const CommandResult result =
      run("{ trap '' PIPE; $QZLOG render -f --definitions d.yaml a.jsonl; echo $? >status; } | head -n 1");
  EXPECT_EQ(result.out, "1\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(read("status"), "1\n");
}

TEST_F(RenderFollow, StandardInputAndPipes_HaveTheirEnd) {
  append("a.jsonl", entry(1));
  EXPECT_EQ(run("$QZLOG render -f --definitions d.yaml <a.jsonl").out, "1\n");
  EXPECT_EQ(run("cat a.jsonl | $QZLOG render -f --definitions d.yaml -").out, "1\n");
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const CommandResult result = run("cat a.jsonl >pipe & $QZLOG render -f --definitions d.yaml pipe");
  EXPECT_EQ(result.out, "1\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(RenderFollow, SeveralFiles_AreFollowedAtOnce) {
  append("a.jsonl", entry(1));
  append("b.jsonl", entry(2));
  Following following = follow({"b.jsonl", "a.jsonl"});
  EXPECT_EQ(following.hear(2), "2\n1\n");
  append("a.jsonl", entry(3));
  EXPECT_EQ(following.hear(1), "3\n");
  append("b.jsonl", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
}

TEST_F(RenderFollow, FileThatIsNotThereYet_IsWaitedFor) {
  Following following = follow({"new.jsonl", "logs/later/deep.jsonl"});
  EXPECT_EQ(following.wait_for_word("deep"),
            "qzlog: warning: 'new.jsonl' is not there yet: waiting for it\n"
            "qzlog: warning: 'logs/later/deep.jsonl' is not there yet: waiting for it\n");
  append("new.jsonl", entry(1));
  EXPECT_EQ(following.hear(1), "1\n");
  std::filesystem::create_directory(folder_.path("logs/later"));
  append("logs/later/deep.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
}

TEST_F(RenderFollow, RenamedFile_IsReadToItsEndBeforeTheNewOneOfItsName) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  for (int round = 0; round < 5; ++round) {
    const int number = 10 * round;
    rename("a.jsonl", "a.jsonl." + std::to_string(round));
    append("a.jsonl." + std::to_string(round), entry(number + 2) + entry(number + 3));
    append("a.jsonl", entry(number + 4));
    EXPECT_EQ(following.hear(3), numbers(number + 2, number + 4));
  }
  EXPECT_EQ(following.overhear(700), "");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, WriterThatKeepsTheRenamedFileOpen_IsHeard) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  rename("a.jsonl", "a.jsonl.1");
  append("a.jsonl.1", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  append("a.jsonl", "");
  append("a.jsonl.1", entry(3));
  EXPECT_EQ(following.hear(1), "3\n");
  append("a.jsonl", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
  append("a.jsonl.1", entry(5));
  EXPECT_EQ(following.hear(1), "5\n");
}

TEST_F(RenderFollow, TornLineOfAFormerFile_IsToldAsTorn) {
  append("a.jsonl", entry(1) + R"({"id":1,"attr)");
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  rename("a.jsonl", "a.jsonl.1");
  append("a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  EXPECT_EQ(following.wait_for_word("torn-line"),
            "a.jsonl:2:14: error: the last line breaks off: it is not written whole [torn-line]\n"
            "    2 | {\"id\":1,\"attr\n"
            "      |              ^\n");
}

TEST_F(RenderFollow, FileThatIsCutByCopytruncate_IsReadFromItsBeginning) {
  append("a.jsonl", entry(1) + entry(2));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(2), "1\n2\n");
  std::filesystem::resize_file(folder_.path("a.jsonl"), 0);
  EXPECT_EQ(following.wait_for_word("shorter"),
            "qzlog: warning: 'a.jsonl' became shorter: it is read from its beginning\n");
  append("a.jsonl", entry(3) + "{}\n");
  EXPECT_EQ(following.hear(1), "3\n");
  EXPECT_NE(following.wait_for_word("missing-id").find("a.jsonl:2: error: "), std::string::npos);
}

TEST_F(RenderFollow, DeletedFile_IsReadToItsEndAndItsSuccessorFromTheBeginning) {
  append("a.jsonl", entry(1));
  Following following = follow({"a.jsonl"});
  EXPECT_EQ(following.hear(1), "1\n");
  const std::size_t descriptors = following.descriptors();
  std::filesystem::remove(folder_.path("a.jsonl"));
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (following.descriptors() == descriptors) {
    ASSERT_LT(std::chrono::steady_clock::now(), end) << "the deleted file stays open";
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  append("a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  EXPECT_EQ(following.descriptors(), descriptors);
}

TEST_F(RenderFollow, Series_IsFollowedIntoItsNextFiles) {
  append("logs/s.20261121.0001", entry(1));
  append("logs/s.20261121.0002", entry(2));
  Following following = follow({"logs/s"});
  EXPECT_EQ(following.hear(2), "1\n2\n");
  append("logs/s.20261121.0002", entry(3));
  append("logs/s.20261121.0003", entry(4));
  append("logs/s.20261122.0001", entry(5));
  append("logs/other.20261121.0001", entry(99));
  EXPECT_EQ(following.hear(3), "3\n4\n5\n");
  std::filesystem::remove(folder_.path("logs/s.20261121.0001"));
  append("logs/s.20261122.0001", entry(6));
  EXPECT_EQ(following.hear(1), "6\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, SeriesThatBeginsLater_IsWaitedFor) {
  Following following = follow({"logs/s"});
  following.wait_for_word("waiting");
  append("logs/s.20261121.0001", entry(1));
  EXPECT_EQ(following.hear(1), "1\n");
}

TEST_F(RenderFollow, FilesThatWereDeletedBeforeTheyWereRead_AreTold) {
  append("logs/s.20261121.0001", entry(1));
  Following following = follow({"logs/s"});
  EXPECT_EQ(following.hear(1), "1\n");
  append("logs/s.20261121.0004", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
  append("logs/s.20261121.0006", entry(6));
  EXPECT_EQ(following.hear(1), "6\n");
  EXPECT_EQ(read("said"),
            "qzlog: warning: 2 files between 'logs/s.20261121.0001' and 'logs/s.20261121.0004' were deleted before "
            "being read\n"
            "qzlog: warning: a file between 'logs/s.20261121.0004' and 'logs/s.20261121.0006' was deleted before being "
            "read\n");
}

TEST_F(RenderFollow, Folder_IsFollowedWithWhatComesUpInIt) {
  Following following = follow({"logs"});
  append("logs/s.20261121.0001", entry(1));
  EXPECT_EQ(following.hear(1), "1\n");
  append("logs/a.jsonl", entry(2));
  EXPECT_EQ(following.hear(1), "2\n");
  append("logs/s.20261121.0002", entry(3));
  EXPECT_EQ(following.hear(1), "3\n");
  append("logs/t.20261121.0001", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
  append("logs/a.jsonl", entry(5));
  EXPECT_EQ(following.hear(1), "5\n");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

TEST_F(RenderFollow, FilesThatComeAndGoInAFolder_LeaveNoDescriptors) {
  append("logs/stays.jsonl", entry(1));
  Following following = follow({"logs"});
  EXPECT_EQ(following.hear(1), "1\n");
  const std::size_t descriptors = following.descriptors();
  for (int number = 0; number < 20; ++number) {
    const std::string name = "logs/" + std::to_string(number) + ".jsonl";
    append(name, entry(number));
    EXPECT_EQ(following.hear(1), std::to_string(number) + "\n");
    std::filesystem::remove(folder_.path(name));
  }
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (following.descriptors() > descriptors) {
    ASSERT_LT(std::chrono::steady_clock::now(), end) << "deleted files stay open";
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

TEST_F(RenderFollow, FilesForWhichThereAreNoDescriptors_AreReadWhenThereAre) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers need descriptors to look at exceptions";
#endif
  constexpr int kFiles = 12;
  append("logs/first.jsonl", entry(1));
  Following following = follow({"logs"});
  EXPECT_EQ(following.hear(1), "1\n");
  following.limit_descriptors(3);
  for (int number = 10; number < 10 + kFiles; ++number) {
    append("logs/" + std::to_string(number) + ".jsonl", entry(number));
  }
  std::string heard = following.hear(1);
  following.wait_for_word("Too many open files");
  for (int number = 10; number < 10 + kFiles; ++number) {
    const std::string own = std::to_string(number) + '\n';
    while (heard.find(own) == std::string::npos) heard += following.hear(1);
    std::filesystem::remove(folder_.path("logs/" + std::to_string(number) + ".jsonl"));
  }
  EXPECT_EQ(static_cast<std::size_t>(std::count(heard.begin(), heard.end(), '\n')), std::size_t{kFiles});
  EXPECT_EQ(following.end(), -SIGTERM);
}

TEST_F(RenderFollow, FileThatCannotBeOpened_IsToldOnceAndTheOthersAreFollowed) {
  std::filesystem::create_symlink("loop.jsonl", folder_.path("loop.jsonl"));
  append("logs/s.20261121.0001", entry(1));
  std::filesystem::create_symlink("s.20261121.0002", folder_.path("logs/s.20261121.0002"));
  append("logs/s.20261121.0003", entry(3));
  Following following = follow({"loop.jsonl", "logs/s"});
  EXPECT_EQ(following.hear(2), "1\n3\n");
  EXPECT_EQ(following.overhear(1200), "");
  EXPECT_EQ(read("said"),
            "qzlog: error: cannot open 'loop.jsonl': Too many levels of symbolic links\n"
            "qzlog: error: cannot open 'logs/s.20261121.0002': Too many levels of symbolic links\n");
  std::filesystem::remove(folder_.path("loop.jsonl"));
  append("loop.jsonl", entry(4));
  EXPECT_EQ(following.hear(1), "4\n");
}

TEST_F(RenderFollow, SignalWhileMuchIsRead_EndsItSoon) {
  std::string lines;
  for (int number = 0; number < 10'000; ++number) lines += entry(number);
  for (int count = 0; count < 50; ++count) append("a.jsonl", lines);
  Following following = follow({"a.jsonl", "a.jsonl", "a.jsonl", "a.jsonl", "a.jsonl", "a.jsonl"});
  EXPECT_EQ(following.hear(3), "0\n1\n2\n");
  following.send(SIGTERM);
  const std::string rest = following.hear_rest();
  EXPECT_EQ(following.wait(), -SIGTERM);
  EXPECT_LT(std::count(rest.begin(), rest.end(), '\n'), 3'000'000 - 3);
  EXPECT_EQ(rest.back(), '\n');
}

TEST_F(RenderFollow, GapsAreToldAtTheEnd) {
  const auto numbered = [](int seq) {
    return R"({"writer":"h/1/1","seq":)" + std::to_string(seq) + R"(,"id":1,"attributes":{"N":)" + std::to_string(seq) +
           "}}\n";
  };
  append("logs/s.20261121.0001", numbered(1) + numbered(4));
  Following following = follow({"--check-gaps", "logs/s"});
  EXPECT_EQ(following.hear(2), "1\n4\n");
  append("logs/s.20261121.0002", numbered(3));
  EXPECT_EQ(following.hear(1), "3\n");
  EXPECT_EQ(read("said"), "");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"),
            "logs/s.20261121.0002:1: error: 1 line of the writer h/1/1 is missing before this one: seq 2 "
            "[missing-lines]\n"
            "seq: 3 lines of 1 writer, 1 missing, 0 doubled\n");
}

// A plain model of a writer: numbers, in a file or a series that is rotated in every way that there is.
TEST_F(RenderFollow, RandomRotations_LoseAndDoubleNothing) {
  qz_test::SeededRandom random;
  append("a.jsonl", entry(0));
  append("logs/s.20261121.0001", entry(0));
  Following following = follow({"a.jsonl", "logs/s"});
  ASSERT_EQ(following.hear(2), "0\n0\n");
  const std::size_t descriptors = following.descriptors();
  int number = 0;
  int file = 0;
  int renamed = 0;
  for (int round = 0; round < 60; ++round) {
    std::string expected;
    std::string former;
    const bool is_series = random.one_in(2);
    const auto some = [&](std::size_t least) {
      std::string lines;
      for (std::size_t count = least + random.below(40); count > 0; --count) {
        lines += entry(++number);
        expected += std::to_string(number) + '\n';
      }
      return lines;
    };
    const auto name = [&file] {
      char text[32];
      std::snprintf(text, sizeof text, "logs/s.%08d.%04d", 20261121 + file / 5, 1 + file % 5);
      return std::string(text);
    };
    for (std::size_t steps = 1 + random.below(3); steps > 0; --steps) {
      append(is_series ? name() : "a.jsonl", some(0));
      if (is_series) {
        ++file;
      } else if (steps == 1) {
        former = "a.jsonl." + std::to_string(++renamed);
        rename("a.jsonl", former);
        append(former, some(0));
      }
      append(is_series ? name() : "a.jsonl", some(1));  // a file that is renamed has been seen before
    }
    ASSERT_EQ(following.hear(static_cast<std::size_t>(std::count(expected.begin(), expected.end(), '\n'))), expected)
        << round;
    ASSERT_LE(following.descriptors(), descriptors + 8);  // of two logs
  }
  EXPECT_EQ(following.overhear(), "");
  EXPECT_EQ(following.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
}

}  // namespace
}  // namespace qzlog_test
