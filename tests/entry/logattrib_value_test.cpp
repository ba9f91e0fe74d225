#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "entry/logattrib.h"
#include "tests/support/support.h"

using namespace qzlog;

namespace {

using qz_test::FailEveryAllocation;
using qz_test::TempDir;
using qz_test::TimeZone;

using Value = std::unique_ptr<_qz_LOG_type_base>;

constexpr const char* kText =
    "a text that is too long to be kept inside a string object, or in the memory that threads keep for texts";

qz_Time sample_time(bool gmt) {
  qz_Time time = qz_Time::from_unix_seconds(1795248930);
  if (!gmt) time.GMT_to_local();
  return time;
}

template <typename T>
T sample() {
  if constexpr (std::is_same_v<T, bool>) {
    return true;
  } else if constexpr (std::is_same_v<T, qz_String> || std::is_same_v<T, _qz_LOG_ustring>) {
    return T(kText);
  } else if constexpr (std::is_same_v<T, qz_Time>) {
    return sample_time(true);
  } else {
    return static_cast<T>(42);
  }
}

template <unsigned char code>
Value make_value() {
  return std::make_unique<StoredValue<code>>(sample<typename ValueOf<code>::type>());
}

template <std::size_t... index>
std::vector<Value> values_of(std::index_sequence<index...> /*codes*/) {
  std::vector<Value> values;
  (values.push_back(make_value<static_cast<unsigned char>(index + 1)>()), ...);
  return values;
}

/// One value of each of the 24 types, in code order.
std::vector<Value> all_values() { return values_of(std::make_index_sequence<24>()); }

std::string text_of_sample(unsigned code) {
  if (code == 1) return "1";
  if (code <= 7) return "42";
  if (code == 8) return "42.000000";
  return code >= 21 && code <= 23 ? "2026-11-21 08:15:30 GMT" : kText;
}

std::string printed(const _qz_LOG_type_base& value) {
  char buffer[512] = "";
  value.print_out(buffer);
  return buffer;
}

template <unsigned char code, typename T>
constexpr bool holds = std::is_same_v<typename ValueOf<code>::type, T>;

TEST(AttributeValue, TypesOfTheCodes_AsTheTable) {
  static_assert(holds<1, bool> && holds<2, unsigned char> && holds<3, char> && holds<4, unsigned short>);
  static_assert(holds<5, short> && holds<6, unsigned int> && holds<7, int> && holds<8, double>);
  static_assert(holds<9, qz_String> && holds<10, qz_String> && holds<11, qz_String> && holds<12, qz_String>);
  static_assert(holds<13, qz_String> && holds<14, qz_String> && holds<24, qz_String>);
  static_assert(holds<15, _qz_LOG_ustring> && holds<16, _qz_LOG_ustring> && holds<17, _qz_LOG_ustring>);
  static_assert(holds<18, _qz_LOG_ustring> && holds<19, _qz_LOG_ustring> && holds<20, _qz_LOG_ustring>);
  static_assert(holds<21, qz_Time> && holds<22, qz_Time> && holds<23, qz_Time>);
  static_assert(sizeof(unsigned short) == 2 && sizeof(unsigned) == 4 && sizeof(double) == 8);
  static_assert(std::has_virtual_destructor_v<_qz_LOG_type_base> && std::is_abstract_v<_qz_LOG_type_base>);
  SUCCEED();
}

TEST(AttributeValue, EveryType_KnowsItsCode) {
  unsigned code = 1;
  for (const Value& value : all_values()) EXPECT_EQ(value->get_type(), code++);
  EXPECT_EQ(code, 25U);
}

TEST(AttributeValue, EveryType_PrintsIntoABuffer) {
  for (const Value& value : all_values()) EXPECT_EQ(printed(*value), text_of_sample(value->get_type()));
}

TEST(AttributeValue, Print_AppendsToTheBuffer) {
  char buffer[64] = "a";
  const StoredValue<TypeSInt4> number(-7);
  const StoredValue<TypeSInt1> byte(static_cast<char>(-8));
  number.print_out(buffer);
  byte.print_out(buffer);
  EXPECT_STREQ(buffer, "a-7-8");
}

TEST(AttributeValue, EveryType_PrintsToAStream) {
  const TempDir folder;
  for (const Value& value : all_values()) {
    std::FILE* file = std::fopen(folder.path("out").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    value->print_type(file);
    std::fclose(file);
    EXPECT_EQ(folder.read("out"), text_of_sample(value->get_type()));
  }
}

TEST(AttributeValue, NullStream_PrintsNothing) {
  for (const Value& value : all_values()) value->print_type(nullptr);
  SUCCEED();
}

TEST(AttributeValue, LocalTime_PrintedInGmt) {
  const TimeZone zone("Australia/Lord_Howe");
  const StoredValue<TypeTimestamp> time(sample_time(false));
  EXPECT_EQ(printed(time), "2026-11-21 08:15:30 GMT");
}

template <unsigned char code, typename T>
void expect_value_taken_over(const T& from, const T& to) {
  StoredValue<code> source(from);
  StoredValue<code> target(to);
  const std::string text = printed(source);
  EXPECT_NE(printed(target), text);
  target.get_and_set(&source);
  EXPECT_EQ(printed(target), text) << unsigned{code};
  EXPECT_EQ(printed(source), text) << unsigned{code};
  EXPECT_EQ(target.get_type(), code);
  target.get_and_set(&target);
  EXPECT_EQ(printed(target), text) << "itself, " << unsigned{code};
}

TEST(AttributeValueGetAndSet, EveryKindOfValue_TakenOver) {
  expect_value_taken_over<TypeBool>(true, false);
  expect_value_taken_over<TypeUInt1, unsigned char>(255, 0);
  expect_value_taken_over<TypeSInt1>(static_cast<char>(-128), static_cast<char>(127));
  expect_value_taken_over<TypeUInt2, unsigned short>(65535, 1);
  expect_value_taken_over<TypeSInt2, short>(-32768, 1);
  expect_value_taken_over<TypeUInt4>(4294967295U, 0U);
  expect_value_taken_over<TypeSInt4>(-5, 5);
  expect_value_taken_over<TypeFloat>(2.5, -2.5);
  expect_value_taken_over<TypeChar32>(qz_String(kText), qz_String("old"));
  expect_value_taken_over<TypeChar2K>(qz_String("new"), qz_String(kText));
  expect_value_taken_over<TypeMBChar32>(_qz_LOG_ustring(kText), _qz_LOG_ustring("old"));
  expect_value_taken_over<TypeMBChar2K>(_qz_LOG_ustring(), _qz_LOG_ustring("old"));
  expect_value_taken_over<TypeDate>(sample_time(true), qz_Time());
  expect_value_taken_over<TypeGUID>(qz_String("guid"), qz_String());
}

TEST(AttributeValueGetAndSet, SourceDeletedAfterwards_TextIsACopy) {
  StoredValue<TypeMBChar64> target{_qz_LOG_ustring()};
  {
    StoredValue<TypeMBChar64> source{_qz_LOG_ustring(kText)};
    target.get_and_set(&source);
  }
  EXPECT_EQ(printed(target), kText);
}

TEST(AttributeValueGetAndSet, LocalTime_KeepsItsMode) {
  const TimeZone zone("Australia/Lord_Howe");
  StoredValue<TypeTime> source(sample_time(false));
  StoredValue<TypeTime> target{qz_Time()};
  target.get_and_set(&source);
  EXPECT_FALSE(target.value.is_GMT_time_mode());
  EXPECT_EQ(target.value.get_hour(), 19);
}

TEST(AttributeValueGetAndSet, NoMemory_ThrowsAndTheValueIsKept) {
  { const _qz_LOG_ustring first("from now on the thread keeps memory"); }
  StoredValue<TypeChar256> source{qz_String(kText)};
  StoredValue<TypeChar256> target{qz_String("old")};
  EXPECT_GE(FailEveryAllocation([&] { target.get_and_set(&source); }, [&] { EXPECT_EQ(printed(target), "old"); }), 1U);
  StoredValue<TypeMBChar256> wide_source{_qz_LOG_ustring(kText)};
  StoredValue<TypeMBChar256> wide_target{_qz_LOG_ustring("old")};
  EXPECT_GE(FailEveryAllocation([&] { wide_target.get_and_set(&wide_source); },
                                [&] { EXPECT_EQ(printed(wide_target), "old"); }),
            1U);
}

/// A value built in storage of its own.
class Built {
 public:
  Built() = default;
  ~Built() {
    if (value_ != nullptr) value_->~_qz_LOG_type_base();
  }
  Built(const Built&) = delete;
  Built& operator=(const Built&) = delete;

  _qz_LOG_type_base& copy(const _qz_LOG_type_base& source) {
    copy_value(source, storage_);
    return adopt();
  }
  _qz_LOG_type_base& move(_qz_LOG_type_base& source) {
    move_value(source, storage_);
    return adopt();
  }

 private:
  _qz_LOG_type_base& adopt() {
    value_ = std::launder(reinterpret_cast<_qz_LOG_type_base*>(storage_));
    return *value_;
  }

  alignas(std::max_align_t) unsigned char storage_[kStoredSize];
  _qz_LOG_type_base* value_ = nullptr;
};

TEST(CopyValue, EveryType_SameCodeAndTextAndAnObjectOfItsOwn) {
  for (Value& value : all_values()) {
    const unsigned code = value->get_type();
    Built built;
    const _qz_LOG_type_base& copy = built.copy(*value);
    value.reset();
    EXPECT_EQ(copy.get_type(), code);
    EXPECT_EQ(printed(copy), text_of_sample(code));
  }
}

TEST(CopyValue, UstringWithoutText_CopiesAsNoText) {
  const StoredValue<TypeMBChar32> value{_qz_LOG_ustring(nullptr)};
  Built built;
  EXPECT_EQ(static_cast<StoredValue<TypeMBChar32>&>(built.copy(value)).value.data, nullptr);
}

TEST(CopyValue, NoMemory_ThrowsAndLeavesTheOriginal) {
  for (const Value& value : all_values()) {
    const auto unchanged = [&] { EXPECT_EQ(printed(*value), text_of_sample(value->get_type())); };
    const bool is_text = value->get_type() >= TypeChar32 && value->get_type() <= TypeMBChar2K;
    EXPECT_GE(FailEveryAllocation([&] { Built().copy(*value); }, unchanged), is_text ? 1U : 0U);
  }
}

TEST(MoveValue, EveryType_SameCodeAndText) {
  for (Value& value : all_values()) {
    const unsigned code = value->get_type();
    Built built;
    const _qz_LOG_type_base& moved = built.move(*value);
    EXPECT_EQ(moved.get_type(), code);
    EXPECT_EQ(printed(moved), text_of_sample(code));
  }
}

}  // namespace
