# Runs a program and compares what it prints with a file:
#     cmake -D EXPECTED=FILE -P expect_output.cmake PROGRAM [ARGUMENT...]

math(EXPR last "${CMAKE_ARGC} - 1")
foreach(index RANGE 5 ${last})
    list(APPEND command "${CMAKE_ARGV${index}}")
endforeach()

execute_process(COMMAND ${command} OUTPUT_VARIABLE output RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
    message(FATAL_ERROR "exit ${result}; expected\n${expected}but got\n${output}")
endif()
