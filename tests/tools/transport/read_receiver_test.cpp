// `qzlog render` and `qzlog stats` with --from, as users run them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/transport/read_fixture.h"
#include "tests/tools/transport/running_command.h"

namespace qzlog_test {
namespace {

class ReadReceiver : public ReadFixture {};

TEST_F(ReadReceiver, Entries_AreShownAsThoseOfFiles) {
  deliver(1, 3);
  const CommandResult result = render(from());
  EXPECT_EQ(result.out, "1\n2\n3\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(render(from() + "--output json --where 'N > 2'").out, render("--output json --where 'N > 2' got").out);
}

TEST_F(ReadReceiver, Start_IsWhereItBegins) {
  deliver(1, 3000);
  EXPECT_EQ(render(from() + "--start sequence=2500").out, numbers(2500, 3000));
  EXPECT_EQ(render(from() + "--start beginning --head 2").out, "1\n2\n");
  EXPECT_EQ(render(from() + "--start now").out, "");
  EXPECT_EQ(render(from() + "--tail 2").out, "2999\n3000\n");
  const CommandResult result = render(from() + "--start -2h");
  EXPECT_EQ(result.err, "qzlog: error: " + url() + ": files do not know when a record came: begin with another one\n");
  EXPECT_EQ(result.status, 2);
}

TEST_F(ReadReceiver, Doubles_AreLeftOutOnRequest) {
  deliver(1, 3);
  deliver(2, 4);
  EXPECT_EQ(render(from()).out, "1\n2\n3\n2\n3\n4\n");
  EXPECT_EQ(render(from() + "--unique").out, "1\n2\n3\n4\n");
}

TEST_F(ReadReceiver, DoublesWithoutNumbers_AreLeftOutByTheirIdentities) {
  const std::string plain = R"({"id":1,"attributes":{"N":1}})"
                            "\n";
  write("got/records.tsv", "h/f@0#0123456789abcdef\t..0\t" + plain + "h/f@9#0123456789abcdef\t..0\t" + plain +
                               "h/f@0#0123456789abcdef\t..0\t" + plain);
  EXPECT_EQ(render(from() + "--option keep=records").out, "1\n1\n1\n");
  EXPECT_EQ(render(from() + "--option keep=records --unique").out, "1\n1\n");
  EXPECT_EQ(
      run("$QZLOG stats --definitions d.yaml --json --option keep=records --unique" + from() + "| jq .total.count").out,
      "2\n");
}

TEST_F(ReadReceiver, WrongLines_AreToldWithTheirNumbers) {
  deliver(line(1) + "no entry\n\n" + line(4));
  const CommandResult result = render(from());
  EXPECT_EQ(result.out, "1\n4\n");
  EXPECT_NE(result.err.find(url() + ":2:2: error: "), std::string::npos) << result.err;
  EXPECT_EQ(result.status, 1);
}

TEST_F(ReadReceiver, LongLine_IsReadAsOne) {
  std::string text = line(7);
  text.insert(text.size() - 2, "," + std::string(500'000, ' ') + R"("written":"2026-11-21T08:15:30.000000001Z")");
  deliver(line(1) + text + line(8));
  EXPECT_EQ(render(from()).out, "1\n7\n8\n");
}

TEST_F(ReadReceiver, Statistics_AreThoseOfFiles) {
  deliver(1, 5);
  deliver(line(6, 2));
  const CommandResult result = run("TZ=UTC $QZLOG stats --definitions d.yaml --csv" + from());
  EXPECT_EQ(result.out, run("TZ=UTC $QZLOG stats --definitions d.yaml --csv got").out);
  EXPECT_NE(result.out.find("5"), std::string::npos);
  EXPECT_EQ(result.status, 0);
}

TEST_F(ReadReceiver, WhatCannotBeReadFrom_IsToldWithTheNextStep) {
  const auto error_of = [this](const std::string& more) {
    const CommandResult result = render(more);
    EXPECT_EQ(result.status, 2) << more;
    EXPECT_EQ(result.out, "") << more;
    return result.err;
  };
  EXPECT_NE(error_of("--from fil:///x").find("--from: there is no scheme 'fil'; did you mean 'file'?"),
            std::string::npos);
  EXPECT_NE(error_of("--plugins . --from nats://h/S").find("install the package 'qzlog-ship-nats'"), std::string::npos);
  EXPECT_EQ(error_of("--plugins " QZLOG_TEST_PLUGINS " --from deaf://h/S"),
            "qzlog: error: --from: deaf:// can be delivered to and not read from: read from where it keeps what it "
            "gets\n");
  EXPECT_NE(error_of("--from journald").find("is no place that entries come from: write journal"), std::string::npos);
  const std::string secret = error_of("--from nats://me:secret@h/S");
  EXPECT_NE(secret.find("--from: credentials do not belong into a URL"), std::string::npos);
  EXPECT_EQ(secret.find("secret"), std::string::npos);
  EXPECT_NE(error_of("--from file:///nowhere/at/all").find("there is no folder '/nowhere/at/all'"), std::string::npos);
  EXPECT_NE(error_of("--start now").find("--start is for receivers"), std::string::npos);
  EXPECT_NE(error_of("--group g").find("--group is for receivers"), std::string::npos);
  EXPECT_NE(error_of("--ca f.pem").find("are for receivers"), std::string::npos);
  EXPECT_NE(error_of(from() + "x.jsonl").find("takes no files: leave out 'x.jsonl'"), std::string::npos);
  EXPECT_NE(error_of(from() + "--merge-by-time").find("--merge-by-time takes files"), std::string::npos);
  EXPECT_NE(error_of(from() + "--start 5x").find("is no start; write beginning, now, sequence=N"), std::string::npos);
  EXPECT_NE(error_of(from() + "--group 'a b'").find("is no group"), std::string::npos);
  EXPECT_NE(error_of("--from syslog --follow").find("leave out --follow"), std::string::npos);
  EXPECT_NE(error_of("--from journal --follow --tail 1").find("leave out --tail"), std::string::npos);
}

TEST_F(ReadReceiver, ReceiverThatIsAway_IsWaitedForAndToldOnce) {
  std::filesystem::remove(folder_.path("got/entries.jsonl"));
  const std::vector<std::string> words = {"render", "--no-icu", "--definitions", "d.yaml", "--from", url(), "--follow"};
  const std::string told = "qzlog: warning: " + url() + ": cannot read '" + folder_.path("got/entries.jsonl") +
                           "': No such file or directory; it is tried again\n";
  RunningCommand ended(folder_.path(), "out", words);
  EXPECT_TRUE(wait_until([&] { return folder_.has("said") && read("said") == told; }));
  EXPECT_EQ(ended.end(), -SIGTERM);
  RunningCommand reader(folder_.path(), "out", words);
  EXPECT_TRUE(wait_until([&] { return read("said") == told + told; }));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // some attempts more, which are not told
  deliver(1, 2);
  EXPECT_TRUE(wait_until([&] { return read("out") == "1\n2\n"; })) << read("said");
  EXPECT_EQ(read("said"), told + told + "qzlog: warning: " + url() + ": entries are read again\n");
  deliver(3, 3);
  EXPECT_TRUE(wait_until([&] { return read("out") == "1\n2\n3\n"; }));
  EXPECT_EQ(reader.end(SIGINT), -SIGINT);
}

TEST_F(ReadReceiver, OutputWithoutAReader_EndsTheCommand) {
  deliver(1, 3);
  const CommandResult result =
      run("{ $QZLOG render --no-icu --definitions d.yaml --follow" + from() + "; echo $? > status; } | head -n 1");
  EXPECT_EQ(result.out, "1\n");
  EXPECT_EQ(result.err, "");
  EXPECT_NE(read("status"), "0\n");
}

TEST_F(ReadReceiver, Syslog_MessagesGiveTheirEntries) {
  write("messages",
        R"(<131>1 2026-11-21T08:15:30Z h shop 1 N [qzlog@32473 entry="{\"id\":1,\"attributes\":{\"N\":5}}"] five)"
        "\n<13>1 2026-11-21T08:15:30Z h cron 2 - - nothing of ours\n");
  const CommandResult result = render("--from syslog messages");
  EXPECT_EQ(result.out, "5\n");
  EXPECT_EQ(result.err, "messages: messages of syslog: 1 with entries, 1 of others\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(run("$QZLOG render --no-icu --definitions d.yaml --from syslog < messages").out, "5\n");
  EXPECT_EQ(run("$QZLOG stats --definitions d.yaml --csv --from syslog messages").status, 0);
  write("cut", "Nov 21 08:15:29 host other[1]: hello\nNov 21 08:15:30 host shop[7]: [qzlog@1 entry=\"{\\\"id\n");
  const CommandResult cut = render("--from syslog cut");
  EXPECT_EQ(cut.err,
            "cut: messages of syslog: 0 with entries, 1 that are not whole, 1 of others\n"
            "qzlog: error: 1 message passed over (1 not-whole); the first at cut:2\n");
  EXPECT_EQ(cut.status, 1);
  EXPECT_EQ(render("--from syslog nowhere").status, 2);
}

}  // namespace
}  // namespace qzlog_test
