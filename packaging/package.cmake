# What is installed, and the Debian package.
include(GNUInstallDirs)
install(TARGETS keldump ${KELDUMP_COMPANIONS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

find_program(GZIP gzip)
# The file at `source` with @VARIABLES@ filled in, compressed where gzip is there; its path in `result`.
function(compressed source name result)
    configure_file(${source} ${PROJECT_BINARY_DIR}/packaging/${name} @ONLY)
    set(file ${PROJECT_BINARY_DIR}/packaging/${name})
    if(GZIP)
        execute_process(COMMAND ${GZIP} -9nf ${file})
        set(file ${file}.gz)
    endif()
    set(${result} ${file} PARENT_SCOPE)
endfunction()

set(COMPLETIONS ${PROJECT_SOURCE_DIR}/completions)
foreach(command keldump ${KELDUMP_COMPANIONS})
    compressed(${PROJECT_SOURCE_DIR}/doc/${command}.1.in ${command}.1 page)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${COMPLETIONS}/${command}.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${command})
    # Fish looks for a file a command.
    install(FILES ${COMPLETIONS}/keldump.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d RENAME ${command}.fish)
endforeach()
# Below /usr, where the Debian package goes, zsh looks in vendor-completions, elsewhere in site-functions.
install(CODE "
    set(functions site-functions)
    if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/*$\")
        set(functions vendor-completions)
    endif()
    file(INSTALL \"${COMPLETIONS}/_keldump\"
        DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/zsh/\${functions}\")")

# The papers link to each other as they do in the source tree.
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
compressed(${CMAKE_CURRENT_LIST_DIR}/changelog.in changelog changelog)
install(FILES ${changelog} ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME keldump)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME keldump)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "keldump developers <developers@keldump.example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "header fields of video, film-scan, image and audio files")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${CMAKE_CURRENT_LIST_DIR}/description)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
