# qvx_layer(NAME SOURCES file... [INCLUDES folder...] [DEPENDS layer...] [PRIVATE_LIBS target...])
#
# One layer of the library as an object library. A layer's private headers can be included only by itself and by the
# layers that name it under DEPENDS: an include that points back up does not compile. All layers end up in the one
# shared library `qvxsys`.
function(qvx_layer name)
    cmake_parse_arguments(L "" "" "SOURCES;DEPENDS;PRIVATE_LIBS;INCLUDES" ${ARGN})
    set(target qvx_layer_${name})
    add_library(${target} OBJECT ${L_SOURCES})
    target_compile_definitions(${target} PRIVATE QVXSYS_BUILDING)
    target_include_directories(${target} PUBLIC ${L_INCLUDES})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/public)
    target_link_libraries(${target} PRIVATE qvx_flags ${L_PRIVATE_LIBS})
    foreach(below IN LISTS L_DEPENDS)
        target_include_directories(${target} PUBLIC
            $<TARGET_PROPERTY:qvx_layer_${below},INTERFACE_INCLUDE_DIRECTORIES>)
        add_dependencies(${target} qvx_layer_${below})
    endforeach()
    # Calls within the library are direct, calls out of it take one jump instead of two.
    if(NOT WIN32)
        target_compile_options(${target} PRIVATE -fno-semantic-interposition -fno-plt)
    endif()
    set_property(GLOBAL APPEND PROPERTY QVX_LAYERS ${target})
    set_property(GLOBAL APPEND PROPERTY QVX_LAYER_LIBS ${L_PRIVATE_LIBS})
endfunction()
