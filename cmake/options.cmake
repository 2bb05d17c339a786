# What every target of ours is compiled with. The portable arithmetic is the definition of the product's sound, so
# products and sums stay separate roundings unless a processor-specific file asks for fused ones.
add_library(qx_options INTERFACE)
target_compile_options(qx_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough -Werror
  $<$<PLATFORM_ID:Windows>:-Wno-non-virtual-dtor>   # the platform's interfaces have none; their objects delete themselves
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>   # GCC 12 sees overlaps in plain joins of std::string
  -ffp-contract=off -fno-math-errno)

set(QX_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")
if(QX_SANITIZE)
  add_compile_options(-fsanitize=${QX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QX_SANITIZE})
endif()

# qx_library(NAME SOURCES... ): a static library of the tree, included from the root of the sources.
function(qx_library name)
  add_library(${name} STATIC ${ARGN})
  add_library(qxvantor::${name} ALIAS ${name})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:qx_options>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:include/qxvantor>)
endfunction()
