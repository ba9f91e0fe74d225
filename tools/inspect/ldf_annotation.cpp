#include "tools/inspect/ldf_annotation.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/line_cut.h"
#include "tools/inspect/ldf_text.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kBytesPerLine = 8;
constexpr std::size_t kOffsetDigits = 8;
constexpr std::size_t kBytesWidth = 3 * kBytesPerLine - 1;
constexpr std::size_t kNameWidth = 32;

std::string value_text(const LdfField& field) {
  switch (field.kind) {
    case LdfFieldKind::kMagic:
      return shown_text(field.bytes);
    case LdfFieldKind::kNumber:
    case LdfFieldKind::kLength:
      return std::to_string(ldf_int4(field.bytes));
    case LdfFieldKind::kBits:
      return bits_text(ldf_int4(field.bytes));
    case LdfFieldKind::kOffset:
      return offset_text(ldf_int4(field.bytes));
    case LdfFieldKind::kType:
      return std::to_string(ldf_int4(field.bytes)) + " " + type_text(ldf_int4(field.bytes));
    case LdfFieldKind::kTag:
    case LdfFieldKind::kText:
      return shown_text(field.bytes.substr(0, field.bytes.find('\0')));
    default:
      return "";
  }
}

class Annotator {
 public:
  Annotator(const LdfSurvey& survey, std::size_t columns, std::ostream& out)
      : survey_(survey), columns_(columns), out_(out) {}

  void write() {
    write_line("offset", "bytes", "field", "value");
    for (const LdfRegion& region : survey_.regions()) {
      write_until(region.begin);
      open_.push_back(region);
      if (region.kind == LdfRegion::kHeader) write_until(region.end);  // whatever claims its bytes as well
    }
    write_until(survey_.bytes().size());
  }

 private:
  /// Writes from the position to `end`, where the next region begins or the file ends.
  void write_until(std::size_t end) {
    while (position_ < end) {
      while (!open_.empty() && open_.back().end <= position_) open_.pop_back();
      if (open_.empty()) {
        write_gap(end);
      } else if (open_.back().begin == position_) {
        write_region(open_.back(), std::min(open_.back().end, end));
      } else {
        write_rest(open_.back(), std::min(open_.back().end, end));
      }
    }
  }

  void write_title(const std::string& title) { write_line("", "", title, ""); }

  void write_gap(std::size_t end) {
    write_title("-- no part of the format");
    write_bytes("gap", "", end);
  }

  /// What an overlap has left of a region.
  void write_rest(const LdfRegion& region, std::size_t end) {
    write_title("-- " + survey_.region_name(region).substr(4) + ", continued");
    write_bytes(region.cut ? "unreadable" : "overlapped", "", end);
  }

  void write_region(const LdfRegion& region, std::size_t end) {
    const bool replaced = region.kind == LdfRegion::kRecord && survey_.pairs()[region.pair].replaced;
    write_title("-- " + survey_.region_name(region).substr(4) + (replaced ? ", replaced by a later pair" : ""));
    const LdfFieldSink sink = [this](const LdfField& field) { write_field(field); };
    const auto damage = survey_.walk(region, end, sink);
    if (damage && end == region.end) write_title("!! " + damage->reason);
    if (position_ < end) write_bytes("unreadable", "", end);
  }

  void write_field(const LdfField& field) {
    const std::string name = field.path() + (field.kind == LdfFieldKind::kLength ? " length" : "");
    const bool cut = field.bytes.size() < field.size;
    write_bytes(name, cut ? "the first of " + std::to_string(field.size) + " bytes" : value_text(field),
                field.offset + field.bytes.size());
  }

  /// Writes the bytes up to `end`, name and value in the first line.
  void write_bytes(std::string name, std::string value, std::size_t end) {
    while (position_ < end) {
      const std::size_t size = std::min(kBytesPerLine, end - position_);
      write_line(hexadecimal(position_, kOffsetDigits), hexadecimal_bytes(survey_.bytes().substr(position_, size), " "),
                 name, value);
      name.clear();
      value.clear();
      position_ += size;
    }
  }

  void write_line(const std::string& offset, const std::string& bytes, const std::string& name,
                  const std::string& value) {
    std::string line = offset;
    const auto add_column = [&line](std::size_t begin, const std::string& text) {
      if (text.empty()) return;
      line.append(line.size() + 1 < begin ? begin - line.size() : 2, ' ').append(text);
    };
    add_column(kOffsetDigits + 2, bytes);
    add_column(kOffsetDigits + kBytesWidth + 4, name);
    add_column(kOffsetDigits + kBytesWidth + kNameWidth + 6, value);
    out_ << cut_line(std::move(line), columns_) << '\n';
  }

  const LdfSurvey& survey_;
  std::size_t columns_;
  std::ostream& out_;
  std::vector<LdfRegion> open_;  ///< those that began and may go on; the last one has the next byte
  std::size_t position_ = 0;
};

}  // namespace

void write_annotation(const LdfSurvey& survey, std::size_t columns, std::ostream& out) {
  Annotator(survey, columns, out).write();
}

}  // namespace qzlog_compiler
