#include "tools/templates/source_digest.h"

#include "tools/compiler/message/template_judge.h"
#include "tools/system/content_digest.h"

namespace qzlog_tool {
namespace {

using qzlog_compiler::RenderingPath;
using qzlog_compiler::TemplatePart;

constexpr char kMark = '\0';  ///< no text holds it

/// One text for all stored templates of which readers see the same. What they do not see at all, such as the end of a
/// text for the narrow path, is no part of the others': it stands behind two marks.
std::string canonical_text(std::string_view stored, RenderingPath form) {
  const std::string hidden(2, kMark);
  const auto parts = qzlog_compiler::judge_template(stored, form, {}).shown;
  if (!parts) return hidden + std::string(stored);
  std::string text;
  for (const TemplatePart& part : *parts) {
    text += part.is_reference() ? kMark + part.text + kMark + part.format : part.text;
  }
  const std::string_view lost = form == RenderingPath::kIcu ? stored.substr(stored.rfind('%') + 1) : "";
  return lost.empty() ? text : text + hidden + std::string(lost);
}

std::string digest_for(std::string_view stored, RenderingPath form) {
  return content_digest(canonical_text(stored, form)).substr(kContentDigestSize - kSourceDigestSize);
}

}  // namespace

std::string source_digest(std::string_view stored) { return digest_for(stored, RenderingPath::kIcu); }

bool is_source_digest_of(std::string_view digest, std::string_view stored) {
  return digest == source_digest(stored) || digest == digest_for(stored, RenderingPath::kNarrow);
}

}  // namespace qzlog_tool
