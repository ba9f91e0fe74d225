// What stands in place of the shipper's own files, and what is in them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "tests/tools/ship/ship_fixture.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_test {
namespace {

constexpr const char* kLink = "': it is a link; name the file that it leads to\n";

class ShipFilesCommand : public ShipFixture {
 protected:
  ShipFilesCommand() {
    write("others", "what others have");
    std::filesystem::create_directory(folder_.path("many"));
    append("logs/s.20261121.0001", lines(1, 3) + "no JSON\n");
  }
  void link(const std::string& name) const {
    std::filesystem::create_symlink(folder_.path("others"), folder_.path(name));
  }
  void pipe(const std::string& name) const { EXPECT_EQ(::mkfifo(folder_.path(name).c_str(), 0600), 0); }
  /// Ends soon, with this.
  void expect_refusal(const std::string& said) const {
    const CommandResult result =
        run("timeout 20 $QZLOG ship logs/s --once --option keep=records --state state.json --to " + url());
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find(said), std::string::npos) << result.err;
    EXPECT_EQ(read("others"), "what others have");
  }
  /// The schema takes it, and nothing that lacks a member or has another one.
  void expect_valid(const std::string& schema, const std::string& name) const {
    const CommandResult result = run("python3 -B " QZLOG_CHECK_INSTANCE " " QZLOG_SCHEMA "/" + schema + " " + name);
    if (result.status == 77) GTEST_SKIP() << result.err;
    EXPECT_EQ(result.status, 0) << result.out << result.err << read(name);
  }
};

TEST_F(ShipFilesCommand, LinksInPlaceOfWhatIsWritten_AreErrorsAndNotFollowed) {
  link("state.json.lock");
  expect_refusal(std::string("cannot write 'state.json.lock") + kLink);
  std::filesystem::remove(folder_.path("state.json.lock"));
  link("state.json.dead-letters.jsonl");
  expect_refusal(std::string("cannot write 'state.json.dead-letters.jsonl") + kLink);
  std::filesystem::remove(folder_.path("state.json.dead-letters.jsonl"));
  link("state.json.new");
  EXPECT_EQ(ship_once("--metrics m.json").status, 1);
  EXPECT_EQ(read("others"), "what others have");
  EXPECT_EQ(received().size(), 3U);
}

TEST_F(ShipFilesCommand, PipesInPlaceOfWhatIsWritten_AreErrorsAndNotWaitedFor) {
  pipe("state.json");
  expect_refusal("state.json");
  EXPECT_TRUE(std::filesystem::is_fifo(folder_.path("state.json")));
  std::filesystem::remove(folder_.path("state.json"));
  pipe("state.json.dead-letters.jsonl");
  expect_refusal("cannot write 'state.json.dead-letters.jsonl': it is no regular file");
}

TEST_F(ShipFilesCommand, MetricsThatAreNoFile_AreWarnedOfAndStay) {
  pipe("m.pipe");
  const CommandResult result = ship_once("--metrics m.pipe");
  EXPECT_NE(result.err.find("warning: cannot write the metrics to 'm.pipe': it is no regular file\n"),
            std::string::npos)
      << result.err;
  EXPECT_TRUE(std::filesystem::is_fifo(folder_.path("m.pipe")));
  EXPECT_EQ(received().size(), 3U);
}

TEST_F(ShipFilesCommand, SignalWhileTheReceiverIsAway_EndsItAtOnce) {
  write("down", "");
  Shipper shipper(folder_.path(), arguments({"--once", "--option", "down=" + folder_.path("down")}));
  EXPECT_TRUE(wait_until([this] { return read("said").find("it is tried again") != std::string::npos; }));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(shipper.end(), 1);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_NE(read("said").find("lines of the batch under way are not delivered; the next start goes on with them"),
            std::string::npos);
  std::filesystem::remove(folder_.path("down"));
  EXPECT_EQ(ship_once().status, 1);  // of the dead letter
  EXPECT_EQ(received().size(), 3U);
}

TEST_F(ShipFilesCommand, MoreSeriesThanDescriptorsAtTheStart_AreAllDelivered) {
  for (int number = 1; number <= 100; ++number) {
    append("many/p" + std::to_string(number) + ".20261121.0001", line(number));
  }
  const CommandResult result =
      run("ulimit -Sn 64; timeout 30 $QZLOG ship many --once --state m.json --option keep=records --to " + url());
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(received().size(), 100U);
}

TEST_F(ShipFilesCommand, StateAndMetrics_AreAsTheirSchemasSay) {
  EXPECT_EQ(ship_once("--metrics m.json").status, 1);
  expect_valid("qzlog-ship-state.schema.json", "state.json");
  expect_valid("qzlog-ship-metrics.schema.json", "m.json");
}

TEST_F(ShipFilesCommand, MetricsOfAReceiverThatIsAway_AreAsTheSchemaSays) {
  write("down", "");
  Shipper shipper(folder_.path(), arguments({"--metrics", "m.json", "--option", "down=" + folder_.path("down")}));
  EXPECT_TRUE(wait_until(
      [this] { return folder_.has("m.json") && read("m.json").find("latest_failure") != std::string::npos; }));
  shipper.end();
  EXPECT_NE(read("m.json").find("\"connected\":false"), std::string::npos) << read("m.json");
  expect_valid("qzlog-ship-metrics.schema.json", "m.json");
}

TEST_F(ShipFilesCommand, MemoryOfManySeries_IsGivenBack) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers' own memory counts";
#endif
  const std::string log = lines(1, 4000);  // more than a block of 256 KiB
  for (int series = 0; series < 300; ++series) append("many/s" + std::to_string(series) + ".20261121.0001", log);
  const CommandResult result = run("ulimit -d 49152; $QZLOG ship many --once --option keep=records --to " + url());
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(run("wc -l < got/records.tsv").out, "1200000\n");
}

TEST_F(ShipFilesCommand, OneFileForTwo_IsAnErrorBeforeAnythingIsWritten) {
  const std::string once = "$QZLOG ship logs/s --once --to " + url();
  for (const char* const same : {" --state x --metrics x", " --state x --dead-letters ./x",
                                 " --state x --metrics x.lock", " --state y --metrics x --dead-letters x"}) {
    const CommandResult result = run(once + same);
    EXPECT_EQ(result.status, 2) << same;
    EXPECT_NE(result.err.find("is named twice"), std::string::npos) << result.err;
    EXPECT_FALSE(folder_.has("x"));
  }
  EXPECT_EQ(received().size(), 0U);
}

TEST_F(ShipFilesCommand, FileThatHasNoMetrics_IsNotReplacedByThem) {
  const std::string log = read("logs/s.20261121.0001");
  const CommandResult result = ship_once("--metrics logs/s.20261121.0001");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("'logs/s.20261121.0001' has no metrics in it"), std::string::npos) << result.err;
  EXPECT_EQ(read("logs/s.20261121.0001"), log);
  EXPECT_EQ(ship_once("--metrics m.json").status, 1) << "of a dead letter";
  EXPECT_EQ(ship_once("--metrics m.json").status, 0) << "metrics are replaced";
}

TEST_F(ShipFilesCommand, NothingThere_IsTold) {
  const auto expect_told = [this](const std::string& operand, const std::string& said) {
    const CommandResult result = run("$QZLOG ship " + operand + " --once --state none.json --to " + url());
    EXPECT_EQ(result.status, 1) << operand;
    EXPECT_NE(result.err.find(said), std::string::npos) << result.err;
    std::filesystem::remove(folder_.path("none.json"));
  };
  expect_told("logs/shp", "logs/shp.YYYYMMDD.NNNN': nothing of it is delivered\n");
  expect_told("nowhere/shop", "nowhere/shop.YYYYMMDD.NNNN': nothing of it is delivered\n");
  expect_told("many", "there is no series in the folder '");
  append("logs/t.20261121.0001", "");
  EXPECT_EQ(run("$QZLOG ship logs/t --once --state none.json --to " + url()).status, 0) << "an empty one is there";
}

TEST_F(ShipFilesCommand, LogThatCannotBeRead_IsAnErrorAndCounted) {
  if (::getuid() == 0 && run("setpriv --reuid=65534 --clear-groups true").status != 0) GTEST_SKIP() << "no other user";
  std::filesystem::permissions(folder_.path("logs/s.20261121.0001"), std::filesystem::perms::none);
  for (const char* const name : {"", "got", "many"}) {
    std::filesystem::permissions(folder_.path(name), std::filesystem::perms::all);
  }
  const std::string as_other = ::getuid() == 0 ? "setpriv --reuid=65534 --clear-groups " : "";
  const CommandResult result =
      run(as_other + "$QZLOG ship logs/s --once --state many/s.json --metrics many/m.json --to " + url());
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_NE(result.err.find("Permission denied: let the user who ships read it"), std::string::npos) << result.err;
  EXPECT_NE(read("many/m.json").find("\"unreadable\":1,"), std::string::npos) << read("many/m.json");
}

TEST_F(ShipFilesCommand, FolderOrReceiverThatMoved_GoesOnWithTheState) {
  EXPECT_EQ(ship_once().status, 1) << "of a dead letter";
  std::filesystem::rename(folder_.path("logs"), folder_.path("elsewhere"));
  append("elsewhere/s.20261121.0001", lines(4, 5));
  const std::string moved = "$QZLOG ship elsewhere/s --once --state state.json --option keep=records --to ";
  const CommandResult refused = run(moved + url());
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.err.find("say --moved, if its folder is another one by now"), std::string::npos) << refused.err;
  EXPECT_EQ(run(moved + url() + " --moved").err, "");
  EXPECT_EQ(received().size(), 5U);
  std::filesystem::rename(folder_.path("got"), folder_.path("gotten"));
  append("elsewhere/s.20261121.0001", lines(6, 6));
  const std::string other = "file://" + folder_.path("gotten");
  const CommandResult of_another = run(moved + other);
  EXPECT_EQ(of_another.status, 2);
  EXPECT_NE(of_another.err.find("or say --moved, if it is the same one"), std::string::npos) << of_another.err;
  EXPECT_EQ(run(moved + other + " --moved").err, "");
  EXPECT_EQ(run("wc -l < gotten/records.tsv").out, "6\n");
}

TEST_F(ShipFilesCommand, PipesForCertificatesAndCredentials_AreRefused) {
  append("logs/s.20261121.0001", lines(1, 3));
  run("mkfifo pipe");
  for (const std::string option : {"--ca", "--credentials"}) {
    const CommandResult result =
        run("timeout 10 $QZLOG ship logs/s --state state.json --to " + url() + " " + option + " pipe");
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find(option + ": 'pipe' is no regular file"), std::string::npos) << result.err;
  }
}

TEST_F(ShipFilesCommand, LineWithoutEnd_DoesNotKeepTheCommandFromEnding) {
  append("logs/s.20261121.0001", lines(1, 3));
  std::filesystem::resize_file(folder_.path("logs/s.20261121.0001"), std::uintmax_t{1} << 38U);
  Shipper shipper(folder_.path(), arguments());
  std::this_thread::sleep_for(std::chrono::milliseconds(700));  // within the line by then
  const auto begun = std::chrono::steady_clock::now();
  shipper.end();
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
}

TEST_F(ShipFilesCommand, LinesBeforeOneWithoutEnd_DoNotWaitForIt) {
  append("logs/s.20261121.0001", lines(4, 6));
  std::filesystem::resize_file(folder_.path("logs/s.20261121.0001"), std::uintmax_t{1} << 38U);
  Shipper shipper(folder_.path(), arguments());
  EXPECT_TRUE(wait_until([this] { return received().size() == 6; }));
  shipper.end();
}

TEST_F(ShipFilesCommand, PipeInPlaceOfTheReceiversFile_TakesNothing) {
  pipe("got/records.tsv");
  expect_refusal("records.tsv' is no regular file: move it away");
}

TEST_F(ShipFilesCommand, ReceiversFileThatOthersHaveLocked_IsWaitedForAndToldOf) {
  append("got/records.tsv", "");
  const qzlog_tool::FileDescriptor other(::open(folder_.path("got/records.tsv").c_str(), O_RDONLY));
  ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
  Shipper shipper(folder_.path(), arguments());
  EXPECT_TRUE(wait_until([this] { return read("said").find("somebody else has locked '") != std::string::npos; }));
  ::flock(other.get(), LOCK_UN);
  EXPECT_TRUE(wait_until([this] { return received().size() == 3; }));
  shipper.end();
}

}  // namespace
}  // namespace qzlog_test
