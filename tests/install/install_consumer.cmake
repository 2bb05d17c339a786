# Run as a test: installs into an empty prefix, builds the program of README.md against that, and runs it.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/source)

file(READ ${ROOT}/README.md readme)
if(NOT readme MATCHES "```cpp\n(.*)\n```")
  message(FATAL_ERROR "README.md shows no program")
endif()
string(REGEX REPLACE "\n```.*" "" program "${CMAKE_MATCH_1}")
file(WRITE ${WORK}/source/consumer.cpp "${program}\n")
file(COPY ${ROOT}/tests/install/CMakeLists.txt DESTINATION ${WORK}/source)

foreach(command
    "${CMAKE_COMMAND};--install;${BUILD};--prefix;${WORK}/prefix"
    "${CMAKE_COMMAND};-G;Ninja;-S;${WORK}/source;-B;${WORK}/build;-DCMAKE_PREFIX_PATH=${WORK}/prefix;-DCMAKE_CXX_FLAGS=${FLAGS}"
    "${CMAKE_COMMAND};--build;${WORK}/build"
    "${WORK}/build/consumer")
  execute_process(COMMAND ${command} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${command}:\n${output}")
  endif()
endforeach()
message(STATUS "${output}")
if(NOT output MATCHES "^44100 frames became 66150")
  message(FATAL_ERROR "the program said: ${output}")
endif()
