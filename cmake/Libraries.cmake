# Two shared libraries for others to link, one static library with the same code for the tool, the tests and the
# benchmarks, and one with fault points in the XML layer for the fault tests.

file(GLOB_RECURSE DLP_PLATFORM_SOURCES CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/platform/*.cpp ${PROJECT_SOURCE_DIR}/xml/*.cpp ${PROJECT_SOURCE_DIR}/settings/*.cpp)
file(GLOB_RECURSE DLP_PARSER_SOURCES CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/api/*.cpp ${PROJECT_SOURCE_DIR}/templates/*.cpp
     ${PROJECT_SOURCE_DIR}/digital_assets/*.cpp ${PROJECT_SOURCE_DIR}/metadata/*.cpp)

# Where config/ stands: in the source tree for a build, below the prefix once installed.
set(DLP_COMPILED_INSTALL_PATH ${CMAKE_INSTALL_FULL_DATADIR}/dlpparser)
set_source_files_properties(${PROJECT_SOURCE_DIR}/platform/system/InstallPath.cpp PROPERTIES COMPILE_DEFINITIONS
    "DLP_INSTALL_DIR=\"${DLP_COMPILED_INSTALL_PATH}\";DLP_SOURCE_DIR=\"${PROJECT_SOURCE_DIR}\";DLP_BINARY_DIR=\"${PROJECT_BINARY_DIR}\"")

function(dlp_configure name)
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                              $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/dlpparser>)
    target_compile_features(${name} PUBLIC cxx_std_17)
    target_link_libraries(${name} PUBLIC Boost::headers PRIVATE $<BUILD_INTERFACE:dlp_options>)
endfunction()

function(dlp_shared_library name)
    add_library(${name} SHARED ${ARGN})
    dlp_configure(${name})
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                             CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(DLP_SANITIZE)
        # The sanitized tests use the static library; the same code need not be compiled once more for nobody.
        set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    else()
        target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()

set(DLP_ENGINES EXPAT::EXPAT pugixml::pugixml SQLite::SQLite3 fmt::fmt Threads::Threads ${CMAKE_DL_LIBS})

dlp_shared_library(dlpplatform ${DLP_PLATFORM_SOURCES})
target_link_libraries(dlpplatform PRIVATE ${DLP_ENGINES})
set_target_properties(dlpplatform PROPERTIES EXPORT_NAME platform)
add_library(dlpparser::platform ALIAS dlpplatform)

dlp_shared_library(dlpparser ${DLP_PARSER_SOURCES})
target_link_libraries(dlpparser PUBLIC dlpplatform)
add_library(dlpparser::dlpparser ALIAS dlpparser)

# Only the XML layer differs between the static library and the one with fault points.
set(DLP_XML_LAYER_SOURCES ${DLP_PLATFORM_SOURCES})
list(FILTER DLP_XML_LAYER_SOURCES INCLUDE REGEX "/platform/xml/")
set(DLP_OTHER_SOURCES ${DLP_PLATFORM_SOURCES} ${DLP_PARSER_SOURCES})
list(FILTER DLP_OTHER_SOURCES EXCLUDE REGEX "/platform/xml/")

add_library(dlpparser_objects OBJECT ${DLP_OTHER_SOURCES})
dlp_configure(dlpparser_objects)
target_link_libraries(dlpparser_objects PUBLIC ${DLP_ENGINES})

add_library(dlpparser_static STATIC $<TARGET_OBJECTS:dlpparser_objects> ${DLP_XML_LAYER_SOURCES})
dlp_configure(dlpparser_static)
target_link_libraries(dlpparser_static PUBLIC ${DLP_ENGINES})

if(DLP_BUILD_TESTS)
    add_library(dlpparser_faults STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:dlpparser_objects> ${DLP_XML_LAYER_SOURCES})
    dlp_configure(dlpparser_faults)
    target_link_libraries(dlpparser_faults PUBLIC ${DLP_ENGINES})
    target_compile_definitions(dlpparser_faults PUBLIC DLP_FAULTS)
endif()
