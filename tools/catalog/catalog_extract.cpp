#include "tools/catalog/catalog_extract.h"

#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tools/compiler/message/stored_template.h"
#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/text/utf8_text.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::printable;
using qzlog_compiler::RenderingPath;
using qzlog_compiler::TemplatePart;

struct HeaderField {
  const char* name;
  const char* value;
};

/// What the programs for PO files expect; the placeholders are theirs. There is no creation date, for a template that
/// would not change otherwise has to stay as it is.
constexpr std::array kHeaderFields = {
    HeaderField{"Report-Msgid-Bugs-To", ""},
    HeaderField{"PO-Revision-Date", "YEAR-MO-DA HO:MI+ZONE"},
    HeaderField{"Last-Translator", "FULL NAME <EMAIL@ADDRESS>"},
    HeaderField{"Language-Team", "LANGUAGE <LL@li.org>"},
    HeaderField{"Language", ""},
    HeaderField{"MIME-Version", "1.0"},
    HeaderField{"Content-Type", "text/plain; charset=UTF-8"},
    HeaderField{"Content-Transfer-Encoding", "8bit"},
};

PoMessage make_header(const std::string& product) {
  PoMessage header;
  header.translation = "Project-Id-Version: " + printable(product) + '\n';
  for (const HeaderField& field : kHeaderFields) {
    header.translation += std::string(field.name) + ": " + field.value + '\n';
  }
  return header;
}

/// "DISK_FULL (1001): A volume has no free blocks left."
std::string entry_line(const MessageUse& use) {
  std::string line = use.entry->name + " (" + std::to_string(use.entry->id) + ")";
  if (use.selected != nullptr) {
    line += ", when " + std::string(use.selector_attribute) + " is " + std::to_string(use.selected->value);
  }
  if (!use.entry->summary.empty()) line += ": " + printable(use.entry->summary);
  return line + '\n';
}

void append_attribute(std::string& line, std::string_view name, qz_AttributeType type) {
  line += line.empty() ? "Attributes: " : ", ";
  line += std::string(name) + ' ' + std::string(qzlog_compiler::short_type_name(type));
}

/// The entry's attributes that can be shown, then the global ones and standard fields that the text refers to: a list
/// of all of them would hide the others.
std::string attribute_line(const CatalogMessage& message, const MessageUse& use) {
  std::string line;
  std::set<std::string, std::less<>> listed;
  for (const MessageScope::Attributes* const list : use.scope.own()) {
    for (const AttributeDefinition& attribute : *list) {
      const bool is_new = listed.insert(attribute.name).second;
      if (is_new && attribute.type != TypeGUID) append_attribute(line, attribute.name, attribute.type);
    }
  }
  for (const TemplatePart& part : find_references(message.text->stored, RenderingPath::kIcu)) {
    if (!qzlog_compiler::is_known_format(part.format) || !listed.insert(part.text).second) continue;
    const std::optional<qz_AttributeType> defined = use.scope.find(part.text);
    const std::optional<qz_AttributeType> type = defined ? defined : qzlog_compiler::find_standard_field(part.text);
    if (type) append_attribute(line, part.text, *type);
  }
  return line.empty() ? "" : line + '\n';
}

std::string comments_for(const CatalogMessage& message) {
  std::string comments;
  for (const MessageUse& use : message.uses) comments += entry_line(use) + attribute_line(message, use);
  if (message.text->raw) {
    comments += "A template as the library stores it: keep each reference %F%Name% as it stands.\n";
  }
  return comments;
}

PoMessage make_message(const CatalogMessage& message) {
  PoMessage result;
  result.context = std::string(message.id);
  result.source = message.text->written;
  result.extracted_comments = comments_for(message);
  for (const MessageUse& use : message.uses) result.references.push_back({printable(use.file), use.position.line});
  return result;
}

/// The messages of an old file by their context. One with the same source text goes before others, one that is in use
/// before obsolete ones, and the last of several obsolete ones, which is the youngest, before the rest.
class OldMessages {
 public:
  explicit OldMessages(const PoFile& file) : messages_(file.messages), used_(file.messages.size()) {
    for (std::size_t i = 0; i < messages_.size(); ++i) {
      if (!messages_[i].context) continue;
      exact_.emplace(exact_key(messages_[i]), i);
      const auto [place, added] = places_.try_emplace(*messages_[i].context, i);
      if (!added && messages_[place->second].obsolete) place->second = i;
    }
  }

  /// What there is for a message of the template, null for nothing.
  const PoMessage* take(const PoMessage& fresh) {
    const auto exact = exact_.find(exact_key(fresh));
    if (exact != exact_.end()) return take_at(exact->second);
    const auto place = places_.find(*fresh.context);
    return place == places_.end() ? nullptr : take_at(place->second);
  }

  /// Those that nobody took and that are worth keeping, as obsolete ones.
  std::vector<PoMessage> rest() const {
    std::vector<PoMessage> rest;
    for (std::size_t i = 0; i < messages_.size(); ++i) {
      if (!used_[i] && !messages_[i].is_header() && !messages_[i].translation.empty()) {
        rest.push_back(obsolete_form(messages_[i]));
      }
    }
    return rest;
  }

 private:
  /// Obsolete messages come without what was extracted from the sources.
  static PoMessage obsolete_form(PoMessage message) {
    message.obsolete = true;
    message.extracted_comments.clear();
    message.references.clear();
    return message;
  }

  /// PO files join the two in this way.
  static std::string exact_key(const PoMessage& message) { return *message.context + '\4' + message.source; }

  const PoMessage* take_at(std::size_t index) {
    used_[index] = true;
    return &messages_[index];
  }

  const std::vector<PoMessage>& messages_;
  std::vector<bool> used_;
  std::unordered_map<std::string, std::size_t> exact_;
  std::unordered_map<std::string_view, std::size_t> places_;
};

/// `fresh` with what the translator has made of `old`.
PoMessage merged(PoMessage fresh, const PoMessage& old) {
  fresh.comments = old.comments;
  fresh.formats = old.formats;
  fresh.translation = old.translation;
  if (old.translation.empty()) return fresh;
  fresh.fuzzy = old.fuzzy;
  fresh.previous_context = old.previous_context;
  fresh.previous_source = old.previous_source;
  if (old.source != fresh.source) {
    // A fuzzy translation was made from the text before the one that stands beside it now.
    if (!old.fuzzy || !old.previous_source) fresh.previous_source = old.source;
    fresh.fuzzy = true;
  }
  if (fresh.previous_source == fresh.source) fresh.previous_source.reset();
  return fresh;
}

}  // namespace

PoFile make_template(const CatalogMessages& messages, const std::string& product) {
  PoFile file;
  file.messages.push_back(make_header(product));
  for (const CatalogMessage& message : messages.messages()) {
    if (!message.text->written.empty()) file.messages.push_back(make_message(message));
  }
  return file;
}

PoFile begin_language(const PoFile& po_template, const std::string& language) {
  PoFile file;
  file.messages.push_back(*po_template.header());
  std::string& header = file.messages.front().translation;
  header = with_header_field(header, "Language", language);
  return file;
}

PoFile update_po(const PoFile& old, const PoFile& po_template) {
  PoFile result;
  if (const PoMessage* const header = old.header()) result.messages.push_back(*header);
  OldMessages old_messages(old);
  for (const PoMessage& fresh : po_template.messages) {
    if (fresh.is_header()) continue;
    const PoMessage* const known = old_messages.take(fresh);
    result.messages.push_back(known == nullptr ? fresh : merged(fresh, *known));
  }
  for (PoMessage& message : old_messages.rest()) result.messages.push_back(std::move(message));
  return result;
}

}  // namespace qzlog_catalog
