#ifndef QZLOG_TESTS_SUPPORT_THROWN_BY_H
#define QZLOG_TESTS_SUPPORT_THROWN_BY_H

#include <cxxabi.h>

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

/// "nothing", or what `operation` throws: QZX_logging_misc "text", with the code when it is not 0. The exception
/// classes are not polymorphic, so the class itself, not one that it is derived from, is asked of the runtime. Of
/// exceptions of others the class alone.
template <typename Operation>
std::string thrown_by(Operation&& operation) {
  try {
    operation();
  } catch (const qz_EXCEPTION_base& thrown) {
    const std::string code = thrown.get_code() == 0 ? "" : " code " + std::to_string(thrown.get_code());
    return readable_name(*abi::__cxa_current_exception_type()) + " " + quoted_or_null(thrown.get_message()) + code;
  } catch (...) {
    return readable_name(*abi::__cxa_current_exception_type());
  }
  return "nothing";
}

/// What thrown_by() says of the class with this text, null for a null message, and the code 0.
template <typename Exception>
std::string thrown(const char* message) {
  return readable_name(typeid(Exception)) + " " + quoted_or_null(message);
}
template <typename Exception>
std::string thrown(const std::string& message) {
  return thrown<Exception>(message.c_str());
}

inline constexpr const char* kNoMemory = "QZX_memory_alloc (null)";

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_THROWN_BY_H
