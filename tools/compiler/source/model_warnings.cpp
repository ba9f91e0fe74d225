#include "tools/compiler/source/model_warnings.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "qzlog/definition_cache.h"
#include "tools/compiler/message/message_references.h"
#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::size_t kMaximumMessageSize = 65535;

constexpr std::string_view kRenameHint = "give one of them another name";

bool counts(RenderingPaths path, RenderingPath form) {
  return path == RenderingPaths::kBoth || (path == RenderingPaths::kIcu) == (form == RenderingPath::kIcu);
}

std::string_view path_name(RenderingPath form) {
  return form == RenderingPath::kIcu ? "the ICU path" : "the narrow path";
}

void add_place(ModelWarning& warning, ModelWarning::Place place) {
  if (place.position.known()) warning.places.push_back(std::move(place));
}

/// A message with what the paths that count make of it.
class EffectiveMessage {
 public:
  EffectiveMessage(const MessageText& message, RenderingPaths path) : message_(&message) {
    if (counts(path, RenderingPath::kIcu)) icu_ = cut_template(message.stored, RenderingPath::kIcu);
    if (counts(path, RenderingPath::kNarrow)) narrow_ = cut_template(message.stored, RenderingPath::kNarrow);
  }

  const MessageText& message() const { return *message_; }
  bool is_shown_by(RenderingPath form) const {
    return form == RenderingPath::kIcu ? icu_.has_value() : narrow_.has_value();
  }

  template <typename Visitor>
  void for_each_reference(Visitor&& visit) const {
    visit_references(icu_, RenderingPath::kIcu, visit);
    visit_references(narrow_, RenderingPath::kNarrow, visit);
  }

  /// Where the source has the first reference to an attribute, else where it has the message.
  SourcePosition find_reference(std::string_view name) const {
    if (message_->references.empty()) return message_->position;
    const std::vector<WrittenReference> written = written_references(*message_);
    for (std::size_t i = 0; i < std::min(written.size(), message_->references.size()); ++i) {
      if (written[i].name == name) return message_->references[i];
    }
    return message_->position;
  }

 private:
  template <typename Visitor>
  static void visit_references(const std::optional<StoredTemplate>& stored, RenderingPath form, Visitor& visit) {
    if (!stored) return;
    for (const TemplatePart& part : stored->parts) {
      if (part.is_reference()) visit(part, form);
    }
  }

  const MessageText* message_;
  std::optional<StoredTemplate> icu_;
  std::optional<StoredTemplate> narrow_;
};

/// A model, and for an auxiliary file's the standard one that it extends.
struct ModelContext {
  const DefinitionModel* model;
  ModelIndex index;
  std::optional<ModelIndex> standard_index;
  RenderingPaths path;
};

class EntryWarnings {
 public:
  EntryWarnings(const ModelContext& context, const EntryDefinition& entry, std::vector<ModelWarning>& warnings)
      : context_(context),
        entry_(entry),
        standard_entry_(context.standard_index ? context.standard_index->find_entry(entry.id) : nullptr),
        warnings_(warnings) {}

  void find() {
    if (!context_.standard_index || gives_message(entry_)) add_message(entry_.message);
    for (const SelectorMessage& message : entry_.selector.messages) add_message(message.message);
    for (const EffectiveMessage& message : messages_) check_message(message);
    check_attributes();
  }

 private:
  void add_message(const MessageText& message) {
    if (!message.stored.empty()) messages_.emplace_back(message, context_.path);
  }

  void check_message(const EffectiveMessage& message) {
    if (message.message().stored.size() > kMaximumMessageSize) {
      add(Rule::kLongMessage, message.message().position,
          "the message takes " + std::to_string(message.message().stored.size()) + " bytes in the compiled file",
          "keep messages within 65,535 bytes; long texts belong into attributes or documents");
    }
    std::unordered_set<std::string_view> told;
    std::unordered_set<std::string_view> amounts;
    message.for_each_reference([&](const TemplatePart& reference, RenderingPath form) {
      if (is_known_format(reference.format)) check_reference(message, reference, form, told);
      if (reference.format == 'C' && amounts.insert(reference.text).second) check_amount(message, reference, form);
    });
    check_rendering(message);
  }

  /// One warning about rendering is enough, be it for the first of two paths.
  void check_rendering(const EffectiveMessage& message) {
    bool is_told = is_lowered(message.message());
    for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
      if (!message.is_shown_by(form) || (is_told && !may_hide_references(message.message(), form))) continue;
      const TemplateJudgement judged =
          judge_template(message.message().stored, form, [this](std::string_view name) { return look_up(name); });
      report_all(TemplateReason::kHiddenReference, Rule::kQuotedPlaceholder, message, judged);
      if (is_told) continue;
      report_all(TemplateReason::kOwnArgument, Rule::kPatternArgument, message, judged);
      is_told = report_failures(message.message(), form, judged);
    }
  }

  /// What the compiler made of a text is as good as the paths allow, and was reported where it is not.
  static bool is_lowered(const MessageText& message) { return message.position.known() && !message.raw; }

  static bool may_hide_references(const MessageText& message, RenderingPath form) {
    return form == RenderingPath::kIcu && message.stored.find_first_of("'{") != std::string::npos;
  }

  /// The first one, and the fields before it that another file may define. Returns whether there are any.
  bool report_failures(const MessageText& message, RenderingPath form, const TemplateJudgement& judged) {
    for (const TemplateFinding& finding : judged.findings) {
      if (!finding.fails()) continue;
      if (finding.reason != TemplateReason::kUndefinedStandardField) {
        report_broken(message, form, finding);
        break;
      }
      add(Rule::kUndefinedStandardField, message.position, finding.text, finding.hint);
    }
    return judged.failure() != nullptr;
  }

  void report_broken(const MessageText& message, RenderingPath form, const TemplateFinding& failure) {
    const bool depends_on_values = failure.reason == TemplateReason::kInapplicablePattern;
    add(Rule::kBrokenTemplate, message.position,
        std::string(depends_on_values ? "not every" : "no") + " entry can be rendered with this template on " +
            std::string(path_name(form)) + ": " + failure.text,
        "the compiler checks and writes the template where the source has a text instead of 'raw'");
  }

  /// One warning for an attribute in a message, however often the message refers to it.
  void check_reference(const EffectiveMessage& message, const TemplatePart& reference, RenderingPath form,
                       std::unordered_set<std::string_view>& told) {
    const qz_AttributeType type = find_type(reference.text);
    if (type != TypeUInt4 && type != TypeBool) return;
    const bool whole_range = type == TypeUInt4 && form == RenderingPath::kNarrow && is_plain_number(reference.format);
    if (whole_range || !told.insert(reference.text).second) return;
    const SourcePosition position = message.find_reference(reference.text);
    if (type == TypeUInt4) {
      add(Rule::kNegativeUnsigned, position,
          "values of " + quoted(reference.text) + " above 2147483647 show as " + wrong_number(form) + " on " +
              std::string(path_name(form)),
          "accept this where values stay below, or store them as text");
    } else {
      add(Rule::kBooleanAsZero, position,
          "the Bool " + quoted(reference.text) + " shows as " + boolean_text(reference.format, form) + " on " +
              std::string(path_name(form)) + ", whatever its value",
          "give it the type UInt1 to show 1 or 0, or let a UInt1 select the message");
    }
  }

  void check_amount(const EffectiveMessage& message, const TemplatePart& reference, RenderingPath form) {
    const qz_AttributeType type = find_type(reference.text);
    if (type == TypeBool || accepted_formats(type).find(reference.format) == std::string_view::npos) return;
    const std::string amount = form == RenderingPath::kIcu ? "in the currency of each reader's locale, unconverted,"
                                                           : "of dollars, without its sign,";
    add(Rule::kCurrencyOfReader, message.find_reference(reference.text),
        quoted(reference.text) + " shows as an amount " + amount + " on " + std::string(path_name(form)),
        "name the currency in the text, or accept this where all readers have the same one");
  }

  static bool is_plain_number(char format) { return format == 'd' || format == 'u'; }

  static std::string wrong_number(RenderingPath form) {
    return form == RenderingPath::kIcu ? "negative numbers" : "other numbers";
  }

  static std::string boolean_text(char format, RenderingPath form) {
    return form == RenderingPath::kNarrow && is_plain_number(format) ? "nothing" : "0";
  }

  /// What is found again of the same attribute or the same argument says nothing new.
  void report_all(TemplateReason reason, Rule rule, const EffectiveMessage& message, const TemplateJudgement& judged) {
    std::set<std::string> told;
    for (const TemplateFinding& finding : judged.findings) {
      if (finding.reason != reason || !told.insert(finding.text).second) continue;
      add(rule, message.find_reference(finding.name), finding.text, finding.hint);
    }
  }

  void check_attributes() {
    std::unordered_set<std::string_view> used;
    collect_references(used);
    for (const AttributeDefinition& attribute : entry_.attributes) {
      if (!used.contains(attribute.name)) {
        add(Rule::kUnusedAttribute, attribute.position,
            "the attribute " + quoted(attribute.name) + " is in no message of its entry and selects none",
            attribute.type == TypeGUID ? "leave it out; a GUID attribute can be neither set nor shown"
                                       : "refer to it in a message, or accept this where only programs read it");
      }
      check_hidden_global(attribute);
    }
  }

  /// Whatever a path makes of a reference, its attribute is used.
  void collect_references(std::unordered_set<std::string_view>& used) {
    used.insert(entry_.selector.attribute);
    add_standard_messages();
    for (const EffectiveMessage& message : messages_) {
      message.for_each_reference(
          [&used](const TemplatePart& reference, RenderingPath) { used.insert(reference.text); });
    }
  }

  /// An auxiliary entry's attributes may be in the messages that stay as they are.
  void add_standard_messages() {
    if (standard_entry_ == nullptr) return;
    add_message(standard_entry_->message);
    for (const SelectorMessage& message : standard_entry_->selector.messages) add_message(message.message);
  }

  void check_hidden_global(const AttributeDefinition& attribute) {
    const AttributeDefinition* global = context_.index.find_global(attribute.name);
    const bool in_standard = global == nullptr && context_.standard_index;
    if (in_standard) global = context_.standard_index->find_global(attribute.name);
    if (global == nullptr) return;
    add(Rule::kHiddenGlobal, attribute.position,
        "the entry's attribute " + quoted(attribute.name) + " hides the global attribute of that name",
        std::string(kRenameHint));
    add_place(warnings_.back(), {in_standard, global->position, "the global attribute is here"});
  }

  qz_AttributeType find_type(std::string_view name) const {
    if (const std::optional<qz_AttributeType> standard = find_standard_field(name)) return *standard;
    return look_up(name).value_or(TypeUnknown);
  }

  std::optional<qz_AttributeType> look_up(std::string_view name) const {
    const AttributeDefinition* found = find_attribute(entry_.attributes, name);
    if (found == nullptr && standard_entry_ != nullptr) found = find_attribute(standard_entry_->attributes, name);
    if (found == nullptr) found = context_.index.find_global(name);
    if (found == nullptr && context_.standard_index) found = context_.standard_index->find_global(name);
    return found == nullptr ? std::nullopt : std::optional(found->type);
  }

  void add(Rule rule, SourcePosition position, std::string text, std::string hint) {
    warnings_.push_back({rule, entry_.id, true, position, std::move(text), std::move(hint), {}});
  }

  const ModelContext& context_;
  const EntryDefinition& entry_;
  const EntryDefinition* standard_entry_;
  std::vector<EffectiveMessage> messages_;
  std::vector<ModelWarning>& warnings_;
};

/// Global attributes that an auxiliary file adds reach the standard entries as well.
void check_new_globals(const ModelContext& context, std::vector<ModelWarning>& warnings) {
  if (!context.standard_index || context.model->globals.empty()) return;
  std::unordered_map<std::string_view, const EntryDefinition*> hiding;
  for (const EntryDefinition& entry : context.standard_index->model().entries) {
    for (const AttributeDefinition& attribute : entry.attributes) hiding.try_emplace(attribute.name, &entry);
  }
  for (const AttributeDefinition& global : context.model->globals) {
    const auto found = hiding.find(global.name);
    if (found == hiding.end() || context.standard_index->find_global(global.name) != nullptr) continue;
    const EntryDefinition& entry = *found->second;
    warnings.push_back({Rule::kHiddenGlobal,
                        0,
                        false,
                        global.position,
                        "the standard entry " + std::to_string(entry.id) + " has an attribute " + quoted(global.name) +
                            ", which hides the global attribute of that name",
                        std::string(kRenameHint),
                        {}});
    const AttributeDefinition* const attribute = find_attribute(entry.attributes, global.name);
    add_place(warnings.back(), {true, attribute->position, "the entry's attribute is here"});
  }
}

std::string shared_entries_text(std::size_t shared, std::size_t together) {
  return (shared == 1 ? "1 entry extends a standard one" : std::to_string(shared) + " entries extend standard ones") +
         ", and both files have " + std::to_string(together) + " together; the library keeps " +
         std::to_string(qz_DefinitionCacheSize) +
         " in memory, and an extended one that it reads again lacks what the standard file defines";
}

/// A definition that the library reads a second time comes from the auxiliary file alone. That happens once a program
/// has used more entries than the library keeps, whichever they are.
void check_shared_entries(const ModelContext& context, std::vector<ModelWarning>& warnings) {
  if (!context.standard_index) return;
  std::unordered_set<std::uint32_t> together;
  for (const EntryDefinition& entry : context.standard_index->model().entries) together.insert(entry.id);
  std::unordered_set<std::uint32_t> shared;
  SourcePosition first;
  for (const EntryDefinition& entry : context.model->entries) {
    if (together.insert(entry.id).second || context.standard_index->find_entry(entry.id) == nullptr) continue;
    if (shared.empty()) first = entry.position;
    shared.insert(entry.id);
  }
  if (shared.empty() || together.size() <= qz_DefinitionCacheSize) return;
  warnings.push_back({Rule::kAuxSharedEntries,
                      0,
                      false,
                      first,
                      shared_entries_text(shared.size(), together.size()),
                      "make one file of both: qzlog compile STD.yaml --merge AUX.yaml -o ALL.ldf",
                      {}});
}

}  // namespace

std::vector<ModelWarning> find_model_warnings(const DefinitionModel& model, const DefinitionModel* standard,
                                              RenderingPaths path) {
  ModelContext context{&model, ModelIndex(model), std::nullopt, path};
  if (standard != nullptr) context.standard_index.emplace(*standard);
  std::vector<ModelWarning> warnings;
  check_shared_entries(context, warnings);
  check_new_globals(context, warnings);
  for (const EntryDefinition& entry : model.entries) EntryWarnings(context, entry, warnings).find();
  return warnings;
}

}  // namespace qzlog_compiler
