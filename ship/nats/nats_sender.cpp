#include "ship/nats/nats_sender.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "ship/nats/nats_subject.h"
#include "ship/nats/publish_answer.h"
#include "ship/plugin/plugin_call.h"
#include "ship/plugin/plugin_options.h"

using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;
using qzlog_ship::NatsMessagePtr;
using qzlog_ship::NatsStreamWish;
using qzlog_ship::Patience;
using qzlog_ship::PluginOptions;
using qzlog_ship::PublishAnswer;

namespace {

constexpr std::int64_t kLook = 200;  // milliseconds between two looks at the connection

}  // namespace

qzlog_sender::qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, std::uint32_t timeout_ms)
    : qzlog_sender(settings, host, Wishes(settings), timeout_ms) {}

qzlog_sender::Wishes::Wishes(const qzlog_settings& settings) {
  PluginOptions options(settings);
  stream = NatsStreamWish::of(options);
  prefix = options.take("prefix");
  options.refuse_others(std::string("prefix, ") + NatsStreamWish::kKnown);
}

qzlog_sender::qzlog_sender(const qzlog_settings& settings, const qzlog_host& host, const Wishes& wishes,
                           std::uint32_t timeout_ms)
    : host_(host),
      place_(settings),
      connection_(settings, place_, timeout_ms),
      stream_(connection_, place_.stream, wishes.stream, timeout_ms),
      prefix_(stream_.prefix(wishes.prefix)) {
  const std::string warning = stream_.warning();
  if (!warning.empty()) host_.warn(host_.context, warning.c_str());
  open_inbox();
}

void qzlog_sender::open_inbox() {
  natsInbox* made = nullptr;
  connection_.require("cannot make an inbox", natsInbox_Create(&made));
  const std::unique_ptr<natsInbox, qzlog_ship::NatsFree<natsInbox_Destroy>> inbox(made);
  inbox_ = std::string(made) + '.';
  natsSubscription* answers = nullptr;
  connection_.require("cannot wait for acknowledgements",
                      natsConnection_SubscribeSync(&answers, connection_.get(), (inbox_ + '*').c_str()));
  answers_.reset(answers);
  // Many times what a batch's acknowledgements are; what is beyond is dropped, and its records are sent again.
  constexpr int kMostWaiting = 1 << 20;
  constexpr int kMostWaitingBytes = 256 << 20;
  connection_.require("cannot wait for acknowledgements",
                      natsSubscription_SetPendingLimits(answers, kMostWaiting, kMostWaitingBytes));
}

void qzlog_sender::send(std::span<const qzlog_record> records, std::uint32_t timeout_ms,
                        std::span<qzlog_result> results) {
  Patience patience(host_, timeout_ms, Patience::kToSend);
  reasons_.clear();
  trouble_.clear();
  is_hopeless_ = false;
  waiting_ = 0;
  publish_all(records, results);
  take_answers(patience, results);
  const std::string violation = connection_.take_violation();
  if (!violation.empty()) fail_for_good("the account lacks a right: " + violation);
  if (is_hopeless_) fail_for_good(trouble_);
  if (!trouble_.empty()) fail_for_now(trouble_);
}

void qzlog_sender::publish_all(std::span<const qzlog_record> records, std::span<qzlog_result> results) {
  first_number_ = next_number_;
  next_number_ += records.size();
  for (std::size_t index = 0; index < records.size(); ++index) {
    address_ = inbox_;
    address_ += std::to_string(first_number_ + index);
    if (!publish(records[index], results[index])) return;
  }
}

/// False where the rest does not get there either.
bool qzlog_sender::publish(const qzlog_record& record, qzlog_result& result) {
  const NatsMessagePtr message = make_message(record);
  const natsStatus status = natsConnection_PublishMsg(connection_.get(), message.get());
  if (status == NATS_OK) {
    ++waiting_;
    return true;
  }
  if (status == NATS_MAX_PAYLOAD) {
    refuse(result, "it is longer than the server takes (max_payload)");
    return true;
  }
  if (status == NATS_NO_MEMORY) throw std::bad_alloc();
  trouble_ = std::string("the connection is lost (") + natsStatus_GetText(status) + ')';
  return false;
}

NatsMessagePtr qzlog_sender::make_message(const qzlog_record& record) {
  constexpr const char* kTried = "cannot make a message";
  subject_ = prefix_;
  qzlog_ship::append_subject(record, subject_);
  identity_.assign(record.identity.bytes, record.identity.size);
  natsMsg* made = nullptr;
  connection_.require(kTried, natsMsg_Create(&made, subject_.c_str(), address_.c_str(), record.line.bytes,
                                             static_cast<int>(record.line.size)));
  NatsMessagePtr message(made);
  connection_.require(kTried, natsMsgHeader_Set(made, qzlog_ship::kNatsIdentity, identity_.c_str()));
  connection_.require(kTried, natsMsgHeader_Set(made, qzlog_ship::kNatsExpectedStream, place_.stream.c_str()));
  return message;
}

void qzlog_sender::take_answers(Patience& patience, std::span<qzlog_result> results) {
  while (waiting_ > 0) {
    const NatsMessagePtr answer = next_answer(patience);
    if (answer != nullptr) take_answer(*answer, results);
    // What else comes to the inbox, without end, does not put the end off.
    if (answer != nullptr && !patience.is_over()) continue;
    if (!trouble_.empty() || connection_.has_violation()) return;
    if (waiting_ > 0 && connection_.is_broken()) {
      trouble_ = "the connection is lost";
      return;
    }
    if (waiting_ > 0 && patience.is_over()) {
      trouble_ = "not all is acknowledged in time";
      return;
    }
  }
}

NatsMessagePtr qzlog_sender::next_answer(Patience& patience) {
  natsMsg* message = nullptr;
  const natsStatus status =
      natsSubscription_NextMsg(&message, answers_.get(), std::clamp<std::int64_t>(patience.left().count(), 1, kLook));
  if (status == NATS_NO_MEMORY) throw std::bad_alloc();
  return NatsMessagePtr(message);
}

void qzlog_sender::take_answer(natsMsg& message, std::span<qzlog_result> results) {
  const std::size_t index = index_of(natsMsg_GetSubject(&message));
  if (index >= results.size() || results[index].fate != QZLOG_AGAIN) return;  // of a batch before this
  --waiting_;
  if (natsMsg_IsNoResponders(&message)) {
    trouble_ = "no stream takes the subjects '" + prefix_ + ".>' now";
    return;
  }
  const int size = natsMsg_GetDataLength(&message);
  const PublishAnswer answer =
      qzlog_ship::read_publish_answer({natsMsg_GetData(&message), static_cast<std::size_t>(std::max(size, 0))});
  if (!answer.is_stored) return take_error(answer.error_code, answer.error, results[index]);
  results[index].fate = answer.is_double ? QZLOG_DOUBLE : QZLOG_ACKNOWLEDGED;
}

void qzlog_sender::take_error(unsigned code, const std::string& text, qzlog_result& result) {
  if (code == JSStreamMessageExceedsMaximumErr)
    return refuse(result, "it is longer than the stream takes (max_msg_size)");
  trouble_ = "the stream '" + place_.stream + "' does not take it: " + text;
  is_hopeless_ = is_hopeless_ || code == JSStreamSealedErr || code == JSStreamNotMatchErr;
}

void qzlog_sender::refuse(qzlog_result& result, const std::string& reason) {
  reasons_.push_back(reason);
  result.fate = QZLOG_REFUSED;
  result.reason = reasons_.back().c_str();
}

/// Of the record whose acknowledgement goes to this subject; beyond all where it is none of the batch.
std::size_t qzlog_sender::index_of(const char* subject) const {
  std::string_view text = subject;
  text.remove_prefix(std::min(inbox_.size(), text.size()));
  std::uint64_t number = 0;
  const auto [stopped, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || stopped != text.data() + text.size() || number < first_number_) return SIZE_MAX;
  return static_cast<std::size_t>(std::min<std::uint64_t>(number - first_number_, SIZE_MAX));
}
