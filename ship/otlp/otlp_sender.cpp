#include "ship/otlp/otlp_sender.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "ship/otlp/gzip.h"
#include "ship/otlp/header_file.h"
#include "ship/otlp/otlp_answer.h"
#include "ship/otlp/retry_after.h"
#include "ship/plugin/plugin_call.h"

namespace {

using qzlog_ship::ExportAnswer;
using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;
using qzlog_ship::HttpAnswer;
using std::chrono::milliseconds;

constexpr const char* kScopeName = "qzlog";

/// "qzlog-ship/1.0.0 HOST"
std::string version_of(std::string_view client) {
  const std::size_t slash = client.find('/');
  if (slash == std::string_view::npos) return {};
  return std::string(client.substr(slash + 1, client.find(' ') - slash - 1));
}

/// What helps where a receiver will answer the same whenever it is asked.
const char* next_step(long status) {
  switch (status) {
    case 401:
    case 403:
      return "see --credentials";
    case 404:
    case 405:
      return "is the URL's path that of OTLP logs? It usually is /v1/logs";
    case 415:
      return "the receiver may know the other --option encoding, or no --option compression";
    case 407:
      return "a proxy on the way wants credentials";
    default:
      return "see the receiver's log";
  }
}

}  // namespace

qzlog_sender::qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms)
    : host_(host),
      options_(settings),
      version_(version_of(settings.client)),
      mapping_(options_.mapping, host, settings.client),
      client_(options_.http),
      request_bytes_(options_.request_bytes) {
  if (options_.credential_count != 0 && options_.http.url.starts_with("http://")) {
    warn("credentials go over the network as they are: otlp+https:// would hide them");
  }
  qzlog_ship::Patience patience(host, timeout_ms, qzlog_ship::Patience::kToOpen);
  qzlog_ship::wait_until_welcome(options_.http.url, host, milliseconds(timeout_ms));
  write_request({0, 0});
  was_welcome_ = post(0, patience) == Verdict::kTaken;
}

void qzlog_sender::send(const qzlog_record* records, std::size_t count, std::uint32_t timeout_ms,
                        qzlog_result* results) {
  qzlog_ship::Patience patience(host_, timeout_ms, qzlog_ship::Patience::kToSend);
  reasons_.clear();
  write_records(records, count);
  // The one to be sent next stands last.
  std::vector<Range> left = requests_of(count);
  std::reverse(left.begin(), left.end());
  while (!left.empty()) {
    if (patience.is_over()) fail_for_now("the receiver took too long for what it was sent");
    const Range range = left.back();
    left.pop_back();
    write_request(range);
    settle(range, post(range.size(), patience), results, left);
  }
  refuse_receiver_that_refuses_all(std::span(results, count));
}

/// One that takes no empty request may be a receiver of another kind; one that takes none of the first entries either
/// is: they are not dead.
void qzlog_sender::refuse_receiver_that_refuses_all(std::span<qzlog_result> results) {
  if (was_welcome_) return;
  was_welcome_ = std::any_of(results.begin(), results.end(),
                             [](const qzlog_result& each) { return each.fate == QZLOG_ACKNOWLEDGED; });
  if (was_welcome_ || results.empty()) return;
  std::fill(results.begin(), results.end(), qzlog_result{});
  fail_for_good("it takes nothing, not even an empty request: " + message_ +
                ": is it a receiver of OTLP, at this path?");
}

void qzlog_sender::write_records(const qzlog_record* records, std::size_t count) {
  runs_.clear();
  written_.clear();
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
  for (std::size_t index = 0; index < count; ++index) {
    const std::size_t begin = runs_.size();
    options_.form->append_record(mapping_.map(records[index], static_cast<std::uint64_t>(nanoseconds)), runs_);
    written_.push_back({begin, runs_.size(), mapping_.resource_of(records[index])});
  }
}

std::vector<qzlog_sender::Range> qzlog_sender::requests_of(std::size_t count) const {
  std::vector<Range> ranges;
  std::size_t first = 0;
  for (std::size_t last = 1; last <= count; ++last) {
    if (last != count && written_[last].end - written_[first].begin <= request_bytes_) continue;
    ranges.push_back({first, last});
    first = last;
  }
  return ranges;
}

void qzlog_sender::settle(Range range, Verdict verdict, qzlog_result* results, std::vector<Range>& left) {
  if (verdict == Verdict::kTaken) {
    for (std::size_t index = range.first; index < range.last; ++index) results[index].fate = QZLOG_ACKNOWLEDGED;
    return;
  }
  if (verdict == Verdict::kNoneTaken || range.size() == 1) {
    const char* const reason = reasons_.emplace_back(message_).c_str();
    std::fill(results + range.first, results + range.last, qzlog_result{QZLOG_REFUSED, reason});
    return;
  }
  const std::size_t middle = range.first + range.size() / 2;
  if (verdict == Verdict::kTooLarge) {
    request_bytes_ = std::min(request_bytes_, (written_[range.last - 1].end - written_[range.first].begin) / 2);
  }
  left.push_back({middle, range.last});
  left.push_back({range.first, middle});
}

void qzlog_sender::write_request(Range range) {
  request_.clear();
  const qzlog_ship::LogScope scope{kScopeName, version_};
  options_.form->begin(request_);
  for (std::size_t first = range.first; first < range.last;) {
    std::size_t last = first + 1;
    while (last < range.last && written_[last].resource == written_[first].resource) ++last;
    const std::size_t begin = written_[first].begin;
    const std::string_view run = std::string_view(runs_).substr(begin, written_[last - 1].end - begin);
    options_.form->append_run(written_[first].resource, scope, run, request_);
    first = last;
  }
  options_.form->end(request_);
}

qzlog_sender::Verdict qzlog_sender::post(std::size_t count, qzlog_ship::Patience& patience) {
  if (options_.compressed) qzlog_ship::compress(request_, compressed_);
  const HttpAnswer answer = client_.post(options_.compressed ? compressed_ : request_, patience);
  if (answer.status >= 200 && answer.status < 300) return judge_taken(answer, count);
  switch (answer.status) {
    case 400:
    case 422:
      message_ = said_by(answer);
      return Verdict::kNotAll;
    case 413:
      message_ = "it is too large for the receiver: " + said_by(answer);
      return Verdict::kTooLarge;
    default:
      fail_for_status(answer);
  }
}

qzlog_sender::Verdict qzlog_sender::judge_taken(const HttpAnswer& answer, std::size_t count) {
  const ExportAnswer parsed = qzlog_ship::parse_export_answer(answer);
  const std::string message = clean(parsed.message);
  if (parsed.rejected == 0) {
    if (!message.empty()) warn("the receiver says: " + message);
    return Verdict::kTaken;
  }
  message_ = message.empty() ? "the receiver does not say why" : message;
  if (options_.partial_success == qzlog_ship::PartialSuccess::kFind) {
    if (static_cast<std::uint64_t>(parsed.rejected) >= count) return Verdict::kNoneTaken;
    warn(
        "the receiver refuses entries without saying which: they are looked for by sending halves again, so that "
        "others "
        "arrive twice");
    return Verdict::kNotAll;
  }
  warn("the receiver did not take some of the entries, which are not sent again: " + message_);
  return Verdict::kTaken;
}

// What helps nobody to wait for ends the command; what OTLP says to try again, and what servers answer
// that are not well, is waited for.
void qzlog_sender::fail_for_status(const HttpAnswer& answer) const {
  const std::string text = said_by(answer);
  if (answer.status >= 300 && answer.status < 400) {
    fail_for_good(text + ": it sends us to another place, where we do not go: name the right URL");
  }
  if (answer.status == 408 || answer.status == 429 || answer.status >= 500 || answer.status < 200) {
    const std::optional<std::chrono::seconds> time = qzlog_ship::parse_retry_after(answer.retry_after);
    if (time) qzlog_ship::leave_alone(options_.http.url, *time);
    fail_for_now(text);
  }
  fail_for_good(text + ": " + next_step(answer.status));
}

std::string qzlog_sender::said_by(const HttpAnswer& answer) const {
  const std::string message = clean(qzlog_ship::message_of(answer));
  return "the receiver answers " + std::to_string(answer.status) + (message.empty() ? "" : ": " + message);
}

std::string qzlog_sender::clean(const std::string& text) const {
  const auto begin = options_.http.headers.begin();
  const auto end = begin + static_cast<std::ptrdiff_t>(options_.credential_count);
  return qzlog_ship::without_secrets(text, {begin, end});
}

void qzlog_sender::warn(const std::string& text) const { host_.warn(host_.context, text.c_str()); }
