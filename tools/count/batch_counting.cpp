#include "tools/count/batch_counting.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <string>

#include "foundation/sha256.h"
#include "tools/count/entry_counting.h"

namespace qzlog_tool {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

CalendarDay arrival_day(std::int64_t nanoseconds) {
  const auto seconds = static_cast<std::time_t>(nanoseconds / kNanoseconds);
  std::tm local = {};
  if (nanoseconds <= 0 || ::localtime_r(&seconds, &local) == nullptr) return local_today();
  return calendar_day(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday).value_or(local_today());
}

std::optional<CalendarDay> day_of(const qz_LOG_EntryLine& line, const qzlog_received& record) {
  if (!line.HasTime()) return arrival_day(record.nanoseconds);
  return entry_day(line.GetEntry());
}

}  // namespace

LineDigest line_digest(const qzlog_received& record) {
  qzlog::Sha256 sha;
  if (record.identity.size != 0) {
    sha.add(record.identity.bytes, record.identity.size);
  } else {
    const std::string place = std::to_string(record.sequence) + ' ' + std::to_string(record.nanoseconds) + ' ';
    sha.add(place.data(), place.size());
    if (record.line.size != 0) sha.add(record.line.bytes, record.line.size);
  }
  const qzlog::Sha256::Digest whole = sha.digest();
  LineDigest digest = {};
  std::copy_n(whole.begin(), digest.size(), digest.begin());
  return digest;
}

bool BatchCounting::add(const qz_LOG_EntryLine& line, const qzlog_received& record) {
  const std::optional<CalendarDay> day = day_of(line, record);
  if (!day) return false;
  CoveredLines& lines = batch_.lines[{*day, counter_key(line.GetEntry().GetEntryID())}];
  const std::string_view writer = line.GetWriter();
  const bool is_new =
      writer.empty() || !line.HasSeq() ? lines.add(line_digest(record)) : lines.add(writer, line.GetSeq());
  size_ += is_new ? 1 : 0;
  return true;
}

void BatchCounting::clear() {
  batch_ = {};
  size_ = 0;
}

}  // namespace qzlog_tool
