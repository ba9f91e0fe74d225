#include "ship/nats/nats_stream.h"

#include <algorithm>
#include <array>

#include "ship/nats/nats_subject.h"
#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
// A record whose acknowledgement was lost is sent again within the longest pause and the longest attempt; a shipper
// that was killed is started again by then.
constexpr std::int64_t kShortestWindow = 120 * kSecond;

NatsContextPtr make_context(NatsConnection& connection, std::uint32_t timeout_ms) {
  jsOptions options;
  connection.require("cannot use JetStream", jsOptions_Init(&options));
  options.Wait = std::clamp<std::int64_t>(timeout_ms, 1, 10'000);
  jsCtx* context = nullptr;
  connection.require("cannot use JetStream", natsConnection_JetStream(&context, connection.get(), &options));
  return NatsContextPtr(context);
}

/// They are for a stream that is made, and would change nothing.
void refuse_without_stream(PluginOptions& options) {
  for (const char* const key : {"replicas", "window", "max-bytes", "max-age"}) {
    if (options.take(key)) {
      fail_for_good(std::string("--option ") + key + " is for a stream that is made: say --option create=yes too");
    }
  }
}

}  // namespace

NatsStreamWish NatsStreamWish::of(PluginOptions& options) {
  constexpr std::uint64_t kAny = INT64_MAX / kSecond;
  NatsStreamWish wish;
  wish.may_create = true;
  wish.create = options.take_flag("create", false);
  if (!wish.create) refuse_without_stream(options);
  if (const auto number = options.take_number("replicas", 1, 5)) wish.replicas = static_cast<std::int64_t>(*number);
  if (const auto number = options.take_number("window", 1, kAny))
    wish.window_seconds = static_cast<std::int64_t>(*number);
  if (const auto number = options.take_number("max-bytes", 1, INT64_MAX))
    wish.most_bytes = static_cast<std::int64_t>(*number);
  if (const auto number = options.take_number("max-age", 1, kAny))
    wish.most_seconds = static_cast<std::int64_t>(*number);
  return wish;
}

NatsStream::NatsStream(NatsConnection& connection, const std::string& name, const NatsStreamWish& wish,
                       std::uint32_t timeout_ms)
    : name_(name), context_(make_context(connection, timeout_ms)) {
  if (ask(connection)) return;
  if (!wish.may_create) {
    fail_for_good("there is no stream '" + name_ +
                  "': look at the name in the URL; who ships makes it, with --option create=yes");
  }
  if (!wish.create) {
    fail_for_good("there is no stream '" + name_ + "': make one that takes subjects such as '" + name_ +
                  ".>', or say --option create=yes");
  }
  create(connection, wish);
}

bool NatsStream::ask(NatsConnection& connection) {
  jsStreamInfo* info = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status = js_GetStreamInfo(&info, context_.get(), name_.c_str(), nullptr, &code);
  if (code == JSStreamNotFoundErr) return false;
  connection.require("cannot ask for the stream '" + name_ + "'", status, code);
  info_.reset(info);
  if (info_ == nullptr || info_->Config == nullptr) fail_for_now("the server does not say what the stream is like");
  return true;
}

// Full, it refuses new records instead of dropping old ones: those wait in their files then.
void NatsStream::create(NatsConnection& connection, const NatsStreamWish& wish) {
  const std::string subject = name_ + ".>";
  std::array<const char*, 1> subjects = {subject.c_str()};
  jsStreamConfig config;
  connection.require("cannot make a stream", jsStreamConfig_Init(&config));
  config.Name = name_.c_str();
  config.Subjects = subjects.data();
  config.SubjectsLen = static_cast<int>(subjects.size());
  config.Discard = js_DiscardNew;
  config.Storage = js_FileStorage;
  config.Replicas = wish.replicas;
  config.MaxBytes = wish.most_bytes;
  config.MaxAge = wish.most_seconds * kSecond;
  config.Duplicates = wish.window_seconds * kSecond;
  if (config.MaxAge != 0) config.Duplicates = std::min(config.Duplicates, config.MaxAge);
  jsStreamInfo* info = nullptr;
  jsErrCode code = jsErrCode(0);
  const natsStatus status = js_AddStream(&info, context_.get(), &config, nullptr, &code);
  if (code == JSStreamNameExistErr && ask(connection)) return;  // somebody else was faster
  if (code == JSStreamReplicasNotSupportedErr) {
    fail_for_good("cannot make the stream '" + name_ + "': replicas need a cluster of servers");
  }
  connection.require("cannot make the stream '" + name_ + "'", status, code);
  info_.reset(info);
  if (info_ == nullptr || info_->Config == nullptr) fail_for_now("the server does not say what the stream is like");
}

bool NatsStream::takes(const std::string& subject) const {
  const jsStreamConfig& config = *info_->Config;
  for (int index = 0; index < config.SubjectsLen; ++index) {
    if (subject_covers(config.Subjects[index], subject)) return true;
  }
  return false;
}

std::string NatsStream::subjects() const {
  std::string list;
  for (int index = 0; index < info_->Config->SubjectsLen && index < 10; ++index) {
    list.append(list.empty() ? "'" : ", '").append(info_->Config->Subjects[index]).append("'");
  }
  return list.empty() ? "none" : list;
}

std::string NatsStream::prefix(const std::optional<std::string>& wanted) const {
  if (wanted) {
    if (!is_plain_subject(*wanted)) fail_for_good("--option prefix takes words with dots between them");
    if (takes(*wanted + ".PRODUCT.EVENT.0")) return *wanted;
    fail_for_good("the stream '" + name_ + "' takes the subjects " + subjects() +
                  ", and not those of --option prefix=" + *wanted + ": add '" + *wanted + ".>' to them");
  }
  for (int index = 0; index < info_->Config->SubjectsLen; ++index) {
    const std::string_view subject = info_->Config->Subjects[index];
    if (!subject.ends_with(".>")) continue;
    const std::string_view before = subject.substr(0, subject.size() - 2);
    if (is_plain_subject(before)) return std::string(before);
  }
  if (takes(name_ + ".PRODUCT.EVENT.0")) return name_;
  fail_for_good("the stream '" + name_ + "' takes the subjects " + subjects() + ": add '" + name_ +
                ".>' to them, or say with --option prefix=… what subjects begin with");
}

std::string NatsStream::warning() const {
  const jsStreamConfig& config = *info_->Config;
  if (config.NoAck) fail_for_good("the stream '" + name_ + "' acknowledges nothing: set no_ack to false");
  if (config.Duplicates < kShortestWindow) {
    return "the stream '" + name_ + "' forgets identities after " + std::to_string(config.Duplicates / kSecond) +
           " s: what is sent again later stands there twice; let its duplicate_window be 2m or longer";
  }
  if (config.Discard == js_DiscardOld && (config.MaxBytes > 0 || config.MaxMsgs > 0)) {
    return "the stream '" + name_ +
           "' drops old records when it is full; with discard 'new' it would refuse new ones, which wait in their "
           "files";
  }
  return "";
}

}  // namespace qzlog_ship
