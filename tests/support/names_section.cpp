#include "tests/support/names_section.h"

#include "tests/support/ldf_file.h"

namespace qz_test {

std::string part(unsigned type, std::string_view bytes) {
  return int4(type) + int4(static_cast<unsigned>(bytes.size())) + std::string(bytes);
}

std::string NamesSection::bytes() const {
  std::string section = "QNAM";
  for (const Part& further : further_parts) section += part(further.type, further.bytes);
  std::string content = int4(static_cast<unsigned>(events.size()));
  for (const auto& [id, event] : events) content += int4(id) + ldf_string(event.first) + ldf_string(event.second);
  section += part(1, content);
  content = int4(static_cast<unsigned>(marks.size()));
  for (const auto& [attribute, mark] : marks) {
    content += int4(attribute.owner) + int4(attribute.entry_id) + ldf_string(attribute.name) + int4(mark);
  }
  return section + part(2, content);
}

std::string with_names(std::string file, const NamesSection& names) {
  return with_section(std::move(file), names.bytes());
}

std::string with_section(std::string file, std::string_view section, unsigned version) {
  std::string trailer = "QNAM" + int4(version) + int4(static_cast<unsigned>(file.size())) +
                        int4(static_cast<unsigned>(section.size())) + int4(plain_crc32(section));
  trailer += int4(plain_crc32(trailer));
  return file.append(section).append(trailer);
}

std::uint32_t plain_crc32(std::string_view bytes) {
  std::uint32_t remainder = 0xFFFFFFFF;
  for (const char byte : bytes) {
    for (int bit = 0; bit < 8; ++bit) {
      const std::uint32_t carry = (remainder ^ static_cast<unsigned char>(byte) >> bit) & 1U;
      remainder = remainder >> 1 ^ (carry != 0 ? 0xEDB88320 : 0);
    }
  }
  return ~remainder;
}

}  // namespace qz_test
