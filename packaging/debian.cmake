# CPack runs this when everything is in its staging folder: it adds the changelog that Debian wants
# and the reasons for what lintian warns of, and compresses what Debian compresses.
set(share "${CPACK_TEMPORARY_DIRECTORY}/usr/share")

# The time is SOURCE_DATE_EPOCH's, where that is set.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${share}/doc/fernlow/changelog" "fernlow (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Made from the commit ${CPACK_FERNLOW_COMMIT}.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}
")
configure_file("${CMAKE_CURRENT_LIST_DIR}/lintian-overrides"
  "${share}/lintian/overrides/fernlow" COPYONLY)

# Debian's zsh doesn't look in the folder that zsh itself would.
file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")

file(GLOB pages "${share}/man/man1/*.1")
execute_process(COMMAND gzip -9n "${share}/doc/fernlow/changelog" ${pages}
  COMMAND_ERROR_IS_FATAL ANY)
