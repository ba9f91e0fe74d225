#include "qzlog/qz_exception.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace {
char* duplicate(const char* text) { return text == nullptr ? nullptr : strdup(text); }
}  // namespace

// The text is copied because throw sites pass the characters of temporaries.
qz_EXCEPTION_base::qz_EXCEPTION_base(const char* message, int code) noexcept
    : message_(duplicate(message)), code_(code) {}

qz_EXCEPTION_base::qz_EXCEPTION_base(const qz_EXCEPTION_base& other) noexcept
    : message_(duplicate(other.message_)), code_(other.code_) {}

qz_EXCEPTION_base& qz_EXCEPTION_base::operator=(const qz_EXCEPTION_base& other) noexcept {
  qz_EXCEPTION_base copy(other);
  std::swap(message_, copy.message_);
  code_ = copy.code_;
  return *this;
}

qz_EXCEPTION_base::~qz_EXCEPTION_base() { std::free(message_); }
