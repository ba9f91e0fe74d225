#include "tools/catalog/journal_catalog.h"

#include <array>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "sinks/journal_names.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/definitions/entry_view.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::MessageText;
using qzlog_compiler::SelectorMessage;
using qzlog_compiler::TemplatePart;
using qzlog_tool::DefinitionPair;

/// Stored texts by the keys of messages; null for those of the definitions.
using Texts = std::unordered_map<std::string_view, std::string_view>;

/// The date and the time of one moment, which the journal has in one field.
bool is_moment(std::span<const TemplatePart> parts) {
  return parts.size() >= 3 && parts[0].is_reference() && !parts[1].is_reference() && parts[2].is_reference() &&
         parts[0].format == 'D' && parts[1].text == " " && parts[2].format == 'T' && parts[0].text == parts[2].text;
}

/// Control characters as escapes; journald passes over lines that begin with "#" and ";", and begins an event with
/// "--".
void append_lines(std::string_view text, std::string& out) {
  for (bool is_last = false; !is_last;) {
    const std::size_t end = text.find('\n');
    is_last = end == std::string_view::npos;
    const std::string line = qzlog::printable(text.substr(0, end));
    if (line.starts_with('#') || line.starts_with(';') || line.starts_with("--")) out += ' ';
    out += line;
    out += '\n';
    if (!is_last) text.remove_prefix(end + 1);
  }
}

/// Writes the events of one language.
class EventWriter {
 public:
  EventWriter(const std::string& product, const DefinitionPair& definitions, const Texts* texts, std::string language)
      : product_(product), definitions_(definitions), texts_(texts), language_(std::move(language)) {}

  void write(const EntryDefinition& entry) {
    std::array<char, qzlog::kJournalMessageIdDigits> id;
    qzlog::write_journal_message_id(product_, entry.id, id.data());
    out_.append("-- ").append(id.data(), id.size());
    out_ += "\nSubject: " + (entry.name.empty() ? "" : entry.name + ' ') + '(' + std::to_string(entry.id) + ")\n";
    out_ += "Defined-By: " + product_ + '\n';
    write_text(entry, entry.message_id, entry.message, "");
    for (const SelectorMessage& message : entry.selector.messages) {
      write_text(entry, message.id, message.message,
                 entry.selector.attribute + " = " + std::to_string(message.value) + ": ");
    }
    if (texts_ == nullptr) write_paragraph(entry.summary);
    out_ += '\n';
  }
  std::string take() { return std::move(out_); }

 private:
  void write_text(const EntryDefinition& entry, std::string_view key, const MessageText& text,
                  const std::string& beginning) {
    const std::string shown = shown_text(entry, stored_text(key, text));
    if (!shown.empty()) write_paragraph(beginning + shown);
  }

  void write_paragraph(std::string_view text) {
    if (text.empty()) return;
    out_ += '\n';
    append_lines(text, out_);
  }

  std::string_view stored_text(std::string_view key, const MessageText& text) const {
    if (texts_ == nullptr) return text.stored;
    const auto translated = texts_->find(key);
    return translated != texts_->end() ? translated->second : std::string_view(text.stored);
  }

  /// Nothing where there is no message.
  std::string shown_text(const EntryDefinition& entry, std::string_view stored) const {
    const qzlog_compiler::TemplateJudgement judged = qzlog_compiler::judge_template(
        stored, qzlog_compiler::RenderingPath::kIcu, attributes_of(entry, definitions_), language_);
    if (!judged.shown) return "";
    std::string text;
    for (std::span<const TemplatePart> parts = *judged.shown; !parts.empty();) {
      text += parts.front().is_reference() ? value_of(entry, parts.front().text) : parts.front().text;
      parts = parts.subspan(is_moment(parts) ? 3 : 1);
    }
    return text;
  }

  /// As journald replaces it by a field's value, or as the author wrote it: where entries have no such field, and where
  /// journald does not take its name for one, which then has digits.
  std::string value_of(const EntryDefinition& entry, const std::string& name) const {
    const AttributeDefinition* attribute = find_attribute(entry.attributes, name);
    if (attribute == nullptr) attribute = definitions_.find_global(name);
    std::string field;
    qzlog::append_journal_field_name(name, field);
    const bool is_replaced = attribute != nullptr && attribute->sensitivity != qzlog::Sensitivity::kDrop &&
                             field.find_first_of("0123456789") == std::string::npos;
    return is_replaced ? '@' + field + '@' : '{' + name + '}';
  }

  const std::string& product_;
  const DefinitionPair& definitions_;
  const Texts* texts_;
  std::string language_;
  std::string out_;
};

DefinitionModel merged_model(const std::vector<qzlog_tool::Definitions>& sources) {
  DefinitionModel model = sources.front().model;
  for (std::size_t i = 1; i < sources.size(); ++i) model = merge_models(std::move(model), sources[i].model);
  return model;
}

/// PRODUCT.catalog or PRODUCT.LANGUAGE.catalog: journald takes what stands between the last points for a language.
std::string file_name(const std::string& product, const std::string& language) {
  std::string name;
  for (const char character : product) {
    const bool is_plain = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
                          (character >= '0' && character <= '9') || character == '-' || character == '_';
    name += is_plain ? character : '_';
  }
  return name + (language.empty() ? "" : '.' + language) + ".catalog";
}

JournalCatalog make_catalog(const std::string& product, const DefinitionModel& model, const Texts* texts,
                            const std::string& language) {
  const DefinitionPair definitions(model, nullptr);
  EventWriter writer(product, definitions, texts, language.empty() ? "root" : language);
  for (const EntryDefinition& entry : model.entries) writer.write(entry);
  return {file_name(product, language), writer.take()};
}

}  // namespace

std::vector<JournalCatalog> journal_catalogs(const std::string& product, const CatalogMessages& messages,
                                             std::span<const LanguageCatalog> languages) {
  const DefinitionModel model = merged_model(messages.sources());
  std::vector<JournalCatalog> catalogs = {make_catalog(product, model, nullptr, "")};
  for (const LanguageCatalog& language : languages) {
    Texts texts;
    for (const CatalogText& text : language.texts) texts.emplace(text.id, text.stored);
    catalogs.push_back(make_catalog(product, model, &texts, language.language));
  }
  return catalogs;
}

}  // namespace qzlog_catalog
