! A Fortran host built against the installed module and libraries.
program consumer
  use dovwriter
  implicit none
  type(dov_scene) :: scene
  type(dov_id) :: mesh, unknown
  character(len=:), allocatable :: name
  integer :: stat
  call dov_scene_create(scene, 'fortran consumer')
  call dov_create_object(scene, DOV_MESH_OBJECT, mesh)
  call dov_set_name(scene, mesh, 'Mesh')
  call dov_get_name(scene, mesh, name)
  if (name /= 'Mesh') error stop 2
  call dov_validate(scene, unknown, stat=stat)
  print '(a, i0)', 'code ', stat
  call dov_scene_free(scene)
  if (stat /= DOV_ERROR_INVALID_OBJECT) error stop 3
end program
