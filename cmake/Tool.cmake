# dlpctl, as a library for the tests to call and a program around it.
find_package(nlohmann_json REQUIRED)
find_package(spdlog REQUIRED)
find_package(CLI11 REQUIRED)
find_package(tomlplusplus REQUIRED)
pkg_check_modules(PCRE2 REQUIRED IMPORTED_TARGET libpcre2-8)

file(GLOB_RECURSE DLP_TOOL_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cli/*.cpp)
list(REMOVE_ITEM DLP_TOOL_SOURCES ${PROJECT_SOURCE_DIR}/cli/main.cpp)

# The pages that the manual is made of, as they stand in docs/.
file(READ ${PROJECT_SOURCE_DIR}/docs/dlpctl.md DLP_COMMANDS_TEXT)
file(READ ${PROJECT_SOURCE_DIR}/docs/formats.md DLP_FORMATS_TEXT)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             ${PROJECT_SOURCE_DIR}/docs/dlpctl.md ${PROJECT_SOURCE_DIR}/docs/formats.md)
configure_file(${PROJECT_SOURCE_DIR}/cmake/ManualTexts.cpp.in ${PROJECT_BINARY_DIR}/ManualTexts.cpp @ONLY)
set_source_files_properties(${PROJECT_BINARY_DIR}/ManualTexts.cpp PROPERTIES COMPILE_OPTIONS -Wno-overlength-strings)

add_library(dlpctl_core STATIC ${DLP_TOOL_SOURCES} ${PROJECT_BINARY_DIR}/ManualTexts.cpp)
target_link_libraries(dlpctl_core PUBLIC dlpparser_static PRIVATE dlp_options CLI11::CLI11
                                         nlohmann_json::nlohmann_json spdlog::spdlog PkgConfig::PCRE2
                                         tomlplusplus::tomlplusplus)
target_precompile_headers(dlpctl_core PRIVATE <nlohmann/json.hpp> <string> <vector>)
target_compile_definitions(dlpctl_core PRIVATE DLP_VERSION="${PROJECT_VERSION}")
dlp_batches(dlpctl_core)

add_executable(dlpctl ${PROJECT_SOURCE_DIR}/cli/main.cpp)
target_link_libraries(dlpctl PRIVATE dlpctl_core dlp_options)

# What is made of the tool's table of commands: completions and manual pages.
set(DLP_COMPLETIONS ${PROJECT_BINARY_DIR}/completions)
set(DLP_COMPLETION_FILES)
foreach(shell bash zsh fish)
    add_custom_command(OUTPUT ${DLP_COMPLETIONS}/${shell}
                       COMMAND ${CMAKE_COMMAND} -E make_directory ${DLP_COMPLETIONS}
                       COMMAND ${CMAKE_COMMAND} -E env --unset=HOME --unset=XDG_CONFIG_HOME
                               $<TARGET_FILE:dlpctl> completion ${shell} > ${DLP_COMPLETIONS}/${shell}
                       DEPENDS dlpctl VERBATIM)
    list(APPEND DLP_COMPLETION_FILES ${DLP_COMPLETIONS}/${shell})
endforeach()
set(DLP_MANUAL ${PROJECT_BINARY_DIR}/man)
add_custom_command(OUTPUT ${DLP_MANUAL}/pages
                   COMMAND ${CMAKE_COMMAND} -E env --unset=HOME --unset=XDG_CONFIG_HOME ${CMAKE_COMMAND}
                           -DTOOL=$<TARGET_FILE:dlpctl> -DFOLDER=${DLP_MANUAL} -P ${PROJECT_SOURCE_DIR}/cmake/Manual.cmake
                   DEPENDS dlpctl ${PROJECT_SOURCE_DIR}/cmake/Manual.cmake VERBATIM)
add_custom_target(dlpctl_manual ALL DEPENDS ${DLP_COMPLETION_FILES} ${DLP_MANUAL}/pages)
