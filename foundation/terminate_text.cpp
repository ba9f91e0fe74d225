#include <cxxabi.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <typeinfo>

#include "qzlog/qz_exception.h"

namespace {

std::atomic<std::terminate_handler> former_handler{nullptr};

struct FreeDeleter {
  void operator()(char* text) const { std::free(text); }
};

/// The name of the class of the exception that is handled.
std::string class_name() {
  const char* const name = abi::__cxa_current_exception_type()->name();
  int status = 0;
  const std::unique_ptr<char, FreeDeleter> readable(abi::__cxa_demangle(name, nullptr, nullptr, &status));
  return readable != nullptr ? readable.get() : name;
}

/// With one call, so that other threads write before or behind it. What cannot be written cannot be told either.
void tell(const qz_EXCEPTION_base& exception) {
  const char* const message = exception.get_message();
  std::string line = "qzlog: nobody caught " + class_name() + (message != nullptr ? ": " : "");
  if (message != nullptr) line += message;
  while (line.back() == '\n') line.pop_back();
  line += '\n';
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

[[noreturn]] void tell_and_terminate() {
  if (const std::exception_ptr thrown = std::current_exception(); thrown != nullptr) {
    try {
      std::rethrow_exception(thrown);
    } catch (const qz_EXCEPTION_base& exception) {
      tell(exception);
    } catch (...) {  // the former handler tells of others
    }
  }
  if (const std::terminate_handler former = former_handler) former();
  std::abort();
}

}  // namespace

void qz_LOG_install_terminate_text() noexcept {
  const std::terminate_handler former = std::set_terminate(tell_and_terminate);
  if (former != tell_and_terminate) former_handler = former;
}
