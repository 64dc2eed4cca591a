# Build rules that seal images: find_package(Sealwright) brings sealwright_bl1() and sealwright_bl2().
#
#   sealwright_bl1(<target> IMAGE <file> OUTPUT <file> ROOT <folder> STAGE2_KEY <file>.spk
#                  [BUILD_INFO] [SIGNER <program> [<argument>...]])
#   sealwright_bl2(<target> IMAGE <file> OUTPUT <file> STAGE2_KEY <file>.spk
#                  [PRIVATE_KEY <file>] [SIGNER <program> [<argument>...]])
#
# Each makes a target of the default build that seals IMAGE into OUTPUT, and does so again when the image
# or a key file has changed. Relative names are looked for in the current source folder and then in the
# current build folder; OUTPUT is made in the current build folder. A root set has its files under their
# fixed names in ROOT when the project is configured. With SIGNER a program signs, and no private key is
# read.

get_filename_component(_sealwright_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
find_program(
  SEALWRIGHT_SEAL Sealwright_seal
  HINTS "${_sealwright_prefix}/bin"
  DOC "The program that seals images")
unset(_sealwright_prefix)

if(NOT SEALWRIGHT_SEAL)
  set(Sealwright_FOUND FALSE)
  set(Sealwright_NOT_FOUND_MESSAGE "there is no Sealwright_seal beside this file or in PATH")
  return()
endif()

# The file that a name stands for: one of the source folder, or one that the build makes.
function(_sealwright_path variable name)
  cmake_path(ABSOLUTE_PATH name BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" OUTPUT_VARIABLE path)
  if(NOT EXISTS "${path}")
    cmake_path(ABSOLUTE_PATH name BASE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}" OUTPUT_VARIABLE path)
  endif()
  set(${variable} "${path}" PARENT_SCOPE)
endfunction()

# What both rules have: the target, its output, and the words and files that come before and after.
function(_sealwright_rule target verb)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "" "IMAGE;OUTPUT;STAGE2_KEY" "OPTIONS;KEYS;SIGNER")
  foreach(needed IN ITEMS IMAGE OUTPUT STAGE2_KEY)
    if(NOT ARG_${needed})
      message(FATAL_ERROR "sealwright_${verb}(${target}) needs ${needed}")
    endif()
  endforeach()
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "sealwright_${verb}(${target}) does not know ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  _sealwright_path(image "${ARG_IMAGE}")
  _sealwright_path(stage2_key "${ARG_STAGE2_KEY}")
  set(output "${ARG_OUTPUT}")
  cmake_path(ABSOLUTE_PATH output BASE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
  cmake_path(GET output PARENT_PATH folder)
  set(signer "")
  if(ARG_SIGNER)
    set(signer -- ${ARG_SIGNER})
  endif()
  # An output is whole and proved, or the rule fails and an older one stays, which is then tried again.
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
    COMMAND "${SEALWRIGHT_SEAL}" ${verb} ${ARG_OPTIONS} --stage2-key "${stage2_key}" "${image}"
            "${output}" ${signer}
    DEPENDS "${image}" "${stage2_key}" ${ARG_KEYS} "${SEALWRIGHT_SEAL}"
    COMMENT "Sealing ${ARG_OUTPUT}"
    VERBATIM)
  add_custom_target(${target} ALL DEPENDS "${output}")
endfunction()

function(sealwright_bl1 target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "BUILD_INFO" "ROOT" "")
  if(NOT ARG_ROOT)
    message(FATAL_ERROR "sealwright_bl1(${target}) needs ROOT")
  endif()
  _sealwright_path(root "${ARG_ROOT}")
  set(keys "")
  foreach(file IN ITEMS publicKeyInfo privateKey eFuseData)
    file(GLOB found CONFIGURE_DEPENDS "${root}/${file}_V21.dat" "${root}/${file}.dat")
    list(APPEND keys ${found})
  endforeach()
  if(NOT keys)
    message(FATAL_ERROR "sealwright_bl1(${target}): no root keys in ${root}")
  endif()
  set(options --root "${root}")
  if(ARG_BUILD_INFO)
    list(PREPEND options --build-info)
  endif()
  _sealwright_rule(${target} bl1 ${ARG_UNPARSED_ARGUMENTS} OPTIONS ${options} KEYS ${keys})
endfunction()

function(sealwright_bl2 target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "STAGE2_KEY;PRIVATE_KEY" "SIGNER")
  set(options "")
  set(keys "")
  if(ARG_PRIVATE_KEY)
    _sealwright_path(keys "${ARG_PRIVATE_KEY}")
    set(options --private-key "${keys}")
  elseif(NOT ARG_SIGNER)
    # The private half beside the public one.
    _sealwright_path(keys "${ARG_STAGE2_KEY}")
    cmake_path(REPLACE_EXTENSION keys LAST_ONLY .prv)
  endif()
  _sealwright_rule(
    ${target} bl2 ${ARG_UNPARSED_ARGUMENTS} STAGE2_KEY "${ARG_STAGE2_KEY}" OPTIONS ${options}
    KEYS ${keys} SIGNER ${ARG_SIGNER})
endfunction()
