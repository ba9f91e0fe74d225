#include "tools/ship/line_values.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace qzlog_tool {

namespace {

constexpr std::string_view kAttributes = "attributes";

qzlog_value value_of(qzlog_kind kind) {
  qzlog_value value = {};
  value.kind = kind;
  return value;
}

std::string_view view_of(const qzlog_text& text) { return {text.bytes, text.size}; }

}  // namespace

/// Keeps what stands in the outermost object and in its member "attributes".
class LineValues::Reader : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit Reader(LineValues& values) : values_(values) {}

  bool null() override { return true; }
  bool boolean(bool truth) override {
    qzlog_value value = value_of(QZLOG_BOOL);
    value.integer = truth ? 1 : 0;
    return add(value);
  }
  bool number_integer(number_integer_t number) override {
    qzlog_value value = value_of(QZLOG_INTEGER);
    value.integer = number;
    return add(value);
  }
  bool number_unsigned(number_unsigned_t number) override {
    if (number > static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max())) {
      return number_float(static_cast<double>(number), "");
    }
    return number_integer(static_cast<number_integer_t>(number));
  }
  bool number_float(number_float_t number, const string_t& /*text*/) override {
    qzlog_value value = value_of(QZLOG_NUMBER);
    value.number = number;
    return add(value);
  }
  bool string(string_t& text) override {
    if (!is_kept()) return true;
    qzlog_value value = value_of(QZLOG_TEXT);
    value.text = keep(std::move(text));
    return add(value);
  }
  bool binary(binary_t& /*value*/) override { return true; }
  bool start_object(std::size_t /*elements*/) override {
    is_object_ = is_object_ || depth_ == 0;
    is_in_attributes_ = is_in_attributes_ || (depth_ == 1 && key_ == kAttributes);
    ++depth_;
    return true;
  }
  bool end_object() override {
    --depth_;
    if (depth_ == 1) is_in_attributes_ = false;
    return true;
  }
  bool start_array(std::size_t /*elements*/) override {
    ++depth_;
    return true;
  }
  bool end_array() override {
    --depth_;
    return true;
  }
  bool key(string_t& name) override {
    if (is_kept()) key_ = std::move(name);
    return true;
  }
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

  bool is_object() const { return is_object_; }

 private:
  bool is_kept() const { return depth_ == 1 || (depth_ == 2 && is_in_attributes_); }
  qzlog_text keep(std::string text) {
    const std::string& kept = values_.texts_.emplace_back(std::move(text));
    return {kept.data(), kept.size()};
  }
  bool add(const qzlog_value& value) {
    if (!is_kept()) return true;
    (is_in_attributes_ ? values_.attributes_ : values_.members_).push_back({keep(key_), value});
    return true;
  }

  LineValues& values_;
  std::string key_;
  std::size_t depth_ = 0;
  bool is_object_ = false;
  bool is_in_attributes_ = false;
};

bool LineValues::read(std::string_view line) {
  members_.clear();
  attributes_.clear();
  texts_.clear();
  Reader reader(*this);
  if (nlohmann::json::sax_parse(line.begin(), line.end(), &reader) && reader.is_object()) return true;
  members_.clear();
  attributes_.clear();
  return false;
}

qzlog_value LineValues::find(const std::vector<qzlog_attribute>& values, std::string_view name) {
  const auto found = std::find_if(values.begin(), values.end(),
                                  [name](const qzlog_attribute& own) { return view_of(own.name) == name; });
  return found != values.end() ? found->value : qzlog_value{};
}

}  // namespace qzlog_tool
