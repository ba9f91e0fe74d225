// The transport to folders through the interface that plug-ins have: loaded, sent with and read back.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/ship/transport_sender.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_url.h"

namespace qzlog_tool {
namespace {

qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }
std::string string_of(const qzlog_text& text) { return {text.bytes, text.size}; }

class FileTransport : public ::testing::Test {
 protected:
  FileTransport() { options_.options = {{"keep", "records"}}; }

  std::vector<std::int32_t> send(const std::vector<std::string>& identities, const std::string& line = "{}") {
    const TransportSettings settings(url_, options_);
    RecordHost host(
        known_, nullptr, [](const std::string&) {}, [] { return false; });
    TransportSender sender(plugin_, settings, host);
    std::vector<qzlog_record> records;
    for (const std::string& identity : identities) {
      qzlog_record& record = records.emplace_back();
      record.identity = text_of(identity);
      record.line = text_of(line);
    }
    std::vector<qzlog_result> results(records.size());
    outcome_ = sender.send(records, std::chrono::milliseconds(10000), results, reason_);
    std::vector<std::int32_t> fates;
    for (const qzlog_result& result : results) fates.push_back(result.fate);
    return fates;
  }

  static qzlog_start from(qzlog_start_kind kind, std::uint64_t sequence = 0) {
    qzlog_start start = {};
    start.size = sizeof start;
    start.kind = kind;
    start.sequence = sequence;
    return start;
  }
  std::string read(const qzlog_start& start) {
    const TransportSettings settings(url_, options_);
    const qzlog_transport& transport = plugin_.transport();
    RecordHost host(
        known_, nullptr, [](const std::string&) {}, [] { return false; });
    qzlog_error error = {};
    qzlog_reader* reader = nullptr;
    if (transport.open_reader(&settings.get(), &host.host(), &start, 1000, &reader, &error) != QZLOG_DONE) {
      return error.text;
    }
    std::string text;
    std::size_t count = 0;
    std::int32_t at_end = 0;
    qzlog_received records[2] = {};
    while (transport.read(reader, records, 2, 10, &count, &at_end, &error) == QZLOG_DONE && at_end == 0) {
      if (count == 0) break;
      for (std::size_t index = 0; index < count; ++index) {
        text += std::to_string(records[index].sequence) + ':' + string_of(records[index].identity) + ' ';
      }
    }
    transport.close_reader(reader);
    return text + (at_end != 0 ? "end" : "waits");
  }

  qz_test::TempDir folder_;
  TransportUrl url_{"file://" + folder_.path()};
  TransportPlugin plugin_{url_, QZLOG_BUILT_PLUGINS};
  TransportOptions options_;
  KnownDefinitions known_;
  qzlog_outcome outcome_ = QZLOG_DONE;
  std::string reason_;
};

using Fates = std::vector<std::int32_t>;

TEST_F(FileTransport, Records_ComeBackFromWhereverTheyAreReadFrom) {
  EXPECT_TRUE(plugin_.can_read());
  EXPECT_EQ(send({"a", "b"}), (Fates{QZLOG_ACKNOWLEDGED, QZLOG_ACKNOWLEDGED}));
  send({"c"}, std::string(600000, 'x'));
  send({"d"});
  EXPECT_EQ(read(from(QZLOG_FROM_BEGINNING)), "1:a 2:b 3:c 4:d end");
  EXPECT_EQ(read(from(QZLOG_FROM_SEQUENCE, 3)), "3:c 4:d end");
  EXPECT_EQ(read(from(QZLOG_FROM_SEQUENCE, 9)), "end");
  qzlog_start start = from(QZLOG_FROM_NOW);
  start.follow = 1;
  EXPECT_EQ(read(start), "waits");
  start.kind = QZLOG_FROM_BEGINNING;
  EXPECT_EQ(read(start), "1:a 2:b 3:c 4:d waits");
}

TEST_F(FileTransport, Doubles_AreDroppedOnRequest) {
  options_.options.emplace_back("drop-doubles", "yes");
  EXPECT_EQ(send({"a", "a"}), (Fates{QZLOG_ACKNOWLEDGED, QZLOG_DOUBLE}));
  EXPECT_EQ(send({"a", "b"}), (Fates{QZLOG_DOUBLE, QZLOG_ACKNOWLEDGED}));
  options_.options.pop_back();  // which is for senders
  EXPECT_EQ(read(from(QZLOG_FROM_BEGINNING)), "1:a 2:b end");
}

TEST_F(FileTransport, Faults_AreToldAsTheyAre) {
  options_.options = {{"keep", "records"}, {"fail", "100"}};
  EXPECT_EQ(send({"a"}), Fates{QZLOG_AGAIN});
  EXPECT_EQ(outcome_, QZLOG_LATER);
  options_.options = {{"keep", "records"}, {"refuse", "1"}};
  EXPECT_EQ(send({"a"}), Fates{QZLOG_REFUSED});
  options_.options = {{"keep", "records"}, {"cut", "100"}};
  EXPECT_EQ(send({"a", "b"}), (Fates{QZLOG_AGAIN, QZLOG_AGAIN}));
  EXPECT_EQ(outcome_, QZLOG_LATER);
  options_.options = {{"keep", "records"}, {"again", "100"}};
  EXPECT_EQ(send({"c"}), Fates{QZLOG_AGAIN});
  EXPECT_EQ(outcome_, QZLOG_DONE);
  options_.options = {{"fail", "101"}};
  send({"a"});
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_EQ(reason_, "--option fail takes a number from 0 to 100");
}

TEST_F(FileTransport, TornRecord_IsCutOff) {
  folder_.write("records.tsv", "a\t..0\t{}\nb\t..0");
  send({"b"});
  EXPECT_EQ(read(from(QZLOG_FROM_BEGINNING)), "1:a 2:b end");
}

}  // namespace
}  // namespace qzlog_tool
