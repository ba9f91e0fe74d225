#include "tools/check/compiled_check.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "definitions/definition_format.h"
#include "tools/compiler/file/entry_map.h"
#include "tools/compiler/file/ldf_reader.h"
#include "tools/compiler/message/template_judge.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/model_merge.h"
#include "tools/compiler/source/aux_merge.h"
#include "tools/compiler/source/model_warnings.h"
#include "tools/compiler/source/scalar_values.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/definitions/entry_view.h"
#include "tools/report/source_rules.h"
#include "tools/templates/readable_template.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::AttributeLookup;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::kMaximumCount;
using qzlog_compiler::MessageText;
using qzlog_compiler::ModelWarning;
using qzlog_compiler::quoted;
using qzlog_compiler::RenderingPath;
using qzlog_compiler::RenderingPaths;
using qzlog_compiler::Rule;
using qzlog_compiler::SelectorMessage;
using qzlog_compiler::Severity;
using qzlog_compiler::SourcePosition;
using qzlog_compiler::TemplateFinding;
using qzlog_compiler::TemplateJudgement;
using qzlog_compiler::TemplateReason;

std::string of_selector_message(const SelectorMessage& message) {
  return "selector message " + std::to_string(message.index);
}

void check_count(std::size_t count, Rule rule, const char* what, CheckReport& report) {
  if (count <= kMaximumCount) return;
  report.error(rule, std::to_string(count) + " " + what +
                         "; the library counts them in 8 bits and forgets all that it has at the 256th");
}

void check_types(const std::vector<AttributeDefinition>& attributes, CheckReport& report) {
  for (const AttributeDefinition& attribute : attributes) {
    if (qzlog_compiler::short_type_name(attribute.type) != "Unknown") continue;
    report.warning(Rule::kUnknownType, "the type code " + std::to_string(static_cast<int>(attribute.type)) + " of " +
                                           quoted(attribute.name) + " means nothing; no value can be set");
  }
}

/// Judges the templates of one entry.
class MessageCheck {
 public:
  /// `entry` gives the attributes, merged where two files define it.
  MessageCheck(const EntryDefinition& entry, const DefinitionPair& definitions, RenderingPaths path,
               CheckReport& report)
      : lookup_(attributes_of(entry, definitions)), path_(path), report_(report) {}

  void check(const MessageText& message) {
    if (message.stored.empty()) return;
    TemplateJudgement icu;
    TemplateJudgement narrow;
    const bool readable = qzlog_compiler::is_utf8(message.stored);
    if (path_ != RenderingPaths::kNarrow && !readable) {
      report_.warning(Rule::kInvalidUtf8, "the text is not UTF-8, so ICU shows substitution characters");
    }
    if (path_ != RenderingPaths::kNarrow && readable) icu = judge(message, RenderingPath::kIcu);
    if (path_ != RenderingPaths::kIcu) narrow = judge(message, RenderingPath::kNarrow);
    if (path_ == RenderingPaths::kBoth && readable && icu.findings.empty() && narrow.findings.empty()) {
      compare_paths(icu, narrow);
    }
    report(icu, narrow);
  }

 private:
  TemplateJudgement judge(const MessageText& message, RenderingPath form) const {
    return qzlog_compiler::judge_template(message.stored, form, lookup_);
  }

  static bool has(const TemplateJudgement& judged, const TemplateFinding& finding) {
    return std::any_of(judged.findings.begin(), judged.findings.end(),
                       [&finding](const TemplateFinding& other) { return other.says_the_same(finding); });
  }

  void report(const TemplateJudgement& icu, const TemplateJudgement& narrow) {
    const bool one_path_works = path_ == RenderingPaths::kBoth && (!icu.has_errors() || !narrow.has_errors());
    for (const TemplateFinding& finding : icu.findings) {
      // Said of the whole model already.
      if (finding.reason == TemplateReason::kHiddenReference) continue;
      report(finding, has(narrow, finding) ? "" : "on the ICU path: ", one_path_works);
    }
    for (const TemplateFinding& finding : narrow.findings) {
      if (!has(icu, finding)) report(finding, "on the narrow path: ", one_path_works);
    }
  }

  void report(const TemplateFinding& finding, const char* where, bool one_path_works) {
    report_.add(one_path_works ? Severity::kWarning : finding.severity(), finding.rule,
                (path_ == RenderingPaths::kBoth ? where : "") + finding.text, finding.hint);
  }

  void compare_paths(const TemplateJudgement& icu, const TemplateJudgement& narrow) {
    const auto wide_text = readable_template(icu, lookup_);
    const auto narrow_text = readable_template(narrow, lookup_);
    if (wide_text == narrow_text || !wide_text || !narrow_text) return;
    report_.warning(Rule::kPathConflict,
                    "the ICU path shows " + quoted(*wide_text) + ", the narrow path " + quoted(*narrow_text));
  }

  AttributeLookup lookup_;
  RenderingPaths path_;
  CheckReport& report_;
};

/// One entry of the file under check.
class EntryCheck {
 public:
  EntryCheck(const EntryDefinition& entry, const DefinitionPair& definitions, bool is_auxiliary, RenderingPaths path,
             CheckReport& report)
      : entry_(entry),
        is_auxiliary_(is_auxiliary),
        standard_(is_auxiliary ? definitions.find_standard(entry.id) : nullptr),
        merged_(*definitions.find_entry(entry.id)),
        definitions_(definitions),
        path_(path),
        report_(report) {}

  void check() {
    report_.about_entry(entry_.id);
    check_count(entry_.attributes.size(), Rule::kTooManyAttributes, "attributes", report_);
    check_count(entry_.selector.messages.size(), Rule::kTooManySelectorMessages, "selector messages", report_);
    check_types(entry_.attributes, report_);
    check_selector();
    check_keys();
    // Without its attributes, hardly a message would come out.
    if (merged_.attributes.size() <= kMaximumCount) check_messages();
  }

 private:
  void check_selector() {
    if (entry_.selector.attribute.empty()) return;
    const AttributeDefinition* const attribute = find_selector();
    if (attribute == nullptr) {
      report_.warning(Rule::kUnknownSelectorAttribute,
                      "the entry has no attribute " + quoted(entry_.selector.attribute) + " to select its messages by");
      return;
    }
    const auto limit = qzlog_compiler::selector_value_limit(attribute->type);
    if (!limit) {
      report_.error(Rule::kSelectorAttributeType,
                    quoted(attribute->name) + " is " + std::string(qzlog_compiler::short_type_name(attribute->type)) +
                        "; the message fails wherever it is set, for a selector attribute is UInt1, UInt2 or UInt4");
      return;
    }
    check_values(*limit);
  }

  /// An auxiliary record that does not list the attribute again selects by the standard one's.
  const AttributeDefinition* find_selector() const {
    const AttributeDefinition* const own = qzlog_compiler::selector_attribute(entry_);
    if (own != nullptr || standard_ == nullptr) return own;
    const AttributeDefinition* const former = qzlog_compiler::selector_attribute(*standard_);
    return former != nullptr && former->name == entry_.selector.attribute ? former : nullptr;
  }

  void check_values(std::uint32_t limit) {
    for (const SelectorMessage& message : entry_.selector.messages) {
      if (message.value <= limit) continue;
      report_.about_entry(entry_.id, of_selector_message(message));
      report_.warning(Rule::kSelectorValueRange, "the value " + std::to_string(message.value) +
                                                     " is never met: the selector attribute holds at " + "most " +
                                                     std::to_string(limit));
    }
  }

  void check_keys() {
    std::set<std::uint32_t> indexes;
    std::set<std::uint32_t> values;
    for (const SelectorMessage& message : entry_.selector.messages) {
      report_.about_entry(entry_.id, of_selector_message(message));
      if (!indexes.insert(message.index).second) {
        report_.warning(
            Rule::kDuplicateSelectorIndex,
            "an earlier message has the index " + std::to_string(message.index) + ", so nobody can ask for this one");
      }
      if (!values.insert(message.value).second) {
        report_.warning(
            Rule::kDuplicateSelectorValue,
            "an earlier message has the value " + std::to_string(message.value) + ", which never selects this one");
      }
      check_message_id(message.id);
    }
    report_.about_entry(entry_.id);
    if (standard_ == nullptr) check_message_id(entry_.message_id);
  }

  void check_message_id(const std::string& id) {
    if (!id.empty()) return;
    report_.warning(Rule::kEmptyMessageId, "an empty catalog key: the message fails wherever a catalog is in use");
  }

  void check_messages() {
    MessageCheck messages(merged_, definitions_, path_, report_);
    report_.about_entry(entry_.id);
    if (!is_auxiliary_ || qzlog_compiler::gives_message(entry_)) messages.check(entry_.message);
    for (const SelectorMessage& message : entry_.selector.messages) {
      report_.about_entry(entry_.id, of_selector_message(message));
      messages.check(message.message);
    }
  }

  const EntryDefinition& entry_;
  bool is_auxiliary_;
  const EntryDefinition* standard_;
  const EntryDefinition merged_;
  const DefinitionPair& definitions_;
  RenderingPaths path_;
  CheckReport& report_;
};

void check_map(std::string_view bytes, CheckReport& report) {
  std::set<std::uint32_t> ids;
  for (const auto& pair : qzlog_compiler::read_entry_map(bytes)) {
    if (ids.insert(pair.id).second) continue;
    report.about_entry(pair.id);
    report.warning(Rule::kDuplicateId, "the map lists the ID again; of several records the last one counts");
  }
}

void check_globals(const DefinitionModel& model, CheckReport& report) {
  report.about_file();
  check_count(model.globals.size(), Rule::kTooManyGlobals, "global attributes", report);
  check_types(model.globals, report);
  std::set<std::string_view> names;
  for (const AttributeDefinition& global : model.globals) {
    if (names.insert(global.name).second) continue;
    report.warning(Rule::kDuplicateGlobal,
                   quoted(global.name) + " is the name of another global attribute, which this one replaces");
  }
}

void check_version(std::string_view bytes, const DefinitionModel& model, CheckReport& report) {
  const bool has_header = qzlog_compiler::looks_like_ldf(bytes) && bytes.size() >= qzlog::ldf::kHeaderSize;
  if (!has_header || qzlog_compiler::is_version(model.version)) return;
  report.about_file();
  report.warning(Rule::kBadVersion, "entries cannot take their version from the tag " + quoted(model.version) +
                                        "; a version is MAJOR.MINOR in digits");
}

/// The compiler's own checks of an auxiliary model ask for places in a source. The line is the place of the entry in
/// the model here, and what a compiled record leaves empty was not given.
DefinitionModel with_places(const DefinitionModel& model) {
  DefinitionModel placed = model;
  for (std::size_t i = 0; i < placed.entries.size(); ++i) {
    EntryDefinition& entry = placed.entries[i];
    const SourcePosition place{static_cast<std::uint32_t>(i + 1), 1};
    entry.position = entry.selector.position = place;
    if (!entry.name.empty()) entry.name_position = place;
    for (AttributeDefinition& attribute : entry.attributes) attribute.position = place;
    for (SelectorMessage& message : entry.selector.messages) message.index_position = message.value_position = place;
    if (entry.mask != 0) entry.mask_position = place;
    if (!entry.message.stored.empty()) entry.message.position = place;
    if (!entry.message_id.empty()) entry.message_id_position = place;
  }
  return placed;
}

void check_merge(const DefinitionModel& model, const DefinitionModel& standard, CheckReport& report) {
  qzlog_compiler::Findings diagnostics("");
  qzlog_compiler::check_aux_merge(with_places(model), qzlog_compiler::ModelIndex(standard), "", diagnostics);
  for (qzlog_compiler::Finding& found : diagnostics.take_sorted()) {
    if (found.place.known()) {
      report.about_entry(model.entries[found.place.line - 1].id);
    } else {
      report.about_file();
    }
    report.add(found.severity, found.rule, std::move(found.text), std::move(found.hint));
  }
}

/// By the check of each message, which says more.
bool is_said_of_messages(Rule rule) {
  return rule == Rule::kBrokenTemplate || rule == Rule::kPatternArgument || rule == Rule::kUndefinedStandardField;
}

void report_warnings(const DefinitionModel& model, const DefinitionModel* standard, RenderingPaths path,
                     CheckReport& report) {
  std::set<std::pair<std::uint32_t, std::string>> told;  // without places, several messages of an entry say the same
  for (ModelWarning& warning : qzlog_compiler::find_model_warnings(model, standard, path)) {
    if (!told.emplace(warning.entry_id, warning.text).second) continue;
    if (is_said_of_messages(warning.rule)) continue;
    if (warning.about_entry) {
      report.about_entry(warning.entry_id);
    } else {
      report.about_file();
    }
    report.add(Severity::kWarning, warning.rule, std::move(warning.text), std::move(warning.hint));
  }
}

}  // namespace

void check_compiled(const CompiledFile& file, const DefinitionModel* standard, RenderingPaths path,
                    CheckReport& report) {
  check_version(file.bytes, *file.model, report);
  check_globals(*file.model, report);
  check_map(file.bytes, report);
  const bool is_auxiliary = standard != nullptr;
  if (is_auxiliary) check_merge(*file.model, *standard, report);
  const DefinitionPair definitions(is_auxiliary ? *standard : *file.model, is_auxiliary ? file.model : nullptr);
  for (const EntryDefinition& entry : file.model->entries) {
    EntryCheck(entry, definitions, is_auxiliary, path, report).check();
  }
  report_warnings(*file.model, standard, path, report);
}

}  // namespace qzlog_tool
