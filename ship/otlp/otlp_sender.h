#ifndef QZLOG_SHIP_OTLP_OTLP_SENDER_H
#define QZLOG_SHIP_OTLP_OTLP_SENDER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "ship/otlp/http_client.h"
#include "ship/otlp/otlp_options.h"
#include "ship/otlp/record_mapping.h"
#include "ship/transport.h"

/// Sends records as requests of OTLP, several for a batch where it is large or the receiver does not take all of it.
struct qzlog_sender {
 public:
  /// Asks the receiver with an empty request whether it is there and takes what we have.
  qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms);
  qzlog_sender(const qzlog_sender&) = delete;
  qzlog_sender& operator=(const qzlog_sender&) = delete;

  void send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms, qzlog_result* results);

 private:
  /// What became of a request.
  enum class Verdict {
    kTaken,
    kNoneTaken,
    kNotAll,   // some are not taken; nobody says which
    kTooLarge  // all of them together
  };
  /// Records of a batch, from the first to behind the last one.
  struct Range {
    std::size_t first;
    std::size_t last;
    std::size_t size() const { return last - first; }
  };
  /// Where a record stands in runs_.
  struct Written {
    std::size_t begin;
    std::size_t end;
    qzlog_ship::LogResource resource;
  };

  void write_records(const qzlog_record* records, std::size_t count);
  std::vector<Range> requests_of(std::size_t count) const;
  void refuse_receiver_that_refuses_all(std::span<qzlog_result> results);
  void settle(Range range, Verdict verdict, qzlog_result* results, std::vector<Range>& left);
  void write_request(Range range);
  Verdict post(std::size_t count, qzlog_ship::Patience& patience);
  Verdict judge_taken(const qzlog_ship::HttpAnswer& answer, std::size_t count);
  [[noreturn]] void fail_for_status(const qzlog_ship::HttpAnswer& answer) const;
  std::string said_by(const qzlog_ship::HttpAnswer& answer) const;
  std::string clean(const std::string& text) const;
  void warn(const std::string& text) const;

  const qzlog_host& host_;
  qzlog_ship::OtlpOptions options_;
  std::string version_;
  qzlog_ship::RecordMapping mapping_;
  qzlog_ship::HttpClient client_;
  std::size_t request_bytes_;  // less than asked for where the receiver takes less
  std::string runs_;           // all records of the batch
  std::vector<Written> written_;
  std::string request_;
  std::string compressed_;
  bool was_welcome_ = false;         // it took what it was sent
  std::string message_;              // of the latest answer
  std::deque<std::string> reasons_;  // of what was refused in the latest call
};

#endif  // QZLOG_SHIP_OTLP_OTLP_SENDER_H
