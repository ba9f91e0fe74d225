#ifndef QZLOG_TESTS_SHIP_OTLP_OTLP_FIXTURE_H
#define QZLOG_TESTS_SHIP_OTLP_OTLP_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/ship/otlp/http_receiver.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_dir.h"
#include "tools/ship/record_host.h"
#include "tools/ship/transport_sender.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_url.h"

namespace qzlog_test {

inline qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }

/// What becomes records: as the command makes them of lines.
struct SentLine {
  std::string identity;
  std::string line;
  int level = 3;
  std::string event = "DISK_FULL";
  std::uint32_t id = 1001;
  std::string product = "storage";
  std::string writer = "web1/7/1";

  qzlog_record record() const {
    qzlog_record made = {};
    made.identity = text_of(identity);
    made.line = text_of(line);
    made.writer = text_of(writer);
    made.product = text_of(product);
    made.event = text_of(event);
    made.id = id;
    made.level = level;
    return made;
  }
};

/// The plug-in, loaded as the command does, and what it says.
class OtlpFixture : public ::testing::Test {
 protected:
  OtlpFixture() {
    options_.client = "qzlog-ship/1.0.0 thishost";
    options_.options = {{"encoding", "json"}};
    body().clear();
  }

  /// One call; what became of it is in the members. Reasons are kept as texts.
  void send(const std::string& url, const std::vector<SentLine>& lines, int timeout_ms = 10000) {
    const qzlog_tool::TransportUrl parsed(url);
    const qzlog_tool::TransportPlugin plugin(parsed, QZLOG_BUILT_PLUGINS);
    const qzlog_tool::TransportSettings settings(parsed, options_);
    const qzlog_tool::KnownDefinitions known;
    qzlog_tool::RecordHost host(
        known, nullptr, [this](const std::string& text) { warnings_.push_back(text); }, [] { return false; });
    qzlog_host with_body = host.host();
    if (!body().empty()) with_body.body = give_body;
    std::vector<qzlog_record> records;
    for (const SentLine& line : lines) records.push_back(line.record());
    std::vector<qzlog_result> results(records.size());
    qzlog_error error = {};
    const qzlog_transport& transport = plugin.transport();
    const auto timeout = static_cast<std::uint32_t>(timeout_ms);
    qzlog_sender* sender = nullptr;
    outcome_ = transport.open_sender(&settings.get(), &with_body, timeout, &sender, &error);
    if (outcome_ == QZLOG_DONE) {
      outcome_ = transport.send(sender, records.data(), records.size(), timeout, results.data(), &error);
    }
    reason_ = error.text;
    fates_.clear();
    reasons_.clear();
    for (const qzlog_result& result : results) {
      fates_.push_back(result.fate);
      reasons_.emplace_back(result.reason == nullptr ? "" : result.reason);
    }
    if (sender != nullptr) transport.close_sender(sender);
  }
  void send(const qz_test::HttpReceiver& receiver, const std::vector<SentLine>& lines, int timeout_ms = 10000) {
    send(url_of(receiver), lines, timeout_ms);
  }
  /// What every record has as its message; empty: none has one.
  static std::string& body() {
    static std::string text;
    return text;
  }
  static int give_body(void* /*context*/, const qzlog_record* /*record*/, qzlog_text* text) {
    *text = text_of(body());
    return 1;
  }
  static std::string url_of(const qz_test::HttpReceiver& receiver) {
    return "otlp+http://127.0.0.1:" + std::to_string(receiver.port()) + "/v1/logs";
  }
  static std::vector<SentLine> numbered(int count) {
    std::vector<SentLine> lines;
    for (int number = 1; number <= count; ++number) {
      const std::string text = std::to_string(number);
      lines.push_back({"web1/7/1/" + text, R"({"id":1001,"level":3,"attributes":{"N":)" + text + "}}"});
    }
    return lines;
  }

  qz_test::SetEnv no_proxy_{"no_proxy", "127.0.0.1"};
  qz_test::TempDir folder_;
  qzlog_tool::TransportOptions options_;
  qzlog_outcome outcome_ = QZLOG_DONE;
  std::string reason_;
  std::vector<std::int32_t> fates_;
  std::vector<std::string> reasons_;
  std::vector<std::string> warnings_;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_SHIP_OTLP_OTLP_FIXTURE_H
