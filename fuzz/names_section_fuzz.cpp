// Reads the input as the names section of a compiled definition file, with the library's reader and with the
// compiler's: both have to refuse it, or to find the same.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "definitions/definition_format.h"
#include "definitions/event_names.h"
#include "definitions/names_format.h"
#include "foundation/crc32.h"
#include "tools/compiler/file/ldf_names.h"
#include "tools/compiler/model/sensitivity.h"

using namespace qzlog_compiler;

namespace {

void append_int4(std::string& out, std::size_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift & 0xFFU);
}

/// The section behind a header of zeros, with a trailer that fits it.
std::string file_of(std::string_view section) {
  std::string file(qzlog::ldf::kHeaderSize, '\0');
  file += section;
  std::string trailer;
  for (const std::size_t value : {std::size_t{qzlog::ldf::kNamesMagic}, std::size_t{qzlog::ldf::kNamesVersion},
                                  qzlog::ldf::kHeaderSize, section.size(), std::size_t{qzlog::crc32(section)}}) {
    append_int4(trailer, value);
  }
  append_int4(trailer, qzlog::crc32(trailer));
  return file + trailer;
}

void require(bool condition) {
  if (!condition) __builtin_trap();
}

void compare(const qzlog::EventNames& by_library, const LdfNames& names) {
  for (const LdfNamedEvent& event : names.events) {
    require(by_library.find_name(event.id) == event.name && by_library.find_summary(event.id) == event.summary);
    unsigned int id = 0;
    require(by_library.find_id(event.name, id) && by_library.find_name(id) == event.name);
  }
  for (const LdfMarkedAttribute& mark : names.marks) {
    const qzlog::Sensitivity found =
        mark.is_global() ? by_library.global_sensitivity(mark.name) : by_library.sensitivity(mark.entry_id, mark.name);
    require(found == sensitivity_of_mark(mark.mark) && found <= by_library.strictest(mark.name));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < qzlog::ldf::kNamesMagicSize) return 0;
  std::unique_ptr<char[]> copy(new char[size]);
  std::memcpy(copy.get(), bytes, size);
  const auto by_library = qzlog::EventNames::parse(std::move(copy), size);
  const std::string file = file_of({reinterpret_cast<const char*>(bytes), size});
  const std::optional<LdfNames> names = read_ldf_names(file, file.size());
  require(names && names->damage.has_value() == (by_library == nullptr));
  if (by_library != nullptr) compare(*by_library, *names);
  walk_ldf_names(file, *names, file.size(), [](const LdfField&) {});
  return 0;
}
