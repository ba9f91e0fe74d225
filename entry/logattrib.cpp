#include "entry/logattrib.h"

#include <unistd.h>

#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include <unicode/unistr.h>

#include "foundation/itoa.h"
#include "foundation/plain_name.h"
#include "foundation/qz_libc.h"

using namespace qzlog;

const qz_AttributeTypeName AttributeTypeList[26] = {{"TypeBool", TypeBool},           {"TypeUInt1", TypeUInt1},
                                                    {"TypeSInt1", TypeSInt1},         {"TypeUInt2", TypeUInt2},
                                                    {"TypeSInt2", TypeSInt2},         {"TypeUInt4", TypeUInt4},
                                                    {"TypeSInt4", TypeSInt4},         {"TypeFloat", TypeFloat},
                                                    {"TypeChar32", TypeChar32},       {"TypeChar64", TypeChar64},
                                                    {"TypeChar128", TypeChar128},     {"TypeChar256", TypeChar256},
                                                    {"TypeChar1K", TypeChar1K},       {"TypeChar2K", TypeChar2K},
                                                    {"TypeMBChar32", TypeMBChar32},   {"TypeMBChar64", TypeMBChar64},
                                                    {"TypeMBChar128", TypeMBChar128}, {"TypeMBChar256", TypeMBChar256},
                                                    {"TypeMBChar1K", TypeMBChar1K},   {"TypeMBChar2K", TypeMBChar2K},
                                                    {"TypeDate", TypeDate},           {"TypeTime", TypeTime},
                                                    {"TypeTimestamp", TypeTimestamp}, {"TypeGUID", TypeGUID},
                                                    {nullptr, TypeUnknown},           {nullptr, TypeUnknown}};
QZLOG_PLAIN_NAME(AttributeTypeList);

qz_AttributeType _qz_LOG_get_attribute_type_code(const char* name) {
  if (name == nullptr) return TypeUnknown;
  const qz_AttributeTypeName* row = AttributeTypeList;
  while (row->name != nullptr && QZ_strcmp(row->name, name) != 0) ++row;
  return row->code;
}

const char* _qz_LOG_get_attribute_type_string(qz_AttributeType code) {
  const qz_AttributeTypeName* row = AttributeTypeList;
  while (row->name != nullptr && row->code != code) ++row;
  return row->name != nullptr ? row->name : "TypeUnknown";
}

bool is_default_info_fields(const char* name, qz_AttributeType& type) {
  for (const char* field : {"PRODUCT_ID", "COMPONENT_ID", "VERSION_ID", "COMPONENT_VERSION_ID"}) {
    if (QZ_strcmp(name, field) != 0) continue;
    type = TypeMBChar32;
    return true;
  }
  if (QZ_strcmp(name, "TIMESTAMP") != 0) return false;
  type = TypeTimestamp;
  return true;
}

namespace {

// Holds any "%f": 309 digits, sign, point, six decimals and the terminator.
constexpr std::size_t kScratchSize = 384;
constexpr unsigned kTimeTextSize = 128;

/// The text form of a value, held here or, for texts, where the value holds it.
class ValueText {
 public:
  explicit ValueText(const char* value) : text_(value != nullptr ? value : "") {}
  explicit ValueText(bool value) : text_(value ? "1" : "0") {}
  explicit ValueText(unsigned value) { my_itoa(scratch_, value); }
  explicit ValueText(int value) { my_itoa(scratch_, value); }
  explicit ValueText(double value) { std::snprintf(scratch_, sizeof(scratch_), "%f", value); }
  explicit ValueText(const qz_String& value) : text_(std::string_view(value.c_str(), value.length())) {}
  explicit ValueText(const _qz_LOG_ustring& value) : text_(value.text()) {}
  explicit ValueText(qz_Time value) {
    value.local_to_GMT();
    value.print_out(scratch_, kTimeTextSize);
  }

  std::string_view get() const { return text_.data() != nullptr ? text_ : std::string_view(scratch_); }

 private:
  char scratch_[kScratchSize];
  std::string_view text_;
};

/// Like strcat: a text with a zero byte inside ends there.
char* append_text(char* buffer, const ValueText& text) { return std::strcat(buffer, text.get().data()); }

ssize_t write_text(std::FILE* stream, const ValueText& text) {
  if (stream == nullptr) return 0;
  const int descriptor = fileno(stream);
  if (descriptor == -1) return -1;
  if (QZ_fseek(stream, 0, SEEK_END) != 0) return 0;
  return write(descriptor, text.get().data(), text.get().size());
}

unsigned widened(unsigned char value) { return value; }
int widened(char value) { return static_cast<signed char>(value); }

}  // namespace

char* printf_out_attribute_value(char* buffer, const char* value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, bool value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, unsigned char value) {
  return append_text(buffer, ValueText(widened(value)));
}
char* printf_out_attribute_value(char* buffer, char value) { return append_text(buffer, ValueText(widened(value))); }
char* printf_out_attribute_value(char* buffer, unsigned short value) {
  return append_text(buffer, ValueText(unsigned{value}));
}
char* printf_out_attribute_value(char* buffer, short value) { return append_text(buffer, ValueText(int{value})); }
char* printf_out_attribute_value(char* buffer, unsigned int value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, int value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, double value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, const qz_String& value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, const _qz_LOG_ustring& value) {
  return append_text(buffer, ValueText(value));
}
char* printf_out_attribute_value(char* buffer, const qz_Time& value) { return append_text(buffer, ValueText(value)); }
char* printf_out_attribute_value(char* buffer, const icu::UnicodeString& /*value*/) { return buffer; }

ssize_t printf_attribute_value(std::FILE* stream, const char* value) { return write_text(stream, ValueText(value)); }
ssize_t printf_attribute_value(std::FILE* stream, bool value) { return write_text(stream, ValueText(value)); }
ssize_t printf_attribute_value(std::FILE* stream, unsigned char value) {
  return write_text(stream, ValueText(widened(value)));
}
ssize_t printf_attribute_value(std::FILE* stream, char value) { return write_text(stream, ValueText(widened(value))); }
ssize_t printf_attribute_value(std::FILE* stream, unsigned short value) {
  return write_text(stream, ValueText(unsigned{value}));
}
ssize_t printf_attribute_value(std::FILE* stream, short value) { return write_text(stream, ValueText(int{value})); }
ssize_t printf_attribute_value(std::FILE* stream, unsigned int value) { return write_text(stream, ValueText(value)); }
ssize_t printf_attribute_value(std::FILE* stream, int value) { return write_text(stream, ValueText(value)); }
ssize_t printf_attribute_value(std::FILE* stream, double value) {
  return stream == nullptr ? 0 : std::fprintf(stream, "%f", value);
}
ssize_t printf_attribute_value(std::FILE* stream, const qz_String& value) {
  return write_text(stream, ValueText(value));
}
ssize_t printf_attribute_value(std::FILE* stream, const _qz_LOG_ustring& value) {
  return write_text(stream, ValueText(value));
}
ssize_t printf_attribute_value(std::FILE* stream, const qz_Time& value) { return write_text(stream, ValueText(value)); }
ssize_t printf_attribute_value(std::FILE* /*stream*/, const icu::UnicodeString& /*value*/) { return 0; }

namespace {

template <unsigned char code>
void copy_value_of(const _qz_LOG_type_base& value, void* storage) {
  new (storage) StoredValue<code>(static_cast<const StoredValue<code>&>(value).value);
}

template <unsigned char code>
void move_value_of(_qz_LOG_type_base& value, void* storage) {
  new (storage) StoredValue<code>(std::move(static_cast<StoredValue<code>&>(value).value));
}

using CopyValue = void (*)(const _qz_LOG_type_base& value, void* storage);
using MoveValue = void (*)(_qz_LOG_type_base& value, void* storage);

template <std::size_t... index>
constexpr std::array<CopyValue, sizeof...(index)> value_copiers(std::index_sequence<index...> /*codes*/) {
  static_assert(((sizeof(StoredValue<TypeBool + index>) <= kStoredSize) && ...));
  return {copy_value_of<static_cast<unsigned char>(TypeBool + index)>...};
}

template <std::size_t... index>
constexpr std::array<MoveValue, sizeof...(index)> value_movers(std::index_sequence<index...> /*codes*/) {
  return {move_value_of<static_cast<unsigned char>(TypeBool + index)>...};
}

}  // namespace

void qzlog::copy_value(const _qz_LOG_type_base& value, void* storage) {
  static constexpr auto kCopiers = value_copiers(std::make_index_sequence<TypeGUID>());
  kCopiers[value.get_type() - unsigned{TypeBool}](value, storage);
}

void qzlog::move_value(_qz_LOG_type_base& value, void* storage) noexcept {
  static constexpr auto kMovers = value_movers(std::make_index_sequence<TypeGUID>());
  kMovers[value.get_type() - unsigned{TypeBool}](value, storage);
}
