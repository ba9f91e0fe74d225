#include "foundation/itoa.h"

#include <charconv>

namespace {
constexpr int kMaxUnsignedDigits = 10;
}

void my_itoa(char* buffer, unsigned value) { *std::to_chars(buffer, buffer + kMaxUnsignedDigits, value).ptr = '\0'; }

void my_itoa(char* buffer, int value) {
  if (value < 0) {
    *buffer++ = '-';
    my_itoa(buffer, 0U - static_cast<unsigned>(value));
    return;
  }
  my_itoa(buffer, static_cast<unsigned>(value));
}
