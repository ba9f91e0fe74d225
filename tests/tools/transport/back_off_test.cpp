#include "tools/transport/back_off.h"

#include <gtest/gtest.h>

namespace qzlog_tool {
namespace {

using Milliseconds = std::chrono::milliseconds;

TEST(BackOff, Times_DoubleUpToTheLongestAndVary) {
  BackOff back_off({Milliseconds(100), Milliseconds(500)}, 1);
  for (const int due : {100, 200, 400, 500, 500}) {
    const Milliseconds time = back_off.next();
    EXPECT_GE(time, Milliseconds(due / 2));
    EXPECT_LE(time, Milliseconds(due));
  }
  back_off.reset();
  EXPECT_LE(back_off.next(), Milliseconds(100));
}

}  // namespace
}  // namespace qzlog_tool
