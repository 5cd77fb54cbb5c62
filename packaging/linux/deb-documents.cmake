# Run by CPack on the tree that it packs: manual page and changelogs as Debian wants them, compressed and without the
# time of the packing.
set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share")
set(documents "${share}/doc/larkspire")

file(STRINGS "${CPACK_LARKSPIRE_METAINFO}" release REGEX "<release version=\"${CPACK_PACKAGE_VERSION}\" ")
string(REGEX REPLACE ".* date=\"([0-9-]+)\".*" "\\1" date "${release}")
execute_process(COMMAND date -u -R -d "${date}" OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
  RESULT_VARIABLE status)
if(NOT release OR NOT status EQUAL 0)
  message(FATAL_ERROR "the metainfo has no dated release ${CPACK_PACKAGE_VERSION}")
endif()
file(WRITE "${documents}/changelog.Debian"
"larkspire (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; what is new stands in changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
file(RENAME "${documents}/CHANGELOG.md" "${documents}/changelog")
execute_process(
  COMMAND gzip -9n "${documents}/changelog" "${documents}/changelog.Debian" "${share}/man/man1/larkspire.1"
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND chmod 644 "${documents}/changelog.Debian.gz" COMMAND_ERROR_IS_FATAL ANY)
