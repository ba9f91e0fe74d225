#ifndef QZLOG_TOOLS_EXPLAIN_ENTRY_EXPLANATION_H
#define QZLOG_TOOLS_EXPLAIN_ENTRY_EXPLANATION_H

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "tools/compiler/model/definition_model.h"
#include "tools/definitions/entry_view.h"
#include "tools/templates/message_catalog.h"

namespace qzlog_tool {

/// A message as readers of one language see it, `{Name}` for values.
struct ExplainedText {
  std::string language;             ///< "definitions", "definitions, without ICU", or a catalog's locale
  std::optional<std::string> text;  ///< none: no message comes out
  std::string note;                 ///< why not
  bool stale = false;               ///< a catalog's that was built from another text than the definitions have
};

struct ExplainedMessage {
  std::string key;
  std::optional<std::uint32_t> index;  ///< of a selector message
  std::optional<std::uint32_t> value;
  std::vector<ExplainedText> texts;
};

struct EntryExplanation {
  qzlog_compiler::EntryDefinition entry;  ///< of both files
  bool in_standard = false;
  bool in_auxiliary = false;
  std::string version;
  std::vector<qzlog_compiler::AttributeDefinition> globals;  ///< those that the messages show
  bool shows_own_time = false;                               ///< whether one of them shows TIMESTAMP
  std::vector<ExplainedMessage> messages;                    ///< the default message first
};

/// Gathers what is known of an entry; none when no file defines it.
std::optional<EntryExplanation> explain_entry(std::uint32_t id, const DefinitionPair& definitions,
                                              const std::vector<CatalogBundle>& bundles);

/// The range of an attribute's values, in words; empty where there is nothing to say.
std::string value_range(qz_AttributeType type);

/// Whether messages show the attribute's values in GMT, unlike the entry's own time.
bool is_shown_in_gmt(qz_AttributeType type);

void print_explanation(std::ostream& out, const EntryExplanation& explanation);
void print_explanation_json(std::ostream& out, const EntryExplanation& explanation);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_EXPLAIN_ENTRY_EXPLANATION_H
