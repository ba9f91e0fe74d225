// Peer: what one writes by hand for the job. Definitions by ID, values in a map of variants, checked when they are
// added, and a template that fmt fills in at run time.
#include <fmt/format.h>

#include <cstdint>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>

#include "bench/case.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

using Value = std::variant<std::uint64_t, std::int64_t, double, std::string>;

Value to_value(const char* text) { return std::string(text); }
Value to_value(double number) { return number; }
template <typename Integer>
Value to_value(Integer number) {
  if constexpr (std::is_unsigned_v<Integer>) return static_cast<std::uint64_t>(number);
  return static_cast<std::int64_t>(number);
}

struct Definition {
  std::string message;
  std::unordered_map<std::string, std::size_t> attributes;  ///< name to the index of the value's alternative
};

class DefinitionTable {
 public:
  void add(unsigned id, Definition definition) {
    definitions_[id] = std::make_shared<const Definition>(std::move(definition));
  }

  std::shared_ptr<const Definition> find(unsigned id) const {
    const auto found = definitions_.find(id);
    if (found == definitions_.end()) throw std::invalid_argument("unknown event");
    return found->second;
  }

 private:
  std::unordered_map<unsigned, std::shared_ptr<const Definition>> definitions_;
};

class Event {
 public:
  Event(const DefinitionTable& definitions, unsigned id) : definition_(definitions.find(id)) {}

  void add(const char* name, Value value) {
    const auto found = definition_->attributes.find(name);
    if (found == definition_->attributes.end()) throw std::invalid_argument("unknown attribute");
    if (found->second != value.index()) throw std::invalid_argument("another type");
    values_[found->first] = std::move(value);
  }

  std::string message() const {
    std::string out;
    std::string_view rest = definition_->message;
    for (;;) {
      const std::size_t open = rest.find('{');
      out += rest.substr(0, open);
      if (open == std::string_view::npos) return out;
      const std::size_t close = rest.find('}', open);
      append_value(out, std::string(rest.substr(open + 1, close - open - 1)));
      rest.remove_prefix(close + 1);
    }
  }

 private:
  void append_value(std::string& out, const std::string& name) const {
    std::visit(
        [&](const auto& value) {
          constexpr bool kIsReal = std::is_same_v<std::decay_t<decltype(value)>, double>;
          fmt::format_to(std::back_inserter(out), fmt::runtime(kIsReal ? "{:f}" : "{}"), value);
        },
        values_.at(name));
  }

  std::shared_ptr<const Definition> definition_;
  std::unordered_map<std::string, Value> values_;
};

template <typename Workload>
class VariantMapJob {
 public:
  VariantMapJob() { define(std::make_index_sequence<Workload::kFields.size()>()); }

  const char* operator()(char* /*buffer*/) {
    make_unknown(workload_);
    Event event(definitions_, Workload::kEntryId);
    add_values(event, std::make_index_sequence<Workload::kFields.size()>());
    text_ = event.message();
    return text_.c_str();
  }

 private:
  template <std::size_t... kIndex>
  void define(std::index_sequence<kIndex...>) {
    const auto values = workload_.values();
    definitions_.add(
        Workload::kEntryId,
        {Workload::kTemplate, {{Workload::kFields[kIndex].name, to_value(std::get<kIndex>(values)).index()}...}});
  }

  template <std::size_t... kIndex>
  void add_values(Event& event, std::index_sequence<kIndex...>) const {
    const auto values = workload_.values();
    (event.add(Workload::kFields[kIndex].name, to_value(std::get<kIndex>(values))), ...);
  }

  Workload workload_;
  DefinitionTable definitions_;
  std::string text_;
};

template <typename Workload>
void add_case(CaseList& cases) {
  cases.add_text(std::string(Workload::kName) + "/narrow/variant_map", narrow_path(), Workload::kText,
                 [] { return VariantMapJob<Workload>(); });
}

}  // namespace

void add_variant_map_cases(CaseList& cases) {
  add_case<WorkloadA>(cases);
  add_case<WorkloadB>(cases);
  add_case<WorkloadC>(cases);
}

}  // namespace qzlog_bench
