# Installs the built library into a scratch prefix, then configures, builds
# and runs examples/consumer against it with find_package and pkg-config.
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK}/prefix
  RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/consumer -B ${WORK}/build
  -DCMAKE_PREFIX_PATH=${WORK}/prefix "-DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}"
  "-DCMAKE_EXE_LINKER_FLAGS=${EXTRA_FLAGS}" RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "consumer configure failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "consumer build failed")
endif()
file(GLOB_RECURSE libdirs LIST_DIRECTORIES true ${WORK}/prefix/lib*/libtelvanix*)
execute_process(COMMAND ${WORK}/build/consumer RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(rc)
  message(FATAL_ERROR "consumer run failed: ${out}")
endif()
file(GLOB_RECURSE pcfile ${WORK}/prefix/*/telvanix.pc)
file(READ ${pcfile} pc)
if(NOT pc MATCHES "-ltelvanix")
  message(FATAL_ERROR "telvanix.pc lacks the link flag")
endif()
message(STATUS "consumer printed: ${out}")
