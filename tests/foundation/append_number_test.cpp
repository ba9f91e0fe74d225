#include "foundation/append_number.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <bit>
#include <cfenv>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <thread>

#include "foundation/thread_blocks.h"
#include "tests/support/support.h"

#if QZLOG_HAS_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

using namespace qzlog;

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of support.h

template <typename Number>
std::string integer(Number value) {
  TextBuffer text;
  text.append('<');
  append_integer(text, value);
  text.append('>');
  return std::string(text.data(), text.size());
}

std::string fixed(double value) {
  TextBuffer text;
  append_fixed(text, value);
  return std::string(text.data(), text.size());
}

std::string printed(const char* format, double value) {
  char text[512];
  const int length = std::snprintf(text, sizeof(text), format, value);
  return std::string(text, static_cast<std::size_t>(length));
}

// ---- integers ----

TEST(AppendInteger, Extremes_AsPrintf) {
  EXPECT_EQ(integer(0), "<0>");
  EXPECT_EQ(integer(-1), "<-1>");
  EXPECT_EQ(integer(INT_MAX), "<2147483647>");
  EXPECT_EQ(integer(INT_MIN), "<-2147483648>");
  EXPECT_EQ(integer(INT_MIN + 1), "<-2147483647>");
  EXPECT_EQ(integer(0U), "<0>");
  EXPECT_EQ(integer(UINT_MAX), "<4294967295>");
  EXPECT_EQ(integer(2147483648U), "<2147483648>");
}

TEST(AppendInteger, EveryNumberOfDigits_AsPrintf) {
  for (unsigned long long power = 1; power <= 10000000000ULL; power *= 10) {
    for (unsigned long long value = power < 3 ? 0 : power - 3; value < power + 3; ++value) {
      const auto number = static_cast<unsigned>(value);
      const auto negative = static_cast<int>(0U - number);
      EXPECT_EQ(integer(number), "<" + std::to_string(number) + ">");
      EXPECT_EQ(integer(negative), "<" + std::to_string(negative) + ">");
    }
  }
}

TEST(AppendInteger, RandomNumbers_AsPrintf) {
  SeededRandom random;
  for (int i = 0; i < 100000; ++i) {
    const auto value = static_cast<unsigned>(random.between(0, (1LL << random.between(1, 32)) - 1));
    ASSERT_EQ(integer(value), "<" + std::to_string(value) + ">");
    ASSERT_EQ(integer(static_cast<int>(value)), "<" + std::to_string(static_cast<int>(value)) + ">");
  }
}

TEST(AppendInteger, AtEveryPlaceOfAGrowingText_OnlyItsDigits) {
  TextBuffer text;
  std::string wanted;
  for (unsigned i = 0; i < 3000; ++i) {
    append_integer(text, i * 1234567);
    wanted += std::to_string(i * 1234567);
    append_integer(text, -static_cast<int>(i));
    wanted += std::to_string(-static_cast<int>(i));
  }
  EXPECT_EQ(std::string(text.data(), text.size()), wanted);
}

// ---- fixed ----

double double_of(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

double random_double(SeededRandom& random) {
  const auto bits = static_cast<std::uint64_t>(random.between(LLONG_MIN, LLONG_MAX));
  const auto small = static_cast<double>(random.between(-1000000000, 1000000000));
  switch (random.between(0, 6)) {
    case 0:  // any bits: huge, tiny, infinite and not a number
      return double_of(bits);
    case 1:  // denormal
      return double_of(bits & 0x800FFFFFFFFFFFFFU);
    case 2:  // decimals, some of which are cut in the middle
      return small / 1000000;
    case 3:  // ties: odd multiples of half of the last decimal that doubles have exactly
      return small / 128;
    case 4:
      return small / 10000000;
    case 5:
      return small + 0.5;
    default:
      return std::ldexp(small, static_cast<int>(random.between(-60, 60)));
  }
}

const double kSpecial[] = {0.0,
                           -0.0,
                           0.5,
                           -0.5,
                           1.5,
                           2.5,
                           0.0000005,
                           -0.0000005,
                           0.0000015,
                           0.00000049999999999999999,
                           0.00000050000000000000001,
                           0.9999995,
                           0.99999949999999999,
                           999999.9999995,
                           0.0078125,
                           0.00390625,
                           0.001953125,
                           0.00048828125,
                           0.000030517578125,
                           0.00000095367431640625,
                           1e15,
                           1e16,
                           1e22,
                           1e23,
                           9007199254740993.0,
                           DBL_MAX,
                           -DBL_MAX,
                           DBL_MIN,
                           DBL_EPSILON,
                           std::numeric_limits<double>::denorm_min(),
                           -std::numeric_limits<double>::denorm_min(),
                           std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN(),
                           -std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::signaling_NaN()};

void expect_as_printf(double value) { ASSERT_EQ(fixed(value), printed("%f", value)) << printed("%a", value); }

void expect_special_and_random_as_printf(SeededRandom& random, int count) {
  for (const double value : kSpecial) expect_as_printf(value);
  for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) expect_as_printf(random_double(random));
}

TEST(AppendFixed, SpecialValues_Literally) {
  EXPECT_EQ(fixed(0.0), "0.000000");
  EXPECT_EQ(fixed(-0.0), "-0.000000");
  EXPECT_EQ(fixed(0.875), "0.875000");
  EXPECT_EQ(fixed(-1234.5678), "-1234.567800");
  EXPECT_EQ(fixed(0.0078125), "0.007812");
  EXPECT_EQ(fixed(0.0234375), "0.023438");
  EXPECT_EQ(fixed(1e-300), "0.000000");
  EXPECT_EQ(fixed(-1e-300), "-0.000000");
  EXPECT_EQ(fixed(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(fixed(-std::numeric_limits<double>::infinity()), "-inf");
  EXPECT_EQ(fixed(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(fixed(DBL_MAX).size(), 316U);
  EXPECT_EQ(fixed(-DBL_MAX).size(), 317U);
}

TEST(AppendFixed, MillionRandomValues_AsPrintf) {
  SeededRandom random;
  expect_special_and_random_as_printf(random, 1000000);
}

TEST(AppendFixed, EveryRoundingMode_AsPrintf) {
  struct KeepRounding {
    ~KeepRounding() { std::fesetround(mode); }
    const int mode = std::fegetround();
  } keep;
  SeededRandom random;
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
    ASSERT_EQ(std::fesetround(mode), 0);
    SCOPED_TRACE(mode);
    expect_special_and_random_as_printf(random, 250000);
  }
}

TEST(AppendFixed, RoundingModeOfTheThread_ThatThreadsTextsOnly) {
  EXPECT_EQ(fixed(0.0000001), "0.000000");
  std::thread([] {
    std::fesetround(FE_UPWARD);
    EXPECT_EQ(fixed(0.0000001), "0.000001");
  }).join();
  EXPECT_EQ(fixed(0.0000001), "0.000000");
}

TEST(AppendFixed, AtEveryPlaceOfAGrowingText_OnlyTheNumber) {
  TextBuffer text;
  std::string wanted;
  for (int i = 0; i < 500; ++i) {
    const double value = i % 50 == 0 ? DBL_MAX / (i + 1) : i / 7.0;
    append_fixed(text, value);
    wanted += printed("%f", value);
    text.append('|');
    wanted += '|';
  }
  EXPECT_EQ(std::string(text.data(), text.size()), wanted);
}

TEST(AppendFixed, NoMemory_MemoryAllocAndTheTextBeforeItStays) {
  const std::string full(1020, 'f');
  for (const double value : {1.5, -1.5, 1e300, 1e-300, -4294967296.0}) {
    TextBuffer text;
    text.append(full.data(), full.size());
    EXPECT_EQ(thrown_by([&] {
                const AllocationFailure failure(1);
                append_fixed(text, value);
              }),
              kNoMemory)
        << value;
    EXPECT_EQ(std::string(text.data(), full.size()), full);
  }
}

// ---- locales of the C library ----

struct DecimalPoint {
  const char* name;
  const char* code;
  const char* text;
};

/// The C library does not free the folders that it reads from LOCPATH.
#if QZLOG_HAS_ADDRESS_SANITIZER
using LeakByTheCLibrary = __lsan::ScopedDisabler;
#else
struct LeakByTheCLibrary {
  LeakByTheCLibrary() {}  // NOLINT(modernize-use-equals-default): used for what its construction does
};
#endif

/// Compiles a locale with this decimal point into a folder of the test's own and makes the C library look there.
class BuiltLocale {
 public:
  explicit BuiltLocale(const DecimalPoint& point) : path_("LOCPATH", folder_.path()) {
    folder_.write("source", std::string("LC_NUMERIC\ndecimal_point \"<") + point.code +
                                ">\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    // Of the machine on which an emulator runs, whose byte order may be another one.
    const std::string order = std::endian::native == std::endian::big ? "--big-endian" : "--little-endian";
    const std::string command =
        "cd '" + folder_.path() + "' && localedef -c " + order + " -i source -f UTF-8 ./xx_XX.UTF-8 >log 2>&1";
    // It warns of the categories that are not there; what counts is whether the locale is.
    static_cast<void>(std::system(command.c_str()));
    const LeakByTheCLibrary leak;
    locale_ = newlocale(LC_NUMERIC_MASK, kName, nullptr);
  }
  ~BuiltLocale() {
    if (is_built()) freelocale(locale_);
  }
  BuiltLocale(const BuiltLocale&) = delete;
  BuiltLocale& operator=(const BuiltLocale&) = delete;

  static bool use_in_process() {
    const LeakByTheCLibrary leak;
    return std::setlocale(LC_NUMERIC, kName) != nullptr;
  }
  bool is_built() const { return locale_ != locale_t{}; }
  locale_t locale() const { return locale_; }

 private:
  static constexpr const char* kName = "xx_XX.UTF-8";

  TempDir folder_;
  SetEnv path_;
  locale_t locale_ = locale_t{};
};

class FixedInLocale : public testing::TestWithParam<DecimalPoint> {
 protected:
  void SetUp() override {
    if (!built_.is_built()) GTEST_SKIP() << "no locale can be made here";
  }
  ~FixedInLocale() override { std::setlocale(LC_NUMERIC, "C"); }

  const BuiltLocale built_{GetParam()};
  const std::string text_ = std::string("-1234") + GetParam().text + "500000";
};

TEST_P(FixedInLocale, NumericLocaleOfTheProcess_AsPrintf) {
  ASSERT_TRUE(BuiltLocale::use_in_process());
  EXPECT_EQ(fixed(-1234.5), text_);
  SeededRandom random;
  expect_special_and_random_as_printf(random, 20000);
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(fixed(-1234.5), "-1234.500000");
}

TEST_P(FixedInLocale, NumericLocaleOfTheThread_ThatThreadsTextsOnly) {
  std::thread([&] {
    uselocale(built_.locale());
    EXPECT_EQ(fixed(-1234.5), text_);
    uselocale(LC_GLOBAL_LOCALE);
    EXPECT_EQ(fixed(-1234.5), "-1234.500000");
  }).join();
  EXPECT_EQ(fixed(-1234.5), "-1234.500000");
}

INSTANTIATE_TEST_SUITE_P(DecimalPoints, FixedInLocale,
                         testing::Values(DecimalPoint{"Comma", "U002C", ","},
                                         DecimalPoint{"TwoBytes", "U066B", "\xD9\xAB"}),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
