#include "tools/catalog/catalog_rules.h"

#include <cstddef>

namespace qzlog_catalog {
namespace {

using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {CatalogRule::kMessageIdConflict, "message-id-conflict", "One message ID stands for two different messages."},
    {CatalogRule::kMessageIdCharacter, "message-id-character",
     "A message ID holds a character that no catalog can hold in an ID."},
    {CatalogRule::kPoSyntax, "po-syntax", "A file is no well-formed PO file."},
    {CatalogRule::kPoCharset, "po-charset", "A PO file is not UTF-8, or does not say so in its header."},
    {CatalogRule::kPoLanguage, "po-language", "The language of a PO file is not known to ICU."},
    {CatalogRule::kPoDomain, "po-domain", "A PO file names a domain; a catalog has only one."},
    {CatalogRule::kPoPlural, "po-plural", "A message with plural forms, which no catalog has."},
    {CatalogRule::kDuplicateLanguage, "duplicate-language", "Two PO files are for one language."},
    {CatalogRule::kDuplicateMessage, "duplicate-message", "A PO file has two messages for one ID."},
    {CatalogRule::kSourceChanged, "source-changed",
     "The source text has changed since the PO file was updated; it is shown instead."},
    {CatalogRule::kUnknownMessage, "unknown-message", "A PO file translates a message that the sources do not have."},
    {CatalogRule::kBadManifest, "bad-manifest", "The list of what was made in a catalog's folder is damaged."},
    {CatalogRule::kForeignBundle, "foreign-bundle", "A bundle in a catalog's folder was not made by the command."},
};

static_assert(is_whole_table(kRules, CatalogRule::kForeignBundle));

}  // namespace

std::span<const RuleInfo> all_catalog_rules() { return kRules; }

const RuleInfo& rule_info(CatalogRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_catalog
