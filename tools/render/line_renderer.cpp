#include "tools/render/line_renderer.h"

#include "tools/render/entry_error.h"
#include "tools/render/library_call.h"

namespace qzlog_tool {

std::optional<std::string_view> LineRenderer::render(std::string_view line) {
  const JsonEntry source = parser_.parse(line);
  call_for_entry(EntryRule::kRefusedValue, [&] { entry_ = &builder_.build(source); });
  has_time_ = source.time != nullptr;
  if (filter_ != nullptr && !filter_->lets_through(*entry_)) return std::nullopt;
  call_for_entry(EntryRule::kNoMessage, [&] { entry_->FormatMessage(message_, source.use_default, source.selector); });
  if (message_code_page_ == nullptr) return message_;
  if (!message_code_page_->from_utf8(message_.c_str(), message_.size(), converted_)) {
    throw EntryError{EntryRule::kNoMessage, "the message cannot be converted to " + message_code_page_->name()};
  }
  return converted_;
}

}  // namespace qzlog_tool
