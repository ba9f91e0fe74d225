#include "tools/compiler/file/ldf_cursor.h"

#include <algorithm>
#include <utility>

namespace qzlog_compiler {

std::uint32_t ldf_int4(std::string_view bytes) {
  std::uint32_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

std::string LdfField::path() const {
  if (list.empty()) return std::string(name);
  return std::string(list) + "[" + std::to_string(index) + "]." + std::string(name);
}

void LdfCursor::fail(LdfDamage damage) {
  if (!damage_) damage_ = std::move(damage);
}

std::string_view LdfCursor::take_bytes(std::string_view name, LdfFieldKind kind, std::size_t size) {
  if (failed()) return {};
  const std::size_t left = offset_ < bytes_.size() ? bytes_.size() - offset_ : 0;
  const std::string_view taken = left == 0 ? std::string_view() : bytes_.substr(offset_, size);
  emit(name, kind, size, taken);
  if (taken.size() < size) {
    fail({offset_, "the file ends within " + std::string(region_),
          field_.path() + " takes " + std::to_string(size) + " bytes from here, and the file has " +
              std::to_string(left)});
    return {};
  }
  offset_ += size;
  return taken;
}

std::uint32_t LdfCursor::take_int4(std::string_view name, LdfFieldKind kind) {
  return ldf_int4(take_bytes(name, kind, 4));
}

LdfText LdfCursor::take_text(std::string_view name) {
  LdfText text;
  text.offset = offset_;
  const std::uint32_t size = take_int4(name, LdfFieldKind::kLength);
  if (size != 0) text.stored = take_bytes(name, LdfFieldKind::kText, size);
  text.whole = !failed();
  return text;
}

void LdfCursor::emit(std::string_view name, LdfFieldKind kind, std::size_t size, std::string_view bytes) {
  field_.offset = offset_;
  field_.size = size;
  field_.bytes = bytes;
  field_.kind = kind;
  field_.name = name;
  if (sink_ != nullptr && !bytes.empty()) (*sink_)(field_);
}

}  // namespace qzlog_compiler
