#include "tools/ship/ship_state.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "foundation/sha256.h"
#include "lines/json_text.h"

namespace qzlog_tool {

namespace {

using Json = nlohmann::json;

constexpr int kVersion = 1;
constexpr std::string_view kBeforeChecksum = "\n  \"checksum\": \"";
constexpr std::string_view kBehindChecksum = "\"\n}\n";

std::string json_text(std::string_view text) {
  std::string json;
  qzlog::append_json_text(text, json);
  return json;
}

std::string checksum_of(std::string_view text) {
  qzlog::Sha256 sha;
  sha.add(text.data(), text.size());
  std::string digits(qzlog::kShortDigestDigits, ' ');
  qzlog::write_short_digest(sha.digest(), digits.data());
  return digits;
}

/// The name alone: the folder and the prefix are the series'.
std::string file_name(const std::string& series, SeriesPlace place) {
  return LogSeries{"", series.substr(series.rfind('/') + 1)}.path_of(place);
}

std::string row(const std::string& series, const FilePlace& place) {
  return "    {\"series\": " + json_text(series) + ", \"file\": " + json_text(file_name(series, place.place)) +
         ", \"offset\": " + std::to_string(place.offset) + ", \"identity\": " + json_text(place.identity) + '}';
}

std::string rows(const ShipState& state) {
  std::string text;
  for (const SeriesState& series : state.series) {
    for (const FilePlace& place : series.places) {
      text += text.empty() ? "\n" : ",\n";
      text += row(series.series, place);
    }
  }
  return text.empty() ? text : text + "\n  ";
}

/// What the checksum is of.
std::string_view checked_part(std::string_view text) {
  const std::size_t at = text.rfind(kBeforeChecksum);
  const std::size_t whole = at + kBeforeChecksum.size() + qzlog::kShortDigestDigits + kBehindChecksum.size();
  if (at == std::string_view::npos || whole != text.size() || !text.ends_with(kBehindChecksum)) {
    throw BadState(text.empty() ? "it is empty" : "it has no checksum at its end");
  }
  const std::string_view checked = text.substr(0, at + 1);
  if (text.substr(at + kBeforeChecksum.size(), qzlog::kShortDigestDigits) != checksum_of(checked)) {
    throw BadState("it does not have its checksum: it was changed, or damaged");
  }
  return checked;
}

[[noreturn]] void refuse_row() { throw BadState("a place in it is not of the form of one"); }

SeriesPlace place_of(const std::string& series, const std::string& file) {
  constexpr std::size_t kSuffix = std::string_view(".YYYYMMDD.NNNN").size();
  if (file.size() <= kSuffix) refuse_row();
  SeriesPlace place;
  const std::string digits = file.substr(file.size() - kSuffix);
  for (std::size_t at = 1; at < kSuffix; ++at) {
    if (at == 9) continue;
    if (digits[at] < '0' || digits[at] > '9') refuse_row();
    unsigned& number = at < 9 ? place.day : place.number;
    number = number * 10 + static_cast<unsigned>(digits[at] - '0');
  }
  if (file_name(series, place) != file) refuse_row();
  return place;
}

void add_row(const Json& row, ShipState& state) {
  const std::string series = row.at("series").get<std::string>();
  if (!row.at("offset").is_number_unsigned()) refuse_row();  // another number would be turned into one
  if (state.series.empty() || state.series.back().series != series) state.series.push_back({series, {}});
  std::vector<FilePlace>& places = state.series.back().places;
  places.push_back({place_of(series, row.at("file").get<std::string>()), row.at("offset").get<std::uint64_t>(),
                    row.at("identity").get<std::string>()});
  if (places.size() > 1 && places[places.size() - 2].place >= places.back().place) refuse_row();
}

}  // namespace

std::string state_text(const ShipState& state) {
  std::string text = "{\n  \"qzlog_ship\": " + std::to_string(kVersion) + ",\n  \"to\": " + json_text(state.to) +
                     ",\n  \"places\": [" + rows(state) + "],\n";
  return with_checksum(text);
}

std::string with_checksum(std::string_view text) {
  std::string whole(text);
  if (!whole.ends_with('\n')) whole += '\n';
  const std::string checksum = checksum_of(whole);
  return whole.append(kBeforeChecksum.substr(1)).append(checksum).append(kBehindChecksum);
}

ShipState parse_state(std::string_view text) {
  const std::string whole = std::string(checked_part(text)) + "\"checksum\": \"\"}";
  try {
    const Json json = Json::parse(whole);
    if (json.at("qzlog_ship").get<int>() != kVersion) throw BadState("it is of another version of this command");
    ShipState state;
    state.to = json.at("to").get<std::string>();
    for (const Json& row : json.at("places")) add_row(row, state);
    return state;
  } catch (const Json::exception&) {
    throw BadState("it is not of the form of a state");
  }
}

}  // namespace qzlog_tool
