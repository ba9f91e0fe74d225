// A process with threads that send forks: its child sends through a connection of its own, whatever the threads were
// doing.
#include <atomic>
#include <map>
#include <thread>
#include <vector>

#include "qzlog/syslog_sink.h"
#include "tests/sinks/sinks_fixture.h"
#include "tests/sinks/syslog_servers.h"
#include "tests/support/child_process.h"

namespace {

using namespace qz_test;

class SyslogFork : public SinksTest {};

TEST_F(SyslogFork, WhileThreadsSend_ChildrenSendAsWritersOfTheirOwn) {
  DatagramServer server;
  qz_LOG_SyslogSinkSettings settings;
  settings.transport = qz_LOG_SyslogSinkSettings::kUdp;
  settings.host = "127.0.0.1";
  settings.port = server.port();
  qz_LOG_SyslogSink sink(settings);
  std::atomic<bool> is_done{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      while (!is_done) write_to(sink);
    });
  }
  std::thread reading([&] {
    while (!is_done) server.next(10);
  });
  for (int round = 0; round < 40; ++round) {
    expect_child_succeeds([&] {
      for (int i = 0; i < 5; ++i) {
        if (!write_to(sink)) return 1;
      }
      return sink.GetStatus().connections == 1 && sink.Close(1000) == 0 ? 0 : 2;
    });
  }
  is_done = true;
  for (std::thread& thread : threads) thread.join();
  reading.join();
  EXPECT_TRUE(write_to(sink));
}

}  // namespace
