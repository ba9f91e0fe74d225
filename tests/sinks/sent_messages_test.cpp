#include "sinks/sent_messages.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "tests/support/seeded_random.h"

namespace {

using namespace qzlog;

TEST(SentMessages, RandomNumbersOfBytes_GiveThoseThatHaveOneOfTheLast) {
  qz_test::SeededRandom random;
  SentMessages sent;
  sent.reserve();
  std::deque<SentMessage> all;
  for (unsigned number = 0; number < 3 * SentMessages::kMost; ++number) {
    all.push_back({number, 1, 0, 1 + random.below(100)});
    sent.add(all.back());
    if (all.size() > SentMessages::kMost) all.pop_front();
    if (!random.one_in(200)) continue;
    const std::size_t bytes = random.below(2000);
    std::vector<unsigned> expected;
    std::size_t behind = 0;
    for (auto message = all.rbegin(); message != all.rend() && behind < bytes; ++message) {
      expected.insert(expected.begin(), message->id);
      behind += message->bytes;
    }
    std::vector<unsigned> found;
    sent.for_each_in_last(bytes, [&](const SentMessage& message) { found.push_back(message.id); });
    ASSERT_EQ(found, expected) << bytes;
  }
  sent.clear();
  sent.for_each_in_last(1000, [](const SentMessage&) { FAIL(); });
}

}  // namespace
