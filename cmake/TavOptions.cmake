# What every target of this tree is compiled with: linked as tav_options, never set globally,
# so that the tree can sit inside another project.

include(GNUInstallDirs)

option(TAV_WERROR "Treat compiler warnings as errors" OFF)
set(TAV_SANITIZE "" CACHE STRING "Sanitizers to build with, as in -fsanitize=")

add_library(tav_options INTERFACE)
target_compile_features(tav_options INTERFACE cxx_std_17)
target_compile_definitions(tav_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH
    QT_STRICT_ITERATORS
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_DEPRECATED_WARNINGS
    QT_MESSAGELOGCONTEXT)
target_compile_options(tav_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
    # Qt's logging macros are called without the arguments that they may have.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<BOOL:${TAV_WERROR}>:-Werror>)
if(TAV_SANITIZE)
    target_compile_options(tav_options INTERFACE -fsanitize=${TAV_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(tav_options INTERFACE -fsanitize=${TAV_SANITIZE})
endif()

# tav_add_library(NAME SOURCES ... USES ...): a static library whose own folder is its public
# include directory.
function(tav_add_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    add_library(tav::${name} ALIAS ${name}) # as it is called where it is installed
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON
        POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>)
    target_link_libraries(${name} PUBLIC ${ARG_USES} PRIVATE $<BUILD_INTERFACE:tav_options>)
endfunction()

# tav_add_program(NAME SOURCES ... USES ...)
function(tav_add_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
    target_link_libraries(${name} PRIVATE ${ARG_USES} tav_options)
endfunction()
