// The whole job of workload A over many IDs, each with a text of its own: one ID after the other, and in random order.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/generated_definitions.h"
#include "bench/run_time_value.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

constexpr unsigned kFileIds = 100000;
// Enough for all of the file.
constexpr std::size_t kMemory = std::size_t{1} << 30;
constexpr std::size_t kDefaultMemory = std::size_t{32} << 20;

enum class Order { kInTurn, kRandom };

/// So many of the file's IDs, spread over it.
std::vector<unsigned> ids_of_file(unsigned count, Order order) {
  std::vector<unsigned> ids(count);
  for (unsigned i = 0; i < count; ++i) ids[i] = kFirstGeneratedId + i * (kFileIds / count);
  std::mt19937 random(20261123);
  if (order == Order::kRandom) std::shuffle(ids.begin(), ids.end(), random);
  return ids;
}

/// Each ID once before one comes again. All have been seen when the time begins to count.
class Rotation {
 public:
  Rotation(unsigned ids, Order order, std::size_t memory) : ids_(ids_of_file(ids, order)) {
    qz_LOG_LogConfig::SetDefinitionMemory(memory);
    char buffer[kTextSize + 1];
    for (std::size_t i = 0; i < 2 * ids_.size(); ++i) (*this)(buffer);
    next_ = 0;
  }

  const char* operator()(char* buffer) {
    make_unknown(workload_);
    qz_LOG_LogEntry entry(ids_[next_], kLogLevel);
    next_ = next_ + 1 < ids_.size() ? next_ + 1 : 0;
    add_attributes(entry, workload_);
    return entry.GetReadableMessage(buffer, kTextSize, false, 0);
  }

 private:
  WorkloadA workload_;
  std::vector<unsigned> ids_;
  std::size_t next_ = 0;
};

struct Variant {
  const char* name;
  unsigned ids;
  Order order;
  std::size_t memory;
};

constexpr Variant kVariants[] = {
    {"one", 1, Order::kInTurn, kMemory},
    {"1000_in_turn", 1000, Order::kInTurn, kMemory},
    {"1000_random", 1000, Order::kRandom, kMemory},
    {"100000_in_turn", kFileIds, Order::kInTurn, kMemory},
    {"100000_random", kFileIds, Order::kRandom, kMemory},
    {"100000_in_turn_default_memory", kFileIds, Order::kInTurn, kDefaultMemory},
    {"100000_random_default_memory", kFileIds, Order::kRandom, kDefaultMemory},
};

void add_variants(CaseList& cases, const std::string& path, const Settings& settings, std::string (*text)(unsigned)) {
  for (const Variant& variant : kVariants) {
    const unsigned first_id = ids_of_file(variant.ids, variant.order).front();
    cases.add_text("rotation/" + path + "/" + variant.name, settings, text(first_id),
                   [=] { return Rotation(variant.ids, variant.order, variant.memory); });
  }
}

/// What any table of so many definitions costs: one place is read to know where the next is, twice, as an ID leads to a
/// definition and that to its attributes; both are somewhere among what all of them take.
class DependentReads {
 public:
  DependentReads() : blocks_(kFileIds), order_(ids_of_file(kFileIds, Order::kRandom)) {
    for (std::unique_ptr<Block>& block : blocks_) block = std::make_unique<Block>();
    std::vector<std::size_t> seconds(kFileIds);
    std::iota(seconds.begin(), seconds.end(), std::size_t{0});
    std::shuffle(seconds.begin(), seconds.end(), std::mt19937(7));
    for (std::size_t i = 0; i < blocks_.size(); ++i) blocks_[i]->other = blocks_[seconds[i]].get();
  }

  void operator()() {
    const Block* const first = blocks_[order_[next_] - kFirstGeneratedId].get();
    // What the next entry needs is not fetched meanwhile: nobody knows its ID yet.
    next_ += first->other->value;
    if (next_ == order_.size()) next_ = 0;
  }

 private:
  static constexpr std::size_t kBlockSize = 1200;  // about what a definition with its template takes
  struct Block {
    const Block* other = nullptr;
    std::size_t value = 1;
    char rest[kBlockSize] = {};
  };

  std::vector<std::unique_ptr<Block>> blocks_;
  std::vector<unsigned> order_;
  std::size_t next_ = 0;
};

}  // namespace

void add_rotation_cases(CaseList& cases) {
  const Definitions definitions = {definitions_like_a, kFileIds};
  add_variants(cases, "narrow", narrow_path_with(definitions), text_like_a);
  Settings icu = icu_path();
  icu.definitions = definitions;
  add_variants(cases, "icu", icu, icu_text_like_a);
  cases.add("rotation/floor/two_dependent_reads", narrow_path(), [] {
    auto reads = std::make_shared<DependentReads>();
    return [reads] { (*reads)(); };
  });
}

}  // namespace qzlog_bench
