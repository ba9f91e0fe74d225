#include "foundation/itoa.h"

using namespace qzlog;

const char qzlog::kDigitPairs[201] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546474849"
    "5051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899";

void my_itoa(char* buffer, unsigned value) {
  char* const end = buffer + count_digits(value);
  write_integer(end, value);
  *end = '\0';
}

void my_itoa(char* buffer, int value) {
  if (value < 0) *buffer++ = '-';
  my_itoa(buffer, value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value));
}
