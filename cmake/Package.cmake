# The target "package" makes Debian packages of what is installed, "bundle" the archive for customers.

foreach(kind IN ITEMS package:make_deb bundle:make_bundle)
  string(REPLACE ":" ";" kind ${kind})
  list(GET kind 0 target)
  list(GET kind 1 script)
  add_custom_target(
    ${target}
    COMMAND ${PROJECT_SOURCE_DIR}/packaging/${script}.sh ${PROJECT_BINARY_DIR} ${PROJECT_VERSION}
    DEPENDS sealwright_main sealwright_client sealwright_inspect_main sealwright_seal_main
    VERBATIM)
endforeach()
