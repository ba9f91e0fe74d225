#include "tools/ship/transport_sender.h"

#include <algorithm>
#include <iterator>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

const char* text_or_null(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

/// What a plug-in says, in one line that a terminal can show.
std::string shown(qzlog_error& error) {
  error.text[std::size(error.text) - 1] = '\0';
  const std::string text = qzlog_compiler::printable(error.text);
  return text.empty() ? "the plug-in does not say why" : text;
}

bool is_outcome(int outcome) { return outcome == QZLOG_DONE || outcome == QZLOG_LATER || outcome == QZLOG_NEVER; }

}  // namespace

TransportSettings::TransportSettings(const ShipUrl& url, const TransportOptions& options) : settings_() {
  for (const auto& [key, value] : options.options) options_.push_back({key.c_str(), value.c_str()});
  settings_.size = sizeof settings_;
  settings_.url = url.text().c_str();
  settings_.scheme = url.scheme().c_str();
  settings_.authority = url.authority().c_str();
  settings_.path = url.path().c_str();
  settings_.ca_file = text_or_null(options.ca_file);
  settings_.credentials_file = text_or_null(options.credentials_file);
  settings_.options = options_.data();
  settings_.option_count = options_.size();
  settings_.client = options.client.c_str();
}

TransportSender::TransportSender(const TransportPlugin& plugin, const TransportSettings& settings, RecordHost& host)
    : transport_(plugin.transport()), settings_(settings), host_(host), sender_(nullptr, Closer{&transport_}) {}

qzlog_outcome TransportSender::open(std::uint32_t timeout, std::string& reason) {
  qzlog_error error = {};
  qzlog_sender* sender = nullptr;
  host_.forget();
  const qzlog_outcome outcome = transport_.open_sender(&settings_.get(), &host_.host(), timeout, &sender, &error);
  if (outcome == QZLOG_DONE && sender != nullptr) {
    sender_.reset(sender);
    return QZLOG_DONE;
  }
  reason = shown(error);
  return outcome == QZLOG_LATER ? QZLOG_LATER : QZLOG_NEVER;
}

qzlog_outcome TransportSender::send(std::span<const qzlog_record> records, std::chrono::milliseconds timeout,
                                    std::span<qzlog_result> results, std::string& reason) {
  const auto milliseconds = static_cast<std::uint32_t>(std::clamp<long long>(timeout.count(), 1, 3'600'000));
  if (must_reopen_) sender_.reset();
  must_reopen_ = false;
  if (sender_ == nullptr) {
    const qzlog_outcome opened = open(milliseconds, reason);
    if (opened != QZLOG_DONE) return opened;
  }
  qzlog_error error = {};
  host_.forget();
  const qzlog_outcome outcome =
      transport_.send(sender_.get(), records.data(), records.size(), milliseconds, results.data(), &error);
  if (outcome == QZLOG_DONE) return outcome;
  reason = shown(error);
  must_reopen_ = true;  // at the next call: reasons of refusals are the sender's
  return is_outcome(outcome) ? outcome : QZLOG_NEVER;
}

}  // namespace qzlog_tool
