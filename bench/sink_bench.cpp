// Entries of workload A on their way to a file, lines per second by the clock on the wall: what a sink's thread does
// counts too. Peer: spdlog's rotating sink with the text of the same line, made by fmt. Floor: a loop of write() with
// the same lines.
#include <fcntl.h>
#include <fmt/format.h>
#include <qzlog.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/run_time_value.h"
#include "bench/temporary_folder.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

using Clock = std::chrono::steady_clock;
using Settings = qz_LOG_FileSinkSettings;

constexpr unsigned kLines = 200000;
constexpr unsigned kRuns = 9;
constexpr unsigned kLogLevelOfLines = 3;
constexpr std::size_t kFileBytes = 8U << 20;

constexpr char kFmtLine[] =
    R"({{"writer":"localhost/123456/1795248930123456789","seq":{},"written":"2026-11-21T08:15:30.123456789Z",)"
    R"("definitions":"0123456789abcdef","id":1001,"level":3,"name":"A","attributes":{{"Name":"{}","Blocks":{},"Delta":{},"Load":{},)"
    R"("Label":"{}"}}}})";

/// A new folder, removed with everything in it.
class LogFolder {
 public:
  LogFolder() { std::filesystem::create_directory(path_); }
  ~LogFolder() { std::filesystem::remove_all(path_); }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  const std::string path_ = temporary_file("logs");
};

struct Figures {
  double line_nanoseconds;
  double longest_milliseconds;  // of one line
};

/// Calls `step` for each line, and `finish`.
template <typename Step, typename Finish>
Figures run(Step step, Finish finish) {
  const auto begin = Clock::now();
  auto last = begin;
  Clock::duration longest{};
  for (unsigned line = 0; line < kLines; ++line) {
    step(line);
    const auto now = Clock::now();
    longest = std::max(longest, now - last);
    last = now;
  }
  finish();
  const std::chrono::duration<double, std::nano> all = Clock::now() - begin;
  return {all.count() / kLines, std::chrono::duration<double, std::milli>(longest).count()};
}

Figures run_sink(Settings::Way way) {
  const LogFolder folder;
  Settings settings;
  settings.folder = folder.path();
  settings.prefix = "bench";
  settings.way = way;
  settings.largest_file_bytes = kFileBytes;
  qz_LOG_FileSink sink(settings);
  WorkloadA workload;
  return run(
      [&](unsigned) {
        make_unknown(workload);
        qz_LOG_LogEntry entry(WorkloadA::kEntryId, kLogLevelOfLines);
        add_attributes(entry, workload);
        require(sink.Write(entry), "a sink takes an entry");
      },
      [&] { require(sink.Close(60000) == 0, "a sink writes all entries"); });
}

std::string line_of_a() {
  const WorkloadA workload;
  return std::apply([](const auto&... values) { return fmt::format(kFmtLine, 123456, values...); }, workload.values()) +
         '\n';
}

Figures run_floor() {
  const LogFolder folder;
  const std::string line = line_of_a();
  std::size_t size = 0;
  int number = 0;
  int file = -1;
  const Figures figures = run(
      [&](unsigned) {
        if (file < 0 || size + line.size() > kFileBytes) {
          if (file >= 0) close(file);
          const std::string path = folder.path() + "/floor." + std::to_string(++number);
          file = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640);
          size = 0;
        }
        require(write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size()), "a line is written");
        size += line.size();
      },
      [] {});
  close(file);
  return figures;
}

Figures run_spdlog() {
  const LogFolder folder;
  const auto sink =
      std::make_shared<spdlog::sinks::rotating_file_sink_mt>(folder.path() + "/bench.log", kFileBytes, 100);
  spdlog::logger logger("bench", sink);
  logger.set_formatter(
      std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, std::string("\n")));
  WorkloadA workload;
  return run(
      [&](unsigned line) {
        make_unknown(workload);
        std::apply([&](const auto&... values) { logger.info(kFmtLine, line, values...); }, workload.values());
      },
      [&] { logger.flush(); });
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

/// Each in turn, so that what the machine does besides meets all of them.
std::map<std::string, double> measure_lines() {
  const std::pair<const char*, std::function<Figures()>> writers[] = {
      {"floor", run_floor},
      {"spdlog", run_spdlog},
      {"write", [] { return run_sink(Settings::kWrite); }},
      {"shared", [] { return run_sink(Settings::kShared); }},
      {"buffered", [] { return run_sink(Settings::kBuffered); }}};
  std::map<std::string, std::vector<double>> times;
  std::map<std::string, std::vector<double>> pauses;
  for (unsigned round = 0; round < kRuns; ++round) {
    for (const auto& [name, writer] : writers) {
      const Figures figures = writer();
      times[name].push_back(figures.line_nanoseconds);
      pauses[name].push_back(figures.longest_milliseconds);
    }
  }
  std::map<std::string, double> medians;
  for (const auto& [name, values] : times) medians[name + "_ns"] = median(values);
  for (const auto& [name, values] : pauses) medians[name + "_pause_ms"] = median(values);
  return medians;
}

/// Asks before an entry is built.
class Refused {
 public:
  Refused() : folder_(std::make_unique<LogFolder>()) {
    Settings settings;
    settings.path = folder_->path() + "/log";
    sink_ = std::make_unique<qz_LOG_FileSink>(settings);
    sink_->SetWanted(5, qz_LOG_Sink::kEveryMask);
  }

  void operator()() {
    make_unknown(*sink_);
    if (sink_->Wants(kLogLevelOfLines, 1)) report_violation("a level below is refused");
  }

 private:
  std::unique_ptr<LogFolder> folder_;
  std::unique_ptr<qz_LOG_FileSink> sink_;
};

}  // namespace

void add_sink_cases(CaseList& cases) {
  cases.add("sink/refused/qzlog", narrow_path(),
            [] { return [refused = std::make_shared<Refused>()] { (*refused)(); }; });
  cases.add_count("sink/lines", narrow_path(), measure_lines);
}

}  // namespace qzlog_bench
