#include "tools/logs/line_members.h"

#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>

namespace qzlog_tool {

namespace {

constexpr unsigned kMostLevel = 9;

/// Keeps members of the outermost object.
class MemberReader : public nlohmann::json_sax<nlohmann::json> {
 public:
  bool is_object() const { return is_object_; }
  LineMembers take() { return std::move(members_); }

  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_integer(number_integer_t /*value*/) override { return true; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
  bool binary(binary_t& /*value*/) override { return true; }
  bool number_unsigned(number_unsigned_t value) override {
    if (is_member() && key_ == "seq") members_.seq = value;
    if (is_member() && key_ == "level" && value <= kMostLevel) members_.level = static_cast<unsigned>(value);
    if (is_member() && key_ == "id" && value <= std::numeric_limits<std::uint32_t>::max()) {
      members_.id = static_cast<std::uint32_t>(value);
    }
    return true;
  }
  bool string(string_t& value) override {
    if (std::string* const member = is_member() ? text_member() : nullptr) *member = value;
    return true;
  }
  bool start_object(std::size_t /*elements*/) override {
    if (depth_ == 0) is_object_ = true;
    return enter();
  }
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
  bool is_member() const { return depth_ == 1; }
  std::string* text_member() {
    if (key_ == "id") return &members_.symbolic_id;
    if (key_ == "name") return &members_.name;
    if (key_ == "writer") return &members_.writer;
    if (key_ == "time") return &members_.time;
    if (key_ == "written") return &members_.written;
    return key_ == "definitions" ? &members_.definitions : nullptr;
  }
  bool enter() {
    ++depth_;
    return true;
  }
  bool leave() {
    --depth_;
    return true;
  }

  LineMembers members_;
  std::string key_;
  std::size_t depth_ = 0;
  bool is_object_ = false;
};

}  // namespace

std::optional<LineMembers> read_line_members(std::string_view line) {
  MemberReader reader;
  if (!nlohmann::json::sax_parse(line.begin(), line.end(), &reader) || !reader.is_object()) return std::nullopt;
  return reader.take();
}

}  // namespace qzlog_tool
