# Reliability tests, included from tests/CMakeLists.txt. Labels: reliability; soak for the slow
# runs of many processes instead (scripts/mutate.sh leaves them out); fuzz and install for the
# runs that need CFGQ_LONG_TESTS=1.

# The writer that the process tests start: one view per value, as the suite's tools write.
add_executable(settings_writer settings_writer.cpp)
target_link_libraries(settings_writer PRIVATE cfgq::cfgq cfgq_flags)

cfgq_add_test(concurrency_test SOURCES concurrency_test.cpp LABELS soak)
target_compile_definitions(concurrency_test PRIVATE
  CFGQ_SETTINGS_WRITER="$<TARGET_FILE:settings_writer>")
add_dependencies(concurrency_test settings_writer)

# Damaged files, killed writers' temporaries, planted links, permissions; reaches the library's
# hidden name rule for temporaries.
if(WIN32)
  cfgq_posix_only(file_safety_test "symbolic and hard links, FIFOs, modes, killed writers")
else()
  cfgq_add_test(file_safety_test SOURCES file_safety_test.cpp INTERNAL LABELS reliability)
endif()

# A writer killed at random moments 8 times (scripts/soak.sh runs 50 by default).
if(WIN32)
  cfgq_posix_only(soak_short "a bash driver that kills writers with signals")
else()
add_test(NAME soak_short COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/soak.sh 8)
set_tests_properties(soak_short PROPERTIES
  ENVIRONMENT "SETTINGS_WRITER=$<TARGET_FILE:settings_writer>"
  LABELS soak TIMEOUT 300)
endif()

# Hostile settings files. The fuzz target runs under libFuzzer in a Clang build configured with
# CFGQ_FUZZ=ON (scripts/fuzz.sh); every build replays the seed corpus through the same target.
set(cfgq_fuzz_corpus ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus)
if(WIN32)
  cfgq_posix_only(fuzz_corpus_replay "the fuzz target sets file times with utimensat")
else()
add_executable(settings_fuzz_replay fuzz/settings_fuzz.cpp fuzz/replay_main.cpp)
target_link_libraries(settings_fuzz_replay PRIVATE cfgq::cfgq cfgq_flags)
add_test(NAME fuzz_corpus_replay COMMAND settings_fuzz_replay ${cfgq_fuzz_corpus})
set_tests_properties(fuzz_corpus_replay PROPERTIES LABELS reliability)
endif()

option(CFGQ_FUZZ "build the libFuzzer target settings_fuzz (Clang only)" OFF)
if(CFGQ_FUZZ AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_executable(settings_fuzz fuzz/settings_fuzz.cpp)
  # The sanitizers come from CFGQ_SANITIZE=address, which scripts/fuzz.sh sets for the whole build.
  target_link_libraries(settings_fuzz PRIVATE cfgq_internal cfgq_flags)
  target_compile_options(settings_fuzz PRIVATE -fsanitize=fuzzer)
  target_link_options(settings_fuzz PRIVATE -fsanitize=fuzzer)
  # Coverage feedback from the library's own code, which the target drives.
  target_compile_options(cfgq_objects PRIVATE -fsanitize=fuzzer-no-link)
  target_compile_options(korvel_host PRIVATE -fsanitize=fuzzer-no-link)
endif()
find_program(CFGQ_CLANGXX clang++)
if(CFGQ_CLANGXX AND NOT CFGQ_FUZZ)
  # A short, bounded run in a Clang build directory of its own beside this build.
  cfgq_add_long_test(fuzz_short LABELS reliability fuzz TIMEOUT 900
    ENVIRONMENT "FUZZ_BUILD_DIR=${PROJECT_BINARY_DIR}/fuzz"
    COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/fuzz.sh 20)
endif()

# Views on eight threads sharing one file; scripts/test.sh tsan runs these under ThreadSanitizer.
cfgq_add_test(shared_file_threads_test SOURCES shared_file_threads_test.cpp LABELS threads)

# Odd key names, section names and values through the file and back.
cfgq_add_test(odd_names_test SOURCES odd_names_test.cpp LABELS reliability)

# Two stock tclsh processes, 500 cfgq_create_registry calls each on one section at once.
add_test(NAME tcl_two_writers
  COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} ${TCL_TCLSH} ${CMAKE_CURRENT_SOURCE_DIR}/tcl_load/two_writers.tcl 500)
set_tests_properties(tcl_two_writers PROPERTIES
  ENVIRONMENT "${cfgq_tcl_environment}" LABELS "tcl;soak" TIMEOUT 600)

# Shared homes: several hosts (own host name and PID namespace) on one HOME, one-second
# timestamps, another host's lock, concurrent environment writes, root in a user's home, a full
# runtime directory, hostile files; each case skips (77) where the machine forbids the
# namespaces, mounts or other user it needs. scripts/shared_homes.sh runs the issue's sizes.
foreach(shared_homes_case hosts one-second locks env root runtime small)
  if(WIN32)
    cfgq_posix_only(shared_homes_${shared_homes_case}
      "Linux namespaces, mounts, flock and runuser from a bash driver")
    continue()
  endif()
  add_test(NAME shared_homes_${shared_homes_case}
    COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/shared_homes.sh --short ${shared_homes_case})
  set_tests_properties(shared_homes_${shared_homes_case} PROPERTIES
    ENVIRONMENT "CFGQ=$<TARGET_FILE:cfgq_tool>" SKIP_RETURN_CODE 77 LABELS reliability
    TIMEOUT 120)
endforeach()

# Where no link can be made (Windows) the settings objects work on private copies of the file:
# the cache, concurrency and thread tests again with symlink() refused (tests/fault/no_links.c).
if(NOT WIN32)
  foreach(area cache concurrency shared_file_threads)
    add_test(NAME ${area}_without_links
      COMMAND ${CMAKE_COMMAND} -E env "LD_PRELOAD=$<TARGET_FILE:no_links>"
              "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=1:abort_on_error=1"
              $<TARGET_FILE:${area}_test>
              # (the exit test's unload ends what the process's later tests would use)
              --gtest_filter=-*ReleasesKeptFilesAtExit*)
    set_tests_properties(${area}_without_links PROPERTIES LABELS reliability)
  endforeach()
  add_dependencies(cache_test no_links)
endif()
