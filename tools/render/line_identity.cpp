#include "tools/render/line_identity.h"

#include <cstddef>
#include <nlohmann/json.hpp>

namespace qzlog_tool {

namespace {

/// Keeps two members of the outermost object.
class IdentityReader : public nlohmann::json_sax<nlohmann::json> {
 public:
  std::optional<LineIdentity> result() const {
    if (!has_writer_ || !has_seq_) return std::nullopt;
    return identity_;
  }

  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_integer(number_integer_t /*value*/) override { return true; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
  bool binary(binary_t& /*value*/) override { return true; }
  bool number_unsigned(number_unsigned_t value) override {
    if (!is_at("seq")) return true;
    identity_.seq = value;
    return has_seq_ = true;
  }
  bool string(string_t& value) override {
    if (!is_at("writer") || value.empty()) return true;
    identity_.writer = value;
    return has_writer_ = true;
  }
  bool start_object(std::size_t /*elements*/) override { return enter(); }
  bool end_object() override { return leave(); }
  bool start_array(std::size_t /*elements*/) override { return enter(); }
  bool end_array() override { return leave(); }
  bool key(string_t& name) override {
    if (depth_ == 1) key_ = name;
    return true;
  }
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

 private:
  bool is_at(const char* name) const { return depth_ == 1 && key_ == name; }
  bool enter() {
    ++depth_;
    return true;
  }
  bool leave() {
    --depth_;
    return true;
  }

  LineIdentity identity_;
  std::string key_;
  std::size_t depth_ = 0;
  bool has_writer_ = false;
  bool has_seq_ = false;
};

}  // namespace

std::optional<LineIdentity> line_identity(std::string_view line) {
  IdentityReader reader;
  if (!nlohmann::json::sax_parse(line.begin(), line.end(), &reader)) return std::nullopt;
  return reader.result();
}

}  // namespace qzlog_tool
