// An entry as a line of JSON. Peers: the same line by nlohmann::json's dump() of an object that is there already, and
// by RapidJSON's Writer. `floor` copies the line.
#include <benchmark/benchmark.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

/// The line alone: the entry is there.
template <typename Workload>
class AppendJson {
 public:
  AppendJson() : entry_(std::make_shared<qz_LOG_LogEntry>(Workload::kEntryId, kLogLevel)) {
    add_attributes(*entry_, Workload());
  }

  const char* operator()(char* /*buffer*/) {
    benchmark::ClobberMemory();
    line_.clear();
    entry_->AppendJson(line_);
    return line_.c_str();
  }

 private:
  std::shared_ptr<qz_LOG_LogEntry> entry_;
  std::string line_;
};

/// What a caller does for one line.
template <typename Workload>
class BuildAndAppendJson {
 public:
  const char* operator()(char* /*buffer*/) {
    make_unknown(workload_);
    qz_LOG_LogEntry entry(Workload::kEntryId, kLogLevel);
    add_attributes(entry, workload_);
    line_.clear();
    entry.AppendJson(line_);
    return line_.c_str();
  }

 private:
  Workload workload_;
  std::string line_;
};

/// The same without the line.
template <typename Workload>
class Build {
 public:
  void operator()() {
    make_unknown(workload_);
    qz_LOG_LogEntry entry(Workload::kEntryId, kLogLevel);
    add_attributes(entry, workload_);
    benchmark::DoNotOptimize(&entry);
  }

 private:
  Workload workload_;
};

/// Calls add(name, value) for each attribute.
template <typename Workload, typename Add, std::size_t... kIndex>
void for_each_value(const Workload& workload, Add add, std::index_sequence<kIndex...>) {
  const auto values = workload.values();
  (add(Workload::kFields[kIndex].name, std::get<kIndex>(values)), ...);
}

template <typename Workload>
class Dump {
 public:
  Dump() {
    object_["id"] = Workload::kEntryId;
    object_["level"] = kLogLevel;
    object_["name"] = Workload::kName;
    auto& attributes = object_["attributes"];
    for_each_value(
        Workload(), [&](const char* name, const auto& value) { attributes[name] = value; },
        std::make_index_sequence<Workload::kFields.size()>());
  }

  const char* operator()(char* /*buffer*/) {
    benchmark::ClobberMemory();
    text_ = object_.dump();
    return text_.c_str();
  }

 private:
  nlohmann::ordered_json object_;
  std::string text_;
};

class RapidJsonValues {
 public:
  using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

  static void add(Writer& writer, const char* value) { writer.String(value); }
  static void add(Writer& writer, double value) { writer.Double(value); }
  template <typename Integer>
  static void add(Writer& writer, Integer value) {
    if constexpr (std::is_signed_v<Integer>) {
      writer.Int(value);
    } else {
      writer.Uint(value);
    }
  }
};

template <typename Workload>
class RapidJson {
 public:
  const char* operator()(char* /*buffer*/) {
    make_unknown(workload_);
    buffer_->Clear();
    RapidJsonValues::Writer writer(*buffer_);
    writer.StartObject();
    writer.Key("id");
    writer.Uint(Workload::kEntryId);
    writer.Key("level");
    writer.Uint(kLogLevel);
    writer.Key("name");
    writer.String(Workload::kName);
    writer.Key("attributes");
    writer.StartObject();
    for_each_value(
        workload_,
        [&](const char* name, const auto& value) {
          writer.Key(name);
          RapidJsonValues::add(writer, value);
        },
        std::make_index_sequence<Workload::kFields.size()>());
    writer.EndObject();
    writer.EndObject();
    return buffer_->GetString();
  }

 private:
  Workload workload_;
  std::shared_ptr<rapidjson::StringBuffer> buffer_ = std::make_shared<rapidjson::StringBuffer>();
};

template <typename Workload>
void add_cases(CaseList& cases, const std::string& expected) {
  const std::string group = std::string(Workload::kName) + "/line/";
  cases.add_text(group + "qzlog", narrow_path(), expected, [] { return AppendJson<Workload>(); });
  cases.add_text(group + "qzlog_with_build", narrow_path(), expected, [] { return BuildAndAppendJson<Workload>(); });
  cases.add(group + "build", narrow_path(), [] { return Build<Workload>(); });
  cases.add_text(group + "nlohmann", narrow_path(), expected, [] { return Dump<Workload>(); });
  cases.add_text(group + "rapidjson", narrow_path(), expected, [] { return RapidJson<Workload>(); });
}

}  // namespace

void add_entry_line_cases(CaseList& cases) {
  add_cases<WorkloadA>(
      cases,
      R"({"id":1001,"level":3,"name":"A","attributes":{"Name":"volume-0042","Blocks":123456,"Delta":-77,"Load":0.875,)"
      R"("Label":"Größenprüfung in Köln läuft bis Mai"}})");
  add_cases<WorkloadB>(cases, R"({"id":1005,"level":3,"name":"B","attributes":{"Number":123456}})");
  add_cases<WorkloadC>(
      cases,
      R"({"id":1006,"level":3,"name":"C","attributes":{"Name":"volume-0042","Host":"storage-17.example.org","Blocks":123456,)"
      R"("Free":65536,"Delta":-77,"Load":0.875,"Queue":1024,"Drift":-12,"Retries":3,)"
      R"("Label":"Größenprüfung in Köln läuft bis Mai"}})");
}

}  // namespace qzlog_bench
