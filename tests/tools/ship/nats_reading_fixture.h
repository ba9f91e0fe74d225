#ifndef QZLOG_TESTS_TOOLS_SHIP_NATS_READING_FIXTURE_H
#define QZLOG_TESTS_TOOLS_SHIP_NATS_READING_FIXTURE_H

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ship/transport.h"
#include "tests/support/nats_servers.h"
#include "tests/support/temp_dir.h"

namespace qzlog_test {

using Milliseconds = std::chrono::milliseconds;

/// The plug-in as it is built, by its interface alone. It stays loaded.
inline const qzlog_transport& nats_transport() {
  static void* const library = ::dlopen(QZLOG_BUILT_PLUGINS "/ship-nats.so", RTLD_NOW | RTLD_LOCAL);
  static const auto function =
      reinterpret_cast<qzlog_ship_transport_function>(::dlsym(library, QZLOG_TRANSPORT_FUNCTION));
  return *function();
}

/// What a sender or a reader of stream S is opened with; keeps the warnings.
class NatsPeer {
 public:
  /// Credentials are a pair of options with the key "credentials".
  NatsPeer(std::string authority, std::vector<std::pair<std::string, std::string>> options)
      : authority_(std::move(authority)), url_("nats://" + authority_ + "/S"), kept_(std::move(options)) {
    for (const auto& [key, value] : kept_) {
      if (key == "credentials") {
        settings_.credentials_file = value.c_str();
      } else {
        options_.push_back({key.c_str(), value.c_str()});
      }
    }
    settings_.size = sizeof settings_;
    settings_.url = url_.c_str();
    settings_.scheme = "nats";
    settings_.authority = authority_.c_str();
    settings_.path = "/S";
    settings_.options = options_.data();
    settings_.option_count = options_.size();
    settings_.client = "test";
    host_.size = sizeof host_;
    host_.context = &warnings_;
    host_.warn = [](void* warnings, const char* text) { *static_cast<std::string*>(warnings) += text; };
    host_.is_ending = [](void*) { return 0; };
  }
  NatsPeer(const NatsPeer&) = delete;
  NatsPeer& operator=(const NatsPeer&) = delete;

  const std::string& warnings() const { return warnings_; }
  std::string error() const { return error_.text; }

 protected:
  ~NatsPeer() = default;

  std::string authority_;
  std::string url_;
  std::vector<std::pair<std::string, std::string>> kept_;
  std::vector<qzlog_option> options_;
  qzlog_settings settings_ = {};
  qzlog_host host_ = {};
  qzlog_error error_ = {};
  std::string warnings_;
};

class NatsWriter : public NatsPeer {
 public:
  using NatsPeer::NatsPeer;
  ~NatsWriter() { close(); }

  /// Until the receiver has all of them, as the command does it. How many it had already.
  std::size_t send(const std::vector<std::string>& identities, const std::vector<std::string>& lines) {
    std::vector<qzlog_record> records(identities.size());
    for (std::size_t index = 0; index < records.size(); ++index) {
      records[index].identity = {identities[index].data(), identities[index].size()};
      records[index].line = {lines[index].data(), lines[index].size()};
    }
    std::size_t doubles = 0;
    const auto end = std::chrono::steady_clock::now() + Milliseconds(60000);
    while (!records.empty() && std::chrono::steady_clock::now() < end) doubles += send_once(records);
    EXPECT_TRUE(records.empty()) << error_.text;
    return doubles;
  }
  void send(int first, int last) {
    std::vector<std::string> identities;
    for (int number = first; number <= last; ++number) identities.push_back(std::to_string(number));
    send(identities, identities);
  }

 private:
  std::size_t send_once(std::vector<qzlog_record>& records) {
    const qzlog_transport& transport = nats_transport();
    if (sender_ == nullptr && transport.open_sender(&settings_, &host_, 5000, &sender_, &error_) != QZLOG_DONE) {
      ::usleep(50000);
      return 0;
    }
    const std::size_t count = std::min<std::size_t>(records.size(), 1000);
    std::vector<qzlog_result> results(count);
    if (transport.send(sender_, records.data(), count, 5000, results.data(), &error_) != QZLOG_DONE) close();
    std::vector<qzlog_record> left;
    std::size_t doubles = 0;
    for (std::size_t index = 0; index < records.size(); ++index) {
      if (index >= count || results[index].fate == QZLOG_AGAIN) left.push_back(records[index]);
      if (index < count && results[index].fate == QZLOG_DOUBLE) ++doubles;
    }
    records = std::move(left);
    return doubles;
  }
  void close() {
    if (sender_ != nullptr) nats_transport().close_sender(std::exchange(sender_, nullptr));
  }

  qzlog_sender* sender_ = nullptr;
};

/// Where a reader begins, and how.
struct From {
  std::int32_t kind = QZLOG_FROM_BEGINNING;
  std::uint64_t sequence = 0;
  std::int64_t nanoseconds = 0;
  const char* group = nullptr;
  bool follows = false;
};

struct ReadRecord {
  std::string identity;
  std::string line;
  std::uint64_t sequence;
  std::int64_t nanoseconds;
  std::uint64_t token;
  bool again;
};

class NatsReaderPeer : public NatsPeer {
 public:
  NatsReaderPeer(const std::string& authority, const From& from,
                 std::vector<std::pair<std::string, std::string>> options = {})
      : NatsPeer(authority, std::move(options)) {
    start_.size = sizeof start_;
    start_.kind = from.kind;
    start_.sequence = from.sequence;
    start_.nanoseconds = from.nanoseconds;
    start_.group = from.group;
    start_.follow = from.follows ? 1 : 0;
    outcome = nats_transport().open_reader(&settings_, &host_, &start_, 5000, &reader_, &error_);
  }
  ~NatsReaderPeer() { close(); }

  /// What one call gives; at_end and outcome say the rest.
  std::vector<ReadRecord> read(std::size_t most = 500, std::uint32_t timeout_ms = 200) {
    std::vector<qzlog_received> places(most);
    std::size_t count = 0;
    std::int32_t end = 0;
    outcome = nats_transport().read(reader_, places.data(), most, timeout_ms, &count, &end, &error_);
    at_end = outcome == QZLOG_DONE && end != 0;
    std::vector<ReadRecord> records;
    for (std::size_t index = 0; outcome == QZLOG_DONE && index < count; ++index) {
      const qzlog_received& each = places[index];
      records.push_back({{each.identity.bytes, each.identity.size},
                         {each.line.bytes, each.line.size},
                         each.sequence,
                         each.nanoseconds,
                         each.token,
                         each.again != 0});
    }
    return records;
  }
  bool settle(const std::vector<ReadRecord>& records) {
    std::vector<std::uint64_t> tokens;
    for (const ReadRecord& record : records) tokens.push_back(record.token);
    outcome = nats_transport().settle(reader_, tokens.data(), tokens.size(), 5000, &error_);
    return outcome == QZLOG_DONE;
  }
  /// All that comes up to the end, or for `patience`, with failures that pass; settled where `settles` is set.
  std::vector<ReadRecord> read_all(bool settles = false, Milliseconds patience = Milliseconds(20000)) {
    std::vector<ReadRecord> all;
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!at_end && outcome != QZLOG_NEVER && std::chrono::steady_clock::now() < end) {
      const std::vector<ReadRecord> some = read();
      if (outcome == QZLOG_LATER) ::usleep(20000);
      if (settles && !some.empty()) settle(some);
      all.insert(all.end(), some.begin(), some.end());
    }
    return all;
  }
  void close() {
    if (reader_ != nullptr) nats_transport().close_reader(std::exchange(reader_, nullptr));
  }

  qzlog_outcome outcome = QZLOG_DONE;
  bool at_end = false;

 private:
  qzlog_start start_ = {};
  qzlog_reader* reader_ = nullptr;
};

inline std::string identities_of(const std::vector<ReadRecord>& records) {
  std::string text;
  for (const ReadRecord& record : records) text += (text.empty() ? "" : " ") + record.identity;
  return text;
}

/// A server with JetStream, and a stream S.
class NatsReading : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!qz_test::NatsServer::is_installed()) GTEST_SKIP() << "nats-server is not installed";
    server_ = std::make_unique<qz_test::NatsServer>(folder_.path("nats"), std::vector<std::string>{"-js"},
                                                    qz_test::NatsServer::free_port());
    ASSERT_TRUE(server_->start());
    writer_ = std::make_unique<NatsWriter>(server_->address(),
                                           std::vector<std::pair<std::string, std::string>>{{"create", "yes"}});
  }
  /// The long form, of `./dev stress`, has more rounds.
  static int quick_or_long(int quick, int longer) { return std::getenv("QZLOG_STRESS") != nullptr ? longer : quick; }

  /// Reads up to the end while the server is killed and started again and again.
  template <class Take>
  void read_while_killed(NatsReaderPeer& reader, Take take) const {
    std::thread reading([&] {
      const auto end = std::chrono::steady_clock::now() + Milliseconds(quick_or_long(30000, 120000));
      while (!reader.at_end && reader.outcome != QZLOG_NEVER && std::chrono::steady_clock::now() < end) {
        take(reader.read(20));
        std::this_thread::sleep_for(Milliseconds(5));
      }
    });
    for (int round = quick_or_long(4, 30); round > 0; --round) {
      std::this_thread::sleep_for(Milliseconds(quick_or_long(200, 1000)));
      server_->kill();
      EXPECT_TRUE(server_->start());
    }
    reading.join();
  }

  qz_test::TempDir folder_;
  std::unique_ptr<qz_test::NatsServer> server_;
  std::unique_ptr<NatsWriter> writer_;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_SHIP_NATS_READING_FIXTURE_H
