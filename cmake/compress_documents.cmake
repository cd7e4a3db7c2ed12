# Run by CPack on the files of a package: compresses the manual pages and the changelog, as Debian has them.
file(GLOB_RECURSE documents "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*" "${CPACK_TEMPORARY_DIRECTORY}/*/CHANGELOG.md")
foreach(document IN LISTS documents)
  string(REPLACE CHANGELOG.md changelog compressed "${document}")
  file(RENAME "${document}" "${compressed}")
  execute_process(COMMAND gzip -9n "${compressed}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
