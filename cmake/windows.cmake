# The Windows build: a release folder that runs as it would on a user's
# machine, and the tests, run under Wine when the build is a cross build.

# build/windows/release: zept.exe, the DLLs it needs, docs/ and input/.
add_custom_target(windows_release ALL
  COMMAND ${CMAKE_SOURCE_DIR}/scripts/windows_release.sh ${CMAKE_BINARY_DIR}
  DEPENDS zept zept_bundled_data
  COMMENT "Assembling the release folder"
  VERBATIM)

if(NOT ZEPT_TESTS OR NOT CMAKE_CROSSCOMPILING)
  return()
endif()

set(ZEPT_WINE ${CMAKE_SOURCE_DIR}/cmake/wine_run.sh)

# A test that runs under Wine: zept_wine_test(NAME COMMAND...). The program
# of the test (a cross-built target's $<TARGET_FILE:...>, or a script that
# starts one through ${ZEPT_WINE}) follows COMMAND. One Wine prefix serves
# them all, and the program's named mutex is one per prefix: never two at
# once.
function(zept_wine_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "COMMAND" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 900)
  endif()
  add_test(NAME ${name} COMMAND ${ARG_COMMAND})
  set_tests_properties(${name} PROPERTIES RESOURCE_LOCK wine TIMEOUT ${ARG_TIMEOUT})
endfunction()

# Unit tests that cannot pass under Wine, each with the reason. They run in
# the Linux build. (The tests that kill a child process part way, through
# fork and signals, are POSIX only and not built here: ProgramRun.*,
# Migration.AKillAnywhereLeavesItDoneOrNotBegun,
# ScannedLiveriesFile.KilledWriterLeavesAWholeFile. The Wine main job tests
# stop the program through the console's control event instead.)
set(ZEPT_WINE_SKIPS
  # A folder's read-only attribute does not stop writing into it on Windows
  # (its ACL would, which the test cannot set portably).
  SaveXml.UnwritablePlaceKeepsTheOldFile
  # Under Wine a wait in accept ends about 0.5 s after another thread closes
  # the listening socket, at the test's time bound (the wait does end).
  RtAppRoad.ClosingTheWindowEndsAWaitForTheApplication
)
list(JOIN ZEPT_WINE_SKIPS ":" ZEPT_WINE_FILTER)
if(ZEPT_WINE_FILTER)
  set(ZEPT_WINE_FILTER "--gtest_filter=-${ZEPT_WINE_FILTER}")
endif()

# One Wine process for the whole unit test program: starting Wine for each of
# several hundred tests would cost minutes.
zept_wine_test(windows.UnitTests
  COMMAND ${ZEPT_WINE} $<TARGET_FILE:zept_tests> --gtest_brief=1 ${ZEPT_WINE_FILTER})

# The release folder as a user would run it: the command line job, then the
# main job with the built-in simulator and the Linux stand-in application.
zept_wine_test(windows.Production
  COMMAND ${CMAKE_SOURCE_DIR}/tests/e2e/run_wine.sh production ${CMAKE_BINARY_DIR})
if(ZEPT_E2E)
  zept_wine_test(windows.MainJobUnderWine
    COMMAND ${CMAKE_SOURCE_DIR}/tests/e2e/run_wine.sh main-job ${CMAKE_BINARY_DIR})
  # The same job as on a user's machine: no --demo, SimConnect.dll beside
  # zept.exe (the built-in simulator's facade library).
  zept_wine_test(windows.MainJobThroughSimConnectLibrary
    COMMAND ${CMAKE_SOURCE_DIR}/tests/e2e/run_wine.sh simconnect ${CMAKE_BINARY_DIR})
endif()
