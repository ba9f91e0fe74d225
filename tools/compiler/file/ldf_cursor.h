#ifndef QZLOG_TOOLS_COMPILER_FILE_LDF_CURSOR_H
#define QZLOG_TOOLS_COMPILER_FILE_LDF_CURSOR_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qzlog_compiler {

/// Where a compiled file stopped making sense, and why.
struct LdfDamage {
  std::size_t offset = 0;
  std::string reason;
  std::string detail = {};  ///< the field and the numbers behind the reason; may be empty
};

enum class LdfFieldKind { kMagic, kBytes, kTag, kNumber, kBits, kOffset, kType, kLength, kText };

/// One field of a compiled file.
struct LdfField {
  std::size_t offset = 0;
  std::size_t size = 0;
  std::string_view bytes;  ///< fewer than `size` where the file ends
  LdfFieldKind kind = LdfFieldKind::kBytes;
  std::string_view name;
  std::string_view list;  ///< the list whose item the field belongs to; empty for none
  std::size_t index = 0;  ///< of the item

  /// The name with its list: "attributes[2].name".
  std::string path() const;
};

using LdfFieldSink = std::function<void(const LdfField&)>;

/// A text as the file stores it. It views the file's bytes.
struct LdfText {
  std::size_t offset = 0;   ///< of the length
  std::string_view stored;  ///< the bytes behind the length
  bool whole = false;       ///< false where the file ends before it does

  /// What readers take: everything before the first zero byte.
  std::string_view text() const { return stored.substr(0, stored.find('\0')); }
  /// Whether a writer would store the text the same way.
  bool is_regular() const { return stored.empty() || stored.find('\0') + 1 == stored.size(); }
};

/// Reads fields one after the other and stops at the first that is not there. Hands each to a sink, if there is one,
/// the bytes that are there of the field it stops at included.
class LdfCursor {
 public:
  /// `bytes` and `sink` have to outlive the cursor; `sink` may be null.
  LdfCursor(std::string_view bytes, std::size_t offset, const LdfFieldSink* sink = nullptr)
      : bytes_(bytes), offset_(offset), sink_(sink) {}

  bool failed() const { return damage_.has_value(); }
  const std::optional<LdfDamage>& damage() const { return damage_; }
  std::size_t offset() const { return offset_; }

  /// Keeps the first damage. Nothing is read after it.
  void fail(LdfDamage damage);

  /// What is read next, for the reason of a damage: "an attribute".
  void set_region(std::string_view region) { region_ = region; }
  void set_item(std::string_view list, std::size_t index) {
    field_.list = list;
    field_.index = index;
  }
  void leave_list() { field_.list = {}; }

  std::string_view take_bytes(std::string_view name, LdfFieldKind kind, std::size_t size);
  std::uint32_t take_int4(std::string_view name, LdfFieldKind kind = LdfFieldKind::kNumber);
  LdfText take_text(std::string_view name);

 private:
  void emit(std::string_view name, LdfFieldKind kind, std::size_t size, std::string_view bytes);

  std::string_view bytes_;
  std::size_t offset_;
  const LdfFieldSink* sink_;
  std::string_view region_;
  LdfField field_;
  std::optional<LdfDamage> damage_;
};

/// The number in up to four big-endian bytes.
std::uint32_t ldf_int4(std::string_view bytes);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_LDF_CURSOR_H
