! The plate model of examples/plate_model.cpp, written through the Fortran
! module: a bracket plate meshed with 100,000 nodes in three coloured
! element sets, one bolt placed twice by transformations, and displacement
! and stress over ten load states. Nodes and cells are numbered from 1 here,
! as Fortran hosts do; the file is the same as the C++ one.
!
!   plate_model_fortran [file]        (default: plate_model.dov)
program plate_model
  use, intrinsic :: iso_c_binding, only: c_float, c_int32_t
  use dovwriter
  implicit none

  integer, parameter :: nodes_along = 400, nodes_across = 250, load_states = 10
  integer, parameter :: node_count = nodes_along * nodes_across, cells_along = nodes_along - 1
  integer, parameter :: cell_count = cells_along * (nodes_across - 1)
  real(c_float), parameter :: spacing = 0.5
  type(dov_scene) :: scene
  type(dov_id) :: plate, bolt, assembly
  real(c_float), allocatable :: nodes(:, :)
  character(len=1024) :: path

  path = 'plate_model.dov'
  if (command_argument_count() > 0) call get_command_argument(1, path)
  call dov_scene_create(scene, 'bracket', version=1)
  call dov_set_application_info(scene, 'plate_model example', '1.0')
  plate = make_plate()
  call add_results(plate)
  bolt = make_bolt()

  assembly = new_object(DOV_GROUP_OBJECT, 'Bracket assembly')
  call dov_set_property(scene, assembly, 'Units', 'mm')
  call dov_add_component(scene, assembly, plate)
  call dov_add_component_transformed(scene, assembly, bolt, place_at('Bolt 1', 10.0, 62.25))
  call dov_add_component_transformed(scene, assembly, bolt, place_at('Bolt 2', 30.0, 62.25))

  call dov_create_default_views(scene, assembly)
  call dov_save_to(scene, path, overwrite=.true.)
  call dov_close_file(scene, path)
  call dov_scene_free(scene)
  print '(a, i0, a, i0, a, i0, a)', 'wrote ' // trim(path) // ': ', node_count, ' nodes, ', &
    cell_count, ' cells in 3 element sets, ', load_states, ' load states, 2 bolts'

contains

  ! Any failure below stops the program with the library's report: no
  ! call passes `stat`.
  function new_object(type, name) result(object)
    integer(c_int32_t), intent(in) :: type
    character(len=*), intent(in), optional :: name
    type(dov_id) :: object
    call dov_create_object(scene, type, object)
    if (present(name)) call dov_set_name(scene, object, name)
  end function

  function make_plate() result(plate)
    type(dov_id) :: plate, array, set
    integer :: i, j, n, p, cell
    integer, allocatable :: node_ids(:), quads(:, :), part_of(:)
    character(len=6), parameter :: part_names(3) = [character(len=6) :: 'Flange', 'Web', 'Boss']
    real(c_float), parameter :: colours(3, 3) = reshape([0.85, 0.25, 0.20, 0.60, 0.60, 0.65, &
                                                         0.20, 0.40, 0.85], [3, 3])

    allocate (nodes(3, node_count), node_ids(node_count), quads(4, cell_count))
    do j = 0, nodes_across - 1
      do i = 0, nodes_along - 1
        n = j * nodes_along + i + 1
        nodes(:, n) = [real(i, c_float) * spacing, real(j, c_float) * spacing, 0.0]
        node_ids(n) = 1000000 + n - 1
      end do
    end do
    do j = 0, nodes_across - 2
      do i = 1, cells_along
        n = j * nodes_along + i
        quads(:, j * cells_along + i) = [n, n + 1, n + 1 + nodes_along, n + nodes_along]
      end do
    end do

    plate = new_object(DOV_MESH_OBJECT, 'Plate')
    array = new_object(DOV_ARRAY_OBJECT)
    call dov_set_values(scene, array, nodes)
    call dov_set_coordinates(scene, plate, array)
    ! Four nodes per cell: the first extent tells it, no polylength needed.
    array = new_object(DOV_ARRAY_OBJECT)
    call dov_set_index_values(scene, array, quads, base=1)
    call dov_set_connectivity(scene, plate, array)
    array = new_object(DOV_ARRAY_OBJECT)
    call dov_set_index_values(scene, array, node_ids)
    call dov_set_node_indices(scene, plate, array)

    ! Three element sets, cut across the length, each in its own colour.
    allocate (part_of(cell_count))
    do cell = 1, cell_count
      part_of(cell) = mod(cell - 1, cells_along) * 3 / cells_along
    end do
    do p = 1, 3
      set = new_object(DOV_ARRAY_OBJECT)
      call dov_set_index_values(scene, set, pack([(cell, cell = 1, cell_count)], part_of == p - 1), base=1)
      call dov_set_name(scene, set, part_names(p))
      call dov_set_color_rgba(scene, set, DOV_DIFFUSIVE_COLOR, colours(1, p), colours(2, p), colours(3, p), 1.0)
      call dov_set_ambient_intensity(scene, set, 0.3)
      call dov_add_element_set(scene, plate, set)
    end do
  end function

  ! Results per load state, under the load factor of the instance group
  ! "Load". The plate is clamped at x = 0 and bends under its tip load.
  subroutine add_results(plate)
    type(dov_id), intent(in) :: plate
    real(c_float), parameter :: length = real(nodes_along - 1, c_float) * spacing
    real(c_float), parameter :: half_width = real(nodes_across - 1, c_float) * spacing / 2
    real(c_float), allocatable :: displacement(:, :), stress(:)
    real(c_float) :: factor, x, y
    type(dov_id) :: load, u, s
    integer :: state, n

    allocate (displacement(3, node_count), stress(node_count))
    load = new_object(DOV_INSTANCE_GROUP_OBJECT, 'Load')
    do state = 1, load_states
      factor = real(state, c_float) / 10.0
      do n = 1, node_count
        x = nodes(1, n) / length
        y = (nodes(2, n) - half_width) / half_width
        displacement(:, n) = [0.0_c_float, 0.0_c_float, ((-2.0 * factor) * x) * x]
        stress(n) = ((250.0 * factor) * (1.0 - x)) * y
      end do
      u = new_object(DOV_ARRAY_OBJECT)
      call dov_set_values(scene, u, displacement)
      call dov_set_property(scene, u, 'Unit', 'mm')
      call dov_set_result_typed_at(scene, plate, load, factor, 'Displacement', DOV_VECTOR_VARIABLE, u)
      s = new_object(DOV_ARRAY_OBJECT)
      call dov_set_values(scene, s, stress)
      call dov_set_property(scene, s, 'Unit', 'MPa')
      call dov_set_result_typed_at(scene, plate, load, factor, 'Stress', DOV_SCALAR_VARIABLE, s)
    end do
  end subroutine

  ! One hexahedral bolt, built once and placed twice.
  function make_bolt() result(bolt)
    type(dov_id) :: bolt, geometry, array, steel
    real(c_float), parameter :: corners(3, 8) = reshape([-4, -4, 0, 4, -4, 0, 4, 4, 0, -4, 4, 0, &
                                                         -4, -4, 12, 4, -4, 12, 4, 4, 12, -4, 4, 12], [3, 8])
    integer, parameter :: hexahedron(8, 1) = reshape([1, 2, 3, 4, 5, 6, 7, 8], [8, 1])

    geometry = new_object(DOV_GEOMETRY_OBJECT)
    array = new_object(DOV_ARRAY_OBJECT)
    call dov_set_values(scene, array, corners)
    call dov_set_coordinates(scene, geometry, array)
    array = new_object(DOV_ARRAY_OBJECT)
    call dov_set_index_values(scene, array, hexahedron, base=1)
    call dov_set_connectivity(scene, geometry, array)

    steel = new_object(DOV_MATERIAL_OBJECT)
    call dov_set_color_rgba(scene, steel, DOV_DIFFUSIVE_COLOR, 0.72, 0.72, 0.75, 1.0)
    call dov_set_material(scene, geometry, steel)

    bolt = new_object(DOV_SHAPE_OBJECT, 'Bolt')
    call dov_add_component(scene, bolt, geometry)
  end function

  function place_at(name, x, y) result(placement)
    character(len=*), intent(in) :: name
    real(c_float), intent(in) :: x, y
    type(dov_id) :: placement
    placement = new_object(DOV_TRANSFORMATION_OBJECT, name)
    call dov_set_translation(scene, placement, x, y, 0.0)
  end function

end program
