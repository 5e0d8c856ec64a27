! The Fortran module beyond what the example comparison covers: failures
! through `stat` (from the library and from the module's own checks),
! names handed back as Fortran strings, and the version of the interface.
! With the argument "stop", a failure without `stat` stops the program.
program module_test
  use, intrinsic :: iso_c_binding, only: c_float, c_int32_t
  use dovwriter
  implicit none
  type(dov_scene) :: scene, old_scene
  type(dov_id) :: mesh, array, unknown
  real(c_float), target :: grid(300, 2)
  character(len=:), allocatable :: name
  character(len=8) :: argument
  integer(c_int32_t) :: type
  integer :: stat, failures = 0

  call dov_scene_create(scene, 'module test')
  call get_command_argument(1, argument)
  if (argument == 'stop') call dov_validate(scene, unknown)

  call expect(index(dov_library_version(), '.') > 1, 'the library tells its version')
  call dov_create_object(scene, DOV_MESH_OBJECT, mesh)
  call dov_create_object(scene, DOV_ARRAY_OBJECT, array)
  call dov_set_name(scene, mesh, 'Plate   ')
  call dov_get_name(scene, mesh, name)
  call expect(name == 'Plate' .and. len(name) == 5, 'names are trimmed on the way in')
  deallocate (name)
  call dov_get_type(scene, mesh, type)
  call expect(type == DOV_MESH_OBJECT, 'the type comes back')

  call dov_set_result_at(scene, mesh, unknown, 1.5, 'Stress', array, stat=stat)
  call expect(stat == DOV_ERROR_INVALID_OBJECT .and. dov_last_error_code() == 8 .and. &
              dov_last_error_description() == 'Invalid Identifier', 'a bad identifier gives code 8')
  call expect(index(dov_last_error_message(), 'Exception "Invalid Object" raised.') == 1, &
              'the whole report of the library')

  call dov_set_index_values(scene, array, [1, 2, 0], base=1, stat=stat)
  call expect(stat == DOV_ERROR_MISCELLANEOUS .and. index(dov_last_error_message(), 'dovwriter: ') == 1, &
              'a number below the base is refused')
  call dov_set_index_values(scene, array, [3_8, 4294967296_8], stat=stat)
  call expect(stat == DOV_ERROR_MISCELLANEOUS, 'a number beyond 32 bits is refused')
  call dov_set_index_values(scene, array, [1, 2], base=2, stat=stat)
  call expect(stat == DOV_ERROR_MISCELLANEOUS, 'a base other than 0 or 1 is refused')
  call dov_set_index_values(scene, array, reshape([1, 2, 3, 2, 3, 4], [3, 2]), base=1, stat=stat)
  call expect(stat == 0, 'numbers from 1 pass with base 1')

  call dov_set_values(scene, array, grid, stat=stat)
  call expect(stat == DOV_ERROR_MISCELLANEOUS, 'a tuple wider than 255 is refused')
  call dov_set_values(scene, array, grid(1:3, :), stat=stat)
  call expect(stat == 0, 'a section that is not contiguous is copied')
  call dov_lend_values(scene, array, grid(1:3, :), stat=stat)
  call expect(stat == DOV_ERROR_MISCELLANEOUS, 'a lent section that is not contiguous is refused')
  call dov_lend_values(scene, array, grid(:, 1), stat=stat)
  call expect(stat == 0, 'a contiguous column is lent')
  call dov_set_result_at(scene, mesh, unknown, 1.5, 'Stress', array, stat=stat)
  call expect(dov_last_error_code() == 8, 'a library failure is the last one again')

  call dov_scene_create(old_scene, 'version 0', version=0)
  call dov_create_object(old_scene, DOV_ARRAY_OBJECT, array)
  call dov_set_values(old_scene, array, [1.0, 2.0], stat=stat)
  call expect(stat == DOV_ERROR_INVALID_METHOD, 'a version 0 scene has no arrays')
  call dov_scene_free(old_scene)
  call dov_scene_free(scene)

  if (failures > 0) error stop 1
  print '(a)', 'all checks passed'

contains

  subroutine expect(condition, what)
    logical, intent(in) :: condition
    character(len=*), intent(in) :: what
    if (.not. condition) then
      print '(a, a, i0, a, a)', what, ': last error ', dov_last_error_code(), ' ', dov_last_error_description()
      failures = failures + 1
    end if
  end subroutine

end program
