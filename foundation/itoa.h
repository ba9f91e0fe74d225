#ifndef QZLOG_FOUNDATION_ITOA_H
#define QZLOG_FOUNDATION_ITOA_H

/// Write decimal digits and a terminator. `buffer` must hold 11 bytes for unsigned values, 12 for signed ones.
void my_itoa(char* buffer, unsigned value);
void my_itoa(char* buffer, int value);

#endif  // QZLOG_FOUNDATION_ITOA_H
