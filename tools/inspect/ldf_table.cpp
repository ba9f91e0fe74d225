#include "tools/inspect/ldf_table.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "definitions/definition_format.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/line_cut.h"
#include "tools/inspect/ldf_text.h"
#include "tools/report/text_table.h"
#include "tools/system/terminal_text.h"

namespace qzlog_compiler {
namespace {

using qzlog_tool::shown_value;

constexpr std::size_t kIndent = 2;

std::string cell(const LdfText& text) { return text.text().empty() ? "-" : shown_value(text.text()); }
std::string hexadecimal_id(std::uint32_t id) { return "0x" + hexadecimal(id, 1); }
std::string hexadecimal_offset(std::size_t offset) { return "0x" + hexadecimal(offset, 1); }

std::string counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

class TableWriter {
 public:
  TableWriter(const LdfSurvey& survey, std::size_t columns, std::ostream& out)
      : survey_(survey), columns_(columns), out_(out) {}

  void write() {
    write_header();
    if (survey_.bytes().size() < qzlog::ldf::kHeaderSize) return;
    write_globals();
    write_map();
    for (const LdfSurveyedPair& pair : survey_.pairs()) write_entry(pair);
    if (survey_.names()) write_names(*survey_.names());
  }

 private:
  void line(std::size_t indent, const std::string& text) {
    out_ << cut_line(std::string(indent, ' ') + text, columns_) << '\n';
  }
  /// Names in a column that is wide enough for all of them.
  void field(const std::string& name, const std::string& value) {
    constexpr std::size_t kNameWidth = 20;
    line(kIndent, name + std::string(kNameWidth - std::min(kNameWidth, name.size()), ' ') + value);
  }
  void damage(const std::string& text) { line(kIndent, "!! " + text); }

  void write_header() {
    const LdfHeader& header = survey_.header();
    line(0, "header");
    field("file size", counted(survey_.bytes().size(), "byte"));
    field("version", shown_text(header.version()));
    field("globals", std::to_string(header.global_count) + " at offset " + offset_text(header.global_offset));
    field("entries", std::to_string(header.entry_count) + ", map at offset " + offset_text(header.entry_map_offset));
    if (header.format_bytes.find_first_not_of('\0') != std::string_view::npos) {
      field("format bytes", hexadecimal_bytes(header.format_bytes, " "));
    }
  }

  void write_globals() {
    const std::vector<LdfAttributeRecord> globals = survey_.globals();
    if (!globals.empty()) line(0, "\nglobal attributes");
    write_attribute_table(globals, kIndent);
    if (globals.size() < survey_.header().global_count) {
      damage("the other " + std::to_string(survey_.header().global_count - globals.size()) + " are cut off");
    }
  }

  void write_attribute_table(const std::vector<LdfAttributeRecord>& attributes, std::size_t indent) {
    const auto row = [&](std::size_t i) { return attribute_row(attributes[i]); };
    write_text_table({{">offset", ">hex", "name", "type", "redirect"}, attributes.size(), row}, indent, columns_, out_);
  }

  static TextRow attribute_row(const LdfAttributeRecord& attribute) {
    return {std::to_string(attribute.offset), hexadecimal_offset(attribute.offset), cell(attribute.name),
            type_text(attribute.type_code), cell(attribute.redirect)};
  }

  void write_map() {
    if (!survey_.pairs().empty()) line(0, "\nentry map");
    write_text_table({{">offset", ">hex", ">ID", ">hex", ">record", ">hex", ">bytes", "message ID", "note"},
                      survey_.pairs().size(),
                      [this](std::size_t i) { return map_row(i); }},
                     kIndent, columns_, out_);
    if (survey_.pairs().size() < survey_.header().entry_count) {
      damage("the other " + std::to_string(survey_.header().entry_count - survey_.pairs().size()) +
             " pairs are cut off");
    }
  }

  TextRow map_row(std::size_t i) const {
    const LdfSurveyedPair& pair = survey_.pairs()[i];
    const std::size_t offset = survey_.pair_offset(i);
    return {std::to_string(offset),
            hexadecimal_offset(offset),
            std::to_string(pair.id),
            hexadecimal_id(pair.id),
            std::to_string(pair.record_offset),
            hexadecimal_offset(pair.record_offset),
            std::to_string(pair.record_size),
            message_id(pair),
            note(pair)};
  }

  std::string message_id(const LdfSurveyedPair& pair) const {
    if (pair.unread) return "";
    const LdfEntryRecord record = survey_.read_entry(pair);
    return record.message_id.whole ? cell(record.message_id) : "";
  }

  static std::string note(const LdfSurveyedPair& pair) {
    if (pair.unread) return "not read";
    if (pair.wrong_id) return "another entry's record";
    if (pair.cut) return "damaged";
    return pair.replaced ? "replaced by a later pair" : "";
  }

  void write_entry(const LdfSurveyedPair& pair) {
    if (pair.unread || pair.shared) return;
    const LdfEntryRecord record = survey_.entry(pair);
    line(0, "\nentry " + std::to_string(pair.id) + " (" + hexadecimal_id(pair.id) + "), record at offset " +
                offset_text(record.offset) + ", " + counted(record.size, "byte") +
                (pair.replaced ? ", replaced by a later pair" : ""));
    write_fixed_part(record);
    write_attributes(record);
    write_selector_messages(record);
    if (const auto found = survey_.damage_of(pair, record)) {
      damage("offset " + offset_text(found->offset) + ": " + found->reason);
    }
  }

  /// Of a record that is cut, only what can be read.
  void write_fixed_part(const LdfEntryRecord& record) {
    if (record.has_numbers()) {
      field("mask", bits_text(record.mask));
      field("word", std::to_string(record.word));
    }
    if (record.message_id.whole) field("message ID", cell(record.message_id));
    if (record.message.whole) field("message", cell(record.message));
    if (record.selector.whole) field("selector attribute", cell(record.selector));
  }

  void write_attributes(const LdfEntryRecord& record) {
    if (!record.attribute_count) return;
    field("attributes", std::to_string(*record.attribute_count));
    write_attribute_table(record.attributes, 2 * kIndent);
  }

  void write_selector_messages(const LdfEntryRecord& record) {
    if (!record.selector_message_count) return;
    field("selector messages", std::to_string(*record.selector_message_count));
    const auto row = [&](std::size_t i) -> TextRow {
      const LdfSelectorRecord& message = record.selector_messages[i];
      return {std::to_string(message.offset),
              hexadecimal_offset(message.offset),
              std::to_string(message.index),
              std::to_string(message.value),
              cell(message.id),
              cell(message.text)};
    };
    write_text_table({{">offset", ">hex", ">index", ">value", "ID", "text"}, record.selector_messages.size(), row},
                     2 * kIndent, columns_, out_);
  }

  void write_names(const LdfNames& names) {
    line(0, "\nnames, section at offset " + offset_text(names.begin));
    if (names.damage) {
      damage("offset " + offset_text(names.damage->offset) + ": " + names.damage->reason);
      return;
    }
    field("events", std::to_string(names.events.size()));
    const auto event_row = [&](std::size_t i) -> TextRow {
      const LdfNamedEvent& event = names.events[i];
      return {std::to_string(event.offset), hexadecimal_offset(event.offset), std::to_string(event.id),
              shown_value(event.name), event.summary.empty() ? "-" : shown_value(event.summary)};
    };
    write_text_table({{">offset", ">hex", ">ID", "name", "summary"}, names.events.size(), event_row}, 2 * kIndent,
                     columns_, out_);
    field("sensitive", std::to_string(names.marks.size()));
    const auto mark_row = [&](std::size_t i) -> TextRow {
      const LdfMarkedAttribute& mark = names.marks[i];
      return {std::to_string(mark.offset), hexadecimal_offset(mark.offset),
              mark.is_global() ? "global" : std::to_string(mark.entry_id), shown_value(mark.name),
              std::string(sensitivity_name(sensitivity_of_mark(mark.mark)))};
    };
    write_text_table({{">offset", ">hex", ">entry", "attribute", "mark"}, names.marks.size(), mark_row}, 2 * kIndent,
                     columns_, out_);
    if (names.unknown_part_count != 0) field("unknown parts", std::to_string(names.unknown_part_count));
  }

  const LdfSurvey& survey_;
  std::size_t columns_;
  std::ostream& out_;
};

}  // namespace

void write_table(const LdfSurvey& survey, std::size_t columns, std::ostream& out) {
  TableWriter(survey, columns, out).write();
}

}  // namespace qzlog_compiler
