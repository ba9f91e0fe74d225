// Peer: an nlohmann::json object with the values, built and dumped. Its text is another one: JSON.
#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>

#include "bench/case.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

template <typename Workload>
class JsonJob {
 public:
  const char* operator()(char* /*buffer*/) {
    make_unknown(workload_);
    nlohmann::json object;
    object["id"] = Workload::kEntryId;
    add_values(object, std::make_index_sequence<Workload::kFields.size()>());
    text_ = object.dump();
    return text_.c_str();
  }

 private:
  template <std::size_t... kIndex>
  void add_values(nlohmann::json& object, std::index_sequence<kIndex...>) const {
    const auto values = workload_.values();
    ((object[Workload::kFields[kIndex].name] = std::get<kIndex>(values)), ...);
  }

  Workload workload_;
  std::string text_;
};

template <typename Workload>
void add_case(CaseList& cases, const std::string& expected) {
  cases.add_text(std::string(Workload::kName) + "/narrow/json", narrow_path(), expected,
                 [] { return JsonJob<Workload>(); });
}

}  // namespace

void add_json_cases(CaseList& cases) {
  add_case<WorkloadA>(
      cases,
      R"({"Blocks":123456,"Delta":-77,"Label":"Größenprüfung in Köln läuft bis Mai","Load":0.875,"Name":"volume-0042",)"
      R"("id":1001})");
  add_case<WorkloadB>(cases, R"({"Number":123456,"id":1005})");
  add_case<WorkloadC>(
      cases,
      R"({"Blocks":123456,"Delta":-77,"Drift":-12,"Free":65536,"Host":"storage-17.example.org",)"
      R"("Label":"Größenprüfung in Köln läuft bis Mai","Load":0.875,"Name":"volume-0042","Queue":1024,"Retries":3,)"
      R"("id":1006})");
}

}  // namespace qzlog_bench
