# What a program needs to be one of Windows: icon, version and manifest inside it, and around it the DLLs and plugins.

# The compiler's own DLLs lie in folders of its own.
set(compiler_folders)
foreach(library libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library} OUTPUT_VARIABLE file
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    get_filename_component(folder ${file} DIRECTORY)
    file(REAL_PATH ${folder} folder)
    list(APPEND compiler_folders ${folder})
endforeach()
set(VELMOR_COMPILER_LIBRARIES ${compiler_folders} CACHE INTERNAL "Folders of the compiler's DLLs")

# Plugins that the program uses: the screen, pictures of the forms and themes, the window's icon, the photo, and the
# look of what no theme paints.
set(plugins platforms/qwindows iconengines/qsvgicon imageformats/qico imageformats/qjpeg imageformats/qsvg
    styles/qwindowsvistastyle)
# The toolkit's own texts are the same files on every platform.
find_file(VELMOR_QT_TRANSLATION qtbase_pl.qm PATHS /usr/share/qt5/translations NO_DEFAULT_PATH
    NO_CMAKE_FIND_ROOT_PATH REQUIRED)

# velmor_windows_resources(TARGET NAME): icon, version, manifest and name for a program whose file is NAME.exe.
set(VELMOR_WINDOWS_SOURCES ${CMAKE_CURRENT_LIST_DIR} CACHE INTERNAL "Folder of what is Windows' own")
function(velmor_windows_resources target name)
    configure_file(${VELMOR_WINDOWS_SOURCES}/program.rc.in ${target}.rc @ONLY)
    configure_file(${VELMOR_WINDOWS_SOURCES}/program.manifest.in ${target}.manifest @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}.rc PROPERTIES OBJECT_DEPENDS
        "${VELMOR_ICON};${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest")
    add_dependencies(${target} velmor_icon)
endfunction()

# velmor_windows_program(TARGET): gives TARGET its resources, lays its surroundings beside it, and installs them with it.
function(velmor_windows_program target)
    velmor_windows_resources(${target} ${target})
    set(source ${CMAKE_SOURCE_DIR}/packaging/windows)

    string(JOIN "\n" settings
        "set(objdump ${CMAKE_OBJDUMP})"
        "set(strip ${CMAKE_STRIP})"
        "set(sysroot ${VELMOR_WINDOWS_SYSROOT})"
        "set(library_folders ${VELMOR_WINDOWS_SYSROOT}/bin ${VELMOR_COMPILER_LIBRARIES})"
        "set(plugins ${plugins})"
        "set(translation ${VELMOR_QT_TRANSLATION})"
        "set(qt_conf ${source}/qt.conf)"
        "set(program ${VELMOR_ROOT_DIR}/${VELMOR_PROGRAM_SUBDIR}/${target}.exe)")
    set(settings_file ${CMAKE_CURRENT_BINARY_DIR}/surroundings-of-${target}.cmake)
    file(GENERATE OUTPUT ${settings_file} CONTENT "${settings}\n")

    set(deploy ${source}/deploy.cmake)
    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/surroundings-of-${target}.stamp)
    add_custom_command(OUTPUT ${stamp}
        COMMAND ${CMAKE_COMMAND} -DSETTINGS=${settings_file} -DFOLDER=$<TARGET_FILE_DIR:${target}> -P ${deploy}
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        DEPENDS ${target} ${deploy} ${settings_file} ${source}/qt.conf
        COMMENT "Laying DLLs and plugins beside ${target}")
    add_custom_target(surroundings_of_${target} ALL DEPENDS ${stamp})
    install(CODE "
        set(SETTINGS ${settings_file})
        set(FOLDER \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${VELMOR_PROGRAM_SUBDIR}\")
        include(${deploy})" COMPONENT product)
    # For an administrator's store of templates.
    install(DIRECTORY ${CMAKE_SOURCE_DIR}/packaging/policies DESTINATION . COMPONENT policies EXCLUDE_FROM_ALL)
endfunction()
