#include "bench/generated_definitions.h"

#include <cstdint>
#include <filesystem>
#include <iterator>

#include "bench/big_endian.h"
#include "bench/temporary_folder.h"

namespace qzlog_bench {
namespace {

constexpr std::size_t kHeaderSize = 128;
constexpr std::size_t kMapPairSize = 8;

struct Attribute {
  std::string name;
  qz_AttributeType type;
};

void append_string(std::string& bytes, const std::string& text) {
  append_int4(bytes, static_cast<std::uint32_t>(text.size() + 1));
  bytes.append(text.c_str(), text.size() + 1);
}

/// A compiled definition file in the making: header, entry map, records.
class DefinitionFile {
 public:
  explicit DefinitionFile(unsigned entry_count) : bytes_(kHeaderSize + entry_count * kMapPairSize, '\0') {
    bytes_.replace(0, 4, ".LDF");
    bytes_.replace(16, 3, "2.5");
    put_int4(bytes_, 48, entry_count);
    put_int4(bytes_, 56, kHeaderSize);
  }

  void add_entry(unsigned entry_id, const std::string& message, const std::vector<Attribute>& attributes) {
    put_int4(bytes_, next_pair_, entry_id);
    put_int4(bytes_, next_pair_ + 4, static_cast<std::uint32_t>(bytes_.size()));
    next_pair_ += kMapPairSize;
    append_int4(bytes_, entry_id);
    append_int4(bytes_, 0);
    append_int4(bytes_, 1);
    append_string(bytes_, "event." + std::to_string(entry_id));
    append_string(bytes_, message);
    append_int4(bytes_, 0);
    append_attributes(attributes);
    append_int4(bytes_, 0);
  }

  const std::string& bytes() const { return bytes_; }

 private:
  void append_attributes(const std::vector<Attribute>& attributes) {
    append_int4(bytes_, static_cast<std::uint32_t>(attributes.size()));
    for (const Attribute& attribute : attributes) {
      append_string(bytes_, attribute.name);
      append_int4(bytes_, static_cast<std::uint32_t>(attribute.type));
      append_int4(bytes_, 0);
    }
  }

  std::string bytes_;
  std::size_t next_pair_ = kHeaderSize;
};

/// The path of a file, made by `make` unless it is there.
template <typename Make>
std::string made_once(const std::string& name, Make make) {
  std::string path = temporary_file(name);
  if (!std::filesystem::exists(path)) write_file(path, make().bytes());
  return path;
}

DefinitionFile make_definitions_with_ids(unsigned count) {
  const std::vector<Attribute> attributes = {{"Number", TypeUInt4}, {"Name", TypeChar32}};
  DefinitionFile file(count);
  for (unsigned i = 0; i < count; ++i) {
    file.add_entry(kFirstGeneratedId + i, "Job %d%Number% of %s%Name%", attributes);
  }
  return file;
}

/// The message of workload A with the ID at its beginning.
std::string template_like_a(unsigned entry_id) {
  return "Event " + std::to_string(entry_id) +
         ", volume %s%Name%: %d%Blocks% blocks, change %d%Delta%, load %f%Load%, label %s%Label%";
}

DefinitionFile make_definitions_like_a(unsigned count) {
  std::vector<Attribute> attributes;
  attributes.reserve(WorkloadA::kFields.size());
  for (const Field& field : WorkloadA::kFields) attributes.push_back({field.name, field.type});
  DefinitionFile file(count);
  for (unsigned id = kFirstGeneratedId; id < kFirstGeneratedId + count; ++id) {
    file.add_entry(id, template_like_a(id), attributes);
  }
  return file;
}

DefinitionFile make_definitions_with_attributes(unsigned count) {
  std::vector<Attribute> attributes;
  attributes.reserve(count);
  for (unsigned i = 0; i < count; ++i) attributes.push_back({generated_attribute_name(i), TypeUInt4});
  DefinitionFile file(1);
  file.add_entry(kFirstGeneratedId, "Attribute 0: %d%" + generated_attribute_name(0) + "%", attributes);
  return file;
}

}  // namespace

std::string definitions_with_ids(unsigned count) {
  return made_once("ids-" + std::to_string(count) + ".ldf", [=] { return make_definitions_with_ids(count); });
}

std::string definitions_like_a(unsigned count) {
  return made_once("like-a-" + std::to_string(count) + ".ldf", [=] { return make_definitions_like_a(count); });
}

std::string text_like_a(unsigned entry_id) {
  return "Event " + std::to_string(entry_id) +
         ", volume volume-0042: 123456 blocks, change -77, load 0.875000, label Größenprüfung in Köln läuft bis Mai";
}

std::string icu_text_like_a(unsigned entry_id) {
  return "Event " + std::to_string(entry_id) +
         ", volume volume-0042: 123456 blocks, change -77, load 0.875, label Größenprüfung in Köln läuft bis Mai";
}

std::string definitions_with_attributes(unsigned count) {
  return made_once("attributes-" + std::to_string(count) + ".ldf",
                   [=] { return make_definitions_with_attributes(count); });
}

std::string generated_attribute_name(unsigned index) { return "Attribute" + std::to_string(index); }

}  // namespace qzlog_bench
