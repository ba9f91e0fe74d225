// Reads the input as a resource bundle, whose pool is the second half, and as a package of files, and looks up what is
// there.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "message/resource_data.h"
#include "message/resource_package.h"

namespace {

using namespace qzlog;

constexpr unsigned kLevels = 3;

void look_up(const ResourceData& bundle, Resource resource, unsigned level) {
  if (is_string(resource) || type_of(resource) == ResourceType::kAlias) bundle.text_of(resource);
  if (level == kLevels) return;
  const ResourceData::Items items = bundle.items_of(resource);
  for (std::size_t i = 0; i < items.count; ++i) {
    const Resource item = bundle.value(items, i);
    Resource found = 0;
    if (is_table(resource) && !(bundle.find(resource, bundle.key(items, i), found) && found == item)) __builtin_trap();
    look_up(bundle, item, level + 1);
  }
}

void read_bundle(const std::string& bytes) {
  ReadResource read = ResourceData::read(bytes);
  if (read.state != ReadResource::State::kGood) return;
  if (read.data->layout().uses_pool) {
    ReadResource pool = ResourceData::read(bytes.substr(bytes.size() / 2));
    if (pool.data == nullptr || !read.data->set_pool(std::move(pool.data))) return;
  }
  if (read.data->check() == nullptr) look_up(*read.data, read.data->root(), 0);
}

void read_package(const std::string& bytes) {
  ResourcePackage package;
  if (package.read(bytes) != ResourcePackage::State::kGood) return;
  const std::string_view* const file = package.find("catalog/root.res");
  if (file != nullptr) read_bundle(std::string(*file));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(bytes), size);
  read_bundle(input);
  read_package(input);
  return 0;
}
