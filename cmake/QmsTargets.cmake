# Helpers shared by every library, test, benchmark and program of the project.

set(QMS_WARNINGS -Wall -Wextra)

if(QMS_FUZZ)
  # Coverage for the fuzzers in every library; the fuzz programs add the driver.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(QMS_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# qms_add_library(NAME SOURCES... [STRICT_FP] [DEPENDS libs...] [PUBLIC_LIBS libs...])
# Creates the static library qm_NAME. STRICT_FP turns off contraction into fused
# multiply-add: geometry decisions must not depend on the compiler's choice.
function(qms_add_library name)
  cmake_parse_arguments(ARG "STRICT_FP" "" "SOURCES;DEPENDS;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  add_library(qm_${name} STATIC ${ARG_SOURCES} ${ARG_UNPARSED_ARGUMENTS})
  target_include_directories(qm_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(qm_${name} PRIVATE ${QMS_WARNINGS})
  if(ARG_STRICT_FP)
    target_compile_options(qm_${name} PUBLIC -ffp-contract=off)
  endif()
  foreach(dep IN LISTS ARG_DEPENDS)
    target_link_libraries(qm_${name} PUBLIC qm_${dep})
  endforeach()
  target_link_libraries(qm_${name} PUBLIC ${ARG_PUBLIC_LIBS} PRIVATE ${ARG_PRIVATE_LIBS})
  set_property(GLOBAL APPEND PROPERTY QMS_LIBRARIES qm_${name})
endfunction()

# qms_add_test(NAME SOURCES... [LIBS libs...])
# One GoogleTest executable per library, registered with CTest.
function(qms_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;PROPERTIES" ${ARGN})
  add_executable(${name}_tests ${ARG_SOURCES} ${ARG_UNPARSED_ARGUMENTS})
  target_compile_options(${name}_tests PRIVATE ${QMS_WARNINGS})
  target_include_directories(${name}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name}_tests PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name}_tests PRIVATE QMS_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data")
  include(GoogleTest)
  gtest_discover_tests(${name}_tests DISCOVERY_TIMEOUT 60 PROPERTIES ${ARG_PROPERTIES})
endfunction()
