#include "util/log_util.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/allocate.h"
#include "qzlog/qz_string.h"
#include "util/assertion.h"

using namespace qzlog;

namespace {

constexpr const char* kSource = "log_util";
constexpr std::size_t kMaxPathLength = 4096;
constexpr std::size_t kMaxLockNameLength = 255;
constexpr std::string_view kSafeCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890_-";

bool is_digit(char character) { return character >= '0' && character <= '9'; }

/// ".YYYYMMDD.NNNN" and nothing behind it.
bool is_date_and_sequence(std::string_view text) {
  constexpr std::size_t kLength = 14;
  constexpr std::size_t kSecondPoint = 9;
  if (text.size() != kLength || text[0] != '.' || text[kSecondPoint] != '.') return false;
  return std::all_of(text.begin() + 1, text.begin() + kSecondPoint, is_digit) &&
         std::all_of(text.begin() + kSecondPoint + 1, text.end(), is_digit);
}

/// At most four digits: the number fits.
unsigned short number_of(std::string_view digits) {
  unsigned number = 0;
  for (const char digit : digits) number = number * 10 + static_cast<unsigned>(digit - '0');
  return static_cast<unsigned short>(number);
}

void store(unsigned short* target, std::string_view digits) {
  if (target != nullptr) *target = number_of(digits);
}

/// Puts the working directory before a relative path. False when it is not known: removed, or too long.
bool make_absolute(std::string& path) {
  if (path.starts_with('/')) return true;
  char directory[kMaxPathLength + 1];
  if (getcwd(directory, sizeof(directory)) == nullptr) return false;
  path.insert(0, std::string(directory) + '/');
  return true;
}

bool starts_at(const std::string& text, std::size_t position, std::string_view part) {
  return text.compare(position, part.size(), part) == 0;
}

/// "/./" becomes "/", and so does "/." at the end.
std::string without_dots(const std::string& path) {
  std::string result;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (i > 0 && starts_at(path, i - 1, "/./")) {
      ++i;
    } else {
      result += path[i];
    }
  }
  if (result.size() > 1 && result.ends_with("/.")) result.pop_back();
  return result;
}

std::string without_doubled_slashes(const std::string& path) {
  std::string result;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (!starts_at(path, i, "//")) result += path[i];
  }
  return result;
}

/// "/parent/../" becomes "/", and "/parent/.." at the end "/". Above the root there is nothing to leave.
std::string without_parents(const std::string& path) {
  std::string result;
  std::vector<std::size_t> slashes;  // positions in the result
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (path[i] != '/') {
      result += path[i];
      continue;
    }
    slashes.push_back(result.size());
    if (!starts_at(path, i, "/../")) {
      result += '/';
      continue;
    }
    const bool has_parent = slashes.size() >= 2;
    result.resize(has_parent ? slashes[slashes.size() - 2] : 0);
    slashes.resize(has_parent ? slashes.size() - 2 : 0);
    i += 2;  // the slash behind the dots comes next
  }
  if (result.size() > 2 && result.ends_with("/..")) {
    result.resize(slashes.size() >= 2 ? slashes[slashes.size() - 2] + 1 : 1);
  }
  return result;
}

/// A null text is reported and taken for the empty one.
const char* required(const char* text, const char* expression, int line) {
  if (text != nullptr) return text;
  QZ_assertion_violation(expression, kSource, line);
  return "";
}

}  // namespace

char* make_text_log_filename(const char* log_prefix, unsigned short year, unsigned short month, unsigned short day,
                             unsigned short sequence, const char* directory) {
  const char* const prefix = required(log_prefix, "log_prefix", __LINE__);
  const char* const separator = directory != nullptr ? "/" : "";
  if (directory == nullptr) directory = "";
  constexpr const char* kFormat = "%s%s%s.%04u%02u%02u.%04u";
  const int length = std::snprintf(nullptr, 0, kFormat, directory, separator, prefix, year, month, day, sequence);
  if (length < 0) throw QZX_memory_alloc();
  const std::size_t size = static_cast<std::size_t>(length) + 1;
  char* const name = new_array<char>(size);
  std::snprintf(name, size, kFormat, directory, separator, prefix, year, month, day, sequence);
  return name;
}

int is_a_valid_text_log(const char* filename, const char* log_prefix, unsigned short* year, unsigned short* month,
                        unsigned short* day, unsigned short* sequence) {
  if (filename == nullptr || log_prefix == nullptr) {
    QZ_assertion_violation("filename && log_prefix", kSource, __LINE__);
    return 0;
  }
  const std::string_view name(filename);
  if (!name.starts_with(log_prefix)) return 0;
  const std::string_view rest = name.substr(std::strlen(log_prefix));
  if (!is_date_and_sequence(rest)) return 0;
  store(year, rest.substr(1, 4));
  store(month, rest.substr(5, 2));
  store(day, rest.substr(7, 2));
  store(sequence, rest.substr(10, 4));
  return 1;
}

void remove_pathname_dir_separators(char* pathname) {
  if (pathname == nullptr) {
    QZ_assertion_violation("pathname", kSource, __LINE__);
    return;
  }
  for (; *pathname != '\0'; ++pathname) {
    if (kSafeCharacters.find(*pathname) == std::string_view::npos) *pathname = '_';
  }
}

int _get_fullpath(char* full, const char* path) try {
  if (std::strlen(path) > kMaxPathLength) return -1;
  std::string absolute(path);
  if (!make_absolute(absolute)) return -1;
  const std::string result = without_parents(without_doubled_slashes(without_dots(absolute)));
  if (result.size() > kMaxPathLength) return -1;
  std::memcpy(full, result.c_str(), result.size() + 1);
  return 1;
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

int get_fullpath(const char* path, char* full) {
  path = required(path, "path", __LINE__);
  if (_get_fullpath(full, path) != 1) {
    const std::size_t length = std::min(std::strlen(path), kMaxPathLength);
    std::memcpy(full, path, length);
    full[length] = '\0';
  }
  for (std::size_t length = std::strlen(full); length > 0 && full[length - 1] == '/'; --length) full[length - 1] = '\0';
  return 1;
}

int get_plockname(const char* first, const char* second, char* lock_name) {
  const qz_String name =
      qz_String(required(first, "first", __LINE__)) + qz_String("_") + qz_String(required(second, "second", __LINE__));
  std::strncpy(lock_name, name.c_str(), kMaxLockNameLength);
  lock_name[kMaxLockNameLength] = '\0';
  return 1;
}
