#include "tests/tools/choice/random_entries.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <utility>

namespace qz_test {

namespace {

constexpr long long kBase = 1795248930;

struct AttributeKind {
  const char* name;
  char kind;  // i integer, f floating point, b truth, t text, m moment
};

const std::vector<AttributeKind>& attributes_of(unsigned id) {
  static const std::vector<AttributeKind> kOfOne = {{"Name", 't'},
                                                    {"Free", 'n'},
                                                    {"Small", 'i'},
                                                    {"Mixed", 'i'},
                                                    {"Load", 'f'},
                                                    {"Flag", 'b'},
                                                    {"When", 'm'},
                                                    {"odd name", 'n'},
                                                    {"level", 'n'},
                                                    {"Pool", 't'},
                                                    {"TIMEZONE_DIFFERENCE", 'i'}};
  static const std::vector<AttributeKind> kOfTwo = {
      {"Name", 't'}, {"Free", 'n'}, {"Mixed", 't'}, {"Reason", 'i'}, {"Pool", 't'}};
  static const std::vector<AttributeKind> kOfThree = {{"Reason", 'i'}, {"Pool", 't'}, {"DAYLIGHT_SAVING_ACTIVE", 'b'}};
  return id == 1 ? kOfOne : id == 2 ? kOfTwo : kOfThree;
}

RandomValue random_value(char kind, RandomNumbers& random) {
  switch (kind) {
    case 'n':
      return std::abs(random_integer(random));
    case 'i':
      return random_integer(random);
    case 'f':
      return static_cast<double>(random.between(-4, 4)) / 2;
    case 'b':
      return random.one_in(2);
    case 't':
      return random_text(random);
    default:
      return RandomMoment{random_moment(random)};
  }
}

std::string moment_text(long long moment, const char* form) {
  const std::time_t seconds = moment;
  std::tm calendar = {};
  gmtime_r(&seconds, &calendar);
  char text[40];
  std::strftime(text, sizeof text, form, &calendar);
  return text;
}

std::string quoted(const std::string& text) {
  std::string json = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') json += '\\';
    json += character;
  }
  return json + '"';
}

/// How rarely a line is other than writers write it: nearly so as well as not at all.
struct Disguise {
  RandomNumbers& random;
  int rarity = random.one_in(2) ? 3 : 40;

  bool now() const { return random.one_in(rarity); }
  std::string blank() const { return random.one_in(2 * rarity) ? " " : ""; }
};

/// With a letter as its number.
std::string disguised_text(const std::string& text, const Disguise& disguise) {
  RandomNumbers& random = disguise.random;
  if (text.empty() || !disguise.now()) return quoted(text);
  const std::size_t place = random.below(text.size());
  const char character = text[place];
  if (static_cast<unsigned char>(character) >= 0x80 || character == '"' || character == '\\') return quoted(text);
  char number[8];
  std::snprintf(number, sizeof number, "\\u%04x", static_cast<unsigned>(character));
  const std::string before = quoted(text.substr(0, place));
  const std::string after = quoted(text.substr(place + 1));
  return before.substr(0, before.size() - 1) + number + after.substr(1);
}

std::string disguised_moment(long long moment, RandomNumbers& random) {
  switch (random.below(5)) {
    case 0:
      return '"' + moment_text(moment + 5400, "%Y-%m-%dT%H:%M:%S+01:30") + '"';
    case 1:
      return '"' + moment_text(moment, "%Y-%m-%dT%H:%M:%S.123Z") + '"';
    case 2:
      return '"' + moment_text(moment, "%Y-%m-%dt%H:%M:%Sz") + '"';
    case 3:
      if (moment % 60 == 0) return '"' + moment_text(moment - 60, "%Y-%m-%dT%H:%M:60Z") + '"';
      [[fallthrough]];
    default:
      return '"' + moment_text(moment, "%Y-%m-%dT%H:%M:%SZ") + '"';
  }
}

std::string number_text(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", number);
  return text;
}

/// `text` and `moment` make JSON of these.
template <class Text, class Moment>
std::string json_of(const RandomValue& value, Text&& text, Moment&& moment) {
  if (const auto* const integer = std::get_if<long long>(&value)) return std::to_string(*integer);
  if (const auto* const number = std::get_if<double>(&value)) return number_text(*number);
  if (const auto* const truth = std::get_if<bool>(&value)) return *truth ? "true" : "false";
  if (const auto* const own = std::get_if<std::string>(&value)) return text(*own);
  return moment(std::get<RandomMoment>(value).seconds);
}

std::string base64(const std::string& bytes) {
  constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    unsigned bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
    }
    for (unsigned i = 0; i < 4; ++i) {
      text += i > bytes.size() - at ? '=' : kDigits[bits >> (18 - 6 * i) & 63U];
    }
  }
  return text;
}

/// In another order, with blanks, where there is a disguise.
std::string joined(std::vector<std::string> members, const Disguise* disguise = nullptr) {
  if (disguise != nullptr && disguise->now()) {
    for (std::size_t i = members.size(); i > 1; --i) std::swap(members[i - 1], members[disguise->random.below(i)]);
  }
  std::string text = "{";
  for (const std::string& member : members) {
    if (text.size() > 1) text += ',' + (disguise != nullptr ? disguise->blank() : "");
    text += member;
  }
  return text + '}';
}

}  // namespace

const std::vector<std::string>& random_characters() {
  // The last one is a line break as attributes store it.
  static const std::vector<std::string> kCharacters = {"a", "b", "ä", "*", "?", "\"", "\\", ":", ",", "}", "\\n"};
  return kCharacters;
}

std::string random_text(RandomNumbers& random) {
  if (random.one_in(8)) return "Name";  // an attribute's name as a value
  std::string text;
  for (std::size_t i = random.below(4); i > 0; --i) {
    text += random_characters()[random.below(random.one_in(2) ? 2 : random_characters().size())];
  }
  return text;
}

long long random_integer(RandomNumbers& random) {
  constexpr long long kIntegers[] = {0, 0, 1, 1, 2, 5, 9, -3, 100};
  return kIntegers[random.below(std::size(kIntegers))];
}

long long random_moment(RandomNumbers& random) {
  constexpr long long kSteps[] = {0, 1, 30, 3600, 86400};
  return kBase - kSteps[random.below(std::size(kSteps))];
}

RandomEntry random_entry(RandomNumbers& random) {
  RandomEntry entry;
  entry.id = static_cast<unsigned>(random.between(1, 3));
  entry.level = static_cast<unsigned>(random.between(0, 9));
  if (!random.one_in(4)) entry.time = random_moment(random);
  if (random.one_in(2)) {
    entry.writer = random.one_in(2) ? "alpha/1/x" : "beta/2/y";
    entry.seq = static_cast<std::uint64_t>(random.between(0, 9));
  }
  if (random.one_in(4)) entry.name = random.one_in(2) ? "OTHER" : entry.event_name();
  for (const AttributeKind& attribute : attributes_of(entry.id)) {
    if (random.one_in(2)) entry.attributes[attribute.name] = random_value(attribute.kind, random);
  }
  return entry;
}

std::string canonical_line(const RandomEntry& entry) {
  const auto moment = [](long long seconds) { return '"' + moment_text(seconds, "%Y-%m-%dT%H:%M:%SZ") + '"'; };
  std::vector<std::string> attributes;
  for (const auto& [name, value] : entry.attributes)
    attributes.push_back(quoted(name) + ':' + json_of(value, quoted, moment));
  std::vector<std::string> members;
  if (!entry.writer.empty()) members.push_back("\"writer\":" + quoted(entry.writer));
  if (entry.seq) members.push_back("\"seq\":" + std::to_string(*entry.seq));
  members.push_back("\"id\":" + std::to_string(entry.id));
  members.push_back("\"level\":" + std::to_string(entry.level));
  if (entry.time) members.push_back("\"time\":" + moment(*entry.time));
  if (!entry.name.empty()) members.push_back("\"name\":" + quoted(entry.name));
  members.push_back("\"attributes\":" + joined(attributes));
  return joined(members);
}

std::string disguised_line(const RandomEntry& entry, RandomNumbers& random) {
  const Disguise disguise{random};
  const auto key = [&](const std::string& name) {
    return disguised_text(name, disguise) + disguise.blank() + ':' + disguise.blank();
  };
  const auto text = [&](const std::string& own) { return disguised_text(own, disguise); };
  const auto moment = [&](long long seconds) { return disguised_moment(seconds, random); };
  std::vector<std::string> attributes;
  std::vector<std::string> bytes;
  for (const auto& [name, value] : entry.attributes) {
    const auto* const own = std::get_if<std::string>(&value);
    if (own != nullptr && disguise.now()) {
      bytes.push_back(key(name) + '"' + base64(*own) + '"');
      if (random.one_in(2)) attributes.push_back(key(name) + "\"b\"");
    } else {
      attributes.push_back(key(name) + json_of(value, text, moment));
    }
  }
  std::vector<std::string> members;
  if (!entry.writer.empty()) members.push_back(key("writer") + text(entry.writer));
  if (entry.seq) members.push_back(key("seq") + std::to_string(*entry.seq));
  members.push_back(key("id") + (disguise.now() ? text(entry.event_name()) : std::to_string(entry.id)));
  if (entry.level != 0 || !disguise.now()) members.push_back(key("level") + std::to_string(entry.level));
  if (entry.time) members.push_back(key("time") + moment(*entry.time));
  if (!entry.name.empty()) members.push_back(key("name") + text(entry.name));
  members.push_back(key("attributes") + joined(attributes, &disguise));
  if (!bytes.empty()) members.push_back(key("bytes") + joined(bytes, &disguise));
  return joined(members, &disguise);
}

}  // namespace qz_test
