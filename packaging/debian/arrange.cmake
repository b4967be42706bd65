# SPDX-License-Identifier: ISC
# Brings the files that CPack has gathered into the form of a Debian package: changelogs and man page compressed, licences
# in one file `copyright`, and the bundle's library stripped, which CPack does with installed targets alone.
file(GLOB staged ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr)
foreach(usr ${staged})
  set(documents ${usr}/share/doc/qlx-brezan)
  file(REMOVE_RECURSE ${documents}/LICENSE ${documents}/LICENSES
    ${usr}/lib/lv2/qlx-brezan.lv2/LICENSE ${usr}/lib/lv2/qlx-brezan.lv2/LICENSES)
  execute_process(COMMAND strip --strip-unneeded ${usr}/lib/lv2/qlx-brezan.lv2/brezan.so COMMAND_ERROR_IS_FATAL ANY)
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${documents})
  # A version without a revision is a package of its own, whose changelog is `changelog`.
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/changelog DESTINATION ${documents})
  file(GLOB texts ${documents}/changelog ${documents}/CHANGELOG.md ${usr}/share/man/man1/*.1)
  execute_process(COMMAND gzip -9nf ${texts} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
