# Reliability tests, included from tests/CMakeLists.txt.

# The writer that the process tests start: one view per value, as the suite's tools write.
add_executable(settings_writer settings_writer.cpp)
target_link_libraries(settings_writer PRIVATE cfgq::cfgq cfgq_warnings cfgq_sanitize)

cfgq_add_test(concurrency_test SOURCES concurrency_test.cpp LABELS reliability)
target_compile_definitions(concurrency_test PRIVATE
  CFGQ_SETTINGS_WRITER="$<TARGET_FILE:settings_writer>")
add_dependencies(concurrency_test settings_writer)

# Damaged files, killed writers' temporaries, planted links, permissions; reaches the library's
# hidden name rule for temporaries.
cfgq_add_test(file_safety_test SOURCES file_safety_test.cpp INTERNAL LABELS reliability)

# A writer killed at random moments 8 times (scripts/soak.sh runs 50 by default).
add_test(NAME soak_short COMMAND bash ${PROJECT_SOURCE_DIR}/scripts/soak.sh 8)
set_tests_properties(soak_short PROPERTIES
  ENVIRONMENT "SETTINGS_WRITER=$<TARGET_FILE:settings_writer>"
  LABELS reliability TIMEOUT 300)
