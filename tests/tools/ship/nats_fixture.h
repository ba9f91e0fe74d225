#ifndef QZLOG_TESTS_TOOLS_SHIP_NATS_FIXTURE_H
#define QZLOG_TESTS_TOOLS_SHIP_NATS_FIXTURE_H

#include <nats/nats.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <set>

#include "tests/support/nats_servers.h"
#include "tests/tools/ship/ship_fixture.h"

namespace qzlog_test {

/// What a stream holds, read by the client library and not by the plug-in.
struct StoredRecord {
  std::string subject;
  std::string identity;
  std::string line;
};

/// The command and a server with JetStream, which is started.
class NatsFixture : public ShipFixture {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
    start_server({"-js"});
  }

  void start_server(const std::vector<std::string>& arguments) {
    server_ = std::make_unique<qz_test::NatsServer>(folder_.path("nats"), arguments, qz_test::NatsServer::free_port());
    ASSERT_TRUE(server_->start()) << read("nats.log");
  }

  /// The long form, of `./dev stress`, has more rounds and waits longer.
  static int quick_or_long(int quick, int longer) { return std::getenv("QZLOG_STRESS") != nullptr ? longer : quick; }

  std::string nats_url(const std::string& scheme = "nats") const { return scheme + "://" + server_->address() + "/S"; }
  static std::vector<std::string> nats_arguments(const std::string& url, const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"logs/s", "--to", url, "--state", "state.json"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  CommandResult ship_to(const std::string& url, const std::string& more = "") const {
    return run("$QZLOG ship logs/s --to " + url + " --state state.json --once " + more);
  }

  /// All that stream S holds, in its order.
  static std::vector<StoredRecord> stored(const std::string& address) {
    std::vector<StoredRecord> records;
    natsConnection* connection = nullptr;
    jsCtx* context = nullptr;
    jsStreamInfo* info = nullptr;
    jsErrCode code = jsErrCode(0);
    EXPECT_EQ(natsConnection_ConnectTo(&connection, ("nats://" + address).c_str()), NATS_OK);
    EXPECT_EQ(natsConnection_JetStream(&context, connection, nullptr), NATS_OK);
    EXPECT_EQ(js_GetStreamInfo(&info, context, "S", nullptr, &code), NATS_OK);
    const jsStreamState state = info != nullptr ? info->State : jsStreamState{};
    jsStreamInfo_Destroy(info);
    for (std::uint64_t number = state.FirstSeq; state.Msgs > 0 && number <= state.LastSeq; ++number) {
      natsMsg* message = nullptr;
      EXPECT_EQ(js_GetMsg(&message, context, "S", number, nullptr, &code), NATS_OK) << number;
      if (message == nullptr) break;
      const char* identity = "";
      natsMsgHeader_Get(message, "Nats-Msg-Id", &identity);
      records.push_back({natsMsg_GetSubject(message),
                         identity,
                         {natsMsg_GetData(message), static_cast<std::size_t>(natsMsg_GetDataLength(message))}});
      natsMsg_Destroy(message);
    }
    jsCtx_Destroy(context);
    natsConnection_Destroy(connection);
    return records;
  }

  /// Writes lines to a series that begins another file each 100 ms, while `faults` goes on; gives how many.
  int write_meanwhile(const std::function<void()>& faults) const {
    std::atomic<bool> is_enough{false};
    int written = 0;
    std::thread writer([&] {
      for (int file = 1; !is_enough; ++file) {
        const std::string digits = std::to_string(10000 + file).substr(1);
        for (int round = 0; round < 10; ++round) {
          append("logs/s.20261121." + digits, lines(written + 1, written + 10));
          written += 10;
          std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
      }
    });
    faults();
    is_enough = true;
    writer.join();
    return written;
  }

  /// Each line that was written is there, and no line twice.
  static void expect_all(const std::vector<StoredRecord>& records, int written) {
    std::set<std::string> identities;
    for (const StoredRecord& record : records) identities.insert(record.identity);
    std::set<std::string> expected;
    for (int seq = 1; seq <= written; ++seq) expected.insert("h/1/2/" + std::to_string(seq));
    EXPECT_TRUE(identities == expected) << identities.size() << " of " << expected.size();
    EXPECT_EQ(records.size(), identities.size()) << "doubles";
    std::printf("%d lines, %zu doubles in the stream\n", written, records.size() - identities.size());
  }

  /// A shipper at work while `faults` goes on; a last one delivers the rest.
  void ship_meanwhile(const std::string& url, const std::vector<std::string>& options,
                      const std::function<void()>& faults) {
    Shipper shipper(folder_.path(), nats_arguments(url, options));
    const int written = write_meanwhile(faults);
    shipper.end();
    std::vector<std::string> last_options = options;
    last_options.push_back("--once");
    int status = 1;
    const auto end = std::chrono::steady_clock::now() + kShipPatience;
    while (status != 0 && std::chrono::steady_clock::now() < end) {
      status = Shipper(folder_.path(), nats_arguments(url, last_options)).wait();
    }
    EXPECT_EQ(status, 0) << read("said");
    expect_all(stored(url.substr(7, url.find_first_of(",/", 7) - 7)), written);
  }

  static void pass(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

  std::unique_ptr<qz_test::NatsServer> server_;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_SHIP_NATS_FIXTURE_H
