// A host built against the installed library: it must compile from the
// installed headers alone, link every spelling of the 64-bit types, run
// with the library of its headers' version, and catch the library's
// exception by type across the library boundary.

#include <DovWriter/DovWriter.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

int main() {
  Kel::Dov::Scene_V1 scene("consumer");
  const Kel::Dov::Identifier mesh = scene.createObject(Kel::Dov::MeshObject);
  const Kel::Dov::Identifier group = scene.createObject(Kel::Dov::InstanceGroupObject);
  const Kel::Dov::Identifier array = scene.createObject(Kel::Dov::ArrayObject);

  const std::int64_t stepA = 1;
  const long long stepB = 2;
  const std::uint64_t stepC = 3;
  const unsigned long long stepD = 4;
  const std::int64_t values64[] = {1, 2};
  const long long valuesLL[] = {3, 4};
  scene.setValues(array, values64, 2);
  scene.setValues(array, valuesLL, 2);
  scene.setResult(mesh, group, stepA, "R", array);
  scene.setResult(mesh, group, stepB, "R", array);
  scene.setResult(mesh, group, stepC, "R", Kel::Dov::VectorVariable, array);
  scene.setResult(mesh, group, stepD, "R", array);
  scene.setProperty(mesh, "text", "value");
  scene.setName(mesh, "Mesh");
  scene.setApplicationInfo("consumer", stepA);

  if (std::strcmp(scene.getName(mesh), "Mesh") != 0) return 2;
  std::printf("version %s\n", Kel::Dov::libraryVersion());
  if (std::strcmp(Kel::Dov::libraryVersion(), DOVWRITER_VERSION_STRING) != 0) return 5;
  try {
    scene.validate(Kel::Dov::Identifier{0, 0});
  } catch (const Kel::Util::Exception& error) {
    std::printf("code %d\n", static_cast<int>(error.GetCode()));
    return error.GetErrorCode() == Kel::Util::ErrorCode::InvalidObject ? 0 : 3;
  }
  return 4;
}
