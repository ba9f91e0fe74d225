// Bytes on the heap: an entry, and definitions beside the size of their file.
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <qzlog.h>

#include "bench/allocations.h"
#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/generated_definitions.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

using Numbers = std::map<std::string, long>;

/// Calls a function in a thread that has used nothing yet, for the library keeps things per thread.
template <typename Count>
Numbers in_fresh_thread(Count count) {
  Numbers numbers;
  std::thread([&] { numbers = count(); }).join();
  return numbers;
}

/// An entry's object and everything that it owns: the share of one among many, for the library may keep the memory of a
/// few for the next ones.
Numbers entry_bytes() {
  constexpr long kEntries = 1000;
  const WorkloadA workload;
  add_attributes(*std::make_unique<qz_LOG_LogEntry>(WorkloadA::kEntryId, kLogLevel), workload);
  std::vector<std::unique_ptr<qz_LOG_LogEntry>> entries;
  entries.reserve(kEntries);
  const HeapUse heap;
  for (long i = 0; i < kEntries; ++i) {
    entries.push_back(std::make_unique<qz_LOG_LogEntry>(WorkloadA::kEntryId, kLogLevel));
    add_attributes(*entries.back(), workload);
  }
  return {{"bytes", heap.bytes() / kEntries}};
}

enum class Use { kLoaded, kConstructed, kRendered };

void use_definition(unsigned entry_id, Use use) {
  qz_LOG_LogEntry entry(entry_id, kLogLevel);
  if (use != Use::kRendered) return;
  add_attributes(entry, WorkloadA());
  require(entry.FormatMessage() == text_like_a(entry_id), "a generated definition has its text");
}

/// What the process holds more after the file was loaded and each of its definitions was used. Nothing is left of an
/// earlier file when it begins.
Numbers definition_bytes(const Definitions& definitions, Use use) {
  const std::string path = definitions.path(definitions.count);
  qz_LOG_LogConfig::ClearDefinitions();
  const HeapUse heap;
  qz_LOG_LogConfig::SetDefinitionPath(path.c_str());
  if (use != Use::kLoaded) {
    for (unsigned i = 0; i < definitions.count; ++i) use_definition(kFirstGeneratedId + i, use);
  }
  return {{"bytes", heap.bytes()}, {"file_bytes", static_cast<long>(std::filesystem::file_size(path))}};
}

void add_definitions(CaseList& cases, const std::string& name, const Definitions& definitions, Use use) {
  cases.add_count("memory/" + name + "/" + std::to_string(definitions.count), narrow_path_with(definitions),
                  [=] { return in_fresh_thread([=] { return definition_bytes(definitions, use); }); });
}

}  // namespace

void add_memory_cases(CaseList& cases) {
  // As many definitions as the library keeps.
  constexpr unsigned kKept = 128;
  cases.add_count("memory/entry", narrow_path(), [] { return in_fresh_thread(entry_bytes); });
  add_definitions(cases, "definitions_constructed", {definitions_like_a, kKept}, Use::kConstructed);
  add_definitions(cases, "definitions_rendered", {definitions_like_a, kKept}, Use::kRendered);
  add_definitions(cases, "definitions_loaded", {definitions_with_ids, 1000}, Use::kLoaded);
  add_definitions(cases, "definitions_loaded", {definitions_with_ids, 1000000}, Use::kLoaded);
}

}  // namespace qzlog_bench
