# CPack runs this script after it has copied the installed files to its temporary folder. The script adds the
# changelog that Debian requires and the overrides of lintian's warnings, and compresses the changelog and
# the manual page.
set(share "${CPACK_TEMPORARY_DIRECTORY}/usr/share")

# This is the time in the environment variable SOURCE_DATE_EPOCH, if it is set.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${share}/doc/fernlow/changelog" "fernlow (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Made from the commit ${CPACK_FERNLOW_COMMIT}.

 -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${date}
")
configure_file("${CMAKE_CURRENT_LIST_DIR}/lintian-overrides"
  "${share}/lintian/overrides/fernlow" COPYONLY)

# Debian's zsh does not search zsh's usual folder.
file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")

file(GLOB pages "${share}/man/man1/*.1")
execute_process(COMMAND gzip -9n "${share}/doc/fernlow/changelog" ${pages}
  COMMAND_ERROR_IS_FATAL ANY)
