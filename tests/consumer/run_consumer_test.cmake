# Installs a cfgq build into a scratch prefix and builds a program against it twice: through
# find_package(cfgq) and through pkg-config. Each program reads a value from a settings file
# written here and must print it; the installed cfgq tool must start from the prefix too.
#   cmake -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DCXX=... [-DEXTRA_FLAGS=...] -P this
foreach(required BUILD_DIR SOURCE_DIR WORK_DIR CXX)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "${required} is not set")
  endif()
endforeach()

function(run_step what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${what} failed (${status}):\n${out}\n${err}")
  endif()
  set(step_output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
set(home ${WORK_DIR}/home)
file(MAKE_DIRECTORY ${home})
file(WRITE ${home}/korvel2.kreg "[25.1_pro]\nGeneral\\Show_tips=from the installed library\n")
set(run_env ${CMAKE_COMMAND} -E env HOME=${home} TMPDIR=${home} KORVEL_VERSION=25.1
    --unset=KORVEL_CONFIG_ON --unset=KORVEL_REGTEST --unset=QT_QPA_PLATFORM --unset=PBUILD_BUILD)
set(expected "from the installed library\n")

run_step("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run_step("the installed tool" ${run_env} ${prefix}/bin/cfgq get General Show_tips)
if(NOT step_output STREQUAL expected)
  message(FATAL_ERROR "installed cfgq printed '${step_output}'")
endif()

# find_package(cfgq) and cfgq::cfgq.
run_step("configuring the consumer" ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build
         -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
         "-DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${EXTRA_FLAGS}")
run_step("building the consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run_step("the consumer" ${run_env} ${WORK_DIR}/build/cfgq_consumer)
if(NOT step_output STREQUAL expected)
  message(FATAL_ERROR "the consumer printed '${step_output}'")
endif()

# pkg-config --cflags --libs cfgq.
file(GLOB_RECURSE pc_files ${prefix}/*/cfgq.pc)
list(LENGTH pc_files pc_count)
if(NOT pc_count EQUAL 1)
  message(FATAL_ERROR "expected one installed cfgq.pc, found: ${pc_files}")
endif()
get_filename_component(pc_dir ${pc_files} DIRECTORY)
run_step("pkg-config" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pc_dir}
         pkg-config --cflags --libs cfgq)
string(STRIP "${step_output}" pc_flags)
if(NOT pc_flags MATCHES "-I[^ ]*/include/cfgq" OR NOT pc_flags MATCHES "-lcfgq")
  message(FATAL_ERROR "pkg-config gave '${pc_flags}'")
endif()
separate_arguments(pc_flag_list UNIX_COMMAND "${pc_flags}")
separate_arguments(extra_flag_list UNIX_COMMAND "${EXTRA_FLAGS}")
get_filename_component(lib_dir ${pc_dir} DIRECTORY)
run_step("compiling with pkg-config's flags" ${CXX} -std=c++17 ${extra_flag_list}
         ${SOURCE_DIR}/main.cpp -o ${WORK_DIR}/consumer_pc ${pc_flag_list} -Wl,-rpath,${lib_dir})
run_step("the pkg-config consumer" ${run_env} ${WORK_DIR}/consumer_pc)
if(NOT step_output STREQUAL expected)
  message(FATAL_ERROR "the pkg-config consumer printed '${step_output}'")
endif()
message(STATUS "installed package works through find_package and pkg-config")
