#include "entry/ustring.h"

#include <utility>

#include "foundation/qz_libc.h"
#include "foundation/short_text.h"

using namespace qzlog;

namespace {

char* duplicate(const char* text, unsigned length) {
  if (text == nullptr) return nullptr;
  char* const copy = allocate_text(length);
  copy_text(copy, text, length);
  copy[length] = '\0';
  return copy;
}

}  // namespace

_qz_LOG_ustring::_qz_LOG_ustring(const char* text)
    : length(text == nullptr ? 0 : static_cast<unsigned>(QZ_strlen(text))), data(duplicate(text, length)) {}

_qz_LOG_ustring::_qz_LOG_ustring(const char* text, unsigned size) : length(size), data(duplicate(text, size)) {}

_qz_LOG_ustring::_qz_LOG_ustring(const _qz_LOG_ustring& other)
    : length(other.length), data(duplicate(other.data, other.length)) {}

// The copy is made first, so that a value keeps its text when there is no memory for the new one.
_qz_LOG_ustring& _qz_LOG_ustring::operator=(const _qz_LOG_ustring& other) {
  if (this == &other) return *this;
  _qz_LOG_ustring copy(other);
  std::swap(length, copy.length);
  std::swap(data, copy.data);
  return *this;
}

void _qz_LOG_ustring::set_zero() noexcept {
  if (data != nullptr) release();
  length = 0;
  data = nullptr;
}

void _qz_LOG_ustring::release() noexcept { release_text(data, length); }
