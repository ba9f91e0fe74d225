#include "tools/transport/log_origin.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

constexpr std::string_view kSequence = "sequence=";
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::optional<std::uint64_t> parse_sequence(std::string_view text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  return !text.empty() && stopped == end && error == std::errc() ? std::optional(number) : std::nullopt;
}

qzlog_start start_of(qzlog_start_kind kind) {
  qzlog_start start = {};
  start.size = sizeof start;
  start.kind = kind;
  return start;
}

}  // namespace

LogOrigin log_origin(const std::string& from) {
  using Kind = LogOrigin::Kind;
  if (from.empty()) return {};
  if (from == "syslog") return {Kind::kSyslog};
  if (std::optional<JournalAddress> journal = journal_address(from)) return {Kind::kJournal, std::move(journal)};
  if (from.find("://") != std::string::npos || from.find('@') != std::string::npos) {
    return {Kind::kReceiver, std::nullopt, TransportUrl(from, "--from")};
  }
  throw CommandError(kExitCannotRun, "--from: " + qzlog_compiler::quoted(from) +
                                         " is no place that entries come from: write journal, journal:NAMESPACE, "
                                         "syslog, or the URL of a receiver, such as nats://127.0.0.1:4222/ENTRIES");
}

std::optional<qzlog_start> parse_start(const std::string& text, const ReaderClock& clock) {
  if (text.empty() || text == "beginning") return start_of(QZLOG_FROM_BEGINNING);
  if (text == "now") return start_of(QZLOG_FROM_NOW);
  if (text.starts_with(kSequence)) {
    const std::optional<std::uint64_t> number = parse_sequence(std::string_view(text).substr(kSequence.size()));
    if (!number) return std::nullopt;
    qzlog_start start = start_of(QZLOG_FROM_SEQUENCE);
    start.sequence = *number;
    return start;
  }
  const std::optional<long long> moment = find_moment(text, clock);
  constexpr long long kMostSeconds = std::numeric_limits<std::int64_t>::max() / kNanoseconds;
  if (!moment || *moment > kMostSeconds || *moment < -kMostSeconds) return std::nullopt;
  qzlog_start start = start_of(QZLOG_FROM_TIME);
  start.nanoseconds = *moment * kNanoseconds;
  return start;
}

}  // namespace qzlog_tool
