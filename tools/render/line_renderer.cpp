#include "tools/render/line_renderer.h"

#include <cstddef>

#include "tools/logs/entry_error.h"
#include "tools/render/library_call.h"

namespace qzlog_tool {

std::string_view LineRenderer::render(const qz_LOG_EntryLine& line) {
  const qz_LOG_LogEntry& entry = line.GetEntry();
  call_for_entry(EntryRule::kNoMessage,
                 [&] { entry.FormatMessage(message_, line.GetUseDefault(), line.GetSelectorIndex()); });
  if (code_page_ == nullptr) return message_;
  if (!code_page_->from_utf8(message_.c_str(), message_.size(), converted_)) {
    throw EntryError{EntryRule::kNoMessage, "the message cannot be converted to " + code_page_->name()};
  }
  return converted_;
}

// In ASCII, whatever the code page of the messages.
std::string_view LineRenderer::tell_loss(const qz_LOG_EntryLine& line) {
  message_ = line.IsHeld() ? "held back:" : "lost:";
  for (std::size_t index = 0; index < line.GetLostCount(); ++index) {
    const qz_LOG_LostEntries lost = line.GetLost(index);
    message_ += (index > 0 ? "; " : " ") + std::to_string(lost.count) + " of entry ID " + std::to_string(lost.id) +
                ", level " + std::to_string(lost.level);
    if (lost.since[0] != '\0') message_.append(", since ").append(lost.since);
  }
  return message_;
}

}  // namespace qzlog_tool
