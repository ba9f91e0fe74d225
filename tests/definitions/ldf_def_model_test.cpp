#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "definitions/ldf_def.h"
#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;

/// An attribute list as plainly as it can be described.
struct ModelAttribute {
  std::string name;
  unsigned char type;
  bool has_redirection_name;
  bool operator==(const ModelAttribute&) const = default;
};

struct Model {
  std::vector<ModelAttribute> attributes;
  std::string selector;  // "" for none: no name is empty

  auto find(const std::string& name) {
    return std::find_if(attributes.begin(), attributes.end(), [&](const auto& each) { return each.name == name; });
  }
  bool remove(const std::string& name) {
    const auto place = find(name);
    if (place == attributes.end()) return false;
    if (selector == name) selector.clear();
    attributes.erase(place);
    return true;
  }
  void add(const ModelAttribute& attribute, bool is_selector) {
    remove(attribute.name);
    attributes.push_back(attribute);
    if (is_selector) selector = attribute.name;
    if (attributes.size() == 256) {
      attributes.clear();
      selector.clear();
    }
  }
};

std::vector<ModelAttribute> attributes_of(const _qz_LOG_log_definition& definition) {
  std::vector<ModelAttribute> attributes;
  for (unsigned i = 0; i < definition.get_attr_count(); ++i) {
    const char* name = nullptr;
    const char* redirection_name = nullptr;
    unsigned char type = 0;
    definition.get_attr_info_by_index(static_cast<unsigned char>(i), name, type, redirection_name);
    attributes.push_back({name, type, redirection_name != nullptr});
  }
  return attributes;
}

/// Runs `steps` random operations on names "n0" to "n<names - 1>".
void compare_with_model(SeededRandom& random, int steps, int names, int removals_in_ten) {
  _qz_LOG_log_definition definition;
  Model model;
  for (int step = 0; step < steps; ++step) {
    const std::string name = "n" + std::to_string(random.between(0, names - 1));
    if (random.between(1, 10) <= removals_in_ten) {
      ASSERT_EQ(definition.remove_attr_by_ptr(definition.get_attr_info_by_name(name.c_str())), model.remove(name));
    } else if (random.one_in(10)) {
      definition.set_selector_attribute(name.c_str());
      if (model.find(name) != model.attributes.end()) model.selector = name;
    } else {
      const ModelAttribute added{name, static_cast<unsigned char>(random.between(0, 255)), random.one_in(2)};
      const bool is_selector = random.one_in(5);
      definition.add_attr_info(name.c_str(), added.type, is_selector, added.has_redirection_name ? "r" : nullptr);
      model.add(added, is_selector);
    }
    ASSERT_EQ(attributes_of(definition), model.attributes) << "after step " << step;
    const auto* const selector = definition.get_selector_attribute();
    ASSERT_EQ(selector == nullptr ? "" : selector->get_name(), model.selector) << "after step " << step;
  }
}

TEST(LdfDefModel, RandomAddsAndRemovals_AsThePlainList) {
  SeededRandom random;
  compare_with_model(random, 3000, 20, 4);
}

TEST(LdfDefModel, RandomAddsBeyond255_AsThePlainList) {
  SeededRandom random;
  compare_with_model(random, 3000, 1000, 1);
}

}  // namespace
