// Shows what is in a model file, read back with our own reader: who wrote
// it, its streams, and its tree with the variables of each geometry.
//
//   show_model file

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "reader/Container.h"
#include "reader/Scene.h"

using namespace DovReader;

namespace {

// "Stress" 0x1E "Load = 0.5" has the base "Stress" and the value "Load = 0.5".
std::string baseName(const std::string& name) { return name.substr(0, name.find('\x1E')); }
std::string valuePart(const std::string& name) {
  const std::size_t mark = name.find('\x1E');
  return mark == std::string::npos ? std::string() : name.substr(mark + 1);
}

int depthOf(const Scene& scene, std::uint32_t id) {
  int depth = 0;
  for (std::uint32_t up = scene.Record(id).parent; up != 0; up = scene.Record(up).parent) ++depth;
  return depth;
}

// One line per series: the variables of one base name, at all values.
void printVariables(const std::vector<Variable>& variables, const std::string& indent) {
  for (std::size_t first = 0; first < variables.size();) {
    std::size_t last = first;
    while (last + 1 < variables.size() && baseName(variables[last + 1].name) == baseName(variables[first].name))
      ++last;
    const Variable& v = variables[first];
    std::size_t linked = 0;
    for (std::size_t i = first; i <= last; ++i) linked += variables[i].linked;
    std::printf("%s%-14s type %2u", indent.c_str(), baseName(v.name).c_str(), v.type);
    if (!v.linked) std::printf(", %u x %u %s", v.byteSize / 4 / std::max<unsigned>(v.width, 1), v.width,
                               v.dataType == 1 ? "floats" : "integers");
    if (last > first)
      std::printf(", %zu values (%s ... %s)", last - first + 1, valuePart(v.name).c_str(),
                  valuePart(variables[last].name).c_str());
    if (linked == last - first + 1)
      std::printf(", linked to entry %u", v.linkEntryId);
    else if (linked > 0)
      std::printf(", %zu linked", linked);
    std::printf("\n");
    first = last + 1;
  }
}

void printTree(const Scene& scene) {
  for (const TreeRecord& record : scene.Records()) {
    const std::string indent(2 * depthOf(scene, record.id) + 2, ' ');
    std::printf("%s[%u] %s \"%s\"", indent.c_str(), record.id,
                record.typeName.empty() ? "(empty)" : record.typeName.c_str(), record.name.c_str());
    if (record.group && (record.group->translation[0] != 0 || record.group->translation[1] != 0))
      std::printf(" moved by (%g, %g, %g)", record.group->translation[0], record.group->translation[1],
                  record.group->translation[2]);
    if (record.material)
      std::printf(" colour (%.2f, %.2f, %.2f)", record.material->diffuse[0], record.material->diffuse[1],
                  record.material->diffuse[2]);
    std::printf("\n");
    printVariables(record.variables, indent + "    ");
  }
}

// Reads one series back from "Heavy Data" to show that the numbers survive.
void printPeak(const Scene& scene, const std::string& base) {
  for (const TreeRecord& record : scene.Records())
    for (std::uint32_t i = 0; i < record.variables.size(); ++i) {
      if (baseName(record.variables[i].name) != base || record.variables[i].linked) continue;
      const std::vector<float> values = scene.ReadFloats(record.id, i);
      float peak = 0;
      for (float value : values) peak = std::max(peak, std::fabs(value));
      std::printf("  %s at %s: %zu numbers, largest magnitude %g\n", base.c_str(),
                  valuePart(record.variables[i].name).c_str(), values.size(), peak);
    }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: show_model file\n");
    return 2;
  }
  try {
    const Container container = Container::Open(argv[1]);
    const Scene scene = Scene::Read(container);
    const GlobalInformation& info = scene.Information();
    std::printf("%s: written by %s %s on %s, format %s\n", argv[1], info.applicationName.c_str(),
                info.applicationVersion.c_str(), info.creationDate.c_str(), info.formatVersion.c_str());

    std::uint64_t plain = 0;
    std::printf("streams (bytes before compression):\n");
    for (const std::string& name : container.StreamNames()) {
      std::printf("  %-20s %12llu\n", name.c_str(),
                  static_cast<unsigned long long>(container.StreamLength(name)));
      plain += container.StreamLength(name);
    }
    std::printf("file: %llu bytes for %llu bytes of streams\n",
                static_cast<unsigned long long>(container.FileLength()),
                static_cast<unsigned long long>(plain));

    std::printf("tree:\n");
    printTree(scene);
    std::printf("read back:\n");
    printPeak(scene, "Displacement");
  } catch (const ReadError& error) {
    std::fprintf(stderr, "cannot read %s: %s\n", argv[1], error.what());
    return 1;
  }
  return 0;
}
