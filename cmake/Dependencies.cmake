find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(EXPAT REQUIRED)
find_package(SQLite3 3.35 REQUIRED)
find_package(fmt REQUIRED)
find_package(pugixml REQUIRED)
find_package(Boost REQUIRED)
# Its header alone: the functions are taken inline.
pkg_check_modules(XXHASH REQUIRED libxxhash)

# What every target of the project is compiled with.
add_library(dlp_options INTERFACE)
target_include_directories(dlp_options INTERFACE ${PROJECT_SOURCE_DIR})
target_include_directories(dlp_options SYSTEM INTERFACE ${XXHASH_INCLUDE_DIRS})
target_compile_options(dlp_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                             $<$<CONFIG:Release>:-O2>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # False alarms over std::string's own code; the sanitizers know better: https://gcc.gnu.org/bugzilla/show_bug.cgi?id=105329
    target_compile_options(dlp_options INTERFACE -Wno-restrict -Wno-stringop-overflow -Wno-array-bounds)
endif()
if(DLP_WARNINGS_AS_ERRORS)
    target_compile_options(dlp_options INTERFACE -Werror)
endif()
if(DLP_SANITIZE)
    # The compiler warns that instrumented code of its own library may be uninitialized.
    target_compile_options(dlp_options INTERFACE -O1 -g1 $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_compile_options(dlp_options INTERFACE -fsanitize=${DLP_SANITIZE} -fno-omit-frame-pointer
                                                 -fno-sanitize-recover=all -U_FORTIFY_SOURCE)
    target_link_options(dlp_options INTERFACE -fsanitize=${DLP_SANITIZE})
endif()
