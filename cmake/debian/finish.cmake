# Run by cpack when everything is installed below one folder for each package: adds what Debian's policy asks for.
file(GLOB packages LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(package IN LISTS packages)
    cmake_path(GET package FILENAME name)
    set(folder ${package}/usr/share/doc/${name})
    file(MAKE_DIRECTORY ${folder})
    configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${folder}/copyright COPYONLY
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    configure_file(${CPACK_QVXSYS_CHANGELOG} ${folder}/changelog COPYONLY
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

    # gdb trusts scripts below its own folder, where the path is that of the library.
    file(GLOB scripts RELATIVE ${package} ${package}/usr/lib/*/*-gdb.py)
    foreach(script IN LISTS scripts)
        set(trusted ${package}/usr/share/gdb/auto-load/${script})
        cmake_path(GET trusted PARENT_PATH parent)
        file(MAKE_DIRECTORY ${parent})
        file(RENAME ${package}/${script} ${trusted})
    endforeach()

    # The linker finds the library in a folder of the system.
    file(GLOB programs ${package}/usr/bin/*)
    foreach(program IN LISTS programs)
        file(RPATH_REMOVE FILE ${program})
    endforeach()

    # CPack has stripped programs and libraries of symbols; the rest as Debian's own tools do it.
    file(GLOB_RECURSE binaries ${package}/usr/lib/*.so.*.*.* ${package}/usr/lib/*.a)
    foreach(binary IN LISTS programs binaries)
        execute_process(COMMAND strip --strip-debug --enable-deterministic-archives --remove-section=.comment
            --remove-section=.note ${binary} COMMAND_ERROR_IS_FATAL ANY)
    endforeach()

    file(GLOB manuals ${package}/usr/share/man/*/*)
    execute_process(COMMAND gzip -9n ${folder}/changelog ${manuals} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
