# The target "package" makes a Debian package of what is installed.

add_custom_target(
  package
  COMMAND ${PROJECT_SOURCE_DIR}/packaging/make_deb.sh ${PROJECT_BINARY_DIR} ${PROJECT_VERSION}
  DEPENDS sealwright_main sealwright_client sealwright_inspect_main sealwright_seal_main
  VERBATIM)
