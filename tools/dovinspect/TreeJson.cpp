#include "TreeJson.h"

#include "Json.h"

namespace DovInspect {

namespace {

void WriteAttributes(const DovReader::AttributeList& attributes, JsonWriter& json) {
  json.Key("attributes").BeginArray();
  for (const DovReader::Attribute& attribute : attributes.entries) {
    json.BeginObject().Field("key", attribute.key).Field("kind", attribute.kind).Key("value");
    switch (attribute.kind) {
      case 0:
      case 1:
        json.Value(attribute.word);
        break;
      case 2:
        json.Value(attribute.text);
        break;
      case 3:
        json.Value(attribute.longWord);
        break;
      default:
        json.Null();
    }
    json.EndObject();
  }
  json.EndArray();
}

void WriteGroup(const DovReader::GroupContent& group, JsonWriter& json) {
  const DovReader::Attribute* visible = group.attributes.Find("visible");
  json.Key("group").BeginObject();
  json.Field("visible", !(visible && visible->word == 0)).Field("root", group.rootFlag != 0);
  json.Array("translation", group.translation, 3).Array("rotation", group.rotation, 4);
  json.Array("scale", group.scale, 3);
  WriteAttributes(group.attributes, json);
  json.EndObject();
}

void WriteMaterial(const DovReader::MaterialContent& material, JsonWriter& json) {
  json.Key("material").BeginObject().Field("visible", material.visible != 0);
  json.Array("diffuse", material.diffuse, 4).Array("ambient", material.ambient, 4);
  json.Array("specular", material.specular, 4).Array("emissive", material.emissive, 4);
  json.EndObject();
}

}  // namespace

void PrintTreeJson(const ModelFile& model, std::ostream& out) {
  JsonWriter json(out);
  json.BeginObject().Field("file", model.FilePath()).Key("entries").BeginArray();
  for (const DovReader::TreeRecord& record : model.Scene().Records()) {
    json.BeginObject().Field("id", record.id).Field("parent", record.parent);
    json.Field("type", record.typeName).Field("name", record.name);
    json.Field("version", record.version);
    if (record.group) WriteGroup(*record.group, json);
    if (record.material) WriteMaterial(*record.material, json);
    if (record.typeName == "Geometry") json.Field("variables", record.variables.size());
    json.EndObject();
  }
  json.EndArray().EndObject().Finish();
}

}  // namespace DovInspect
