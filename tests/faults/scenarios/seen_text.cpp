#include "tests/faults/scenarios/seen_text.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

void SeenText::add(const char* text) {
  const std::size_t length = std::strlen(text);
  if (length > sizeof bytes_ - size_) std::abort();
  std::memcpy(bytes_ + size_, text, length);
  size_ += length;
}

void SeenText::add_number(long long number) {
  char digits[32];
  std::snprintf(digits, sizeof digits, " %lld", number);
  add(digits);
}

void SeenText::print() const {
  for (std::size_t written = 0; written < size_;) {
    const ssize_t count = write(STDOUT_FILENO, bytes_ + written, size_ - written);
    if (count <= 0) std::abort();
    written += static_cast<std::size_t>(count);
  }
}
