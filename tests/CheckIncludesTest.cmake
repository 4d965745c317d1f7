# Runs cmake/CheckIncludes.cmake on the broken sources: it must fail, and say exactly what expected.txt holds.
cmake_minimum_required(VERSION 3.22)

set(broken "${CMAKE_CURRENT_LIST_DIR}/data/floors-broken")
execute_process(
    COMMAND "${CMAKE_COMMAND}" -D "ROOT=${broken}" -D "QT_CORE=${QT_CORE}"
        -P "${CMAKE_CURRENT_LIST_DIR}/../cmake/CheckIncludes.cmake"
    RESULT_VARIABLE result
    ERROR_VARIABLE said)
file(READ "${broken}/expected.txt" expected)
string(FIND "${said}" "${expected}\nCMake Error" at)
if(result EQUAL 0 OR NOT at EQUAL 0)
    message(NOTICE "answered ${result} and said\n${said}")
    message(FATAL_ERROR "The check of the floors does not say what expected.txt holds")
endif()
