# dlpctl, as a library for the tests to call and a program around it.
find_package(nlohmann_json REQUIRED)
find_package(spdlog REQUIRED)
find_package(CLI11 REQUIRED)
find_package(tomlplusplus REQUIRED)
pkg_check_modules(PCRE2 REQUIRED IMPORTED_TARGET libpcre2-8)

file(GLOB_RECURSE DLP_TOOL_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cli/*.cpp)
list(REMOVE_ITEM DLP_TOOL_SOURCES ${PROJECT_SOURCE_DIR}/cli/main.cpp)

add_library(dlpctl_core STATIC ${DLP_TOOL_SOURCES})
target_link_libraries(dlpctl_core PUBLIC dlpparser_static PRIVATE dlp_options CLI11::CLI11
                                         nlohmann_json::nlohmann_json spdlog::spdlog PkgConfig::PCRE2
                                         tomlplusplus::tomlplusplus)
target_precompile_headers(dlpctl_core PRIVATE <nlohmann/json.hpp> <string> <vector>)
target_compile_definitions(dlpctl_core PRIVATE DLP_VERSION="${PROJECT_VERSION}")

add_executable(dlpctl ${PROJECT_SOURCE_DIR}/cli/main.cpp)
target_link_libraries(dlpctl PRIVATE dlpctl_core dlp_options)
