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
constexpr std::chrono::seconds kLongestSilence{5};
constexpr std::chrono::seconds kGroupMissing{10};
constexpr std::uint64_t kReaders = 4;  // of a group, as far as near its end they are to leave each other what there is
constexpr std::uint64_t kAny = UINT64_MAX;
constexpr std::int64_t kLaterMilliseconds = 500;  // until records behind the end come to another reader
constexpr std::int64_t kShortestEndLook = 10;     // milliseconds until it is asked whether others have settled the rest
constexpr std::int64_t kLongestEndLook = 500;
constexpr std::int64_t kGiveBackMilliseconds = 1000;

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

qzlog_reader::~qzlog_reader() {
  natsMsgList_Destroy(&held_);
  give_back();
}

// Other readers of the group have at once then what nobody waits for: else after the wait for acknowledgements.
void qzlog_reader::give_back() noexcept {
  if (link_ == nullptr || link_->connection.is_broken()) return;
  bool gave_some = false;
  for (const Unsettled& each : unsettled_) {
    if (each.address.empty()) continue;
    gave_some = natsConnection_PublishString(link_->connection.get(), each.address.c_str(), "-NAK") == NATS_OK;
  }
  if (gave_some) natsConnection_FlushTimeout(link_->connection.get(), kGiveBackMilliseconds);
}

void qzlog_reader::check(const qzlog_start& start) const {
  if (start.group != nullptr && !is_group_name(group_)) {
    fail_for_good("a group is named by up to 64 letters, digits, '-' and '_'");
  }
}

void qzlog_reader::connect(std::uint32_t timeout_ms) {
  link_ = std::make_unique<Link>(settings_, place_, timeout_ms);
  const jsStreamState& state = link_->stream.info().State;
  if (!was_open_) begin(state);
  if (group_.empty()) {
    if (next_ > state.LastSeq + 1) fail_for_good(made_anew());
    open_alone();
  } else {
    join_group();
  }
  was_open_ = true;
  known_ = group_.empty() ? 0 : highest_;
  seen_ = Clock::now();
}

/// Once for a reader: later connections go on with what the first one found.
void qzlog_reader::begin(const jsStreamState& state) {
  end_ = state.LastSeq;
  if (start_.kind != QZLOG_FROM_NOW) return;
  start_.kind = QZLOG_FROM_SEQUENCE;
  start_.sequence = state.LastSeq + 1;
}

std::string qzlog_reader::made_anew() const {
  return "the stream '" + place_.stream + "' ends before what was read of it: it was made anew; start again to read it";
}

// libnats writes a fraction of a second without its leading zeros: .05 would become .5. The whole second is before it.
std::int64_t qzlog_reader::start_that_can_be_said() const {
  const std::int64_t fraction = start_.nanoseconds % kSecond;
  return fraction < kSecond / 10 ? start_.nanoseconds - fraction : start_.nanoseconds;
}

void qzlog_reader::set_start(jsConsumerConfig& config) const {
  switch (start_.kind) {
    case QZLOG_FROM_SEQUENCE:
      config.DeliverPolicy = js_DeliverByStartSequence;
      config.OptStartSeq = std::max<std::uint64_t>(start_.sequence, 1);
      return;
    case QZLOG_FROM_TIME:
      if (start_.nanoseconds < kSecond) break;
      config.DeliverPolicy = js_DeliverByStartTime;
      config.OptStartTime = start_that_can_be_said();
      return;
    default:
      break;
  }
  config.DeliverPolicy = js_DeliverAll;
}

// Where a connection is lost a consumer without acknowledgements does not know what got there: there is a new one for
// each, which begins behind what did.
void qzlog_reader::open_alone() {
  jsSubOptions options;
  link_->connection.require("cannot read the stream", jsSubOptions_Init(&options));
  options.Stream = place_.stream.c_str();
  options.Config.AckPolicy = js_AckNone;
  options.Config.InactiveThreshold = kInactive * kSecond;
  options.Config.MemoryStorage = true;
  options.Config.Replicas = 1;
  set_start(options.Config);
  if (next_ != 0) {
    options.Config.DeliverPolicy = js_DeliverByStartSequence;
    options.Config.OptStartSeq = next_;
  }
  consumer_next_ = 1;
  natsSubscription* subscription = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status =
      js_PullSubscribe(&subscription, link_->stream.context(), ">", nullptr, nullptr, &options, &code);
  link_->connection.require("cannot read the stream '" + place_.stream + "'", status, code);
  link_->subscription.reset(subscription);
}

void qzlog_reader::join_group() {
  jsCtx* const context = link_->stream.context();
  const std::string tried = "cannot join the group '" + group_ + "'";
  jsConsumerInfo* info = nullptr;
  jsErrCode code = jsErrCode(0);
  natsStatus status = js_GetConsumerInfo(&info, context, place_.stream.c_str(), group_.c_str(), nullptr, &code);
  if (code != JSConsumerNotFoundErr) {
    missed_since_.reset();
  } else {
    // Made anew it would begin at its start: what was settled would be read again as if it were not.
    if (was_open_) wait_for_group();
    status = make_group(&info, code);
  }
  link_->connection.require(tried, status, code);
  const NatsConsumerInfoPtr freed(info);
  if (info->Config == nullptr) fail_for_now(tried + ": the server does not say how it is set up");
  if (info->Config->AckPolicy != js_AckExplicit || info->Config->DeliverSubject != nullptr) {
    fail_for_good(tried + ": the stream has a consumer of that name that is no group: take another name");
  }
  jsSubOptions options;
  link_->connection.require(tried, jsSubOptions_Init(&options));
  options.Stream = place_.stream.c_str();
  options.Consumer = group_.c_str();
  natsSubscription* subscription = nullptr;
  status = js_PullSubscribe(&subscription, context, nullptr, group_.c_str(), nullptr, &options, &code);
  link_->connection.require(tried, status, code);
  link_->subscription.reset(subscription);
}

/// Servers that start do not know their groups at once: only one that stays away was deleted.
void qzlog_reader::wait_for_group() {
  if (!missed_since_) missed_since_ = Clock::now();
  if (Clock::now() > *missed_since_ + kGroupMissing) fail_for_good("the group '" + group_ + "' was deleted");
  fail_for_now("the stream does not know the group '" + group_ + "'");
}

natsStatus qzlog_reader::make_group(jsConsumerInfo** info, jsErrCode& code) {
  jsConsumerConfig config;
  link_->connection.require("cannot make the group '" + group_ + "'", jsConsumerConfig_Init(&config));
  config.Durable = group_.c_str();
  config.AckPolicy = js_AckExplicit;
  config.AckWait = wait_seconds_ * kSecond;
  config.MaxAckPending = kMostPending;
  set_start(config);
  return js_AddConsumer(info, link_->stream.context(), place_.stream.c_str(), &config, nullptr, &code);
}

bool qzlog_reader::read(std::span<qzlog_received> records, std::uint32_t timeout_ms, std::size_t& count) {
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeout_ms);
  natsMsgList_Destroy(&held_);
  try {
    if (link_ == nullptr) connect(timeout_ms);
    do {
      if (start_.follow == 0 && may_end_ && is_at_end()) return false;
      if (fetch(std::min<std::uint64_t>(records.size(), wanted_), time_for_fetching(end))) give_out(records, count);
    } while (count == 0 && Clock::now() < end && link_ != nullptr);
    if (count == 0 && start_.follow != 0) see_consumer();
    return count != 0 || start_.follow != 0 || !is_at_end();
  } catch (...) {
    link_.reset();
    throw;
  }
}

/// In milliseconds. Where nothing may come but what others of the group leave, nobody says that they have settled the
/// last of it: it is asked again soon, and less and less often.
std::int64_t qzlog_reader::time_for_fetching(Clock::time_point end) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
  const bool waits_for_others = start_.follow == 0 && may_end_ && !group_.empty();
  const std::int64_t time = waits_for_others ? std::min<std::int64_t>(left, end_look_) : left;
  end_look_ = waits_for_others ? std::min(2 * end_look_, kLongestEndLook) : kShortestEndLook;
  return std::max<std::int64_t>(time, 1);
}

/// Whether something came.
bool qzlog_reader::fetch(std::size_t most, std::int64_t timeout_ms) {
  natsMsgList_Destroy(&held_);
  jsErrCode code = jsErrCode(0);
  const auto batch = static_cast<int>(std::min(most, kMostAtOnce));
  const natsStatus status = natsSubscription_Fetch(&held_, link_->subscription.get(), batch, timeout_ms, &code);
  if (link_->connection.is_broken()) fail_for_now("the connection is lost");
  const auto came = static_cast<std::size_t>(status == NATS_OK ? std::max(held_.Count, 0) : 0);
  if (came != 0) not_given_ = describe(held_.Msgs[held_.Count - 1])->NumPending;
  see_whether_end_is_near(came, static_cast<std::size_t>(batch));
  if (status == NATS_TIMEOUT) return false;
  link_->connection.require("cannot read the stream '" + place_.stream + "'", status, code);
  return held_.Count > 0;
}

/// While all comes that is asked for, and there is much more, nobody has to be asked how much there is.
void qzlog_reader::see_whether_end_is_near(std::size_t came, std::size_t asked_for) {
  if (!group_.empty() && wanted_ != kAny) wanted_ -= std::min<std::uint64_t>(came, wanted_ - 1);
  const bool has_little =
      group_.empty() ? next_ + asked_for > end_ : std::min(wanted_, not_given_) / kReaders <= asked_for;
  may_end_ = came < asked_for || has_little;
}

void qzlog_reader::give_out(std::span<qzlog_received> records, std::size_t& count) {
  for (int index = 0; index < held_.Count; ++index) {
    const NatsMetaDataPtr data = describe(held_.Msgs[index]);
    if (group_.empty() && data->Sequence.Consumer != consumer_next_) return go_on_behind(count);
    if (take(held_.Msgs[index], *data, records[count])) ++count;
  }
}

NatsMetaDataPtr qzlog_reader::describe(natsMsg* message) {
  jsMsgMetaData* data = nullptr;
  link_->connection.require("cannot read the stream '" + place_.stream + "'", natsMsg_GetMetaData(&data, message));
  return NatsMetaDataPtr(data);
}

/// Something got lost on its way: what came before it is given out, and another consumer begins behind that.
void qzlog_reader::go_on_behind(std::size_t count) {
  link_.reset();
  if (count == 0) fail_for_now("records got lost on their way");
}

/// Once: single records that were deleted are nothing to tell of, what the stream had no more room for is.
void qzlog_reader::tell_of_dropped(std::uint64_t expected) {
  if (has_told_) return;
  jsStreamInfo* made = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status = js_GetStreamInfo(&made, link_->stream.context(), place_.stream.c_str(), nullptr, &code);
  if (status != NATS_OK) return;  // what is given out now is not to be lost with it
  const qzlog_ship::NatsStreamInfoPtr info(made);
  if (info->State.FirstSeq <= expected) return;
  has_told_ = true;
  const std::string text = "the stream '" + place_.stream + "' dropped records before they were read";
  host_.warn(host_.context, text.c_str());
}

/// False for what came behind the end, or is not as a stream gives it.
bool qzlog_reader::take(natsMsg* message, const jsMsgMetaData& data, qzlog_received& record) {
  if (group_.empty()) {
    if (next_ != 0 && data.Sequence.Stream > next_) tell_of_dropped(next_);
    ++consumer_next_;
    none_left_ = data.NumPending == 0;
    next_ = data.Sequence.Stream + 1;
  }
  // A group begins where its first reader said: how exactly, its others do not know.
  if (group_.empty() && start_.kind == QZLOG_FROM_TIME && data.Timestamp < start_.nanoseconds) return false;
  if (start_.follow == 0 && data.Sequence.Stream > end_) {
    if (!group_.empty()) natsMsg_NakWithDelay(message, kLaterMilliseconds, nullptr);
    return false;
  }
  const char* identity = nullptr;
  const bool has_identity = natsMsgHeader_Get(message, qzlog_ship::kNatsIdentity, &identity) == NATS_OK;
  record = {};
  record.line = text_of(natsMsg_GetData(message), natsMsg_GetDataLength(message));
  if (has_identity) record.identity = {identity, std::char_traits<char>::length(identity)};
  record.sequence = data.Sequence.Stream;
  record.nanoseconds = data.Timestamp;
  // A server that is killed may forget what it gave out: with a connection made anew nobody knows it for sure.
  record.again = data.NumDelivered > 1 || data.Sequence.Stream <= known_ ? 1 : 0;
  highest_ = std::max(highest_, data.Sequence.Stream);
  record.token = next_token_++;
  if (!group_.empty()) keep_for_settling(record, natsMsg_GetReply(message));
  return true;
}

// What comes again takes the place of what it was before, which the server does not wait for any more.
void qzlog_reader::keep_for_settling(const qzlog_received& record, const char* address) {
  if (record.again != 0) {
    for (Unsettled& each : unsettled_) {
      if (each.sequence == record.sequence) each.address.clear();
    }
  }
  unsettled_.push_back({record.token, record.sequence, address});
}

NatsConsumerInfoPtr qzlog_reader::ask_consumer() {
  jsConsumerInfo* info = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status =
      group_.empty()
          ? natsSubscription_GetConsumerInfo(&info, link_->subscription.get(), nullptr, &code)
          : js_GetConsumerInfo(&info, link_->stream.context(), place_.stream.c_str(), group_.c_str(), nullptr, &code);
  link_->connection.require("cannot ask how far the stream is read", status, code);
  return NatsConsumerInfoPtr(info);
}

/// From time to time, where nothing comes: a consumer may be lost with the server that had it, and nobody says so.
void qzlog_reader::see_consumer() {
  if (Clock::now() < seen_ + kLongestSilence) return;
  seen_ = Clock::now();
  ask_consumer();
}

bool qzlog_reader::is_at_end() {
  if (group_.empty() && next_ > end_) return true;
  if (end_ == 0) return true;
  const NatsConsumerInfoPtr info = ask_consumer();
  const bool all_given = info->NumPending == 0 || info->Delivered.Stream >= end_;
  if (group_.empty()) return all_given && (none_left_ || info->Delivered.Consumer + 1 == consumer_next_);
  const auto own = static_cast<std::int64_t>(
      std::count_if(unsettled_.begin(), unsettled_.end(), [](const Unsettled& each) { return !each.address.empty(); }));
  const std::int64_t others = std::max<std::int64_t>(info->NumAckPending - own, 0);
  // A group's later records are for its other readers: of those no more than may be is taken from them.
  const std::uint64_t not_given = info->Delivered.Stream < end_ ? end_ - info->Delivered.Stream : 0;
  wanted_ = std::max<std::uint64_t>(not_given + static_cast<std::uint64_t>(others), 1);
  return all_given && (others == 0 || info->AckFloor.Stream >= end_);
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
