#include "foundation/itoa.h"

#include <cstring>

namespace {

// "00", "01" ... "99": two digits are written at a time.
constexpr char kDigitPairs[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546474849"
    "5051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899";

char* write_pair(char* end, unsigned pair) {
  end -= 2;
  std::memcpy(end, kDigitPairs + 2 * pair, 2);
  return end;
}

template <typename Integer>
void write_terminated(char* buffer, Integer value) {
  char text[kMaxIntegerText];
  char* const end = text + kMaxIntegerText;
  const char* const begin = qz_write_integer(end, value);
  const auto length = static_cast<std::size_t>(end - begin);
  std::memcpy(buffer, begin, length);
  buffer[length] = '\0';
}

}  // namespace

char* qz_write_integer(char* end, unsigned int value) {
  while (value >= 100) {
    end = write_pair(end, value % 100);
    value /= 100;
  }
  if (value >= 10) return write_pair(end, value);
  *--end = static_cast<char>('0' + value);
  return end;
}

char* qz_write_integer(char* end, int value) {
  if (value >= 0) return qz_write_integer(end, static_cast<unsigned>(value));
  end = qz_write_integer(end, 0U - static_cast<unsigned>(value));
  *--end = '-';
  return end;
}

void my_itoa(char* buffer, unsigned value) { write_terminated(buffer, value); }

void my_itoa(char* buffer, int value) { write_terminated(buffer, value); }
