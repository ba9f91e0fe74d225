#ifndef QZLOG_TESTS_SUPPORT_THROWS_EXACTLY_H
#define QZLOG_TESTS_SUPPORT_THROWS_EXACTLY_H

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <typeinfo>

#include "qzlog/qz_exception.h"

namespace qz_test {

inline std::string readable_name(const std::type_info& type) {
  const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr),
                                                    std::free);
  return name == nullptr ? type.name() : name.get();
}

inline std::string quoted_or_null(const char* text) {
  return text == nullptr ? "(null)" : "\"" + std::string(text) + "\"";
}

/// Whether `operation` throws an exception whose class is `Exception` itself, not one derived from it, with exactly
/// `message` (nullptr: a null message) and the code 0. The exception classes are not polymorphic, so the class that was
/// thrown is asked of the runtime.
template <typename Exception, typename Operation>
testing::AssertionResult ThrowsExactly(Operation&& operation, const char* message) {
  const std::string wanted = readable_name(typeid(Exception)) + " " + quoted_or_null(message);
  try {
    operation();
  } catch (const qz_EXCEPTION_base& thrown) {
    const std::type_info& type = *abi::__cxa_current_exception_type();
    const std::string found = readable_name(type) + " " + quoted_or_null(thrown.get_message());
    if (type == typeid(Exception) && found == wanted && thrown.get_code() == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "threw " << found << " code " << thrown.get_code() << ", not " << wanted;
  } catch (...) {
    return testing::AssertionFailure() << "threw a " << readable_name(*abi::__cxa_current_exception_type()) << ", not "
                                       << wanted;
  }
  return testing::AssertionFailure() << "threw nothing, not " << wanted;
}

template <typename Operation>
testing::AssertionResult ThrowsMemoryAlloc(Operation&& operation) {
  return ThrowsExactly<QZX_memory_alloc>(operation, nullptr);
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_THROWS_EXACTLY_H
