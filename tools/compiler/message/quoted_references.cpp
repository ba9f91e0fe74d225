#include "tools/compiler/message/quoted_references.h"

#include <string_view>
#include <utility>

#include "tools/compiler/model/attribute_type.h"

namespace qzlog_compiler {
namespace {

/// Follows ICU through the pattern that a template becomes.
class QuotedReferences {
 public:
  std::vector<TemplatePart> find(const StoredTemplate& stored) {
    for (const TemplatePart& part : stored.parts) {
      if (!part.is_reference()) {
        take_text(part.text);
      } else if (is_known_format(part.format)) {
        take_reference(part);
      }
    }
    return std::move(found_);
  }

 private:
  void take_text(std::string_view text) {
    for (const char character : text) take(character);
  }

  void take_reference(const TemplatePart& part) {
    take('{');
    if (in_quotes_) found_.push_back(part);
    take('}');
  }

  /// Two apostrophes are a literal one; a single one begins quoted text only before a brace, and ends it anywhere.
  void take(char character) {
    if (character == '\'') {
      apostrophe_ = !apostrophe_;
      return;
    }
    if (std::exchange(apostrophe_, false)) {
      const bool begins = character == '{' || character == '}';
      in_quotes_ = !in_quotes_ && begins;
    }
  }

  std::vector<TemplatePart> found_;
  bool in_quotes_ = false;
  bool apostrophe_ = false;  // one stands before, not yet paired
};

}  // namespace

std::vector<TemplatePart> find_quoted_references(const StoredTemplate& stored) {
  return QuotedReferences().find(stored);
}

}  // namespace qzlog_compiler
