! The Fortran interface of the library: a module over its C interface.
!
! Every C function dov_<operation>_<type> is a generic procedure
! dov_<operation> here, resolved by the kind of the value or array:
! integer(1/2/4/8), real(4/8) and, for values, character(*). Every procedure
! takes an optional last argument `stat`: 0 on success, else the error code
! (dov_last_error_message() tells more); without it a failure prints the
! report and stops the program. Strings go to the library trimmed.
!
! Arrays: dov_set_values(scene, array, values) takes a rank-1 array as
! values of width 1 and a rank-2 array values(w, n) as n tuples of w; it
! sets the array's dimension to the width. Contiguous arrays are passed
! without a copy. Node and cell numbers (connectivity, polylength, node ids,
! element sets) must reach the library as unsigned 32-bit numbers:
! dov_set_index_values takes them as integer(4/8), with `base` 1 for
! numbers counted from 1.
module dovwriter
  use, intrinsic :: iso_c_binding
  use dovwriter_base
  implicit none
  ! Everything is public but the helpers this module is built with and the
  ! specific procedures behind the generic names.
  private :: check, fail, c_string, f_string, send_array, known_base, index_limit, c_array_function
  include 'dovwriter_declarations.inc'

contains

  ! `version` 0, 1 or 2 (the default) chooses the interface.
  subroutine dov_scene_create(scene, title, version, stat)
    type(dov_scene), intent(out) :: scene
    character(len=*), intent(in) :: title
    integer, intent(in), optional :: version
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(title, version, scene) bind(c, name="dov_scene_create")
        import :: c_int, c_char, c_ptr
        character(kind=c_char), intent(in) :: title(*)
        integer(c_int), value :: version
        type(c_ptr), intent(out) :: scene
      end function
    end interface
    integer(c_int) :: chosen
    chosen = 2
    if (present(version)) chosen = version
    call check(c_call(c_string(title), chosen, scene%handle), stat)
  end subroutine

  subroutine dov_scene_free(scene)
    type(dov_scene), intent(inout) :: scene
    interface
      integer(c_int) function c_call(scene) bind(c, name="dov_scene_free")
        import :: c_int, c_ptr
        type(c_ptr), value :: scene
      end function
    end interface
    call check(c_call(scene%handle))
    scene%handle = c_null_ptr
  end subroutine

  subroutine dov_log_trace_to_file(path, stat)
    character(len=*), intent(in) :: path
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(path) bind(c, name="dov_log_trace_to_file")
        import :: c_int, c_char
        character(kind=c_char), intent(in) :: path(*)
      end function
    end interface
    call check(c_call(c_string(path)), stat)
  end subroutine

  subroutine dov_create_object(scene, type, object, stat)
    type(dov_scene), intent(in) :: scene
    integer(c_int32_t), intent(in) :: type
    type(dov_id), intent(out) :: object
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, type, object) bind(c, name="dov_create_object")
        import :: c_int, c_int32_t, c_ptr, dov_id
        type(c_ptr), value :: scene
        integer(c_int32_t), value :: type
        type(dov_id), intent(out) :: object
      end function
    end interface
    call check(c_call(scene%handle, type, object), stat)
  end subroutine

  subroutine dov_get_type(scene, object, type, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: object
    integer(c_int32_t), intent(out) :: type
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, object, type) bind(c, name="dov_get_type")
        import :: c_int, c_int32_t, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: object
        integer(c_int32_t), intent(out) :: type
      end function
    end interface
    call check(c_call(scene%handle, object, type), stat)
  end subroutine

  subroutine dov_get_name(scene, object, name, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: object
    character(len=:), allocatable, intent(out) :: name
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, object, name) bind(c, name="dov_get_name")
        import :: c_int, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: object
        type(c_ptr), intent(out) :: name
      end function
    end interface
    type(c_ptr) :: text
    text = c_null_ptr
    call check(c_call(scene%handle, object, text), stat)
    name = f_string(text)
  end subroutine

  ! Opens the file and writes its head; an existing file is replaced only
  ! with overwrite = .true.
  subroutine dov_save_to(scene, path, overwrite, stat)
    type(dov_scene), intent(in) :: scene
    character(len=*), intent(in) :: path
    logical, intent(in), optional :: overwrite
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, path, unused, unused_flag, overwrite) &
          bind(c, name="dov_save_to")
        import :: c_int, c_ptr, c_char
        type(c_ptr), value :: scene, unused
        character(kind=c_char), intent(in) :: path(*)
        integer(c_int), value :: unused_flag, overwrite
      end function
    end interface
    integer(c_int) :: replace
    replace = 0
    if (present(overwrite)) replace = merge(1, 0, overwrite)
    call check(c_call(scene%handle, c_string(path), c_null_ptr, 0, replace), stat)
  end subroutine

  ! rgba holds 3 values (no alpha) or 4.
  subroutine dov_set_color(scene, object, type, rgba, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: object
    integer(c_int32_t), intent(in) :: type
    real(c_float), intent(in) :: rgba(:)
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, object, type, rgba, has_alpha) bind(c, name="dov_set_color")
        import :: c_int, c_int32_t, c_float, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: object
        integer(c_int32_t), value :: type
        real(c_float), intent(in) :: rgba(*)
        integer(c_int), value :: has_alpha
      end function
    end interface
    real(c_float) :: components(4)
    if (size(rgba) /= 3 .and. size(rgba) /= 4) then
      call fail(DOV_ERROR_MISCELLANEOUS, 'dov_set_color: rgba must hold 3 or 4 values', stat)
      return
    end if
    components = 1
    components(:size(rgba)) = rgba
    call check(c_call(scene%handle, object, type, components, merge(1, 0, size(rgba) == 4)), stat)
  end subroutine

  subroutine dov_set_color_rgba(scene, object, type, red, green, blue, alpha, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: object
    integer(c_int32_t), intent(in) :: type
    real(c_float), intent(in) :: red, green, blue, alpha
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, object, type, red, green, blue, alpha) &
          bind(c, name="dov_set_color_rgba")
        import :: c_int, c_int32_t, c_float, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: object
        integer(c_int32_t), value :: type
        real(c_float), value :: red, green, blue, alpha
      end function
    end interface
    call check(c_call(scene%handle, object, type, red, green, blue, alpha), stat)
  end subroutine

  subroutine dov_set_visibility(scene, object, visible, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: object
    logical, intent(in) :: visible
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, object, visible) bind(c, name="dov_set_visibility")
        import :: c_int, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: object
        integer(c_int), value :: visible
      end function
    end interface
    call check(c_call(scene%handle, object, merge(1, 0, visible)), stat)
  end subroutine

  subroutine dov_set_result(scene, mesh, name, array, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: mesh, array
    character(len=*), intent(in) :: name
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, mesh, name, array) bind(c, name="dov_set_result")
        import :: c_int, c_char, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: mesh, array
        character(kind=c_char), intent(in) :: name(*)
      end function
    end interface
    call check(c_call(scene%handle, mesh, c_string(name), array), stat)
  end subroutine

  subroutine dov_set_result_typed(scene, mesh, name, type, array, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: mesh, array
    character(len=*), intent(in) :: name
    integer(c_int32_t), intent(in) :: type
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, mesh, name, type, array) bind(c, name="dov_set_result_typed")
        import :: c_int, c_int32_t, c_char, c_ptr, dov_id
        type(c_ptr), value :: scene
        type(dov_id), value :: mesh, array
        character(kind=c_char), intent(in) :: name(*)
        integer(c_int32_t), value :: type
      end function
    end interface
    call check(c_call(scene%handle, mesh, c_string(name), type, array), stat)
  end subroutine

  function dov_default_write_options() result(options)
    type(dov_write_options) :: options
    interface
      integer(c_int) function c_call(options) bind(c, name="dov_write_options_init")
        import :: c_int, dov_write_options
        type(dov_write_options), intent(out) :: options
      end function
    end interface
    call check(c_call(options))
  end function

  subroutine dov_set_write_options(scene, options, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_write_options), intent(in) :: options
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, options) bind(c, name="dov_set_write_options")
        import :: c_int, c_ptr, dov_write_options
        type(c_ptr), value :: scene
        type(dov_write_options), intent(in) :: options
      end function
    end interface
    call check(c_call(scene%handle, options), stat)
  end subroutine

  ! `handler` is c_funloc of a bind(c) subroutine(record, user) taking a
  ! type(dov_diagnostic_record) and a type(c_ptr), value; c_null_funptr
  ! turns the channel off.
  subroutine dov_set_diagnostics(scene, handler, user, stat)
    type(dov_scene), intent(in) :: scene
    type(c_funptr), intent(in) :: handler
    type(c_ptr), intent(in) :: user
    integer, intent(out), optional :: stat
    interface
      integer(c_int) function c_call(scene, handler, user) bind(c, name="dov_set_diagnostics")
        import :: c_int, c_ptr, c_funptr
        type(c_ptr), value :: scene, user
        type(c_funptr), value :: handler
      end function
    end interface
    call check(c_call(scene%handle, handler, user), stat)
  end subroutine

  include 'dovwriter_procedures.inc'

end module
