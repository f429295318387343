# What only the Windows build needs: version resources, the DLLs of other makers beside our own.

# qvx_version_resource(TARGET DESCRIPTION FILE [MANIFEST]): what the file's properties show, and an application manifest.
function(qvx_version_resource target description file)
    set(QVX_RESOURCE_DESCRIPTION ${description})
    set(QVX_RESOURCE_FILE ${file})
    set(QVX_RESOURCE_TYPE VFT_DLL)
    set(QVX_RESOURCE_MANIFEST)
    if(ARGC GREATER 3)
        set(QVX_RESOURCE_TYPE VFT_APP)
        set(QVX_RESOURCE_MANIFEST "1 24 \"${ARGV3}\"")
    endif()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${source} @ONLY)
    target_sources(${target} PRIVATE ${source})
endfunction()

# Windows looks for a program's DLLs in the program's own folder. Who takes this tree into a project sees to them.
if(PROJECT_IS_TOP_LEVEL)
    foreach(name icudt icuin icuuc libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
        file(GLOB dll ${QVXSYS_WIN64_PREFIX}/bin/${name}*.dll)
        if(NOT dll)
            message(FATAL_ERROR "No ${name}*.dll in ${QVXSYS_WIN64_PREFIX}/bin: run cmake/win64-libraries")
        endif()
        list(APPEND QVX_WINDOWS_DLLS ${dll})
    endforeach()
    file(COPY ${QVX_WINDOWS_DLLS} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    install(FILES ${QVX_WINDOWS_DLLS} DESTINATION bin COMPONENT runtime)
    foreach(name icu mingw-w64 gcc-runtime)
        install(FILES ${QVXSYS_WIN64_PREFIX}/licenses/${name}.txt DESTINATION licenses COMPONENT runtime)
    endforeach()
    # With the notices of what the tool is compiled with.
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright DESTINATION licenses COMPONENT runtime RENAME qvxsys.txt)
endif()

# For tests that run programs: a Wine server stays for the time of the tests (tests/windows).
set(QVX_TEST_PROPERTIES FIXTURES_REQUIRED wine)
