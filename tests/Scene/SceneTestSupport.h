#ifndef DOVWRITER_TESTS_SCENE_SCENETESTSUPPORT_H
#define DOVWRITER_TESTS_SCENE_SCENETESTSUPPORT_H

#include <DovWriter/DovWriter.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ObjectManager/ObjectManager.h"

// A scene whose object table the tests may look into.
class InspectableScene : public Kel::Dov::Scene_V1 {
 public:
  using Scene_V1::Scene_V1;
  Kel::Dov::ObjectManager& table() { return *manager; }

  // The property under `key` if it holds exactly a T; null otherwise, and
  // null (without inserting anything) if the key is absent.
  template <class T>
  const T* property(const Kel::Dov::Identifier& object, const std::string& key) {
    if (!table().hasProperty(object.second, key)) return nullptr;
    return table().readProperty<T>(object.second, key, T());
  }
  std::string attribute(const Kel::Dov::Identifier& object, const std::string& key) {
    const auto& attributes = table().record(object.second).attributes;
    auto found = attributes.find(key);
    if (found == attributes.end()) return "<absent>";
    EXPECT_EQ(2u, found->second.kind);
    return std::string(found->second.value.text);
  }
};

inline std::vector<float> floats(InspectableScene& scene, const Kel::Dov::Identifier& object,
                                 const std::string& key) {
  const std::vector<float>* values = scene.property<std::vector<float>>(object, key);
  EXPECT_NE(nullptr, values) << key;
  return values != nullptr ? *values : std::vector<float>();
}

// Runs `call` and expects the library's exception with `code` and, if
// given, exactly the description `text`.
template <class Call>
void ExpectCode(int code, Call call, const char* text = nullptr) {
  try {
    call();
    ADD_FAILURE() << "no exception, expected code " << code;
  } catch (const Kel::Util::Exception& error) {
    EXPECT_EQ(code, error.GetCode());
    if (text != nullptr) {
      EXPECT_STREQ(text, error.GetDescription());
    }
  }
}

// The identifier failure: code 8.
template <class Call>
void ExpectInvalidIdentifier(Call call) { ExpectCode(8, call, "Invalid Identifier"); }

#endif
