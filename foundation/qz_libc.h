#ifndef QZLOG_FOUNDATION_QZ_LIBC_H
#define QZLOG_FOUNDATION_QZ_LIBC_H

#include <cstddef>
#include <cstdio>
#include <cstring>

/// The system library as this library calls it: same arguments and results as the functions of the same name, unless
/// said otherwise.
inline std::size_t QZ_strlen(const char* text) { return std::strlen(text); }
inline int QZ_strcmp(const char* left, const char* right) { return std::strcmp(left, right); }
int QZ_strncmp(const char* left, const char* right, std::size_t count);
char* QZ_strcpy(char* target, const char* source);
char* QZ_strncpy(char* target, const char* source, std::size_t count);
inline void* QZ_memcpy(void* target, const void* source, std::size_t count) {
  return std::memcpy(target, source, count);
}
int QZ_sprintf(char* target, const char* format, ...) __attribute__((format(printf, 2, 3)));
char* QZ_getenv(const char* name);
/// Keeps its position between calls like strtok, but for each thread by itself.
char* QZ_strtok(char* text, const char* delimiters);

/// A heap copy to be released with QZ_free; null when memory is exhausted or `text` is null.
char* QZ_strdup(const char* text);
void QZ_free(void* memory);
void QZ_bzero(void* memory, unsigned count);

/// The file is closed in programs that the process becomes or starts (O_CLOEXEC).
std::FILE* QZ_fopen(const char* path, const char* mode);
int QZ_fclose(std::FILE* file);
std::size_t QZ_fread(void* target, std::size_t size, std::size_t count, std::FILE* file);
std::size_t QZ_fwrite(const void* source, std::size_t size, std::size_t count, std::FILE* file);
/// Offsets have 64 bits on every host.
int QZ_fseek(std::FILE* file, long long offset, int origin);
long long QZ_ftell(std::FILE* file);
int QZ_feof(std::FILE* file);
int QZ_fflush(std::FILE* file);

/// The value of the leading decimal digits: 0 without digits, 4294967295 on overflow.
unsigned QZ_strto4u(const char* text);
/// The same for hexadecimal digits after an optional "0x" or "0X".
unsigned QZ_hexto4u(const char* text);

#endif  // QZLOG_FOUNDATION_QZ_LIBC_H
