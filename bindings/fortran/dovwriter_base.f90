! The types, constants and error handling that module dovwriter is built
! on. Hosts use module dovwriter, which passes on what is public here.
module dovwriter_base
  use, intrinsic :: iso_c_binding
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  private

  public :: dov_scene, dov_id, dov_write_options, dov_diagnostic_record
  public :: dov_last_error_code, dov_last_error_description, dov_last_error_message
  public :: dov_library_version
  public :: dov_set_dimension
  ! For module dovwriter only.
  public :: check, fail, c_string, f_string, send_array, known_base, index_limit, c_array_function

  ! A scene, made by dov_scene_create and freed by dov_scene_free.
  type :: dov_scene
    type(c_ptr) :: handle = c_null_ptr
  end type

  ! Names one object of one scene; copy it and hand it back, nothing more.
  type, bind(c) :: dov_id
    integer(c_int64_t) :: first = 0, second = 0
  end type

  ! How the file is written; dov_default_write_options gives the defaults.
  type, bind(c) :: dov_write_options
    integer(c_int32_t) :: threads, encoding, level, block_bytes
  end type

  ! What a diagnostic handler (bind(c), passed with c_funloc) receives.
  type, bind(c) :: dov_diagnostic_record
    integer(c_int32_t) :: kind, code
    integer(c_int64_t) :: object
    type(c_ptr) :: text
    integer(c_int64_t) :: done, total
  end type

  integer(c_int32_t), parameter, public :: &
    DOV_ARRAY_OBJECT = 0, DOV_MATERIAL_OBJECT = 1, DOV_TRANSFORMATION_OBJECT = 2, &
    DOV_ELEMENT_SET_OBJECT = 3, DOV_INSTANCE_GROUP_OBJECT = 4, DOV_GEOMETRY_OBJECT = 16, &
    DOV_SHAPE_OBJECT = 18, DOV_GROUP_OBJECT = 19, DOV_MESH_OBJECT = 21, &
    DOV_DIFFUSIVE_COLOR = 0, DOV_SPECULAR_COLOR = 1, DOV_EMISSIVE_COLOR = 2, DOV_AMBIENT_COLOR = 3, &
    DOV_CELL_MESH = 0, DOV_LINE_MESH = 1, DOV_POINT_MESH = 2, &
    DOV_SCALAR_VARIABLE = 0, DOV_VECTOR_VARIABLE = 1, &
    DOV_SIX_COMPONENT_VARIABLE_A = 2, DOV_SIX_COMPONENT_VARIABLE_B = 3, &
    DOV_ENCODING_EXACT = 0, DOV_ENCODING_FAST = 1, &
    DOV_DIAGNOSTIC_PROGRESS = 0, DOV_DIAGNOSTIC_WARNING = 1

  integer, parameter, public :: &
    DOV_ERROR_OUT_OF_MEMORY = -1, DOV_ERROR_LENGTH = -2, DOV_ERROR_UNEXPECTED = -3, &
    DOV_ERROR_OUT_OF_BOUNDS = 1, DOV_ERROR_UNKNOWN_VERSION = 2, DOV_ERROR_NOT_INITIALIZED = 3, &
    DOV_ERROR_ELEMENT_EXISTS = 4, DOV_ERROR_ELEMENT_NOT_FOUND = 5, DOV_ERROR_INVALID_METHOD = 6, &
    DOV_ERROR_INVALID_ENUMERATION = 7, DOV_ERROR_INVALID_OBJECT = 8, DOV_ERROR_READ = 9, &
    DOV_ERROR_WRITE = 10, DOV_ERROR_FORMAT_NOT_SUPPORTED = 11, DOV_ERROR_BAD_CASTING = 12, &
    DOV_ERROR_NOT_IMPLEMENTED = 13, DOV_ERROR_MISMATCH = 14, DOV_ERROR_SYSTEM = 15, &
    DOV_ERROR_MISCELLANEOUS = 16, DOV_ERROR_ZERO_LENGTH = 17, DOV_ERROR_MODEL = 18, &
    DOV_ERROR_STATE = 19, DOV_ERROR_INVALID_EXCEPTION = 21

  abstract interface
    integer(c_int) function c_array_function(scene, array, values, count) bind(c)
      import :: c_int, c_int64_t, c_ptr, dov_id
      type(c_ptr), value :: scene, values
      type(dov_id), value :: array
      integer(c_int64_t), value :: count
    end function
  end interface

  interface
    integer(c_int) function c_last_error_code() bind(c, name="dov_last_error_code")
      import :: c_int
    end function
    type(c_ptr) function c_last_error_description() bind(c, name="dov_last_error_description")
      import :: c_ptr
    end function
    type(c_ptr) function c_last_error_message() bind(c, name="dov_last_error_message")
      import :: c_ptr
    end function
    type(c_ptr) function c_library_version() bind(c, name="dov_library_version")
      import :: c_ptr
    end function
    integer(c_size_t) function c_strlen(text) bind(c, name="strlen")
      import :: c_size_t, c_ptr
      type(c_ptr), value :: text
    end function
    integer(c_int) function c_set_dimension(scene, array, dimension) bind(c, name="dov_set_dimension")
      import :: c_int, c_int8_t, c_ptr, dov_id
      type(c_ptr), value :: scene
      type(dov_id), value :: array
      integer(c_int8_t), value :: dimension
    end function
  end interface

  ! Node and cell numbers must fit below this once their base is taken off:
  ! the library reads them as unsigned 32-bit numbers.
  integer(c_int64_t), parameter :: index_limit = 4294967296_c_int64_t

  ! A failure found by this module before the library was called. It is
  ! the last failure until the library reports one.
  logical :: own_failure_is_last = .false.
  integer :: own_code = 0
  character(len=:), allocatable :: own_description

contains

  ! The last failure: 0 and empty texts before any.
  integer function dov_last_error_code()
    if (own_failure_is_last) then
      dov_last_error_code = own_code
    else
      dov_last_error_code = c_last_error_code()
    end if
  end function

  function dov_last_error_description() result(text)
    character(len=:), allocatable :: text
    if (own_failure_is_last) then
      text = own_description
    else
      text = f_string(c_last_error_description())
    end if
  end function

  ! "MAJOR.MINOR.PATCH" of the loaded library.
  function dov_library_version() result(text)
    character(len=:), allocatable :: text
    text = f_string(c_library_version())
  end function

  ! The whole report, over several lines.
  function dov_last_error_message() result(text)
    character(len=:), allocatable :: text
    if (own_failure_is_last) then
      text = 'dovwriter: ' // own_description
    else
      text = f_string(c_last_error_message())
    end if
  end function

  ! Hands the code of a library call to the host: through `stat` where the
  ! host gave it, else a failure prints the report and stops the program.
  subroutine check(code, stat)
    integer(c_int), intent(in) :: code
    integer, intent(out), optional :: stat
    if (code /= 0) own_failure_is_last = .false.
    call report(int(code), stat)
  end subroutine

  subroutine fail(code, description, stat)
    integer, intent(in) :: code
    character(len=*), intent(in) :: description
    integer, intent(out), optional :: stat
    own_failure_is_last = .true.
    own_code = code
    own_description = description
    call report(code, stat)
  end subroutine

  subroutine report(code, stat)
    integer, intent(in) :: code
    integer, intent(out), optional :: stat
    if (present(stat)) then
      stat = code
    else if (code /= 0) then
      write (error_unit, '(a)') dov_last_error_message()
      flush (error_unit)
      error stop code
    end if
  end subroutine

  ! Fortran text as the library takes it: trailing blanks cut, zero ended.
  function c_string(text) result(zero_ended)
    character(len=*), intent(in) :: text
    character(kind=c_char, len=:), allocatable :: zero_ended
    zero_ended = trim(text) // c_null_char
  end function

  function f_string(text) result(copy)
    type(c_ptr), intent(in) :: text
    character(len=:), allocatable :: copy
    character(kind=c_char), pointer :: bytes(:)
    integer :: i
    if (.not. c_associated(text)) then
      copy = ''
      return
    end if
    call c_f_pointer(text, bytes, [c_strlen(text)])
    allocate (character(len=size(bytes)) :: copy)
    do i = 1, size(bytes)
      copy(i:i) = bytes(i)
    end do
  end function

  subroutine dov_set_dimension(scene, array, dimension, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: array
    integer, intent(in) :: dimension
    integer, intent(out), optional :: stat
    if (dimension < 0 .or. dimension > 255) then
      call fail(DOV_ERROR_MISCELLANEOUS, 'dov_set_dimension: the dimension must lie in 0..255', stat)
      return
    end if
    ! An unsigned byte on the C side.
    call check(c_set_dimension(scene%handle, array, int(merge(dimension - 256, dimension, dimension > 127), &
                                                        c_int8_t)), stat)
  end subroutine

  ! Gives an array object `elements` values at `address` in tuples of
  ! `width`: the width goes on first, since the library counts tuples.
  subroutine send_array(scene, array, width, elements, address, c_call, stat)
    type(dov_scene), intent(in) :: scene
    type(dov_id), intent(in) :: array
    integer, intent(in) :: width
    integer(c_int64_t), intent(in) :: elements
    type(c_ptr), intent(in) :: address
    procedure(c_array_function) :: c_call
    integer, intent(out), optional :: stat
    if (width < 1 .or. width > 255) then
      call fail(DOV_ERROR_MISCELLANEOUS, 'the tuple width (first extent) must lie in 1..255', stat)
      return
    end if
    call dov_set_dimension(scene, array, width, stat)
    if (present(stat)) then
      if (stat /= 0) return
    end if
    call check(c_call(scene%handle, array, address, elements / width), stat)
  end subroutine

  ! Where the host counts node and cell numbers from: 0 without `base`, or
  ! `base` 1. Any other base is refused, and the result is .false.
  logical function known_base(base, first, stat)
    integer, intent(in), optional :: base
    integer(c_int64_t), intent(out) :: first
    integer, intent(out), optional :: stat
    first = 0
    if (present(base)) first = base
    known_base = first == 0 .or. first == 1
    if (.not. known_base) call fail(DOV_ERROR_MISCELLANEOUS, 'base must be 0 or 1', stat)
  end function

end module
