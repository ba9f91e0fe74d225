#include "qzlog/qz_exception.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

#include "tests/support/support.h"

namespace {

using qz_test::AllocationFailure;
using qz_test::thrown;
using qz_test::thrown_by;

// Every class with its direct base.
#define QZ_EXCEPTION_CLASSES(X)                           \
  X(QZX_memory_alloc, qz_EXCEPTION_base)                  \
  X(QZX_runtime, qz_EXCEPTION_base)                       \
  X(QZX_index_out_of_bounds, QZX_runtime)                 \
  X(QZX_logging_all, qz_EXCEPTION_base)                   \
  X(QZX_logging_illegal_argument, QZX_logging_all)        \
  X(QZX_logging_invalid_log_level, QZX_logging_all)       \
  X(QZX_logging_index_out_of_bound, QZX_logging_all)      \
  X(QZX_logging_internal_error, QZX_logging_all)          \
  X(QZX_logging_misc, QZX_logging_all)                    \
  X(QZX_logging_attribute_not_found, QZX_logging_all)     \
  X(QZX_logging_attribute_type_mismatch, QZX_logging_all) \
  X(QZX_logging_entry_type_not_found, QZX_logging_all)    \
  X(QZX_logging_invalid_attribute_name, QZX_logging_all)  \
  X(QZX_logging_invalid_attribute_value, QZX_logging_all) \
  X(QZX_logging_invalid_message_string, QZX_logging_all)  \
  X(QZX_logging_missing_resource, QZX_logging_all)        \
  X(QZX_logging_invalid_definition, QZX_logging_all)      \
  X(QZX_logging_file_operation_failed, QZX_logging_all)

template <typename Handler, typename Thrown>
bool catches(const Thrown& thrown) {
  try {
    throw thrown;
  } catch (const Handler&) {
    return true;
  } catch (...) {
    return false;
  }
}

struct Handler {
  const char* name;
  const char* base;
};
constexpr Handler kHandlers[] = {
#define QZ_HANDLER(type, base) {#type, #base},
    QZ_EXCEPTION_CLASSES(QZ_HANDLER)
#undef QZ_HANDLER
};

/// Whether the class tree, as listed above, makes a handler for `handler` catch a `thrown`.
bool is_or_derives_from(std::string thrown, const std::string& handler) {
  while (thrown != handler) {
    const auto* row = std::begin(kHandlers);
    while (row != std::end(kHandlers) && row->name != thrown) ++row;
    if (row == std::end(kHandlers)) return false;
    thrown = row->base;
  }
  return true;
}

template <typename Thrown>
void expect_caught_by_its_ancestors_alone(const char* name) {
  const Thrown thrown("text");
#define QZ_EXPECT_CATCH(type, base) \
  EXPECT_EQ(catches<type>(thrown), is_or_derives_from(name, #type)) << name << " by " #type;
  QZ_EXCEPTION_CLASSES(QZ_EXPECT_CATCH)
#undef QZ_EXPECT_CATCH
  EXPECT_TRUE(catches<qz_EXCEPTION_base>(thrown)) << name;
}

TEST(Exceptions, EveryClass_CaughtByItsAncestorsAndNoOther) {
#define QZ_TEST_CLASS(type, base) expect_caught_by_its_ancestors_alone<type>(#type);
  QZ_EXCEPTION_CLASSES(QZ_TEST_CLASS)
#undef QZ_TEST_CLASS
}

TEST(Exceptions, EveryClass_AddsNoFieldAndNoVirtualFunction) {
#define QZ_TEST_CLASS(type, base)                                                            \
  static_assert(std::is_base_of_v<base, type> && sizeof(type) == sizeof(qz_EXCEPTION_base)); \
  static_assert(!std::is_polymorphic_v<type> && std::is_copy_constructible_v<type>);         \
  static_assert(std::is_default_constructible_v<type>);
  QZ_EXCEPTION_CLASSES(QZ_TEST_CLASS)
#undef QZ_TEST_CLASS
  static_assert(!std::is_polymorphic_v<qz_EXCEPTION_base>);
  SUCCEED();
}

TEST(Exceptions, EveryClass_CarriesTextAndCode){
#define QZ_TEST_CLASS(type, base)                                                  \
  {                                                                                \
    const type empty;                                                              \
    EXPECT_EQ(empty.get_message(), nullptr);                                       \
    EXPECT_EQ(empty.get_code(), 0);                                                \
    const type full("a text", -7);                                                 \
    EXPECT_STREQ(full.get_message(), "a text");                                    \
    EXPECT_EQ(full.get_code(), -7);                                                \
    EXPECT_EQ(thrown_by([] { throw type("thrown", 0); }), thrown<type>("thrown")); \
  }
    QZ_EXCEPTION_CLASSES(QZ_TEST_CLASS)
#undef QZ_TEST_CLASS
}

TEST(MemoryAlloc, CaughtAsBase_HasNullMessageAndCodeZero) {
  try {
    throw QZX_memory_alloc();
  } catch (const qz_EXCEPTION_base& caught) {
    EXPECT_EQ(caught.get_message(), nullptr);
    EXPECT_EQ(caught.get_code(), 0);
  }
}

TEST(MemoryAlloc, HandlerForLoggingAll_DoesNotCatchIt) { EXPECT_FALSE(catches<QZX_logging_all>(QZX_memory_alloc())); }

TEST(Runtime, HandlerForRuntime_CatchesIndexOutOfBounds) {
  EXPECT_TRUE(catches<QZX_runtime>(QZX_index_out_of_bounds()));
}

TEST(LoggingAll, HandlerForLoggingAll_CatchesOneSpellingOfIndexOutOfBound) {
  EXPECT_TRUE(catches<QZX_logging_all>(QZX_logging_index_out_of_bound()));
  EXPECT_FALSE(catches<QZX_logging_all>(QZX_index_out_of_bounds()));
}

// Throw sites pass the characters of strings that die before the exception leaves.
TEST(ExceptionMessage, TextOfATemporary_IsCopied) {
  const auto thrower = [] {
    std::string text = "built at run time, and long enough to live on the heap";
    struct Scribble {
      ~Scribble() { text.assign(text.size(), '#'); }
      std::string& text;
    } scribble{text};
    throw QZX_logging_misc(text.c_str(), 0);
  };
  EXPECT_EQ(thrown_by(thrower), thrown<QZX_logging_misc>("built at run time, and long enough to live on the heap"));
}

TEST(ExceptionMessage, Copy_HasATextOfItsOwn) {
  auto original = std::make_unique<QZX_runtime>("text", 3);
  const QZX_runtime copy(*original);
  EXPECT_NE(copy.get_message(), original->get_message());
  original.reset();
  EXPECT_STREQ(copy.get_message(), "text");
  EXPECT_EQ(copy.get_code(), 3);
}

TEST(ExceptionMessage, CopyOfNull_IsNull) {
  const QZX_runtime original(nullptr, 5);
  const QZX_runtime copy(original);
  EXPECT_EQ(copy.get_message(), nullptr);
  EXPECT_EQ(copy.get_code(), 5);
}

TEST(ExceptionMessage, Assignment_ReplacesTextAndCode) {
  const QZX_runtime texts[] = {QZX_runtime("one", 1), QZX_runtime(nullptr, 2), QZX_runtime("", 3)};
  for (const QZX_runtime& from : texts) {
    for (const QZX_runtime& to : texts) {
      QZX_runtime target(to);
      target = from;
      EXPECT_STREQ(target.get_message(), from.get_message());
      EXPECT_EQ(target.get_code(), from.get_code());
    }
  }
}

TEST(ExceptionMessage, SelfAssignment_KeepsTheText) {
  QZX_runtime exception("text", 1);
  const QZX_runtime& same = exception;
  exception = same;
  EXPECT_STREQ(exception.get_message(), "text");
}

TEST(ExceptionMessage, EmptyText_IsNotNull) { EXPECT_STREQ(QZX_runtime("").get_message(), ""); }

TEST(ExceptionMessage, NoMemoryForTheCopy_NullAndNothingThrown) {
  const char* message = "not null";
  int code = 0;
  {
    const AllocationFailure failure(1);
    const QZX_logging_misc exception("text", 4);
    message = exception.get_message();
    code = exception.get_code();
  }
  EXPECT_EQ(message, nullptr);
  EXPECT_EQ(code, 4);
}

}  // namespace
