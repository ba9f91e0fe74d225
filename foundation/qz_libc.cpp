#include "foundation/qz_libc.h"

#include <charconv>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

thread_local char* strtok_position = nullptr;

unsigned leading_number(const char* text, int base) {
  unsigned value = 0;
  const auto result = std::from_chars(text, text + std::strlen(text), value, base);
  if (result.ec == std::errc::result_out_of_range) return std::numeric_limits<unsigned>::max();
  return value;
}

bool has_hexadecimal_prefix(const char* text) { return text[0] == '0' && (text[1] == 'x' || text[1] == 'X'); }

}  // namespace

int QZ_strncmp(const char* left, const char* right, std::size_t count) { return std::strncmp(left, right, count); }

char* QZ_strcpy(char* target, const char* source) { return std::strcpy(target, source); }

char* QZ_strncpy(char* target, const char* source, std::size_t count) { return std::strncpy(target, source, count); }

int QZ_sprintf(char* target, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vsprintf(target, format, arguments);
  va_end(arguments);
  return written;
}

char* QZ_getenv(const char* name) { return std::getenv(name); }

char* QZ_strtok(char* text, const char* delimiters) { return strtok_r(text, delimiters, &strtok_position); }

char* QZ_strdup(const char* text) { return text == nullptr ? nullptr : strdup(text); }

void QZ_free(void* memory) { std::free(memory); }

void QZ_bzero(void* memory, unsigned count) { std::memset(memory, 0, count); }

// "e": what a program that is started meanwhile does not need to have.
std::FILE* QZ_fopen(const char* path, const char* mode) {
  char own_mode[8];
  const int length = std::snprintf(own_mode, sizeof(own_mode), "%se", mode);
  return std::fopen(path, length < static_cast<int>(sizeof(own_mode)) ? own_mode : mode);
}

int QZ_fclose(std::FILE* file) { return std::fclose(file); }

std::size_t QZ_fread(void* target, std::size_t size, std::size_t count, std::FILE* file) {
  return std::fread(target, size, count, file);
}

std::size_t QZ_fwrite(const void* source, std::size_t size, std::size_t count, std::FILE* file) {
  return std::fwrite(source, size, count, file);
}

int QZ_fseek(std::FILE* file, long long offset, int origin) { return fseeko(file, static_cast<off_t>(offset), origin); }

long long QZ_ftell(std::FILE* file) { return ftello(file); }

int QZ_feof(std::FILE* file) { return std::feof(file); }

int QZ_fflush(std::FILE* file) { return std::fflush(file); }

unsigned QZ_strto4u(const char* text) { return leading_number(text, 10); }

unsigned QZ_hexto4u(const char* text) { return leading_number(has_hexadecimal_prefix(text) ? text + 2 : text, 16); }
