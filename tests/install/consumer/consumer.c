/* A C host built against the installed library: the C interface from the
 * installed header alone, a name handed back, and a failure as a code. */

#include <DovWriter/dovwriter.h>

#include <stdio.h>
#include <string.h>

int main(void) {
  dov_scene* scene = NULL;
  dov_id mesh, unknown = {0, 0};
  const char* name = NULL;
  int code;
  if (dov_scene_create("c consumer", 2, &scene) != 0 ||
      dov_create_object(scene, DOV_MESH_OBJECT, &mesh) != 0 ||
      dov_set_name(scene, mesh, "Mesh") != 0 || dov_get_name(scene, mesh, &name) != 0 ||
      strcmp(name, "Mesh") != 0)
    return 2;
  code = dov_validate(scene, unknown);
  printf("code %d\n", code);
  dov_scene_free(scene);
  return code == DOV_ERROR_INVALID_OBJECT ? 0 : 3;
}
