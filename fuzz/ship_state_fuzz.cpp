// States of `qzlog ship`: what is read is what would be written, and everything else is refused with a reason.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/ship/ship_state.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto check = [](std::string_view state_as_text) {
    try {
      const qzlog_tool::ShipState state = qzlog_tool::parse_state(state_as_text);
      if (qzlog_tool::parse_state(qzlog_tool::state_text(state)) != state) std::abort();
    } catch (const qzlog_tool::BadState& fault) {
      if (*fault.what() == '\0') std::abort();
    }
  };
  check(text);
  check(qzlog_tool::with_checksum(text));  // chance does not find one
  return 0;
}
