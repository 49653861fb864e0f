# SPDX-License-Identifier: MIT
# ky_add_resources(<target> <name> <file>... [BASE <folder>] [FORM ASSEMBLER|ARRAY])
#
# Compiles files into a program or library. Each becomes a block of the resource registry (ky/kyResource.h) from the
# start of the program, or the loading of the library, on; a change of a file rebuilds what carries it. The target is
# linked to ky::kySystem.
#
#   ky_add_resources(app manual texts/welcome.txt)     ->  ky::rc::GetResource("manual/texts/welcome.txt", text)
#
# name    the first part of every block's name; may hold '/'; "" for none
# file    any bytes. Behind the name comes '/' and the path relative to BASE. A relative path is looked up in the current
#         source folder.
# BASE    without it: the current binary folder for files below that, the current source folder for all others
# FORM    how the bytes reach the compiler. ASSEMBLER includes the files as they are: quick whatever their size, for GCC
#         and Clang. ARRAY writes numbers, for any compiler. Without it: KY_RESOURCES_FORM if set, else what fits.
#
# Call it in the folder that makes the target. The objects of a static library are linked into every program that links
# the library, needed or not, so that its resources are there.

cmake_policy(VERSION 3.22)

function(ky_add_resources target name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "BASE;FORM" "")
  _ky_resources_check_target("${target}")
  if(NOT arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "ky_add_resources: no files for '${name}'")
  endif()
  _ky_resources_choose_form("${arg_FORM}" form ${arg_UNPARSED_ARGUMENTS})
  get_property(calls TARGET "${target}" PROPERTY KY_RESOURCE_CALLS)
  if(NOT calls)
    set(calls 0)
  endif()
  math(EXPR calls "${calls} + 1")
  set_property(TARGET "${target}" PROPERTY KY_RESOURCE_CALLS ${calls})

  # The symbol tells apart what may meet in one program, and is the same wherever the tree lies.
  file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
  string(SHA1 hash "${PROJECT_NAME}:${folder}:${target}:${calls}")
  string(SUBSTRING "${hash}" 0 16 hash)
  set(symbol "ky_resources_${hash}")
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}_resources${calls}")
  file(MAKE_DIRECTORY "${folder}")

  set(names_seen)
  set(inputs)
  set(KY_RESOURCE_ASSEMBLER)
  set(KY_RESOURCE_DECLARATIONS)
  set(KY_RESOURCE_ENTRIES)
  set(index 0)
  foreach(file IN LISTS arg_UNPARSED_ARGUMENTS)
    get_filename_component(path "${file}" ABSOLUTE)
    _ky_resources_name("${path}" "${arg_BASE}" relative)
    set(resource "${relative}")
    if(NOT name STREQUAL "")
      set(resource "${name}/${relative}")
    endif()
    get_property(taken TARGET "${target}" PROPERTY KY_RESOURCE_NAMES)
    if(resource IN_LIST taken)
      message(FATAL_ERROR "ky_add_resources: '${target}' has two resources named '${resource}'")
    endif()
    set_property(TARGET "${target}" APPEND PROPERTY KY_RESOURCE_NAMES "${resource}")
    list(APPEND inputs "${path}")
    set(block "${symbol}_${index}")
    if(form STREQUAL "ASSEMBLER")
      _ky_resources_assembler("${path}" "${block}" text)
      string(APPEND KY_RESOURCE_ASSEMBLER "${text}")
      string(APPEND KY_RESOURCE_DECLARATIONS "extern const char ${block}[];\nextern const char ${block}_end[];\n")
      set(range "${block}, ${block}_end")
    else()
      _ky_resources_array("${target}" "${path}" "${block}" "${folder}/${index}.cpp")
      string(APPEND KY_RESOURCE_DECLARATIONS
        "extern const unsigned long long ${block}[];\nextern const unsigned long long ${block}_size;\n")
      set(range "reinterpret_cast<const char*>(${block}), reinterpret_cast<const char*>(${block}) + ${block}_size")
    endif()
    # By code, so that the name is the same bytes whatever the compiler takes the file's character set for.
    string(HEX "${resource}" codes)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," codes "${codes}")
    string(APPEND KY_RESOURCE_NAMES "const char name${index}[] = {${codes}'\\0'};\n")
    string(APPEND KY_RESOURCE_ENTRIES "    {name${index}, ${range}},\n")
    math(EXPR index "${index} + 1")
  endforeach()

  if(form STREQUAL "ASSEMBLER")
    _ky_resources_section("${KY_RESOURCE_ASSEMBLER}" KY_RESOURCE_ASSEMBLER)
  endif()
  set(KY_RESOURCE_SYMBOL "${symbol}")
  set(KY_RESOURCE_COUNT ${index})
  set(source "${folder}/resources.cpp")
  configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/KyResources.cpp.in" "${source}" @ONLY)
  if(form STREQUAL "ASSEMBLER")
    set_property(SOURCE "${source}" PROPERTY OBJECT_DEPENDS "${inputs}")
  endif()
  _ky_resources_add_source("${target}" "${source}")
  _ky_resources_link("${target}" "${symbol}")
endfunction()

function(_ky_resources_check_target target)
  if(NOT TARGET "${target}")
    message(FATAL_ERROR "ky_add_resources: there is no target '${target}'")
  endif()
  get_target_property(type "${target}" TYPE)
  get_target_property(imported "${target}" IMPORTED)
  get_target_property(aliased "${target}" ALIASED_TARGET)
  if(imported OR aliased OR NOT type MATCHES "^(EXECUTABLE|(STATIC|SHARED|MODULE|OBJECT)_LIBRARY)$")
    message(FATAL_ERROR "ky_add_resources: '${target}' is not a program or library that is compiled here")
  endif()
  get_target_property(folder "${target}" SOURCE_DIR)
  if(NOT folder STREQUAL CMAKE_CURRENT_SOURCE_DIR)
    message(FATAL_ERROR "ky_add_resources: '${target}' is made in ${folder}: call it there")
  endif()
endfunction()

function(_ky_resources_choose_form wanted result)
  if(NOT wanted)
    set(wanted "${KY_RESOURCES_FORM}")
  endif()
  set(assembler FALSE)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT MSVC AND NOT APPLE AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(assembler TRUE)
  endif()
  # Assemblers on Windows open files by the name in the code page of the system.
  if(CMAKE_HOST_WIN32 AND "${CMAKE_CURRENT_SOURCE_DIR};${CMAKE_CURRENT_BINARY_DIR};${ARGN}" MATCHES "[^ -~]")
    set(assembler FALSE)
  endif()
  if(NOT wanted)
    set(wanted ARRAY)
    if(assembler)
      set(wanted ASSEMBLER)
    endif()
  elseif(NOT wanted MATCHES "^(ASSEMBLER|ARRAY)$")
    message(FATAL_ERROR "ky_add_resources: FORM is ASSEMBLER or ARRAY, not '${wanted}'")
  endif()
  set(${result} ${wanted} PARENT_SCOPE)
endfunction()

# The part of the name that comes from the file.
function(_ky_resources_name path base result)
  get_source_file_property(generated "${path}" GENERATED)
  if(IS_DIRECTORY "${path}" OR NOT (EXISTS "${path}" OR generated))
    message(FATAL_ERROR "ky_add_resources: there is no file ${path}")
  endif()
  if(NOT base STREQUAL "")
    get_filename_component(base "${base}" ABSOLUTE)
    set(bases "${base}")
  else()
    set(bases "${CMAKE_CURRENT_BINARY_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
  endif()
  foreach(folder IN LISTS bases)
    file(RELATIVE_PATH relative "${folder}" "${path}")
    if(NOT relative MATCHES "^\\.\\./" AND NOT IS_ABSOLUTE "${relative}")
      set(${result} "${relative}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "ky_add_resources: ${path} does not lie below ${bases}: name its folder with BASE")
endfunction()

function(_ky_resources_assembler path block result)
  # Twice: for the assembler's text, and for the compiler's around it.
  foreach(round IN ITEMS 1 2)
    string(REPLACE "\\" "\\\\" path "${path}")
    string(REPLACE "\"" "\\\"" path "${path}")
  endforeach()
  set(hidden "")
  if(NOT WIN32)
    set(hidden "    \".hidden ${block}\\n.hidden ${block}_end\\n\"\n")
  endif()
  # A NUL stands behind the bytes, so that text can be used where it lies.
  set(${result} "    \".balign 16\\n\"
    \".globl ${block}\\n.globl ${block}_end\\n\"
${hidden}    \"${block}:\\n\"
    \".incbin \\\"${path}\\\"\\n\"
    \"${block}_end:\\n\"
    \".byte 0\\n\"
" PARENT_SCOPE)
endfunction()

function(_ky_resources_section text result)
  set(section ".section .rodata,\\\"a\\\"")
  if(WIN32)
    set(section ".section .rdata,\\\"dr\\\"")
  endif()
  set(${result} "asm(\"${section}\\n\"\n${text}    \".text\\n\");\n" PARENT_SCOPE)
endfunction()

function(_ky_resources_array target path block source)
  add_custom_command(OUTPUT "${source}"
    COMMAND ${CMAKE_COMMAND} "-DINPUT=${path}" "-DOUTPUT=${source}" "-DSYMBOL=${block}"
      "-DBYTE_ORDER=${CMAKE_CXX_BYTE_ORDER}" -P "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/KyEmbedFile.cmake"
    DEPENDS "${path}" "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/KyEmbedFile.cmake"
    COMMENT "Embedding ${path}" VERBATIM)
  _ky_resources_add_source("${target}" "${source}")
endfunction()

function(_ky_resources_add_source target source)
  target_sources("${target}" PRIVATE "${source}")
  set_source_files_properties("${source}" PROPERTIES
    SKIP_PRECOMPILE_HEADERS ON SKIP_UNITY_BUILD_INCLUSION ON SKIP_AUTOGEN ON SKIP_LINTING ON)
  if(NOT MSVC)
    # The target's warnings are not for this code, and link-time optimisation does not see what the assembler defines.
    set_property(SOURCE "${source}" PROPERTY COMPILE_OPTIONS -w -fno-lto)
  endif()
endfunction()

# Not by target_link_libraries(), whose two forms cannot be mixed in a target.
function(_ky_resources_link target symbol)
  set_property(TARGET "${target}" APPEND PROPERTY LINK_LIBRARIES ky::kySystem)
  get_target_property(type "${target}" TYPE)
  if(type MATCHES "^(STATIC|OBJECT)_LIBRARY$")
    set_property(TARGET "${target}" APPEND PROPERTY INTERFACE_LINK_LIBRARIES "$<LINK_ONLY:ky::kySystem>")
    if(MSVC)
      set(option "LINKER:/INCLUDE:${symbol}")
    else()
      set(option "LINKER:--undefined=${symbol}")
    endif()
    set_property(TARGET "${target}" APPEND PROPERTY INTERFACE_LINK_OPTIONS "${option}")
  endif()
endfunction()
