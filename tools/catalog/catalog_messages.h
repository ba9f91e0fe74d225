#ifndef QZLOG_TOOLS_CATALOG_CATALOG_MESSAGES_H
#define QZLOG_TOOLS_CATALOG_CATALOG_MESSAGES_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "qzlog/logattrib.h"
#include "tools/catalog/catalog_rules.h"
#include "tools/compiler/model/definition_model.h"
#include "tools/definitions/definitions.h"
#include "tools/report/finding.h"

namespace qzlog_catalog {

/// The attributes that a message can refer to.
class MessageScope {
 public:
  using Attributes = std::vector<qzlog_compiler::AttributeDefinition>;

  MessageScope(std::vector<const Attributes*> own, std::vector<const Attributes*> global)
      : own_(std::move(own)), global_(std::move(global)) {}

  std::optional<qz_AttributeType> find(std::string_view name) const;
  /// The lists of the entry's own attributes; those of an auxiliary entry come before the standard entry's.
  const std::vector<const Attributes*>& own() const { return own_; }
  const std::vector<const Attributes*>& global() const { return global_; }

 private:
  std::vector<const Attributes*> own_;
  std::vector<const Attributes*> global_;
};

/// A place that shows a message: an entry's default message, or one that its selector picks.
struct MessageUse {
  const qzlog_compiler::EntryDefinition* entry;
  const qzlog_compiler::SelectorMessage* selected;  ///< null for the default message
  std::string_view selector_attribute;
  std::string_view file;
  qzlog_compiler::SourcePosition position;
  MessageScope scope;
};

struct CatalogMessage {
  std::string_view id;
  const qzlog_compiler::MessageText* text;  ///< stored for the ICU path
  std::vector<MessageUse> uses;             ///< in the order of the sources, never empty
};

/// The messages that a catalog has to hold for a standard source and the auxiliary ones that extend it, in their order.
class CatalogMessages {
 public:
  /// `sources` begins with the standard one; they are compiled for the ICU path and have no errors. None when there is
  /// an error between the messages. Messages without an ID are left out, for nothing can look them up.
  static std::optional<CatalogMessages> collect(std::vector<qzlog_tool::Definitions> sources, Findings& findings);

  const std::vector<CatalogMessage>& messages() const { return messages_; }
  const CatalogMessage* find(std::string_view id) const;
  const std::vector<qzlog_tool::Definitions>& sources() const { return sources_; }
  /// The standard source's version tag.
  const std::string& version() const { return sources_.front().model.version; }

 private:
  explicit CatalogMessages(std::vector<qzlog_tool::Definitions> sources) : sources_(std::move(sources)) {}

  void take_source(std::size_t index, const qzlog_compiler::ModelIndex& standard, Findings& findings);
  void take_entry(const qzlog_compiler::EntryDefinition& entry, const qzlog_compiler::EntryDefinition* extended,
                  std::size_t source, Findings& findings);
  void add(std::string_view id, const qzlog_compiler::MessageText& text, MessageUse use, Findings& findings);

  // Messages point into them; they stay where they are when the whole is moved.
  std::vector<qzlog_tool::Definitions> sources_;
  std::vector<CatalogMessage> messages_;
  std::unordered_map<std::string_view, std::size_t> places_;
};

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_MESSAGES_H
