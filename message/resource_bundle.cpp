#include "message/resource_bundle.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "message/resource_alias.h"
#include "message/resource_locales.h"

namespace qzlog {

MessageBundle::State MessageBundle::open(const std::string& path, const char* locale) {
  std::string base;
  if (!base_locale(locale, base)) {
    problem_ = "the name of the locale is too long";
    failed_bundle_ = locale;
    return State::kFailed;
  }
  try {
    ResourceChain chain = ResourceChainLoader(path).load(base);
    if (chain.empty()) return State::kMissing;
    path_ = path;
    chain_ = std::move(chain);
    return State::kOpened;
  } catch (const ResourceFailure& failure) {
    problem_ = failure.what();
    failed_bundle_ = failure.bundle();
    return State::kFailed;
  }
}

ResourcePlace MessageBundle::find_table(std::string_view table, std::size_t& position) const {
  for (position = 0; position < chain_.size(); ++position) {
    const std::shared_ptr<const ResourceData>& data = chain_[position].data;
    Resource found = 0;
    if (data != nullptr && data->find(data->root(), table, found)) {
      return ResourceAliases(path_, chain_).follow({data, found}, std::string(table));
    }
  }
  return {};
}

MessageBundle::Text MessageBundle::find_text(std::string_view table, std::string_view key) const {
  std::size_t position = 0;
  const ResourcePlace place = find_table(table, position);
  if (place.data == nullptr) return {Text::State::kNoTable, {}};
  Resource found = 0;
  if (!place.data->find(place.resource, key, found)) return {Text::State::kNoText, {}};
  return text_of({place.data, found}, table, key);
}

MessageBundle::Text MessageBundle::text_of(const ResourcePlace& item, std::string_view table,
                                           std::string_view key) const {
  const ResourcePlace place = ResourceAliases(path_, chain_).follow(item, std::string(table) + "/" + std::string(key));
  if (place.data == nullptr || !is_string(place.resource)) return {Text::State::kNoText, {}};
  return {Text::State::kFound, place.data->text_of(place.resource)};
}

MessageBundle::Table MessageBundle::read_table(std::string_view table) const {
  std::size_t position = 0;
  const ResourcePlace place = find_table(table, position);
  Table read;
  if (place.data == nullptr) return read;
  read.is_found = true;
  read.is_of_first_bundle = position == 0;
  if (!is_table(place.resource)) return read;
  const ResourceData::Items items = place.data->items_of(place.resource);
  for (std::size_t i = 0; i < items.count; ++i) {
    const std::string_view key = place.data->key(items, i);
    Text text = text_of({place.data, place.data->value(items, i)}, table, key);
    if (text.state == Text::State::kFound) read.texts.emplace_hint(read.texts.end(), key, std::move(text.text));
  }
  return read;
}

}  // namespace qzlog
