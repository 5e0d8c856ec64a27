# Writes the Fortran procedures that are alike but for a name or an element
# type, from the templates in templates/: into dovwriter_procedures.inc,
# and the generic interfaces over the element types into
# dovwriter_declarations.inc. Both are included by dovwriter.f90.
#
# A family is a template and its entries, "name:a:b", where a and b fill
# @A@ and @B@: argument names (several joined by commas), or what the
# template makes of them.

set(DOVWRITER_FORTRAN_TEMPLATES ${CMAKE_CURRENT_LIST_DIR}/templates)
set(procedures "")
set(declarations "")

# The value types of the instance values, properties and application info.
set(value_kinds i8 i16 i32 i64 f32 f64 text)
set(ftype_i8 "integer(c_int8_t)")
set(ftype_i16 "integer(c_int16_t)")
set(ftype_i32 "integer(c_int32_t)")
set(ftype_i64 "integer(c_int64_t)")
set(ftype_f32 "real(c_float)")
set(ftype_f64 "real(c_double)")
set(array_kinds i8 i16 i32 i64 f32 f64)
set(index_kinds i32 i64)

function(expand template)
  file(READ ${DOVWRITER_FORTRAN_TEMPLATES}/${template}.f90.in text)
  string(CONFIGURE "${text}" text @ONLY)
  set(procedures "${procedures}${text}" PARENT_SCOPE)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
               ${DOVWRITER_FORTRAN_TEMPLATES}/${template}.f90.in)
endfunction()

function(read_entry entry)
  string(REPLACE ":" ";" parts "${entry}")
  list(GET parts 0 NAME)
  set(NAME ${NAME} PARENT_SCOPE)
  list(LENGTH parts count)
  if(count GREATER 1)
    list(GET parts 1 A)
    set(A ${A} PARENT_SCOPE)
  endif()
  if(count GREATER 2)
    list(GET parts 2 B)
    set(B ${B} PARENT_SCOPE)
  endif()
endfunction()

# Procedures under their own names.
function(plain_family template)
  foreach(entry IN LISTS ARGN)
    read_entry(${entry})
    expand(${template})
  endforeach()
  set(procedures "${procedures}" PARENT_SCOPE)
  set(declarations "${declarations}" PARENT_SCOPE)
endfunction()

# One procedure per kind (and rank), reached through a generic name.
function(generic_family template kinds ranks)
  foreach(entry IN LISTS ARGN)
    read_entry(${entry})
    set(specifics "")
    foreach(SUFFIX IN LISTS kinds)
      if(SUFFIX STREQUAL "text")
        set(FVALUE "character(len=*), intent(in) :: value")
        set(CVALUE "character(kind=c_char), intent(in) :: value(*)")
        set(PASS "c_string(value)")
      else()
        set(FTYPE ${ftype_${SUFFIX}})
        set(FVALUE "${FTYPE}, intent(in) :: value")
        set(CVALUE "${FTYPE}, value :: value")
        set(PASS "value")
      endif()
      foreach(RANK IN LISTS ranks)
        if(RANK STREQUAL "0")
          set(specific dov_${NAME}_${SUFFIX})
        else()
          set(specific dov_${NAME}_${SUFFIX}_${RANK})
        endif()
        if(RANK STREQUAL "1")
          set(SHAPE ":")
          set(WIDTH "1")
        elseif(RANK STREQUAL "2")
          set(SHAPE ":,:")
          set(WIDTH "size(values, 1)")
        endif()
        expand(${template})
        string(APPEND specifics "    module procedure ${specific}\n")
        string(APPEND declarations "  private :: ${specific}\n")
      endforeach()
    endforeach()
    string(APPEND declarations "  interface dov_${NAME}\n${specifics}  end interface\n")
  endforeach()
  set(procedures "${procedures}" PARENT_SCOPE)
  set(declarations "${declarations}" PARENT_SCOPE)
endfunction()

plain_family(ids validate:object set_random_colors:object create_default_views:root
             set_coordinates:mesh,array set_connectivity:mesh,array
             set_node_indices:mesh,array set_element_indices:mesh,array
             add_element_set:mesh,set set_material:object,material
             set_connectivity_polylength:mesh,connectivity,polylength)
plain_family(ids_count add_component:parent,child
             add_component_transformed:parent,child,transformation)
plain_family(id_text set_name:object:name set_title_object:object:name)
plain_family(text set_title:title close_file:path)
set(FTYPE "real(c_float)")
plain_family(id_scalars set_translation:object:x,y,z set_scale:object:x,y,z
             set_rotation:object:a,b,c,d set_ambient_intensity:object:intensity)
set(FTYPE "integer(c_int32_t)")
plain_family(id_scalars set_mesh_type:object:type)
set(FTYPE "integer(c_int64_t)")
plain_family(id_scalars remove_component:parent:component)

generic_family(value_property "${value_kinds}" 0 set_property)
generic_family(value_application_info "${value_kinds}" 0 set_application_info)
generic_family(value_at "${value_kinds}" 0
               set_coordinates_at:array set_connectivity_at:array set_node_indices_at:array
               set_element_indices_at:array add_element_set_at:set)
generic_family(value_at_named "${value_kinds}" 0 set_result_at:array add_element_set_named_at:set)
generic_family(value_at_polylength "${value_kinds}" 0 set_connectivity_polylength_at)
generic_family(value_at_typed "${value_kinds}" 0 set_result_typed_at)
# set_values copies an array that is not contiguous; lend_values refuses it.
generic_family(values "${array_kinds}" "1;2" set_values:.true. lend_values:.false.)
generic_family(index_values "${index_kinds}" "1;2" set_index_values)

set(generated ${CMAKE_CURRENT_BINARY_DIR}/generated)
file(MAKE_DIRECTORY ${generated})
file(CONFIGURE OUTPUT ${generated}/dovwriter_procedures.inc CONTENT "${procedures}" @ONLY)
file(CONFIGURE OUTPUT ${generated}/dovwriter_declarations.inc CONTENT "${declarations}" @ONLY)
