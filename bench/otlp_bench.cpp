// Entries of workload A, as lines with their typed attributes, through the plug-in for OTLP to a receiver of the
// loopback that only reads and answers. It is a process of its own. What the command does for a line before is not
// measured.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <netinet/in.h>
#include <qzlog.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/workloads.h"
#include "ship/transport.h"

namespace qzlog_bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kBatch = 500;
constexpr unsigned kBatches = 100;
constexpr unsigned kRuns = 5;

/// Reads requests, one connection after the other, and answers each with 200, as long as this object lives.
class ReadingReceiver {
 public:
  ReadingReceiver() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    require(bind(listener_, any, size) == 0 && listen(listener_, 4) == 0 && getsockname(listener_, any, &size) == 0,
            "a receiver listens");
    port_ = ntohs(address.sin_port);
    process_ = fork();
    if (process_ == 0) serve();
  }
  ~ReadingReceiver() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    close(listener_);
  }
  ReadingReceiver(const ReadingReceiver&) = delete;
  ReadingReceiver& operator=(const ReadingReceiver&) = delete;
  unsigned port() const { return port_; }

 private:
  [[noreturn]] void serve() const {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) {
      const int connection = accept(listener_, nullptr, nullptr);
      while (take_request(connection)) {
        static constexpr std::string_view kAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
        if (send(connection, kAnswer.data(), kAnswer.size(), MSG_NOSIGNAL) < 0) break;
      }
      close(connection);
    }
  }
  static bool take_request(int connection) {
    static char bytes[1U << 18];
    std::string head;
    std::size_t end = std::string::npos;
    while ((end = head.find("\r\n\r\n")) == std::string::npos) {
      const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
      if (count <= 0) return false;
      head.append(bytes, static_cast<std::size_t>(count));
    }
    const std::size_t size = std::stoul(head.substr(head.find("Content-Length: ") + 16));
    for (std::size_t left = size - (head.size() - end - 4); left != 0;) {
      const ssize_t count = recv(connection, bytes, std::min(left, sizeof bytes), 0);
      if (count <= 0) return false;
      left -= static_cast<std::size_t>(count);
    }
    return true;
  }

  int listener_;
  unsigned port_ = 0;
  pid_t process_ = -1;
};

qzlog_text text_of(std::string_view text) { return {text.data(), text.size()}; }

/// A batch of the same line, and the host that knows its values.
class Batch {
 public:
  explicit Batch(bool has_body) : has_body_(has_body), entry_(WorkloadA::kEntryId, kLogLevel) {
    add_attributes(entry_, WorkloadA());
    line_ = entry_.ToJson();
    add_values();
    qzlog_record record = {};
    record.identity = text_of("web1/4711/1795248930/123456");
    record.line = text_of(line_);
    record.writer = text_of("web1/4711/1795248930");
    record.product = text_of("storage");
    record.event = text_of("EVENT_A");
    record.id = WorkloadA::kEntryId;
    record.level = kLogLevel;
    records_.assign(kBatch, record);
  }
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  const std::vector<qzlog_record>& records() const { return records_; }
  std::size_t line_bytes() const { return line_.size(); }
  qzlog_host host() {
    return {sizeof(qzlog_host), this, warn, is_ending, find_none, find_none, attributes_for, moment_for, body_for};
  }

 private:
  qzlog_value& add(const char* name, qzlog_kind kind) {
    values_.push_back({text_of(name), {}});
    values_.back().value.kind = kind;
    return values_.back().value;
  }
  void add_values() {
    const WorkloadA workload;
    add("Name", QZLOG_TEXT).text = text_of(workload.name);
    add("Blocks", QZLOG_INTEGER).integer = workload.blocks;
    add("Delta", QZLOG_INTEGER).integer = workload.delta;
    add("Load", QZLOG_NUMBER).number = workload.load;
    add("Label", QZLOG_TEXT).text = text_of(workload.label);
  }

  static Batch& self(void* context) { return *static_cast<Batch*>(context); }
  static void warn(void* /*context*/, const char* /*text*/) {}
  static int is_ending(void* /*context*/) { return 0; }
  static qzlog_value find_none(void* /*context*/, const qzlog_record* /*record*/, const char* /*name*/) { return {}; }
  static const qzlog_attribute* attributes_for(void* context, const qzlog_record* /*record*/, size_t* count) {
    *count = self(context).values_.size();
    return self(context).values_.data();
  }
  static int moment_for(void* /*context*/, const qzlog_record* /*record*/, int64_t* nanoseconds) {
    *nanoseconds = 1795248930000000000;
    return 1;
  }
  static int body_for(void* context, const qzlog_record* /*record*/, qzlog_text* body) {
    Batch& batch = self(context);
    if (!batch.has_body_) return 0;
    batch.message_ = batch.entry_.FormatMessage();
    *body = text_of(batch.message_);
    return 1;
  }

  bool has_body_;
  qz_LOG_LogEntry entry_;
  std::string line_;
  std::string message_;
  std::vector<qzlog_attribute> values_;
  std::vector<qzlog_record> records_;
};

const qzlog_transport& plugin() {
  static void* const library = dlopen(QZLOG_BENCH_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  require(library != nullptr, "the plug-in is loaded");
  return *reinterpret_cast<qzlog_ship_transport_function>(dlsym(library, QZLOG_TRANSPORT_FUNCTION))();
}

double entries_per_second(const ReadingReceiver& receiver, const std::string& encoding, bool has_body) {
  const std::string authority = "127.0.0.1:" + std::to_string(receiver.port());
  const std::string url = "otlp+http://" + authority;
  const qzlog_option option = {"encoding", encoding.c_str()};
  const qzlog_settings settings = {sizeof settings, url.c_str(), "otlp+http", authority.c_str(), "", nullptr,
                                   nullptr,         &option,     1,           "qzlog-ship/1 b"};
  Batch batch(has_body);
  const qzlog_host host = batch.host();
  qzlog_sender* sender = nullptr;
  qzlog_error error = {};
  require(plugin().open_sender(&settings, &host, 10000, &sender, &error) == QZLOG_DONE, "the receiver answers");
  const auto begin = Clock::now();
  for (unsigned count = 0; count < kBatches; ++count) {
    std::vector<qzlog_result> results(kBatch);
    require(plugin().send(sender, batch.records().data(), kBatch, 30000, results.data(), &error) == QZLOG_DONE,
            "a batch is sent");
    require(results.back().fate == QZLOG_ACKNOWLEDGED, "a batch is taken");
  }
  const std::chrono::duration<double> all = Clock::now() - begin;
  plugin().close_sender(sender);
  return kBatch * kBatches / all.count();
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

std::map<std::string, double> measure_entries() {
  const ReadingReceiver receiver;
  std::map<std::string, std::vector<double>> speeds;
  for (unsigned round = 0; round < kRuns; ++round) {
    for (const std::string encoding : {"protobuf", "json"}) {
      speeds[encoding].push_back(entries_per_second(receiver, encoding, false));
      speeds[encoding + "_body"].push_back(entries_per_second(receiver, encoding, true));
    }
  }
  std::map<std::string, double> medians = {{"line_bytes", static_cast<double>(Batch(false).line_bytes())}};
  for (const auto& [name, values] : speeds) medians[name] = median(values);
  return medians;
}

}  // namespace

void add_otlp_cases(CaseList& cases) { cases.add_count("ship/otlp", narrow_path(), measure_entries); }

}  // namespace qzlog_bench
