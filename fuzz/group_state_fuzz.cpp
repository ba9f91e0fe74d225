// States of groups of readers of a folder: what is read is what would be written.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "ship/file/group_state.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  for (const std::string& whole : {std::string(text), "qzlog group 1\n" + std::string(text) + "end\n"}) {
    const std::optional<qzlog_ship::GroupState> state = qzlog_ship::GroupState::parse(whole);
    if (state && qzlog_ship::GroupState::parse(state->text()) != state) std::abort();
    for (const qzlog_ship::GroupClaim& claim : state.value_or(qzlog_ship::GroupState()).claims) {
      if (claim.begin >= claim.end || claim.end > state->next) std::abort();
    }
  }
  return 0;
}
