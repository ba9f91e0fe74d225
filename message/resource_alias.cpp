#include "message/resource_alias.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "message/resource_text.h"

namespace qzlog {

namespace {

constexpr const char* kOpenedBundle = "LOCALE";

/// Takes what stands before the next slash off a text.
std::string take_part(std::string_view& text) {
  const std::size_t slash = text.find('/');
  std::string part(text.substr(0, slash));
  text.remove_prefix(slash == std::string_view::npos ? text.size() : slash + 1);
  return part;
}

}  // namespace

/// What a text names.
struct ResourceAliases::Target {
  bool is_opened_bundle = false;
  std::string path;
  std::string locale;
  std::string keys;

  Target(std::string_view text, const std::string& own_path) : path(own_path) {
    if (text.front() == '/') {
      text.remove_prefix(1);
      path = take_part(text);
      is_opened_bundle = path == kOpenedBundle;
    }
    if (!is_opened_bundle) locale = take_part(text);
    keys = text;
  }
};

ResourcePlace ResourceAliases::follow(const ResourcePlace& place, const std::string& keys) {
  return type_of(place.resource) == ResourceType::kAlias ? follow_alias(place, keys) : place;
}

ResourcePlace ResourceAliases::follow_alias(const ResourcePlace& place, const std::string& keys) {
  const std::string text = ascii_of(place.data->text_of(place.resource));
  if (text.empty() || ++steps_ > kLongestWay) return {};
  const Target target(text, path_);
  const ResourceChain other = target.is_opened_bundle ? ResourceChain() : load(target);
  const ResourceChain& chain = target.is_opened_bundle ? opened_ : other;
  if (target.keys.empty()) return chain.empty() ? ResourcePlace() : find(chain.front(), keys);
  for (const ResourceEntry& entry : chain) {
    ResourcePlace found = find(entry, target.keys);
    if (found.data != nullptr) return found;
  }
  return {};
}

/// A damaged target is as good as none: what refers to it fails, nothing else.
ResourceChain ResourceAliases::load(const Target& target) const {
  try {
    return ResourceChainLoader(target.path).load_exactly(target.locale);
  } catch (const ResourceFailure&) {
    return {};
  }
}

ResourcePlace ResourceAliases::find(const ResourceEntry& entry, const std::string& keys) {
  if (entry.data == nullptr) return {};
  ResourcePlace place{entry.data, entry.data->root()};
  std::string_view rest = keys;
  while (!rest.empty() && place.data != nullptr) {
    const std::string key = take_part(rest);
    Resource found = 0;
    if (!step(place, key, found)) return {};
    place = follow({place.data, found}, keys.substr(0, keys.size() - rest.size()));
  }
  return place;
}

bool ResourceAliases::step(const ResourcePlace& from, const std::string& key, Resource& found) {
  if (!is_array(from.resource)) return from.data->find(from.resource, key, found);
  const ResourceData::Items items = from.data->items_of(from.resource);
  std::size_t index = 0;
  const std::from_chars_result read = std::from_chars(key.data(), key.data() + key.size(), index);
  if (read.ec != std::errc() || read.ptr != key.data() + key.size() || index >= items.count) return false;
  found = from.data->value(items, index);
  return true;
}

}  // namespace qzlog
