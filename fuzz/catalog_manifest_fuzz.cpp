// Reads the input as the list of what was made in a catalog's folder. Whatever it names has to be a file of that
// folder, and what was read has to be written and read again as the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/catalog/catalog_manifest.h"

using namespace qzlog_catalog;

namespace {

void check_names(const CatalogManifest::Digests& digests) {
  for (const auto& [name, digest] : digests) {
    if (name.find_first_of(std::string_view("/\\\0", 3)) != std::string::npos || name.front() == '.') std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string failure;
  const CatalogManifest manifest = read_manifest({reinterpret_cast<const char*>(bytes), size}, failure);
  if (!failure.empty()) return 0;
  check_names(manifest.bundles);
  check_names(manifest.unfinished);
  if (read_manifest(write_manifest(manifest), failure) != manifest || !failure.empty()) std::abort();
  return 0;
}
