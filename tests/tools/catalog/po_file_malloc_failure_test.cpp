// Every allocation fails once, libgettextpo's too, which does not survive each.
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <string>
#include <string_view>

#include "tests/support/malloc_failure.h"
#include "tools/catalog/po_file.h"
#include "tools/system/child_process.h"
#include "tools/system/command_error.h"

namespace qzlog_catalog {
namespace {

using qz_test::MallocFailure;

PoFile make_file() {
  PoFile file;
  file.messages.resize(2);
  file.messages[0].translation = "Content-Type: text/plain; charset=UTF-8\n";
  file.messages[1].context = "MSG_1";
  file.messages[1].source = "Volume {Name} is full";
  file.messages[1].translation = "Volume {Name} ist voll";
  return file;
}

enum Outcome { kWhole = 0, kEndedByLibgettextpo = 1, kRefused = 20, kOtherText = 21, kToldOfItsEnd = 22 };

int write_without_memory(const PoFile& file, const std::string& expected, unsigned nth) {
  const MallocFailure failure(nth);
  try {
    return write_po(file) == expected ? kWhole : kOtherText;
  } catch (const std::bad_alloc&) {
    return kRefused;
  } catch (const qzlog_tool::CommandError& error) {
    const bool is_its_end =
        error.what() == std::string_view("cannot make a PO file: libgettextpo has ended (memory may be used up)");
    return is_its_end ? kToldOfItsEnd : kRefused;
  }
}

// Reading back what was written, libgettextpo may still end the process, which is an end with a word.
TEST(WritePo, AnyAllocationFails_ErrorOrTheWholeFile) {
#ifdef QZLOG_SANITIZED
  GTEST_SKIP() << "the sanitizer has an allocator of its own";
#endif
  constexpr unsigned kMost = 600;  // far more than there are
  const PoFile file = make_file();
  const std::string expected = write_po(file);
  std::map<int, unsigned> outcomes;
  for (unsigned nth = 1; nth < kMost; ++nth) {
    const int outcome = qzlog_tool::run_apart("a test", [&] { return write_without_memory(file, expected, nth); });
    ++outcomes[outcome];
    EXPECT_TRUE(outcome == kWhole || outcome == kEndedByLibgettextpo || outcome == kRefused || outcome == kToldOfItsEnd)
        << nth << ": " << outcome;
  }
  EXPECT_GT(outcomes[kToldOfItsEnd], 0U);
  EXPECT_GT(outcomes[kRefused] + outcomes[kToldOfItsEnd], 20U);
  EXPECT_GT(outcomes[kWhole], kMost / 2);
}

}  // namespace
}  // namespace qzlog_catalog
