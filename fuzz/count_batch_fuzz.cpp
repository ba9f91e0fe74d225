// Batches of counts: what is read is what would be written, and everything else is refused with a reason; merged, each
// line counts once.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/count/count_batch.h"
#include "tools/count/count_merge.h"

namespace {

/// Twice the same batch is as much as once.
void check_merge(const qzlog_tool::CountBatch& batch) {
  qzlog_tool::CountMerge once;
  once.add({batch.lines, {}, {}}, "once");
  qzlog_tool::CountMerge twice;
  twice.add({batch.lines, {}, {}}, "once");
  twice.add({batch.lines, {}, {}}, "again");
  if (once.counts() != twice.counts() || once.size() != twice.size()) std::abort();
  if (qzlog_tool::parse_batch(qzlog_tool::batch_text(once.folded())) != once.folded()) std::abort();
}

void check(std::string_view text) {
  try {
    const qzlog_tool::CountBatch batch = qzlog_tool::parse_batch(text);
    if (qzlog_tool::parse_batch(qzlog_tool::batch_text(batch)) != batch) std::abort();
    check_merge(batch);
  } catch (const qzlog_tool::BadBatch& fault) {
    if (*fault.what() == '\0') std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  check(text);
  std::string whole = "qzlog counts 1\n" + std::string(text);  // chance does not find a checksum
  if (!whole.ends_with('\n')) whole += '\n';
  check(qzlog_tool::with_batch_checksum(whole));
  return 0;
}
