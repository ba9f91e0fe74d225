#include "tools/transport/transport_reader.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

constexpr std::uint32_t kOpenMilliseconds = 10000;

std::uint32_t milliseconds_of(std::chrono::milliseconds time) {
  return static_cast<std::uint32_t>(std::clamp<long long>(time.count(), 1, 3'600'000));
}

qzlog_outcome failed(qzlog_outcome outcome, qzlog_error& error, std::string& reason) {
  reason = shown_error(error);
  return outcome == QZLOG_LATER ? QZLOG_LATER : QZLOG_NEVER;
}

}  // namespace

TransportReader::TransportReader(const TransportPlugin& plugin, const TransportSettings& settings,
                                 const ReaderHost& host, const qzlog_start& start)
    : transport_(plugin.transport()),
      settings_(settings),
      host_(host),
      start_(start),
      reader_(nullptr, Closer{&transport_}),
      records_(kMostRecords) {}

qzlog_outcome TransportReader::open(std::string& reason) {
  qzlog_error error = {};
  qzlog_reader* reader = nullptr;
  const qzlog_outcome outcome =
      transport_.open_reader(&settings_.get(), &host_.host(), &start_, kOpenMilliseconds, &reader, &error);
  if (outcome != QZLOG_DONE || reader == nullptr) return failed(outcome, error, reason);
  reader_.reset(reader);
  return QZLOG_DONE;
}

qzlog_outcome TransportReader::read(std::chrono::milliseconds timeout, ReadRecords& read, std::string& reason) {
  read = {};
  if (reader_ == nullptr) {
    const qzlog_outcome opened = open(reason);
    if (opened != QZLOG_DONE) return opened;
  }
  qzlog_error error = {};
  std::size_t count = 0;
  std::int32_t at_end = 0;
  const qzlog_outcome outcome = transport_.read(reader_.get(), records_.data(), records_.size(),
                                                milliseconds_of(timeout), &count, &at_end, &error);
  if (outcome != QZLOG_DONE) return failed(outcome, error, reason);
  read = {{records_.data(), std::min(count, records_.size())}, at_end != 0};
  return QZLOG_DONE;
}

qzlog_outcome TransportReader::settle(std::span<const std::uint64_t> tokens, std::chrono::milliseconds timeout,
                                      std::string& reason) {
  if (reader_ == nullptr || tokens.empty()) return QZLOG_DONE;
  qzlog_error error = {};
  const qzlog_outcome outcome =
      transport_.settle(reader_.get(), tokens.data(), tokens.size(), milliseconds_of(timeout), &error);
  return outcome == QZLOG_DONE ? QZLOG_DONE : failed(outcome, error, reason);
}

}  // namespace qzlog_tool
