#ifndef QZLOG_TESTS_SUPPORT_NAMES_SECTION_H
#define QZLOG_TESTS_SUPPORT_NAMES_SECTION_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "definitions/names_format.h"

namespace qz_test {

/// The names section of a definition file, written byte by byte, apart from the compiler's writer.
///
///   NamesSection names{.events = {{7, {"FULL", "No room."}}}, .marks = {{{1, 7, "User"}, 2}}};
///   folder.write("a.ldf", with_names(file.bytes(), names));
struct NamesSection {
  using Event = std::pair<std::string, std::string>;  ///< name and summary

  struct MarkedAttribute {
    unsigned owner = 0;  ///< 0 global, 1 an entry
    unsigned entry_id = 0;
    std::string name = {};
    auto operator<=>(const MarkedAttribute&) const = default;
  };
  struct Part {
    unsigned type = 0;
    std::string bytes = {};
  };

  std::map<unsigned, Event> events = {};
  std::map<MarkedAttribute, unsigned> marks = {};
  std::vector<Part> further_parts = {};  ///< in front of the others

  std::string bytes() const;
};

std::string part(unsigned type, std::string_view bytes);

/// The section behind a file's records, and the trailer for it.
std::string with_names(std::string file, const NamesSection& names);
/// The same with any bytes for a section.
std::string with_section(std::string file, std::string_view section, unsigned version = 1);

/// CRC-32 bit by bit.
std::uint32_t plain_crc32(std::string_view bytes);

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_NAMES_SECTION_H
