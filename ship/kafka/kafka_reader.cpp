#include "ship/kafka/kafka_reader.h"

#include <algorithm>
#include <utility>

#include "ship/plugin/plugin_call.h"
#include "ship/plugin/plugin_options.h"
#include "ship/plugin/signals_blocked.h"

using qzlog_ship::fail_for_good;
using qzlog_ship::fail_for_now;
using qzlog_ship::KafkaClient;
using qzlog_ship::KafkaEventPtr;
using qzlog_ship::KafkaMessagePtr;
using qzlog_ship::KafkaPartitionsPtr;
using qzlog_ship::KafkaQueuePtr;
using qzlog_ship::PluginOptions;

namespace {

constexpr int kLook = 100;                    // milliseconds
constexpr std::uint32_t kShareWait = 10'000;  // for what is asked while a group is shared anew
constexpr std::int64_t kMillisecond = 1'000'000;

int milliseconds(std::uint32_t timeout) { return static_cast<int>(std::min(timeout, 3'600'000U)); }

bool is_group_name(const std::string& name) {
  return !name.empty() && name.size() <= 255 &&
         std::all_of(name.begin(), name.end(), [](char character) { return character > ' ' && character < 0x7F; });
}

KafkaPartitionsPtr list_of(const std::string& topic, const std::vector<std::int32_t>& numbers) {
  KafkaPartitionsPtr list(rd_kafka_topic_partition_list_new(static_cast<int>(numbers.size())));
  for (const std::int32_t number : numbers) rd_kafka_topic_partition_list_add(list.get(), topic.c_str(), number);
  return list;
}

std::span<rd_kafka_topic_partition_t> all_of(rd_kafka_topic_partition_list_t& list) {
  return {list.elems, static_cast<std::size_t>(list.cnt)};
}

}  // namespace

qzlog_reader::qzlog_reader(const qzlog_settings& settings, const qzlog_host& host, const qzlog_start& start,
                           std::uint32_t timeout_ms)
    : start_(start), group_(start.group != nullptr ? start.group : "") {
  start_.group = nullptr;
  if (start.group != nullptr && !is_group_name(group_))
    fail_for_good("a group is named by up to 255 visible characters");
  PluginOptions options(settings);
  const KafkaClient::Properties wished = qzlog_ship::take_properties(options);
  options.refuse_others("rdkafka.NAME");
  const KafkaClient::Properties own = {{"group.id", group_.empty() ? "qzlog-alone" : group_},
                                       {"enable.auto.commit", "false"},
                                       {"enable.auto.offset.store", "false"},
                                       {"enable.partition.eof", "true"},
                                       {"auto.offset.reset", "earliest"},
                                       {"allow.auto.create.topics", "false"}};
  client_ = std::make_unique<KafkaClient>(settings, RD_KAFKA_CONSUMER, own, wished, *this);
  rd_kafka_poll_set_consumer(client_->get());
  partitions_ = client_->partitions(host, timeout_ms);
  learn_end(timeout_ms);
  if (group_.empty()) {
    assign_all(timeout_ms);
  } else {
    join();
  }
}

// The client waits for its messages to be given back; the last thing that it does is to take the partitions back from
// what stands behind it.
qzlog_reader::~qzlog_reader() {
  held_.clear();
  client_.reset();
}

void qzlog_reader::learn_end(std::uint32_t timeout_ms) {
  if (start_.follow != 0) return;
  for (const std::int32_t partition : partitions_) {
    std::int64_t low = 0;
    std::int64_t high = 0;
    client_->require("cannot ask for the end of the topic",
                     rd_kafka_query_watermark_offsets(client_->get(), client_->topic().c_str(), partition, &low, &high,
                                                      milliseconds(timeout_ms)));
    ends_[partition] = high == low ? 0 : high;
  }
}

void qzlog_reader::assign_all(std::uint32_t timeout_ms) {
  const KafkaPartitionsPtr list = list_of(client_->topic(), partitions_);
  set_start(*list, timeout_ms);
  for (const rd_kafka_topic_partition_t& each : all_of(*list)) positions_[each.partition] = each.offset;
  client_->require("cannot read the topic", rd_kafka_assign(client_->get(), list.get()));
}

void qzlog_reader::join() {
  const KafkaPartitionsPtr topics(rd_kafka_topic_partition_list_new(1));
  rd_kafka_topic_partition_list_add(topics.get(), client_->topic().c_str(), RD_KAFKA_PARTITION_UA);
  client_->require("cannot join the group '" + group_ + "'", rd_kafka_subscribe(client_->get(), topics.get()));
}

// Nothing leaves it: librdkafka is written in C.
void qzlog_reader::share(rd_kafka_t* client, rd_kafka_resp_err_t what, rd_kafka_topic_partition_list_t& partitions) {
  settled_.clear();
  positions_.clear();
  unsettled_.clear();
  if (what != RD_KAFKA_RESP_ERR__ASSIGN_PARTITIONS) {
    rd_kafka_assign(client, nullptr);
    return;
  }
  try {
    begin_where_nobody_was(partitions);
  } catch (const std::exception&) {
    must_rejoin_ = true;
    rd_kafka_assign(client, nullptr);
    return;
  }
  rd_kafka_assign(client, &partitions);
}

/// Sets the start of those that the group has settled nothing of.
void qzlog_reader::begin_where_nobody_was(rd_kafka_topic_partition_list_t& partitions) {
  require_all("cannot ask how far the group is", rd_kafka_committed(client_->get(), &partitions, kShareWait),
              partitions);
  std::vector<std::int32_t> fresh;
  for (const rd_kafka_topic_partition_t& each : all_of(partitions)) {
    if (each.offset == RD_KAFKA_OFFSET_INVALID) fresh.push_back(each.partition);
  }
  if (fresh.empty()) return;
  const KafkaPartitionsPtr starts = list_of(client_->topic(), fresh);
  set_start(*starts, kShareWait);
  for (const rd_kafka_topic_partition_t& each : all_of(*starts)) {
    rd_kafka_topic_partition_list_set_offset(&partitions, each.topic, each.partition, each.offset);
  }
}

void qzlog_reader::set_start(rd_kafka_topic_partition_list_t& partitions, std::uint32_t timeout_ms) {
  if (start_.kind == QZLOG_FROM_TIME) {
    for (rd_kafka_topic_partition_t& each : all_of(partitions)) each.offset = start_.nanoseconds / kMillisecond;
    require_all("cannot ask where that time begins",
                rd_kafka_offsets_for_times(client_->get(), &partitions, milliseconds(timeout_ms)), partitions);
    return;
  }
  for (rd_kafka_topic_partition_t& each : all_of(partitions)) {
    each.offset = start_.kind == QZLOG_FROM_NOW        ? RD_KAFKA_OFFSET_END
                  : start_.kind == QZLOG_FROM_SEQUENCE ? sequence_in(each.partition, timeout_ms)
                                                       : RD_KAFKA_OFFSET_BEGINNING;
  }
}

/// Where a number is beyond what a partition has, its nearest.
std::int64_t qzlog_reader::sequence_in(std::int32_t partition, std::uint32_t timeout_ms) {
  std::int64_t low = 0;
  std::int64_t high = 0;
  client_->require("cannot ask for the ends of the topic",
                   rd_kafka_query_watermark_offsets(client_->get(), client_->topic().c_str(), partition, &low, &high,
                                                    milliseconds(timeout_ms)));
  const auto wanted = static_cast<std::int64_t>(std::min<std::uint64_t>(start_.sequence, INT64_MAX));
  return std::clamp(wanted, low, std::max(low, high));
}

void qzlog_reader::require_all(const std::string& tried, rd_kafka_resp_err_t error,
                               rd_kafka_topic_partition_list_t& partitions) {
  client_->require(tried, error);
  for (const rd_kafka_topic_partition_t& each : all_of(partitions)) client_->require(tried, each.err);
}

bool qzlog_reader::read(std::span<qzlog_received> records, std::uint32_t timeout_ms, std::size_t& count) {
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeout_ms);
  held_.clear();
  if (std::exchange(must_rejoin_, false)) {
    rd_kafka_unsubscribe(client_->get());
    join();
  }
  fetch(records, end, count);
  if (count != 0) return true;
  const std::string trouble = client_->take_trouble();
  if (!trouble.empty()) fail_for_now(trouble);
  if (must_rejoin_) fail_for_now("cannot ask how far the group '" + group_ + "' is");
  return start_.follow != 0 || !is_at_end(timeout_ms);
}

/// Waits for the first record, and takes what is there with it.
void qzlog_reader::fetch(std::span<qzlog_received> records, Clock::time_point end, std::size_t& count) {
  while (count < records.size()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    const int wait = count != 0 ? 0 : static_cast<int>(std::clamp<std::int64_t>(left, 0, kLook));
    KafkaMessagePtr message(rd_kafka_consumer_poll(client_->get(), wait));
    if (message != nullptr && take(std::move(message), records[count])) {
      ++count;
      continue;
    }
    if (count != 0 && message == nullptr) return;
    if (count == 0 && (Clock::now() >= end || (start_.follow == 0 && group_.empty() && is_at_end(0)))) return;
  }
}

/// False for what is no record, or behind the end.
bool qzlog_reader::take(KafkaMessagePtr message, qzlog_received& record) {
  if (message->err == RD_KAFKA_RESP_ERR__PARTITION_EOF) {
    positions_[message->partition] = std::max(positions_[message->partition], message->offset);
    if (!group_.empty()) settled_[message->partition].pass_to(message->offset);
    return false;
  }
  if (message->err != RD_KAFKA_RESP_ERR_NO_ERROR) client_->fail("cannot read the topic", message->err);
  if (is_behind_end(message->partition, message->offset)) {
    pause(message->partition);
    return false;
  }
  positions_[message->partition] = message->offset + 1;
  record = {};
  record.line = {static_cast<const char*>(message->payload), message->len};
  rd_kafka_headers_t* headers = nullptr;
  const void* identity = nullptr;
  std::size_t size = 0;
  if (rd_kafka_message_headers(message.get(), &headers) == RD_KAFKA_RESP_ERR_NO_ERROR &&
      rd_kafka_header_get_last(headers, qzlog_ship::kKafkaIdentity, &identity, &size) == RD_KAFKA_RESP_ERR_NO_ERROR) {
    record.identity = {static_cast<const char*>(identity), size};
  }
  record.sequence = static_cast<std::uint64_t>(message->offset);
  rd_kafka_timestamp_type_t type = RD_KAFKA_TIMESTAMP_NOT_AVAILABLE;
  const std::int64_t milliseconds_since_1970 = rd_kafka_message_timestamp(message.get(), &type);
  record.nanoseconds = std::clamp<std::int64_t>(milliseconds_since_1970, 0, INT64_MAX / kMillisecond) * kMillisecond;
  record.token = next_token_++;
  record.again = group_.empty() ? 0 : 1;  // what another member did not settle cannot be told from what is new
  if (!group_.empty()) {
    unsettled_[record.token] = {message->partition, message->offset};
    settled_[message->partition].give_out(message->offset);
  }
  held_.push_back(std::move(message));
  return true;
}

bool qzlog_reader::is_behind_end(std::int32_t partition, std::int64_t offset) const {
  const auto found = ends_.find(partition);
  return start_.follow == 0 && found != ends_.end() && offset >= found->second;
}

void qzlog_reader::pause(std::int32_t partition) {
  positions_[partition] = std::max(positions_[partition], ends_[partition]);
  const KafkaPartitionsPtr list = list_of(client_->topic(), {partition});
  rd_kafka_pause_partitions(client_->get(), list.get());
}

bool qzlog_reader::is_at_end(std::uint32_t timeout_ms) {
  if (!group_.empty()) return group_is_at_end(timeout_ms);
  return std::all_of(ends_.begin(), ends_.end(), [&](const auto& each) {
    const auto found = positions_.find(each.first);
    return found != positions_.end() && (found->second >= each.second || found->second == RD_KAFKA_OFFSET_END);
  });
}

/// Whether what was there at opening is settled, by whichever reader.
bool qzlog_reader::group_is_at_end(std::uint32_t timeout_ms) {
  tell_group(timeout_ms);  // where partitions end that have nothing to be settled
  const KafkaPartitionsPtr list = list_of(client_->topic(), partitions_);
  require_all("cannot ask how far the group is",
              rd_kafka_committed(client_->get(), list.get(), milliseconds(timeout_ms)), *list);
  const std::span<rd_kafka_topic_partition_t> all = all_of(*list);
  return std::all_of(all.begin(), all.end(), [&](const rd_kafka_topic_partition_t& each) {
    return std::max<std::int64_t>(each.offset, 0) >= ends_[each.partition];
  });
}

void qzlog_reader::settle(std::span<const std::uint64_t> tokens, std::uint32_t timeout_ms) {
  if (group_.empty()) return;
  for (const std::uint64_t token : tokens) {
    const auto found = unsettled_.find(token);
    if (found == unsettled_.end()) continue;  // its partition is another's by now
    settled_[found->second.partition].settle(found->second.offset);
    unsettled_.erase(found);
  }
  tell_group(timeout_ms);
}

void qzlog_reader::tell_group(std::uint32_t timeout_ms) {
  const KafkaPartitionsPtr list(rd_kafka_topic_partition_list_new(static_cast<int>(settled_.size())));
  for (const auto& [partition, offsets] : settled_) {
    const std::optional<std::int64_t> next = offsets.next();
    if (next) rd_kafka_topic_partition_list_add(list.get(), client_->topic().c_str(), partition)->offset = *next;
  }
  if (list->cnt == 0) return;
  const KafkaQueuePtr answers(rd_kafka_queue_new(client_->get()));
  client_->require("cannot settle", rd_kafka_commit_queue(client_->get(), list.get(), answers.get(), nullptr, nullptr));
  const KafkaEventPtr answer(rd_kafka_queue_poll(answers.get(), milliseconds(timeout_ms)));
  if (answer == nullptr) fail_for_now("cannot settle: no broker answers in time");
  client_->require("cannot settle", rd_kafka_event_error(answer.get()));
  for (const rd_kafka_topic_partition_t& each : all_of(*list)) settled_[each.partition].tell(each.offset);
}
