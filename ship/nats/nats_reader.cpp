#include "ship/nats/nats_reader.h"

#include <algorithm>
#include <utility>

#include "ship/plugin/plugin_call.h"
#include "ship/plugin/plugin_options.h"

using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;
using qzlog_ship::NatsConnection;
using qzlog_ship::NatsConsumerInfoPtr;
using qzlog_ship::NatsMessagePtr;
using qzlog_ship::NatsMetaDataPtr;
using qzlog_ship::NatsStream;
using qzlog_ship::NatsSubscriptionPtr;

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kUsualWait = 30;       // seconds
constexpr std::int64_t kInactive = 60;        // seconds that the consumer of one who reads alone stays without him
constexpr std::int64_t kMostPending = 65536;  // records of a group that are given out and not settled
constexpr std::size_t kMostAtOnce = 1000;

bool is_group_name(const std::string& name) {
  return !name.empty() && name.size() <= 64 && std::all_of(name.begin(), name.end(), [](char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x80 && (std::isalnum(byte) != 0 || character == '-' || character == '_');
  });
}

qzlog_text text_of(const char* bytes, int size) {
  return {bytes, bytes != nullptr && size > 0 ? static_cast<std::size_t>(size) : 0};
}

}  // namespace

/// All that is lost with a connection.
struct qzlog_reader::Link {
  Link(const qzlog_settings& settings, const qzlog_ship::NatsPlace& place, std::uint32_t timeout_ms)
      : connection(settings, place, timeout_ms), stream(connection, place.stream, {}, timeout_ms) {}

  NatsConnection connection;
  NatsStream stream;
  std::string consumer;
  NatsSubscriptionPtr subscription;
};

qzlog_reader::qzlog_reader(const qzlog_settings& settings, const qzlog_host& host, const qzlog_start& start,
                           std::uint32_t timeout_ms)
    : settings_(settings),
      host_(host),
      place_(settings),
      start_(start),
      group_(start.group != nullptr ? start.group : "") {
  qzlog_ship::PluginOptions options(settings);
  wait_seconds_ = static_cast<std::int64_t>(
      options.take_number("ack-wait", 1, 86400).value_or(static_cast<std::uint64_t>(kUsualWait)));
  options.refuse_others("ack-wait");
  check(start);
  start_.group = nullptr;
  connect(timeout_ms);
}

qzlog_reader::~qzlog_reader() { natsMsgList_Destroy(&held_); }

void qzlog_reader::check(const qzlog_start& start) const {
  if (start.group != nullptr && !is_group_name(group_)) {
    fail_for_good("a group is named by up to 64 letters, digits, '-' and '_'");
  }
}

void qzlog_reader::connect(std::uint32_t timeout_ms) {
  link_ = std::make_unique<Link>(settings_, place_, timeout_ms);
  const jsStreamState& state = link_->stream.info().State;
  if (!knows_end_) end_ = state.LastSeq;
  knows_end_ = true;
  if (group_.empty()) {
    open_alone();
  } else {
    join_group();
  }
}

void qzlog_reader::set_start(jsConsumerConfig& config) const {
  switch (start_.kind) {
    case QZLOG_FROM_SEQUENCE:
      config.DeliverPolicy = js_DeliverByStartSequence;
      config.OptStartSeq = std::max<std::uint64_t>(start_.sequence, 1);
      return;
    case QZLOG_FROM_TIME:
      config.DeliverPolicy = js_DeliverByStartTime;
      config.OptStartTime = start_.nanoseconds;
      return;
    case QZLOG_FROM_NOW:
      config.DeliverPolicy = js_DeliverNew;
      return;
    default:
      config.DeliverPolicy = js_DeliverAll;
  }
}

// Where a connection is lost a consumer without acknowledgements does not know what got there: there is a new one for
// each, which begins behind what did.
void qzlog_reader::open_alone() {
  jsConsumerConfig config;
  link_->connection.require("cannot read the stream", jsConsumerConfig_Init(&config));
  config.AckPolicy = js_AckNone;
  config.InactiveThreshold = kInactive * kSecond;
  set_start(config);
  if (next_ != 0) {
    config.DeliverPolicy = js_DeliverByStartSequence;
    config.OptStartSeq = next_;
  }
  consumer_next_ = 1;
  bind(*add_consumer(config, "cannot read the stream '" + place_.stream + "'"));
}

NatsConsumerInfoPtr qzlog_reader::add_consumer(jsConsumerConfig& config, const std::string& tried) {
  jsConsumerInfo* info = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status =
      js_AddConsumer(&info, link_->stream.context(), place_.stream.c_str(), &config, nullptr, &code);
  link_->connection.require(tried, status, code);
  return NatsConsumerInfoPtr(info);
}

void qzlog_reader::bind(const jsConsumerInfo& consumer) {
  const std::string tried = "cannot read the stream '" + place_.stream + "'";
  link_->consumer = consumer.Name;
  jsSubOptions options;
  link_->connection.require(tried, jsSubOptions_Init(&options));
  options.Stream = place_.stream.c_str();
  options.Consumer = link_->consumer.c_str();
  options.Config.AckPolicy = consumer.Config->AckPolicy;
  natsSubscription* subscription = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status = js_PullSubscribe(&subscription, link_->stream.context(), nullptr,
                                             group_.empty() ? nullptr : group_.c_str(), nullptr, &options, &code);
  link_->connection.require(tried, status, code);
  link_->subscription.reset(subscription);
}

void qzlog_reader::join_group() {
  const std::string tried = "cannot join the group '" + group_ + "'";
  NatsConsumerInfoPtr info = ask_consumer(group_, tried);
  if (info == nullptr) {
    jsConsumerConfig config;
    link_->connection.require(tried, jsConsumerConfig_Init(&config));
    config.Durable = group_.c_str();
    config.AckPolicy = js_AckExplicit;
    config.AckWait = wait_seconds_ * kSecond;
    config.MaxAckPending = kMostPending;
    set_start(config);
    info = add_consumer(config, tried);
  }
  if (info->Config->AckPolicy != js_AckExplicit || info->Config->DeliverSubject != nullptr) {
    fail_for_good(tried + ": the stream has a consumer of that name that is no group: take another name");
  }
  bind(*info);
}

/// Null where there is none of that name.
NatsConsumerInfoPtr qzlog_reader::ask_consumer(const std::string& name, const std::string& tried) {
  jsConsumerInfo* info = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status =
      js_GetConsumerInfo(&info, link_->stream.context(), place_.stream.c_str(), name.c_str(), nullptr, &code);
  if (code == JSConsumerNotFoundErr) return nullptr;
  link_->connection.require(tried, status, code);
  return NatsConsumerInfoPtr(info);
}

bool qzlog_reader::read(std::span<qzlog_received> records, std::uint32_t timeout_ms, std::size_t& count) {
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeout_ms);
  natsMsgList_Destroy(&held_);
  if (link_ == nullptr) connect(timeout_ms);
  try {
    if (start_.follow == 0 && is_at_end()) return false;
    while (count == 0 && fetch(records.size(), timeout_ms)) {
      give_out(records, count);
      if (Clock::now() >= end) break;
    }
    return count != 0 || start_.follow != 0 || !is_at_end();
  } catch (...) {
    link_.reset();
    throw;
  }
}

/// Whether something came.
bool qzlog_reader::fetch(std::size_t most, std::uint32_t timeout_ms) {
  natsMsgList_Destroy(&held_);
  jsErrCode code = jsErrCode(0);
  const auto batch = static_cast<int>(std::min(most, kMostAtOnce));
  const natsStatus status = natsSubscription_Fetch(&held_, link_->subscription.get(), batch, timeout_ms, &code);
  if (link_->connection.is_broken()) fail_for_now("the connection is lost");
  if (status == NATS_TIMEOUT) return false;
  link_->connection.require("cannot read the stream '" + place_.stream + "'", status, code);
  return held_.Count > 0;
}

void qzlog_reader::give_out(std::span<qzlog_received> records, std::size_t& count) {
  for (int index = 0; index < held_.Count; ++index) {
    if (take(held_.Msgs[index], records[count])) ++count;
  }
}

/// False for what came behind the end, or is not as a stream gives it.
bool qzlog_reader::take(natsMsg* message, qzlog_received& record) {
  jsMsgMetaData* made = nullptr;
  link_->connection.require("cannot read the stream '" + place_.stream + "'", natsMsg_GetMetaData(&made, message));
  const NatsMetaDataPtr data(made);
  if (group_.empty()) {
    if (data->Sequence.Consumer != consumer_next_) fail_for_now("records got lost on their way");
    ++consumer_next_;
    next_ = data->Sequence.Stream + 1;
  }
  if (start_.follow == 0 && data->Sequence.Stream > end_) {
    if (!group_.empty()) natsMsg_Nak(message, nullptr);
    return false;
  }
  const char* identity = nullptr;
  const bool has_identity = natsMsgHeader_Get(message, qzlog_ship::kNatsIdentity, &identity) == NATS_OK;
  record = {};
  record.line = text_of(natsMsg_GetData(message), natsMsg_GetDataLength(message));
  if (has_identity) record.identity = {identity, std::char_traits<char>::length(identity)};
  record.sequence = data->Sequence.Stream;
  record.nanoseconds = data->Timestamp;
  record.again = data->NumDelivered > 1 ? 1 : 0;
  record.token = next_token_++;
  if (!group_.empty()) unsettled_.push_back({record.token, natsMsg_GetReply(message)});
  return true;
}

bool qzlog_reader::is_at_end() {
  if (end_ == 0 || (group_.empty() && next_ > end_)) return true;
  const NatsConsumerInfoPtr info = ask_consumer(link_->consumer, "cannot ask how far the stream is read");
  if (info == nullptr) fail_for_now("the stream's consumer is gone");
  if (info->NumPending != 0 && info->Delivered.Stream < end_) return false;
  if (group_.empty()) return info->Delivered.Consumer + 1 == consumer_next_;
  const auto own =
      std::count_if(unsettled_.begin(), unsettled_.end(), [](const Unsettled& each) { return !each.address.empty(); });
  return info->NumAckPending <= own || info->AckFloor.Stream >= end_;
}

// The answer to the last one says that the server has had all of them: it takes them in their order.
void qzlog_reader::settle(std::span<const std::uint64_t> tokens, std::uint32_t timeout_ms) {
  constexpr char kDone[] = "+ACK";
  if (group_.empty() || tokens.empty()) return;
  if (link_ == nullptr) connect(timeout_ms);
  std::string last;
  for (const std::uint64_t token : tokens) {
    const auto found =
        std::lower_bound(unsettled_.begin(), unsettled_.end(), token,
                         [](const Unsettled& each, std::uint64_t wanted) { return each.token < wanted; });
    if (found == unsettled_.end() || found->token != token || found->address.empty()) continue;
    if (!last.empty()) {
      link_->connection.require("cannot settle",
                                natsConnection_PublishString(link_->connection.get(), last.c_str(), kDone));
    }
    last = std::exchange(found->address, "");
  }
  while (!unsettled_.empty() && unsettled_.front().address.empty()) unsettled_.pop_front();
  if (last.empty()) return;
  natsMsg* answer = nullptr;
  const natsStatus status = natsConnection_RequestString(&answer, link_->connection.get(), last.c_str(), kDone,
                                                         std::clamp<std::int64_t>(timeout_ms, 1, INT32_MAX));
  const NatsMessagePtr freed(answer);
  if (status == NATS_OK) return;
  const bool is_broken = link_->connection.is_broken();
  if (is_broken) link_.reset();
  fail_for_now(std::string("cannot settle: ") + (is_broken ? "the connection is lost" : natsStatus_GetText(status)));
}
