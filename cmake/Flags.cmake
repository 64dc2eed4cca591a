# Flags that every target of the project is built with, and how a wing and a program are declared.

include(CheckCXXCompilerFlag)

add_library(sealwright_flags INTERFACE)
target_include_directories(sealwright_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(
  sealwright_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                             $<$<CXX_COMPILER_ID:Clang>:-Wsign-conversion>
                             $<$<BOOL:${SEALWRIGHT_WERROR}>:-Werror>)

# The same program, whatever folder it is built in.
target_compile_options(sealwright_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)

# Hardening. Sections are kept apart so that an executable links only what it uses.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported()
target_compile_options(sealwright_flags INTERFACE -fstack-protector-strong -ffunction-sections
                                                  -fdata-sections)
target_link_options(sealwright_flags INTERFACE -Wl,--gc-sections -Wl,-z,relro -Wl,-z,now
                    -Wl,-z,noexecstack)
check_cxx_compiler_flag(-fcf-protection=full SEALWRIGHT_HAS_CF_PROTECTION)
if(SEALWRIGHT_HAS_CF_PROTECTION)
  target_compile_options(sealwright_flags INTERFACE -fcf-protection=full)
endif()
check_cxx_compiler_flag(-fstack-clash-protection SEALWRIGHT_HAS_STACK_CLASH)
if(SEALWRIGHT_HAS_STACK_CLASH)
  target_compile_options(sealwright_flags INTERFACE -fstack-clash-protection)
endif()

if(SEALWRIGHT_SANITIZE OR SEALWRIGHT_FUZZ)
  target_compile_options(sealwright_flags INTERFACE -fsanitize=address,undefined
                         -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(sealwright_flags INTERFACE -fsanitize=address,undefined)
else()
  # The sanitizers bring checks of their own; fortification would hide findings from them.
  # Some compilers define the level themselves, hence the -U.
  target_compile_options(sealwright_flags
                         INTERFACE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  target_compile_definitions(sealwright_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()

# sealwright_wing(<name> SOURCES <files> LINKS <wings>): a static library of one folder.
function(sealwright_wing name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(sealwright_${name} STATIC ${ARG_SOURCES})
  target_link_libraries(sealwright_${name} PUBLIC sealwright_flags)
  foreach(wing IN LISTS ARG_LINKS)
    target_link_libraries(sealwright_${name} PUBLIC sealwright_${wing})
  endforeach()
endfunction()

# sealwright_program(<target> NAME <file name> SOURCE <file> LINKS <wing> [COMPONENT <component>]): a
# program and its installation, for the signing party unless a component is named.
function(sealwright_program target)
  cmake_parse_arguments(ARG "" "NAME;SOURCE;LINKS;COMPONENT" "" ${ARGN})
  add_executable(${target} ${ARG_SOURCE})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${ARG_NAME})
  target_compile_definitions(${target} PRIVATE SEALWRIGHT_VERSION="${PROJECT_VERSION}")
  target_link_libraries(${target} PRIVATE sealwright_${ARG_LINKS})
  if(NOT SEALWRIGHT_SANITIZE AND NOT SEALWRIGHT_FUZZ)
    # Loading the C++ runtime would take a third of a short command's time.
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
  if(NOT ARG_COMPONENT)
    set(ARG_COMPONENT signing)
  endif()
  install(TARGETS ${target} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${ARG_COMPONENT})
endfunction()
