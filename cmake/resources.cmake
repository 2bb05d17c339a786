# Resources: one .rc source for both builds, compiled by windres of the MinGW binutils.
#   qx_resources(TARGET FILE.rc INCLUDED...) puts the compiled resources into the module that TARGET makes; the files that
#                                           FILE.rc includes are named, so that a change of one is seen
#   qx_language_module(TARGET FILE.rc)      puts TARGET.LNG, a module of resources alone, beside TARGET's module
if(WIN32)
  set(qx_windres ${CMAKE_RC_COMPILER})
else()
  find_program(qx_windres x86_64-w64-mingw32-windres REQUIRED)
endif()

# Compiles FILE.rc to FORMAT (res or coff) at OUTPUT. Includes are written from the root of the sources or of what the
# build generates.
function(qx_compile_resources file format output)
  get_filename_component(source ${file} ABSOLUTE)
  add_custom_command(OUTPUT ${output} DEPENDS ${source} ${ARGN} VERBATIM
    # The preprocessor is the compiler at hand, so that the native build needs no other.
    COMMAND ${qx_windres} --preprocessor=${CMAKE_CXX_COMPILER} --preprocessor-arg=-E --preprocessor-arg=-xc-header
            --preprocessor-arg=-DRC_INVOKED -c 65001 -I ${PROJECT_SOURCE_DIR} -I ${PROJECT_BINARY_DIR}/generated
            -O ${format} -i ${source} -o ${output}
    COMMENT "Compiling resources ${file}")
endfunction()

function(qx_resources target file)
  get_filename_component(name ${file} NAME_WE)
  set(base ${CMAKE_CURRENT_BINARY_DIR}/${target}_${name})
  if(WIN32)
    qx_compile_resources(${file} coff ${base}.o ${ARGN})
    target_sources(${target} PRIVATE ${base}.o)
    set_source_files_properties(${base}.o PROPERTIES EXTERNAL_OBJECT TRUE GENERATED TRUE)
    return()
  endif()
  qx_compile_resources(${file} res ${base}.res ${ARGN})
  set(RESOURCE_FILE ${base}.res)
  configure_file(${PROJECT_SOURCE_DIR}/platform/native/module_image.cpp.in ${base}.cpp @ONLY)
  set_source_files_properties(${base}.cpp PROPERTIES OBJECT_DEPENDS ${base}.res)
  target_sources(${target} PRIVATE ${base}.cpp)
endfunction()

function(qx_language_module target file)
  set(output ${CMAKE_CURRENT_BINARY_DIR}/${target}.LNG)
  if(WIN32)
    qx_compile_resources(${file} coff ${output}.o)
    add_custom_command(OUTPUT ${output} DEPENDS ${output}.o VERBATIM
      COMMAND ${CMAKE_CXX_COMPILER} -shared -nostdlib -o ${output} ${output}.o)
  else()
    qx_compile_resources(${file} res ${output})
  endif()
  add_custom_target(${target}_language DEPENDS ${output})
  add_dependencies(${target} ${target}_language)
endfunction()
