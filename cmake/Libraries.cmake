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

# Each source is compiled once for all of them; only the XML layer differs in the library with fault points.
function(dlp_objects name)
    add_library(${name} OBJECT ${ARGN})
    dlp_configure(${name})
    target_link_libraries(${name} PUBLIC ${DLP_ENGINES})
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(DLP_SANITIZE)
        dlp_batches(${name})
    endif()
endfunction()

set(DLP_ENGINES EXPAT::EXPAT pugixml::pugixml SQLite::SQLite3 fmt::fmt Threads::Threads ${CMAKE_DL_LIBS})
set(DLP_XML_LAYER_SOURCES ${DLP_PLATFORM_SOURCES})
list(FILTER DLP_XML_LAYER_SOURCES INCLUDE REGEX "/platform/xml/")
list(FILTER DLP_PLATFORM_SOURCES EXCLUDE REGEX "/platform/xml/")
dlp_objects(dlpparser_xml_objects ${DLP_XML_LAYER_SOURCES})
dlp_objects(dlpparser_platform_objects ${DLP_PLATFORM_SOURCES})
dlp_objects(dlpparser_objects ${DLP_PARSER_SOURCES})

function(dlp_shared_library name)
    add_library(${name} SHARED ${ARGN})
    dlp_configure(${name})
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    if(DLP_SANITIZE)
        # The sanitized tests use the static library.
        set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    else()
        target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()

dlp_shared_library(dlpplatform $<TARGET_OBJECTS:dlpparser_platform_objects> $<TARGET_OBJECTS:dlpparser_xml_objects>)
target_link_libraries(dlpplatform PRIVATE ${DLP_ENGINES})
set_target_properties(dlpplatform PROPERTIES EXPORT_NAME platform)
add_library(dlpparser::platform ALIAS dlpplatform)

dlp_shared_library(dlpparser $<TARGET_OBJECTS:dlpparser_objects>)
target_link_libraries(dlpparser PUBLIC dlpplatform)
add_library(dlpparser::dlpparser ALIAS dlpparser)

add_library(dlpparser_static STATIC $<TARGET_OBJECTS:dlpparser_objects> $<TARGET_OBJECTS:dlpparser_platform_objects>
                                    $<TARGET_OBJECTS:dlpparser_xml_objects>)
dlp_configure(dlpparser_static)
set_target_properties(dlpparser_static PROPERTIES LINKER_LANGUAGE CXX)
target_link_libraries(dlpparser_static PUBLIC ${DLP_ENGINES})

if(DLP_BUILD_TESTS)
    add_library(dlpparser_faults STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:dlpparser_objects>
                                        $<TARGET_OBJECTS:dlpparser_platform_objects> ${DLP_XML_LAYER_SOURCES})
    dlp_configure(dlpparser_faults)
    target_link_libraries(dlpparser_faults PUBLIC ${DLP_ENGINES})
    target_compile_definitions(dlpparser_faults PUBLIC DLP_FAULTS)
    dlp_batches(dlpparser_faults)
endif()
