#include <gtest/gtest.h>

#include <csignal>
#include <exception>
#include <stdexcept>

#include "qzlog/qz_exception.h"

namespace qz_test {
namespace {

template <class Exception>
void throw_it(const Exception& exception) {
  throw exception;
}

/// Nobody catches it.
template <class Exception>
void throw_uncaught(const Exception& exception) noexcept {
  throw_it(exception);  // NOLINT(bugprone-exception-escape)
}

void install() {
  qz_LOG_install_terminate_text();
  qz_LOG_install_terminate_text();
}

class TerminateTextDeathTest : public testing::Test {
 protected:
  TerminateTextDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }
};

TEST_F(TerminateTextDeathTest, UncaughtException_ClassAndTextAreTold) {
  EXPECT_EXIT(
      {
        install();
        throw_uncaught(QZX_logging_misc("the text\n", 0));
      },
      testing::KilledBySignal(SIGABRT), "^qzlog: nobody caught QZX_logging_misc: the text\n");
}

TEST_F(TerminateTextDeathTest, ExceptionWithoutText_ClassIsTold) {
  EXPECT_EXIT(
      {
        install();
        throw_uncaught(QZX_memory_alloc());
      },
      testing::KilledBySignal(SIGABRT), "^qzlog: nobody caught QZX_memory_alloc\n");
}

TEST_F(TerminateTextDeathTest, ExceptionsOfOthersAndNone_AreLeftToTheFormerHandler) {
  const auto with_handler = [](void (*end)()) {
    std::set_terminate([] { _exit(7); });
    install();
    end();
  };
  EXPECT_EXIT(with_handler([] { throw_uncaught(std::runtime_error("theirs")); }), testing::ExitedWithCode(7), "^$");
  EXPECT_EXIT(with_handler([] { std::terminate(); }), testing::ExitedWithCode(7), "^$");
  EXPECT_EXIT(with_handler([] { throw_uncaught(QZX_logging_misc("ours")); }), testing::ExitedWithCode(7),
              "^qzlog: nobody caught QZX_logging_misc: ours\n$");
}

}  // namespace
}  // namespace qz_test
