#include "message/resource_chain.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include <unicode/uloc.h>

#include "message/resource_locales.h"
#include "message/resource_text.h"

namespace qzlog {

namespace {

constexpr const char* kRoot = "root";
constexpr const char* kPool = "pool";
// What bundles say about themselves.
constexpr std::string_view kAlias = "%%ALIAS";
constexpr std::string_view kParent = "%%Parent";
constexpr std::string_view kParentIsRoot = "%%ParentIsRoot";
constexpr unsigned kMostAliases = 16;

/// A text at the top of a bundle, or an empty one.
std::string top_text(const ResourceEntry& entry, std::string_view key) {
  Resource found = 0;
  if (entry.data == nullptr || !entry.data->find(entry.data->root(), key, found) || !is_string(found)) return {};
  return ascii_of(entry.data->text_of(found));
}

bool has_top(const ResourceEntry& entry, std::string_view key) {
  Resource found = 0;
  return entry.data != nullptr && entry.data->find(entry.data->root(), key, found);
}

bool has_no_fallback(const ResourceEntry& entry) {
  return entry.data != nullptr && entry.data->layout().has_no_fallback;
}

/// These two have a parent although their names have one part.
bool may_have_parent(const std::string& name) {
  return !name.empty() && std::string_view("nb nn").find(name) != std::string_view::npos;
}

bool is_among(const ResourceChain& chain, const std::string& name) {
  return std::any_of(chain.begin(), chain.end(), [&](const ResourceEntry& entry) { return entry.name == name; });
}

}  // namespace

ResourceChain ResourceChainLoader::load(const std::string& locale) {
  Search search = find_first(locale);
  if (search.found.data == nullptr && !search.is_default && !search.is_root) search = find_first(uloc_getDefault());
  if (search.found.data == nullptr) search = find_first(kRoot);
  return search.found.data != nullptr ? chain_of(search) : ResourceChain();
}

ResourceChain ResourceChainLoader::load_exactly(const std::string& locale) {
  ResourceEntry entry = read_entry(locale);
  if (entry.data == nullptr) return {};
  ResourceChain chain{std::move(entry)};
  std::string name = locale;
  if (locale.empty() || locale == kRoot || has_no_fallback(chain.front())) return chain;
  if (chop_locale(name) && name != kRoot) append_parents(name, chain);
  append_root(chain);
  return chain;
}

ResourceChainLoader::Search ResourceChainLoader::find_first(const std::string& locale) {
  Search search;
  search.name = locale;
  while (search.has_parent && search.found.data == nullptr) {
    search.found = read_entry(search.name);
    const std::string_view standard = uloc_getDefault();
    search.is_default = standard.substr(0, search.name.size()) == search.name;
    const bool is_found = search.found.data != nullptr;
    if (is_found) search.name = search.found.name;
    search.is_root = search.name == kRoot;
    search.has_parent = is_found ? chop_locale(search.name) : next_locale(search.name, locale);
    if (search.has_parent && search.name.empty()) search.name = "und";
  }
  return search;
}

ResourceChain ResourceChainLoader::chain_of(const Search& search) {
  ResourceChain chain{search.found};
  if (search.is_root) return chain;
  if (search.has_parent || may_have_parent(search.name)) append_parents(search.name, chain);
  if (!has_no_fallback(chain.front())) append_root(chain);
  return chain;
}

/// A bundle may name its parent. What is in the chain already ends it: bundles that name each other have no other
/// parent than the root.
void ResourceChainLoader::append_parents(std::string name, ResourceChain& chain) {
  bool has_parent = true;
  while (has_parent && !has_no_fallback(chain.back()) && !has_top(chain.back(), kParentIsRoot)) {
    const std::string named = top_text(chain.back(), kParent);
    if (!named.empty() && named.size() < ULOC_FULLNAME_CAPACITY) name = named;
    if (name == kRoot) return;
    ResourceEntry parent = read_entry(name);
    if (is_among(chain, parent.name)) return;
    chain.push_back(std::move(parent));
    has_parent = chop_locale(name) || may_have_parent(name);
  }
}

void ResourceChainLoader::append_root(ResourceChain& chain) {
  if (!is_among(chain, kRoot)) chain.push_back(read_entry(kRoot));
}

/// A bundle may be nothing but another name of one.
ResourceEntry ResourceChainLoader::read_entry(const std::string& name, unsigned aliases) {
  ResourceEntry entry{name.empty() ? kRoot : name, nullptr};
  entry.data = read_data(entry.name);
  const std::string alias = top_text(entry, kAlias);
  if (alias.empty()) return entry;
  if (aliases >= kMostAliases) throw ResourceFailure(name, "the bundle stands for itself");
  return read_entry(alias, aliases + 1);
}

std::shared_ptr<ResourceData> ResourceChainLoader::read_data(const std::string& name) {
  WholeFile file = files_.find(name);
  if (file.state == WholeFile::State::kAbsent) return nullptr;
  if (file.state == WholeFile::State::kFailed) throw ResourceFailure(name, "the file cannot be read");
  ReadResource read = ResourceData::read(std::move(file.bytes));
  if (read.state == ReadResource::State::kForeign) return nullptr;
  if (read.state == ReadResource::State::kDamaged) throw ResourceFailure(name, read.problem);
  if (read.data->layout().uses_pool) attach_pool(name, *read.data);
  const char* const problem = read.data->check();
  if (problem != nullptr) throw ResourceFailure(name, problem);
  return read.data;
}

void ResourceChainLoader::attach_pool(const std::string& name, ResourceData& data) {
  std::shared_ptr<ResourceData> pool = name != kPool ? read_data(kPool) : nullptr;
  if (pool == nullptr || !data.set_pool(std::move(pool))) {
    throw ResourceFailure(name, "the pool that the bundle was made with is not there");
  }
}

}  // namespace qzlog
