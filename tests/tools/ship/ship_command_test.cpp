#include <gtest/gtest.h>

#include <string>

#include "tests/tools/ship/ship_fixture.h"

namespace qzlog_test {
namespace {

class ShipCommand : public ShipFixture {};

TEST_F(ShipCommand, Once_DeliversEachLineUnchangedAndRemembersIt) {
  append("logs/s.20261121.0001", lines(1, 3));
  append("logs/s.20261122.0001", line(4) + "\r\n{\"id\":7}\r\n");
  EXPECT_EQ(ship_once().status, 0);
  const std::string got = read("got/records.tsv");
  EXPECT_EQ(got.substr(0, got.find('\n') + 1), "h/1/2/1\t.N.3\t" + line(1));
  EXPECT_TRUE(got.ends_with("\t..0\t{\"id\":7}\n")) << got;
  EXPECT_EQ(received().size(), 5U);

  append("logs/s.20261122.0001", line(5));
  EXPECT_EQ(ship_once().status, 0);
  EXPECT_EQ(read("got/records.tsv"), got + "h/1/2/5\t.N.3\t" + line(5));
}

TEST_F(ShipCommand, PlainLines_AreALogOfTheirOwn) {
  append("logs/s.20261121.0001", lines(1, 3));
  EXPECT_EQ(run("$QZLOG ship logs --once --state state.json --to file://$PWD/got").status, 0);
  EXPECT_EQ(read("got/entries.jsonl"), lines(1, 3));
}

TEST_F(ShipCommand, Follows_NewFilesAndNewSeriesUntilASignalComes) {
  append("logs/s.20261121.0001", lines(1, 2));
  Shipper shipper(folder_.path(), {"logs", "--to", url(), "--option", "keep=records", "--state", "state.json"});
  EXPECT_TRUE(wait_for_received(2));
  append("logs/s.20261121.0002", line(3));
  append("logs/other.20261121.0001", line(4));
  EXPECT_TRUE(wait_for_received(4));
  append("logs/s.20261121.0001", line(5));  // by a writer that still has the former file
  EXPECT_TRUE(wait_for_received(5));
  EXPECT_EQ(shipper.end(), 0);
  for (const auto& [identity, count] : received()) EXPECT_EQ(count, 1) << identity;
  EXPECT_EQ(read("said"), "");
}

TEST_F(ShipCommand, LineWithoutItsEnd_WaitsForIt) {
  const std::string text = line(2);
  append("logs/s.20261121.0001", line(1) + text.substr(0, 20));
  EXPECT_EQ(ship_once().status, 0);
  EXPECT_EQ(received().size(), 1U);
  append("logs/s.20261121.0001", text.substr(20));
  EXPECT_EQ(ship_once().status, 0);
  EXPECT_EQ(received().size(), 2U);
}

TEST_F(ShipCommand, ReceiverThatIsAway_IsWaitedFor) {
  write("down", "");
  append("logs/s.20261121.0001", lines(1, 100));
  Shipper shipper(folder_.path(), arguments({"--option", "down=" + folder_.path("down")}));
  EXPECT_TRUE(wait_until([this] { return read("said").find("it is tried again") != std::string::npos; }));
  EXPECT_EQ(received().size(), 0U);
  std::filesystem::remove(folder_.path("down"));
  EXPECT_TRUE(wait_for_received(100));
  EXPECT_TRUE(
      wait_until([this] { return read("said").find("it takes lines again; delivery goes on") != std::string::npos; }));
  EXPECT_EQ(shipper.end(), 0);
}

TEST_F(ShipCommand, Signal_FinishesTheBatchOfASlowReceiver) {
  append("logs/s.20261121.0001", lines(1, 100));
  Shipper shipper(folder_.path(), arguments({"--option", "slow=1000", "--batch", "10", "--metrics", "m.json"}));
  EXPECT_TRUE(wait_for_received(10));
  EXPECT_EQ(shipper.end(), 0);
  const std::size_t first = received().size();
  EXPECT_EQ(first % 10, 0U);
  EXPECT_LT(first, 100U);
  EXPECT_EQ(ship_once().status, 0);
  EXPECT_EQ(received().size(), 100U);
  for (const auto& [identity, count] : received()) EXPECT_EQ(count, 1) << identity;
}

TEST_F(ShipCommand, RefusedLines_GoToTheDeadLettersWithTheirReasonAndTheRestGoesOn) {
  append("logs/s.20261121.0001", lines(1, 200) + "no JSON\n");
  const CommandResult result = ship_once("--option refuse=3 --dead-letters dead.jsonl");
  EXPECT_EQ(result.status, 1);
  std::ifstream dead(folder_.path("dead.jsonl"));
  std::size_t count = 0;
  bool has_broken_line = false;
  for (std::string letter; std::getline(dead, letter); ++count) {
    has_broken_line = has_broken_line || letter.find(R"("reason":"it is no whole JSON object")") != std::string::npos;
    EXPECT_EQ(letter.find(R"({"reason":")"), 0U) << letter;
  }
  EXPECT_TRUE(has_broken_line);
  EXPECT_GT(count, 20U);
  EXPECT_EQ(received().size() + count, 201U);
  const std::string number = std::to_string(count);
  const std::string begin =
      "qzlog: error: lines are not delivered, and stand with their reasons in 'dead.jsonl'\n"
      "qzlog: error: " +
      number + " lines passed over (" + number + " in the dead letters); the first at ";
  EXPECT_TRUE(result.err.starts_with(begin)) << result.err;
}

TEST_F(ShipCommand, FileThatCannotBeOpened_EndsAnOnceWithAnErrorAndTheRestGoesOn) {
  append("logs/other.20261121.0001", line(1));
  const std::string hidden = folder_.path("logs/s.20261121.0001");
  std::filesystem::create_symlink(hidden, hidden);  // leads nowhere, for ever
  const CommandResult result = run("$QZLOG ship logs --once --state state.json --option keep=records --to " + url());
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("cannot open '"), std::string::npos) << result.err;
  EXPECT_EQ(received().size(), 1U);
}

TEST_F(ShipCommand, Choice_DeliversWhatIsWantedAndKeepsWhatNobodyCanChoose) {
  write("d.yaml",
        "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
        "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n");
  append("logs/s.20261121.0001", line(1, 3) + line(2, 7) + "\n{\"id\":99}\n" + line(3, 8) + line(4, 1));
  const CommandResult result = ship_once("--definitions d.yaml --level 7.. --metrics m.json");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(received(), (std::map<std::string, int>{{"h/1/2/2", 1}, {"h/1/2/3", 1}}));
  EXPECT_NE(read("state.json.dead-letters.jsonl").find("[unknown-id]"), std::string::npos);
  EXPECT_NE(read("m.json").find("\"passed_over\":2,\"acknowledged\":2,"), std::string::npos) << read("m.json");
  EXPECT_EQ(ship_once("--definitions d.yaml --level 7..").status, 0);
  EXPECT_EQ(received().size(), 2U);

  const CommandResult without = ship_once("--level 7..");
  EXPECT_EQ(without.status, 2);
  EXPECT_EQ(without.err, "qzlog: error: choosing entries needs --definitions, against which they are read\n");
}

TEST_F(ShipCommand, SignalForMetrics_WritesThemAtOnce) {
  append("logs/s.20261121.0001", lines(1, 3));
  Shipper shipper(folder_.path(), arguments());
  EXPECT_TRUE(wait_for_received(3));
  shipper.send(SIGUSR1);
  EXPECT_TRUE(wait_until([this] { return read("said").ends_with("}\n"); }));
  EXPECT_NE(read("said").find("\"acknowledged\":3,"), std::string::npos) << read("said");
  EXPECT_EQ(shipper.end(), 0);
}

TEST_F(ShipCommand, Receivers_ThatCannotBe_AreErrorsWithTheNextStep) {
  const struct {
    const char* url;
    const char* said;
  } cases[] = {
      {"nats://127.0.0.1:4222/E --plugins none",
       "nats:// needs a plug-in that is not installed: install the package "
       "'qzlog-ship-nats', which has '"},
      {"otlp+https://h/v1/logs --plugins none", "install the package 'qzlog-ship-otlp'"},
      {"natz://h/E", "there is no scheme 'natz'; did you mean 'nats'?; there are file://, kafka://"},
      {"nats://me:secret@h/E", "credentials do not belong into a URL"},
      {"nats", "'nats' is no URL of a receiver"},
      {"file:///none-such", "file:///none-such: there is no folder '/none-such': make it, and start again"},
      {"file://elsewhere/got", "a folder of another host cannot be written to"},
      {"file:///tmp --option kep=records", "there is no --option kep for this receiver; there are keep,"},
      {"file:///tmp --option keep", "an option of the receiver is written KEY=VALUE"},
      {"old://h/E --plugins " QZLOG_TEST_PLUGINS,
       "it is for version 7 of the interface, and this command has version 1"},
      {"half://h/E --plugins " QZLOG_TEST_PLUGINS, "it is not complete"},
  };
  append("logs/s.20261121.0001", lines(1, 3));
  for (const auto& [url, said] : cases) {
    const CommandResult result = run("$QZLOG ship logs/s --once --state other.json --to " + std::string(url));
    EXPECT_EQ(result.status, 2) << url;
    EXPECT_NE(result.err.find(said), std::string::npos) << url << '\n' << result.err;
    EXPECT_EQ(result.err.find("secret"), std::string::npos);
    EXPECT_EQ(result.err.find("qzlog: ", 1), std::string::npos) << result.err;  // it is said once
    std::filesystem::remove(folder_.path("other.json"));
  }
}

TEST_F(ShipCommand, BrokenPlugin_IsAnErrorWithTheLoadersReason) {
  write("ship-bad.so", "no library");
  const CommandResult result = run("$QZLOG ship logs/s --to bad://h/E --plugins .");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("cannot use the plug-in '" + folder_.path("ship-bad.so")), std::string::npos) << result.err;
}

}  // namespace
}  // namespace qzlog_test
